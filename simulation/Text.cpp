#include "simulation/Text.h"

#include <algorithm>
#include <vector>

namespace palvex::simulation {

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string folded(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

bool sameLetters(std::string_view a, std::string_view b) {
  return folded(a) == folded(b);
}

std::size_t lettersAway(std::string_view first, std::string_view second) {
  const std::string a = folded(first);
  const std::string b = folded(second);
  // Row i: the distances of the first i letters of `a` to the first 0, 1, ... letters of `b`.
  std::vector<std::size_t> beforeLast(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    beforeLast.swap(last);
    last.swap(row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
  }
  return row.back();
}

std::string_view nearest(std::string_view word, std::span<const std::string_view> names) {
  constexpr std::size_t longestWord = 40;  // anything longer is no slip of the hand
  if (word.size() > longestWord) return {};
  std::string_view best;
  std::size_t least = longestWord;
  for (const std::string_view name : names) {
    const bool begins = word.size() >= 3 && sameLetters(word, name.substr(0, word.size()));
    const std::size_t changes = begins ? 1 : lettersAway(word, name);
    if (changes < least && 3 * changes <= name.size()) {
      best = name;
      least = changes;
    }
  }
  return best;
}

std::string suggestion(std::string_view word, std::span<const std::string_view> names) {
  const std::string_view name = nearest(word, names);
  return name.empty() ? "." : "; did you mean " + std::string(name) + "?";
}

std::string cellText(const Variant& cell) {
  if (cell.isError()) return "an error value";
  return std::string(trimmed(cell.toText()));
}

}  // namespace palvex::simulation
