#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace palvex::terminal {

/// A place on a worksheet; rows and columns count from 1.
struct Place {
  std::int32_t row;
  std::int32_t column;
};

/// A rectangle of cells: its upper left and its lower right one.
struct Block {
  Place first;
  Place last;

  /// The last row of a block that reaches down to the end of the sheet.
  static constexpr std::int32_t endOfSheet = std::numeric_limits<std::int32_t>::max();
};

/// Reads "B3", "$B$3" or "A2:A200" in either letter case, the corners in any order; also "A:A" for
/// a whole column and "A2:A" for one from a row on. Nothing for any other text and for a row or
/// column that no worksheet reaches.
[[nodiscard]] std::optional<Block> parseReference(std::string_view text);

/// "B" for 2, "AA" for 27.
[[nodiscard]] std::string columnName(std::int32_t column);

/// "$B$3", or "$A$2:$A$200" for more than one cell.
[[nodiscard]] std::string absoluteAddress(const Block& block);

}  // namespace palvex::terminal
