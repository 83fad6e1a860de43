#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

namespace palvex {

/// The source line of a statement. A traced routine takes the line of the statement that calls it
/// as its last, defaulted argument (`Line caller = Line::here()`), so that a failure can name it.
struct Line {
  std::uint_least32_t number;  ///< from 1; 0 for no line

  /// Explicit, so that a `{}` among a routine's arguments never means a line.
  explicit constexpr Line(std::uint_least32_t lineNumber) noexcept : number(lineNumber) {}

  /// The line on which the call (or the defaulted argument's call) is written.
  static constexpr Line here(std::uint_least32_t number = __builtin_LINE()) noexcept {
    return Line{number};
  }
};

/// The error numbers that the run-time raises.
namespace fault {
inline constexpr std::int32_t invalidCall = 5;  ///< an argument for which a function is not defined
inline constexpr std::int32_t overflow = 6;     ///< a result beyond the range of doubles, or NaN
inline constexpr std::int32_t outOfMemory = 7;  ///< an allocation failed
inline constexpr std::int32_t subscript = 9;    ///< an index outside of an array
inline constexpr std::int32_t divisionByZero = 11;  ///< a number other than 0 divided by 0
inline constexpr std::int32_t typeMismatch = 13;    ///< content that does not convert
inline constexpr std::int32_t unknownMember = 438;  ///< an object has no member of that name
}  // namespace fault

/// The description that belongs to one of the numbers of `fault`; of another number, a general one.
std::string_view faultDescription(std::int32_t number) noexcept;

/// A failure at run time: a number, a description for people, and a source that grows by one line
/// for every routine that the failure passes on its way out, the innermost first.
class RuntimeError : public std::exception {
 public:
  /// @param number  one of `fault`, which also gives the description
  explicit RuntimeError(std::int32_t number, Line line = Line::here());

  /// @param description  kept as given, also when empty
  /// @param source       where it comes from; a host's own error brings its own
  RuntimeError(std::int32_t number, std::string description, std::string source = "palvex",
               Line line = Line::here());

  /// What failed: one of `fault`, or a host's own number.
  [[nodiscard]] std::int32_t number() const noexcept { return state_->number; }
  /// Where it failed: the first source, then a line for each routine, innermost first.
  [[nodiscard]] const std::string& source() const noexcept { return state_->source; }
  /// What failed, for people.
  [[nodiscard]] const std::string& description() const noexcept { return state_->description; }

  /// Number, description and source in one text.
  [[nodiscard]] const char* what() const noexcept override { return state_->text.c_str(); }

  /// Ends the handler of a routine ("module.routine") that caught the error: adds the routine's
  /// trace line at its failing statement and raises the error anew. From then on the failing
  /// statement is the caller's. When memory is short the line is left out.
  [[noreturn]] void leave(std::string_view routine, Line caller = Line{0});

  /// Ends the handler of a routine that has no line of its own in a trace.
  [[noreturn]] void leave(Line caller);

  /// Adds a new line with `text` to the description. When memory is short it is left out.
  void addToDescription(std::string_view text) noexcept;

 private:
  struct State {
    std::int32_t number;
    std::string source;
    std::string description;
    std::string text;
  };
  void addLine(std::string_view routine) noexcept;
  void replaceState(std::string source, std::string description);

  std::shared_ptr<const State> state_;  // shared, so that copying an error never throws
  Line line_;
};

/// Raises error `number` as the failure of the statement at `line`.
[[noreturn]] void raise(std::int32_t number, Line line = Line::here());

}  // namespace palvex
