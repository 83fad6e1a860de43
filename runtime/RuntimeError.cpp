#include "runtime/RuntimeError.h"

#include <utility>

namespace palvex {

std::string_view faultDescription(std::int32_t number) noexcept {
  switch (number) {
    case fault::invalidCall:
      return "Invalid procedure call or argument";
    case fault::overflow:
      return "Overflow";
    case fault::outOfMemory:
      return "Out of memory";
    case fault::subscript:
      return "Subscript out of range";
    case fault::divisionByZero:
      return "Division by zero";
    case fault::typeMismatch:
      return "Type mismatch";
    case fault::unknownMember:
      return "Object doesn't support this property or method";
    default:
      return "Application-defined or object-defined error";
  }
}

RuntimeError::RuntimeError(std::int32_t number, Line line)
    : RuntimeError(number, std::string(faultDescription(number)), "palvex", line) {}

RuntimeError::RuntimeError(std::int32_t number, std::string description, std::string source,
                           Line line)
    : state_(std::make_shared<const State>(State{number, {}, {}, {}})), line_(line) {
  replaceState(std::move(source), std::move(description));
}

void RuntimeError::replaceState(std::string source, std::string description) {
  std::string text = "Error " + std::to_string(number()) + ": " + description + " [" + source + "]";
  state_ = std::make_shared<const State>(
      State{number(), std::move(source), std::move(description), std::move(text)});
}

void RuntimeError::leave(std::string_view routine, Line caller) {
  addLine(routine);
  leave(caller);
}

void RuntimeError::leave(Line caller) {
  line_ = caller;
  throw;
}

void RuntimeError::addLine(std::string_view routine) noexcept {
  try {
    std::string traced = source();
    traced.append("\r\nin palvex.").append(routine).append(" at line ");
    traced.append(std::to_string(line_.number));
    replaceState(std::move(traced), description());
  } catch (const std::bad_alloc&) {
    // The error itself matters more than one line of its trace.
  }
}

void RuntimeError::addToDescription(std::string_view text) noexcept {
  try {
    replaceState(source(), std::string(description()).append("\r\n").append(text));
  } catch (const std::bad_alloc&) {
    // The error itself matters more than a longer description.
  }
}

void raise(std::int32_t number, Line line) {
  throw RuntimeError(number, line);
}

}  // namespace palvex
