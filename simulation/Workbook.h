#pragma once

#include <cstdint>

namespace palvex::simulation {

/// A spreadsheet that works out trials: it receives draws and gives back what its formulas make of
/// them. Each thread that simulates has one of its own. What it throws fails the trial.
class Workbook {
 public:
  Workbook() = default;
  Workbook(const Workbook&) = delete;
  Workbook& operator=(const Workbook&) = delete;
  virtual ~Workbook() = default;

  /// Takes the draw of an input; may put off writing it into its cell until a cell is read.
  /// @param row  the input's place in Model::rows
  virtual void put(std::size_t row, double value) = 0;
  /// The value of a cell that a live operand refers to.
  /// @param cell  its place in Model::cells
  virtual double read(std::size_t cell) = 0;
  /// The value of a result's cell.
  /// @param row  the result's place in Model::rows
  virtual double result(std::size_t row) = 0;
};

}  // namespace palvex::simulation
