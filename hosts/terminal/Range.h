#pragma once

#include <memory>

#include "hosts/terminal/Worksheet.h"
#include "runtime/Object.h"

namespace palvex::terminal {

/// A rectangle of a worksheet's cells, with the members that the engine asks a range for:
/// "Application"; "Address", such as "$A$2:$A$200"; "Count"; "Value", the content of a single cell
/// or a two-dimensional array of the contents; "Cells", a single cell by its index, row by row, or
/// by its row and column within the range.
class Range : public Object {
 public:
  /// @param block  lies within the sheet
  Range(std::shared_ptr<const Worksheet> sheet, const Block& block)
      : sheet_(std::move(sheet)), block_(block) {}

 protected:
  Variant doGet(std::string_view member, const std::vector<Variant>& arguments) override;

 private:
  [[nodiscard]] std::int32_t rows() const { return block_.last.row - block_.first.row + 1; }
  [[nodiscard]] std::int32_t columns() const {
    return block_.last.column - block_.first.column + 1;
  }
  [[nodiscard]] std::int64_t count() const { return std::int64_t{rows()} * columns(); }
  [[nodiscard]] Variant value() const;
  [[nodiscard]] Variant cell(const std::vector<Variant>& indices) const;

  std::shared_ptr<const Worksheet> sheet_;
  Block block_;
};

}  // namespace palvex::terminal
