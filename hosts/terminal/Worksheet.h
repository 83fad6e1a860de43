#pragma once

#include <cstdint>
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

/// A rectangle of cells, each empty, a number, a text or a worksheet error value.
class Worksheet {
 public:
  using Row = std::vector<Variant>;

  explicit Worksheet(std::vector<Row> cells);

  /// Reads comma-separated values: fields may stand between double quotes (then with commas, line
  /// breaks and doubled quotes in them), lines end with LF, CRLF or CR, a UTF-8 byte-order mark is
  /// skipped. A field is a number when it reads as one, an error value when it is one of "#NULL!",
  /// "#DIV/0!", "#VALUE!", "#REF!", "#NAME?", "#NUM!" and "#N/A", empty when there is nothing in
  /// it, else a text.
  /// @param name  what messages call the text
  /// @throws SheetError
  static Worksheet fromCsv(std::string_view text, const std::string& name);
  /// @throws SheetError also when the file can not be read
  static Worksheet fromFile(const std::string& path);

  [[nodiscard]] std::int32_t rows() const { return static_cast<std::int32_t>(cells_.size()); }
  [[nodiscard]] std::int32_t columns() const { return columns_; }
  [[nodiscard]] bool contains(const Block& block) const;
  /// The content of a cell; beyond the end of its row, empty.
  [[nodiscard]] const Variant& at(const Place& place) const;

 private:
  std::vector<Row> cells_;
  std::int32_t columns_ = 0;
};

}  // namespace palvex::terminal
