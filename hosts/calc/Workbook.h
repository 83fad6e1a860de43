#pragma once

#include <com/sun/star/document/XActionLockable.hpp>
#include <com/sun/star/sheet/XSpreadsheet.hpp>
#include <com/sun/star/table/XCell.hpp>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/calc/Document.h"
#include "simulation/Model.h"
#include "simulation/Sheet.h"
#include "simulation/Simulation.h"
#include "simulation/Workbook.h"

namespace css = com::sun::star;

namespace palvex::calc {

/// The sheet of a document that holds the table of a simulation, and the one that receives results.
inline constexpr const char* tableName = "palvex";
inline constexpr const char* resultsName = "palvex results";

/// The table of a document's simulation: the sheet "palvex".
///
/// A number that a formula works out is shown as a reference to its own cell ("=$D$4"), which is
/// live: the formula may depend on what a trial changes. A formula that is no more than a range
/// ("=Costs.A2:A200") stands for the range's cells.
class Table final : public simulation::Sheet {
 public:
  /// @throws Fault when the document has no such sheet
  explicit Table(const Document& document);

  [[nodiscard]] std::int32_t rows() const override { return rows_; }
  [[nodiscard]] std::int32_t columns() const override { return columns_; }
  [[nodiscard]] Variant at(std::int32_t row, std::int32_t column) const override;
  [[nodiscard]] Reference refer(std::string_view text) const override;

 private:
  Document document_;
  css::uno::Reference<css::sheet::XSpreadsheet> sheet_;
  std::int32_t rows_ = 0;
  std::int32_t columns_ = 0;
};

/// What the table's rows Trials, Seed and Sampling say, and the usual for what they do not.
/// @throws Fault for a value that a setting can not have
[[nodiscard]] simulation::Settings settingsOf(const simulation::Model& model, const Table& table);

/// The cells that a model's trials write and read, in a document without a window.
class Workbook final : public simulation::Workbook {
 public:
  /// @throws Fault for a cell that is not there, or that two inputs share
  Workbook(const Document& document, const simulation::Model& model);
  Workbook(const Workbook&) = delete;
  Workbook& operator=(const Workbook&) = delete;
  ~Workbook() override;

  void put(std::size_t row, double value) override;
  double read(std::size_t cell) override;
  double result(std::size_t row) override;

 private:
  using Cell = css::uno::Reference<css::table::XCell>;

  [[nodiscard]] static double number(const Cell& cell);
  void checkInputsDiffer() const;
  void calculate();

  const simulation::Model& model_;
  std::vector<Cell> rows_;        // of each row of the model: what it writes or reads
  std::vector<Cell> parameters_;  // of each of the model's cells
  std::vector<double> draws_;     // of each row that is an input
  css::uno::Reference<css::document::XActionLockable> changes_;
  bool open_ = false;  // changes are being collected
};

}  // namespace palvex::calc
