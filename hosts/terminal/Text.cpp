#include "hosts/terminal/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

namespace palvex::terminal {

namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

/// The length of the UTF-8 character that `text` begins with; 0 where it begins with none: a stray
/// byte, a longer form than needed, a surrogate, a number beyond Unicode.
std::size_t characterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byte(0);
  const std::size_t length = first < 0x80   ? 1
                             : first < 0xC2 ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
  if (length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  const bool wrong =
      length > 2 && ((first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) >= 0xA0) ||
                     (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) >= 0x90));
  return wrong ? 0 : length;
}

bool isControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return first < 0x20 || first == 0x7F;
  // U+0080 to U+009F
  return first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string safe;
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
    if (character == "\n") {
      safe += "\\n";
    } else if (character == "\t") {
      safe += "\\t";
    } else if (length == 0 || isControl(character)) {
      for (const char c : character)
        safe += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
    } else {
      safe += character;
    }
    text.remove_prefix(character.size());
  }
  return safe;
}

std::string markup(std::string_view text) {
  std::string safe;
  for (const char c : escaped(text)) {
    switch (c) {
      case '&':
        safe += "&amp;";
        break;
      case '<':
        safe += "&lt;";
        break;
      case '>':
        safe += "&gt;";
        break;
      case '"':
        safe += "&quot;";
        break;
      default:
        safe += c;
    }
  }
  return safe;
}

bool commasMarkThousands(std::string_view number) {
  const std::size_t first = number.find(',');
  if (first == std::string_view::npos) return true;
  std::size_t start = first;
  while (start > 0 && isDigit(number[start - 1])) --start;
  if (start == first || first - start > 3 || number[start] == '0') return false;
  for (std::size_t at = first; at < number.size() && number[at] == ','; at += 4) {
    if (number.size() < at + 4) return false;
    if (!std::all_of(number.begin() + static_cast<std::ptrdiff_t>(at) + 1,
                     number.begin() + static_cast<std::ptrdiff_t>(at) + 4, isDigit))
      return false;
    if (number.size() > at + 4 && isDigit(number[at + 4])) return false;
  }
  return true;
}

}  // namespace palvex::terminal
