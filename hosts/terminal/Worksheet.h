#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/terminal/Reference.h"
#include "runtime/Variant.h"

namespace palvex::terminal {

/// What keeps a file from being a worksheet, in one line that names the file and the line in it.
struct SheetError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A rectangle of cells, each empty, a number, a text or a worksheet error value. Read from a file
/// of any size in one pass, it keeps the cells that it was asked for, eight bytes each.
class Worksheet {
 public:
  /// Reads character-separated values: commas, or semicolons or tabs where these part the first
  /// lines evenly. Fields may stand between double quotes (then with separators, line breaks and
  /// doubled quotes in them), lines end with LF, CRLF or CR, a UTF-8 byte-order mark is skipped. A
  /// field is a number when it reads as one, an error value when it is one of "#NULL!", "#DIV/0!",
  /// "#VALUE!", "#REF!", "#NAME?", "#NUM!" and "#N/A", empty when there is nothing in it, else a
  /// text.
  /// @param name    what messages call the text
  /// @param wanted  what to keep; all other cells are empty
  /// @throws SheetError also for a text without anything in it, and for a wanted number with a
  /// comma that could be a decimal comma
  static Worksheet fromCsv(std::string_view text, const std::string& name,
                           std::span<const Block> wanted = everything());
  /// @param path  "-" for standard input
  /// @throws SheetError also when the file can not be read
  static Worksheet fromFile(const std::string& path, std::span<const Block> wanted = everything());

  [[nodiscard]] std::int32_t rows() const { return rows_; }
  [[nodiscard]] std::int32_t columns() const { return columns_; }
  [[nodiscard]] bool contains(const Block& block) const;
  /// A block that reaches down to the end of the sheet, ending at its last row; any other as it is.
  [[nodiscard]] Block ended(Block block) const;
  /// The content of a cell; beyond the end of its row, empty.
  [[nodiscard]] Variant at(const Place& place) const;

  /// A block of all cells.
  static std::span<const Block> everything();

 private:
  friend class CsvReader;

  /// The wanted cells of one column from its first wanted row on. A cell is the bits of its number,
  /// which is finite, or those of a NaN that tells what else it is (see Worksheet.cpp).
  struct Column {
    std::int32_t first;
    std::int32_t last;  // none is wanted where this is below `first`
    std::vector<std::uint64_t> cells;
  };

  explicit Worksheet(std::span<const Block> wanted) : wanted_(wanted.begin(), wanted.end()) {}
  [[nodiscard]] bool wants(const Place& place);
  void keep(const Place& place, std::uint64_t cell);

  std::vector<Block> wanted_;
  std::vector<Column> kept_;
  std::vector<std::string> texts_;
  std::int32_t rows_ = 0;
  std::int32_t columns_ = 0;
};

}  // namespace palvex::terminal
