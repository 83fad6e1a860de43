// A model from a worksheet's table.

#include <algorithm>
#include <array>

#include "simulation/Model.h"
#include "simulation/Text.h"

namespace palvex::simulation {

namespace {

enum Column : std::size_t {
  name,
  type,
  param1,
  param2,
  param3,
  param4,
  ltl,
  utl,
  chance,
  formula,
  unit,
  cell,
  columnCount
};

const std::array<std::string, columnCount> columnNames{"Name",   "Type",    "Param1", "Param2",
                                                       "Param3", "Param4",  "LTL",    "UTL",
                                                       "Chance", "Formula", "Unit",   "Cell"};

bool isBlank(const Variant& cell) {
  return cell.isEmpty() || (cell.isText() && cellText(cell).empty());
}

}  // namespace

class TableReader {
 public:
  TableReader(const Sheet& sheet, bool workbook) : sheet_(sheet), workbook_(workbook) {}

  Model read() {
    std::int32_t row = 1;
    while (row <= sheet_.rows() && isSkipped(row)) ++row;
    if (row > sheet_.rows()) throw Fault("There is no table: no row that names columns.");
    readColumns(row);
    for (std::int32_t i = row + 1; i <= sheet_.rows(); ++i) {
      if (!isSkipped(i)) model_.names_.push_back(text(i, name));
    }
    for (std::int32_t i = row + 1; i <= sheet_.rows(); ++i) {
      if (!isSkipped(i)) readRow(i);
    }
    model_.names_.clear();
    model_.check();
    return std::move(model_);
  }

 private:
  [[nodiscard]] bool isSkipped(std::int32_t row) const {
    const Variant first = sheet_.at(row, 1);
    if (first.isError()) return true;  // "#N/A" begins with "#", too
    if (first.isText() && cellText(first).starts_with('#')) return true;
    for (std::int32_t column = 1; column <= sheet_.columns(); ++column) {
      if (!isBlank(sheet_.at(row, column))) return false;
    }
    return true;
  }

  void readColumns(std::int32_t row) {
    const std::string place = "Row " + std::to_string(row) + ": ";
    std::vector<std::string> others;
    for (std::int32_t column = 1; column <= sheet_.columns(); ++column) {
      const std::string title = cellText(sheet_.at(row, column));
      const auto* const known =
          std::find_if(columnNames.begin(), columnNames.end(),
                       [&](const auto& name) { return sameLetters(name, title); });
      if (known == columnNames.end()) {
        others.push_back(title);
        continue;
      }
      std::int32_t& position = columns_.at(static_cast<std::size_t>(known - columnNames.begin()));
      if (position != 0) throw Fault(place + "there are two columns " + *known + '.');
      position = column;
    }
    for (const std::string& other : others) checkOtherColumn(place, other);
    for (const Column needed : {name, type}) {
      if (columns_[needed] == 0) {
        throw Fault(place + "there is no column " + columnNames[needed] + '.');
      }
    }
  }

  /// A column that is not known is ignored, unless its title is a slip of a known one: a letter
  /// away, or two from one that the table does not have.
  void checkOtherColumn(const std::string& place, const std::string& title) const {
    for (std::size_t i = 0; i < columnCount; ++i) {
      const std::size_t most = columns_[i] == 0 ? 2 : 1;
      if (!title.empty() && lettersAway(title, columnNames[i]) <= most) {
        refuseColumn(place, title, columnNames[i]);
      }
    }
  }

  [[noreturn]] static void refuseColumn(const std::string& place, const std::string& title,
                                        const std::string& meant) {
    throw Fault(place + "there is no column '" + title + "'; did you mean " + meant + '?');
  }

  void readRow(std::int32_t row) {
    const std::string rowName = text(row, name);
    place_ = "Row " + std::to_string(row);
    if (!rowName.empty()) place_.append(", ").append(rowName);
    const bool hasType = !text(row, type).empty();
    const bool hasFormula = !text(row, formula).empty();
    if (hasType && hasFormula) fail("a row has a type or a formula, not both.");
    if (hasType) {
      model_.add(input(row), place_);
    } else if (hasFormula) {
      readFormula(row);
    } else if (workbook_ && !text(row, cell).empty()) {
      model_.addCell(rowName, text(row, cell), text(row, unit), place_);
    } else if (workbook_ && isSetting(rowName)) {
      model_.settings_[folded(rowName)] = at(row, param1);
    } else {
      fail("there is neither a type nor a formula.");
    }
  }

  static bool isSetting(const std::string& rowName) {
    const std::string setting = folded(rowName);
    return setting == "trials" || setting == "seed" || setting == "sampling";
  }

  void readFormula(std::int32_t row) {
    for (const Column column : {param1, param2, param3, param4, ltl, utl, chance}) {
      if (!isBlank(at(row, column))) {
        fail("a row with a formula has no " + columnNames[column] + '.');
      }
    }
    model_.addFormula(text(row, name), text(row, formula), text(row, unit), place_);
  }

  Input input(std::int32_t row) {
    Input input;
    input.name = text(row, name);
    input.type = text(row, type);
    input.unit = text(row, unit);
    input.cell = text(row, cell);
    if (workbook_ && input.cell.empty()) fail("the cell that receives the draw is missing.");
    // The data of a histogram are read once.
    const bool live = input.type != "Histogram";
    for (const Column column : {param1, param2, param3, param4}) {
      input.parameters.push_back(operand(row, column, live));
    }
    input.lower = operand(row, ltl, true);
    input.upper = operand(row, utl, true);
    input.chance = operand(row, chance, true);
    return input;
  }

  Operand operand(std::int32_t row, Column column, bool live) {
    const Variant given = at(row, column);
    if (isBlank(given)) return Variant();
    if (!given.isText()) return given;
    const std::string written = cellText(given);
    if (!written.starts_with('=')) return given;
    try {
      const std::string_view referred = trimmed(std::string_view(written).substr(1));
      if (referred.starts_with('[') && referred.ends_with(']')) {
        return model_.above(trimmed(referred.substr(1, referred.size() - 2)));
      }
      Sheet::Reference reference = sheet_.refer(written);
      if (!live || !reference.live) return std::move(reference.range);
      model_.cells_.push_back(written);
      return CellValue{model_.cells_.size() - 1};
    } catch (const Fault& fault) {
      fail(columnNames[column] + ": " + fault.what());
    }
  }

  [[nodiscard]] Variant at(std::int32_t row, Column column) const {
    return columns_[column] == 0 ? Variant() : sheet_.at(row, columns_[column]);
  }
  [[nodiscard]] std::string text(std::int32_t row, Column column) const {
    return cellText(at(row, column));
  }
  [[noreturn]] void fail(const std::string& why) const { throw Fault(place_ + ": " + why); }

  const Sheet& sheet_;
  bool workbook_;
  Model model_;
  std::array<std::int32_t, columnCount> columns_{};  // 0 for one that the table does not have
  std::string place_;
};

Model Model::fromSheet(const Sheet& sheet) {
  return TableReader(sheet, false).read();
}

Model Model::fromWorkbook(const Sheet& sheet) {
  return TableReader(sheet, true).read();
}

}  // namespace palvex::simulation
