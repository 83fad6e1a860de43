#include "hosts/terminal/Reference.h"

#include <fmt/core.h>

#include <algorithm>

namespace palvex::terminal {

namespace {

constexpr std::size_t mostLetters = 5;  // both bounds keep rows and columns within 32 bits
constexpr std::size_t mostDigits = 9;

void skipDollar(std::string_view& text) {
  if (text.starts_with('$')) text.remove_prefix(1);
}

/// Takes up to `most` leading characters of `text` that `digitOf` knows (it answers -1 for the
/// others) and gives the number that they spell in `base`, or 0 for none or too many.
template <class DigitOf>
std::int32_t takeNumber(std::string_view& text, std::size_t most, std::int32_t base,
                        DigitOf digitOf) {
  std::int32_t number = 0;
  std::size_t taken = 0;
  for (; taken < text.size() && digitOf(text[taken]) >= 0; ++taken) {
    if (taken == most) return 0;
    number = number * base + digitOf(text[taken]);
  }
  text.remove_prefix(taken);
  return number;
}

int letterValue(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A' + 1;
  if (c >= 'a' && c <= 'z') return c - 'a' + 1;
  return -1;
}

int digitValue(char c) {
  return c >= '0' && c <= '9' ? c - '0' : -1;
}

/// "B3", or a column alone with `rowOfColumn` as its row.
std::optional<Place> takePlace(std::string_view& text, std::int32_t rowOfColumn) {
  skipDollar(text);
  const std::int32_t column = takeNumber(text, mostLetters, 26, letterValue);
  if (column == 0) return {};
  if (text.empty() || text.starts_with(':')) return Place{rowOfColumn, column};
  skipDollar(text);
  const std::int32_t row = takeNumber(text, mostDigits, 10, digitValue);
  if (row == 0) return {};
  return Place{row, column};
}

std::string absoluteAddress(const Place& place) {
  return fmt::format("${}${}", columnName(place.column), place.row);
}

}  // namespace

std::optional<Block> parseReference(std::string_view text) {
  const auto first = takePlace(text, text.find(':') == std::string_view::npos ? 0 : 1);
  auto last = first;
  if (text.starts_with(':')) {
    text.remove_prefix(1);
    last = takePlace(text, Block::endOfSheet);
  }
  if (!first || first->row == 0 || !last || !text.empty()) return {};
  return Block{{std::min(first->row, last->row), std::min(first->column, last->column)},
               {std::max(first->row, last->row), std::max(first->column, last->column)}};
}

std::string columnName(std::int32_t column) {
  std::string name;
  for (; column > 0; column = (column - 1) / 26) {
    name.insert(name.begin(), static_cast<char>('A' + (column - 1) % 26));
  }
  return name;
}

std::string absoluteAddress(const Block& block) {
  const auto& [first, last] = block;
  std::string address = absoluteAddress(first);
  if (first.row != last.row || first.column != last.column) address += ':' + absoluteAddress(last);
  return address;
}

}  // namespace palvex::terminal
