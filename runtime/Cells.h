#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "runtime/Object.h"

namespace palvex {

/// A block of cells that a program owns: a ready-made range for the parameters and limits of a
/// distribution, so that a program need not write a range class of its own.
///
///     const auto data = std::make_shared<Cells>(measurements);      // a column of numbers
///     distribution.param1 = data;                                   // a histogram's data range
///     const auto likely = std::make_shared<Cells>(1, 1);
///     likely->at(1) = 10;                                           // a cell to change later
///
/// The engine reads the members "Application", "Address", "Value", "Count" and "Cells" each time
/// anew, and so sees the contents as they are then. Not to be changed while another thread reads
/// it.
class Cells : public Object {
 public:
  /// Empty cells.
  /// @param rows, columns  at least 1; error 9 for fewer
  Cells(std::int32_t rows, std::int32_t columns);
  /// Numbers row by row, `columns` in each; error 9 unless there is at least one row and every row
  /// is full.
  explicit Cells(std::span<const double> values, std::int32_t columns = 1);

  /// How many rows there are.
  [[nodiscard]] std::int32_t rows() const { return rows_; }
  /// How many columns there are.
  [[nodiscard]] std::int32_t columns() const { return columns_; }

  /// The content of a cell, to be read or changed; indices from 1, error 9 outside.
  [[nodiscard]] Variant& at(std::int32_t row, std::int32_t column = 1);

 protected:
  Variant doGet(std::string_view member, const std::vector<Variant>& arguments) override;

 private:
  [[nodiscard]] Variant value() const;
  [[nodiscard]] Variant cell(const std::vector<Variant>& indices) const;

  std::int32_t rows_;
  std::int32_t columns_;
  std::vector<Variant> contents_;  // row by row
};

}  // namespace palvex
