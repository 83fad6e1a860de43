// Any text where a number, a reference or a name is read, or one is shown.

#include "hosts/terminal/Text.h"

#include <vector>

#include "Fuzz.h"
#include "hosts/terminal/Reference.h"
#include "runtime/NumericText.h"

namespace palvex::fuzz {
namespace {

void readNumber(const std::string& text) {
  const double value = numericText(text).value_or(nan);
  if (std::isinf(value)) fail("an infinite number: " + text);
  if (value != 0 && !same(numericText(numberText(value)).value_or(nan), value))
    fail("not read back: " + text);
  // What the C library reads too, it reads alike.
  char* end = nullptr;
  const double other = std::strtod(text.c_str(), &end);
  const bool plain = text.find_first_not_of("0123456789.eE+-") == std::string::npos;
  if (plain && end != text.c_str() && *end == 0 && std::isnormal(other) && value != other)
    fail("another number: " + text);
}

void readReference(const std::string& text) {
  const auto block = terminal::parseReference(text);
  if (!block || block->last.row == terminal::Block::endOfSheet) return;
  const std::string address = terminal::absoluteAddress(*block);
  const auto again = terminal::parseReference(address);
  if (!again || terminal::absoluteAddress(*again) != address) fail("another block: " + text);
}

void show(const std::string& text) {
  const std::string safe = terminal::escaped(text);
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
  if (terminal::escaped(safe) != safe || std::any_of(safe.begin(), safe.end(), isControl))
    fail("not safe: " + safe);
  if (terminal::markup(text).find_first_of("<>\"") != std::string::npos) fail("markup: " + safe);
}

}  // namespace

void run(FuzzedDataProvider& data) {
  // Of any bytes, or of those that numbers and references are made of.
  const bool plain = data.ConsumeBool();
  std::string text = data.ConsumeRandomLengthString(100);
  constexpr std::string_view letters = "0123456789.,eEdD+-$()& HhOoAFf:B";
  for (char& c : text) {
    if (plain) c = letters[static_cast<unsigned char>(c) % letters.size()];
  }
  readNumber(text);
  readReference(text);
  show(text);
  static_cast<void>(terminal::commasMarkThousands(text));
  readNumber(numberText(number(data)));
}

}  // namespace palvex::fuzz
