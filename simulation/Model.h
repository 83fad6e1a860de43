#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "engine/LawTypes.h"
#include "runtime/Variant.h"
#include "simulation/Fault.h"
#include "simulation/Formula.h"
#include "simulation/Sheet.h"

namespace palvex::simulation {

/// The value of a row above, in the same trial.
struct RowValue {
  std::size_t row;  ///< its place in Model::rows
};

/// The value of a workbook's cell, in the same trial.
struct CellValue {
  std::size_t cell;  ///< its place in Model::cells
};

/// A parameter, limit or chance as it is given: fixed (a number, a text that the engine knows, a
/// range object), or read in each trial.
using Operand = std::variant<Variant, RowValue, CellValue>;

/// A number that is known, or read in each trial.
using Number = std::variant<double, RowValue, CellValue>;

/// What an input of a model is made from.
struct Input {
  std::string name;                 ///< what formulas call it
  std::string type;                 ///< one of lawTypes
  std::vector<Operand> parameters;  ///< in the order of the type; a minimum left out is 0
  Operand lower;                    ///< lower limit; empty for none
  Operand upper;                    ///< upper limit; empty for none
  Operand chance = Variant(1.0);    ///< of happening, from 0 to 1; its value is 0 otherwise
  std::string unit;                 ///< for people: "days"
  std::string cell;                 ///< of a workbook, to receive the draw; "" for none
};

/// One row of a model: an input, or a result.
struct Row {
  /// What a row is.
  enum class Kind {
    input,    // a draw
    formula,  // an expression of rows above
    cell,     // read from a workbook's cell
    total     // the sum of all inputs
  };

  Kind kind = Kind::input;  ///< an input, or what kind of result
  std::string name;         ///< what formulas call it
  std::string place;        ///< for messages: "Row 7, Rework"
  std::string type;         ///< of an input, one of lawTypes; else ""
  std::string unit;         ///< for people: "days"
  std::string cell;         ///< of a workbook: receives the draw, or holds the result

  // Of an input. Whatever of its law is fixed is in `law`; what is live, because it refers to a row
  // above or a cell, is set up anew in each trial.
  std::optional<Law> law;          ///< none where a parameter is live
  std::vector<Number> parameters;  ///< all of them when one is live, otherwise none
  /// @{
  /// The limits, when one of them or a parameter is live; otherwise none: they are in `law`.
  std::optional<Number> lower;
  std::optional<Number> upper;
  /// @}
  Number chance = 1.0;  ///< that it happens at all, from 0 to 1

  Formula formula;  ///< of a result that has one

  /// Whether it is a draw.
  [[nodiscard]] bool isInput() const { return kind == Kind::input; }
  /// Whether its law depends on other rows or cells, and is set up anew in each trial.
  [[nodiscard]] bool isLive() const { return !parameters.empty() || lower || upper; }
};

/// What a parameter of a type stands for when it is left out: nothing for one that is needed.
/// @param index  from 0
[[nodiscard]] std::optional<double> usualParameter(const LawType& type, std::size_t index);

/// The sentence about a chance outside of 0 to 1.
[[nodiscard]] std::string chanceFault(double chance);

/// What is simulated: inputs, and results that follow from them, worked out from top to bottom.
/// Whatever is wrong with a row is a Fault that names it.
class Model {
 public:
  /// Of a worksheet's table. The first row that is neither blank nor a comment ("#" first) names
  /// the columns: Name, Type, Param1 ... Param4, LTL, UTL, Chance, Formula, Unit, Cell.
  /// @throws Fault  the first in the table
  static Model fromSheet(const Sheet& sheet);

  /// Of a workbook's table: a row with a Cell and neither Type nor Formula is a result that is read
  /// from that cell; rows without a type that are called Trials, Seed or Sampling are settings.
  static Model fromWorkbook(const Sheet& sheet);

  /// Adds an input. @throws Fault
  /// @param place  where it stands, for messages; "" for its number and name
  void add(Input input, std::string place = "");
  /// @param chance  that it happens at all, from 0 to 1
  void add(std::string name, Law law, double chance = 1, std::string unit = "");
  /// Adds a result.
  /// @param formula  an expression of rows above, whose names stand in brackets: "[Price] * 2"
  void addFormula(std::string name, const std::string& formula, std::string unit = "",
                  std::string place = "");
  /// Adds a result that is read from a workbook's cell.
  void addCell(std::string name, std::string cell, std::string unit = "", std::string place = "");
  /// A row above by its name, for an operand. @throws Fault when there is none
  [[nodiscard]] RowValue above(std::string_view name) const;
  /// @throws Fault for a model that can not be simulated: without inputs, or with one called Total
  /// and no result
  void check() const;

  /// All rows from top to bottom. Without any result of its own a model has one more, the sum of
  /// all inputs with the name "Total".
  [[nodiscard]] std::span<const Row> rows() const { return rows_; }
  /// Places of the inputs and of the results in rows().
  [[nodiscard]] std::span<const std::size_t> inputs() const { return inputs_; }
  /// Places of the results in rows(): never empty.
  [[nodiscard]] std::span<const std::size_t> results() const { return results_; }
  /// The names of all inputs.
  [[nodiscard]] std::vector<std::string> inputNames() const;
  /// References to a workbook's cells that are read in each trial, as they were written.
  [[nodiscard]] std::span<const std::string> cells() const { return cells_; }
  /// The settings in a workbook's table: of the names "trials", "seed" and "sampling" those that it
  /// has.
  [[nodiscard]] const std::map<std::string, Variant>& settings() const { return settings_; }

 private:
  friend class TableReader;

  /// Adds a row when complete(row) has filled in the rest of it. What that throws becomes a Fault
  /// with the row's place.
  template <class Complete>
  void add(Row row, Complete complete);
  void completeInput(Row& row, Input& input) const;
  [[nodiscard]] const Row* find(std::string_view name) const;

  std::vector<Row> rows_;
  std::vector<std::size_t> inputs_;
  std::vector<std::size_t> results_;
  std::vector<std::string> cells_;
  std::vector<std::string> names_;  // of all rows of the table that is being read
  std::map<std::string, Variant> settings_;
};

}  // namespace palvex::simulation
