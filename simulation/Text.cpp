#include "simulation/Text.h"

#include <algorithm>
#include <limits>

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

std::optional<std::string> nearest(std::string_view text, std::span<const std::string> names) {
  std::optional<std::string> best;
  std::size_t least = std::max<std::size_t>(2, text.size() / 3) + 1;
  for (const std::string& name : names) {
    const std::size_t distance = lettersAway(text, name);
    if (distance < least && distance < name.size()) {
      least = distance;
      best = name;
    }
  }
  return best;
}

std::string suggestion(std::string_view text, std::span<const std::string> names) {
  const auto name = nearest(text, names);
  return name ? "; did you mean " + *name + "?" : "";
}

std::string cellText(const Variant& cell) {
  if (cell.isError()) return "an error value";
  return std::string(trimmed(cell.toText()));
}

}  // namespace palvex::simulation
