#include "hosts/calc/Workbook.h"

#include <algorithm>
#include <cmath>
#include <com/sun/star/beans/XPropertySet.hpp>
#include <com/sun/star/container/NoSuchElementException.hpp>
#include <com/sun/star/sheet/FormulaResult.hpp>
#include <com/sun/star/sheet/XArrayFormulaRange.hpp>
#include <com/sun/star/sheet/XCalculatable.hpp>
#include <com/sun/star/sheet/XCellRangeAddressable.hpp>
#include <com/sun/star/sheet/XUsedAreaCursor.hpp>
#include <com/sun/star/text/XTextRange.hpp>
#include <map>
#include <utility>

#include "hosts/calc/Range.h"
#include "hosts/calc/Text.h"
#include "hosts/calc/Uno.h"
#include "simulation/Fault.h"

namespace palvex::calc {

namespace {

using css::sheet::XSpreadsheet;
using css::table::XCell;
using css::table::XCellRange;
using simulation::Fault;

/// A reference's sheet and the cells on it: "Costs.B7", "Costs!B7", "'My costs'.$B$7", "B7".
struct Address {
  std::string sheet;  // "" for none
  std::string cells;

  explicit Address(std::string_view text) {
    if (text.starts_with('$')) text.remove_prefix(1);
    if (text.starts_with('\'')) {
      std::size_t i = 1;
      for (; i < text.size(); ++i) {
        // A doubled quotation mark is one of the name's own.
        if (text[i] == '\'' && !text.substr(++i).starts_with('\'')) break;
        sheet += text[i];
      }
      if (i < text.size() && (text[i] == '.' || text[i] == '!')) cells = text.substr(i + 1);
      return;
    }
    const std::size_t end = text.find_last_of(".!");
    if (end != std::string_view::npos) sheet = text.substr(0, end);
    // Calc takes the first quotation mark of what is typed for the sign of a text. No name ends in
    // one.
    if (sheet.ends_with('\'')) sheet.pop_back();
    cells = text.substr(end + 1);
  }
};

Reference<XSpreadsheet> sheetNamed(const Document& document, const std::string& name) {
  try {
    return {document->getSheets()->getByName(wide(name)), UNO_QUERY_THROW};
  } catch (const css::container::NoSuchElementException&) {
    throw Fault("there is no sheet '" + name + "'.");
  }
}

/// What a reference stands for; one without a sheet's name means `home`.
Reference<XCellRange> cellsAt(const Document& document, const Reference<XSpreadsheet>& home,
                              std::string_view text) {
  const Address address(text);
  const auto sheet = address.sheet.empty() ? home : sheetNamed(document, address.sheet);
  try {
    return sheet->getCellRangeByName(wide(address.cells));
  } catch (const css::uno::RuntimeException&) {
    throw Fault("'" + std::string(text) + "' is no cell.");
  }
}

bool isOne(const Reference<XCellRange>& cells) {
  const auto place =
      Reference<css::sheet::XCellRangeAddressable>(cells, UNO_QUERY_THROW)->getRangeAddress();
  return place.StartRow == place.EndRow && place.StartColumn == place.EndColumn;
}

Reference<XCell> cellAt(const Document& document, const Reference<XSpreadsheet>& home,
                        std::string_view text) {
  const Reference<XCellRange> cells = cellsAt(document, home, text);
  if (!isOne(cells)) throw Fault("'" + std::string(text) + "' is more than one cell.");
  return cells->getCellByPosition(0, 0);
}

/// A cell that receives draws.
Reference<XCell> inputAt(const Document& document, const Reference<XSpreadsheet>& home,
                         const std::string& text) {
  const Reference<XCell> cell = cellAt(document, home, text);
  const Reference<css::sheet::XArrayFormulaRange> matrix(cell, UNO_QUERY);
  if (matrix.is() && !matrix->getArrayFormula().isEmpty())
    throw Fault("'" + text + "' is part of a matrix formula, which can not receive a draw.");
  return cell;
}

std::string textOf(const Reference<XCell>& cell) {
  return utf8(Reference<css::text::XTextRange>(cell, UNO_QUERY_THROW)->getString());
}

std::string absoluteName(const Reference<XCell>& cell) {
  const Reference<css::beans::XPropertySet> properties(cell, UNO_QUERY_THROW);
  return utf8(properties->getPropertyValue("AbsoluteName").get<rtl::OUString>());
}

/// A cell's name for people: 'My costs'.B7.
std::string shortName(const Reference<XCell>& cell) {
  std::string name = absoluteName(cell);
  const std::size_t address = name.rfind('.') + 1;
  name.erase(std::remove(name.begin() + static_cast<std::ptrdiff_t>(address), name.end(), '$'),
             name.end());
  return name.substr(name.starts_with('$') ? 1 : 0);
}

/// Runs work that calls the office, whose exceptions become Faults.
template <class Work>
auto asking(const Work& work) {
  try {
    return work();
  } catch (const css::uno::Exception& failure) {
    throw Fault("Calc: " + utf8(failure.Message));
  }
}

}  // namespace

// ---- the table ----

Table::Table(const Document& document) : document_(document) {
  asking([this] {
    if (!document_->getSheets()->hasByName(wide(tableName)))
      throw Fault(std::string("there is no sheet '") + tableName +
                  "' with the table of a simulation.");
    sheet_ = sheetNamed(document_, tableName);
    const css::uno::Reference<css::sheet::XUsedAreaCursor> cursor(sheet_->createCursor(),
                                                                  UNO_QUERY_THROW);
    cursor->gotoEndOfUsedArea(false);
    const auto end = css::uno::Reference<css::sheet::XCellRangeAddressable>(cursor, UNO_QUERY_THROW)
                         ->getRangeAddress();
    rows_ = end.EndRow + 1;
    columns_ = end.EndColumn + 1;
  });
}

Variant Table::at(std::int32_t row, std::int32_t column) const {
  return asking([&]() -> Variant {
    const css::uno::Reference<XCell> cell = sheet_->getCellByPosition(column - 1, row - 1);
    Variant content = contentOf(cell);
    if (cell->getType() != css::table::CellContentType_FORMULA || content.isText()) return content;
    const std::string formula = utf8(cell->getFormula());
    if (formula.starts_with("=[")) return formula;
    try {
      if (!isOne(cellsAt(document_, sheet_, std::string_view(formula).substr(1)))) return formula;
    } catch (const Fault&) {
      // A formula that is more than a reference.
    }
    return content.isError() ? content : Variant(std::string("=").append(absoluteName(cell)));
  });
}

simulation::Sheet::Reference Table::refer(std::string_view text) const {
  return asking([&]() -> simulation::Sheet::Reference {
    const auto cells = cellsAt(document_, sheet_, text.substr(1));
    return {std::make_shared<Range>(cells), isOne(cells)};
  });
}

// ---- the settings ----

namespace {

/// What the row of a setting says; empty without that row.
Variant setting(const simulation::Model& model, const Table& table, const std::string& name) {
  const auto found = model.settings().find(name);
  if (found == model.settings().end()) return {};
  const std::string text = found->second.isText() ? found->second.toText() : "";
  if (!text.starts_with('=')) return found->second;
  return table.refer(text).range.toObject()->get("Value");
}

void setWhole(std::uint64_t& to, const Variant& value, const std::string& row, double least) {
  if (value.isEmpty()) return;
  constexpr double most = 0x1p53;  // what a cell holds exactly
  const double number = value.isNumeric() ? value.toDouble() : std::nan("");
  if (!(number >= least && number <= most && number == std::floor(number))) {
    throw Fault("Row " + row + ": Param1 is to be a whole number from " + Variant(least).toText() +
                " on.");
  }
  to = static_cast<std::uint64_t>(number);
}

}  // namespace

simulation::Settings settingsOf(const simulation::Model& model, const Table& table) {
  simulation::Settings settings;
  setWhole(settings.trials, setting(model, table, "trials"), "Trials", 1);
  setWhole(settings.seed, setting(model, table, "seed"), "Seed", 0);
  const Variant sampling = setting(model, table, "sampling");
  if (sampling == Variant("lhs")) {
    settings.sampling = simulation::Sampling::lhs;
  } else if (!sampling.isEmpty() && !(sampling == Variant("random"))) {
    throw Fault("Row Sampling: Param1 is to be random or lhs.");
  }
  return settings;
}

// ---- the cells of a trial ----

Workbook::Workbook(const Document& document, const simulation::Model& model)
    : model_(model), draws_(model.rows().size()), changes_(document, UNO_QUERY) {
  asking([&] {
    const Reference<XSpreadsheet> home = sheetNamed(document, tableName);
    for (const simulation::Row& row : model.rows()) {
      Cell& cell = rows_.emplace_back();
      if (row.cell.empty()) continue;
      try {
        cell = row.isInput() ? inputAt(document, home, row.cell) : cellAt(document, home, row.cell);
      } catch (const Fault& fault) {
        throw Fault(row.place + ": Cell: " + fault.what());
      }
    }
    checkInputsDiffer();
    for (const std::string& written : model.cells())
      parameters_.push_back(cellAt(document, home, std::string_view(written).substr(1)));
    const Reference<css::sheet::XCalculatable> formulas(document, UNO_QUERY_THROW);
    formulas->enableAutomaticCalculation(true);
    formulas->calculateAll();
  });
}

void Workbook::checkInputsDiffer() const {
  std::map<std::string, std::string> taken;  // a cell's name, and the row that writes it
  for (const std::size_t input : model_.inputs()) {
    const simulation::Row& row = model_.rows()[input];
    const auto [other, isNew] = taken.emplace(absoluteName(rows_[input]), row.place);
    if (!isNew)
      throw Fault(row.place + ": Cell: " + shortName(rows_[input]) + " receives the draw of " +
                  other->second + ", too.");
  }
}

Workbook::~Workbook() {
  try {
    calculate();
  } catch (const css::uno::Exception&) {
    // The document is closed already.
  }
}

void Workbook::put(std::size_t row, double value) {
  asking([&] {
    if (!open_ && changes_.is()) changes_->addActionLock();
    open_ = true;
    rows_[row]->setValue(value);
    draws_[row] = value;
  });
}

double Workbook::read(std::size_t cell) {
  return asking([&] {
    calculate();
    return number(parameters_[cell]);
  });
}

double Workbook::result(std::size_t row) {
  return asking([&] {
    calculate();
    try {
      return number(rows_[row]);
    } catch (const Fault& fault) {
      std::string text = fault.what();
      for (const std::size_t input : model_.inputs()) {
        text += input == model_.inputs().front() ? " (" : ", ";
        text += model_.rows()[input].name + " = " + Variant(draws_[input]).toText();
      }
      throw Fault(text + ')');
    }
  });
}

/// Ends the collecting of changes, so that formulas are recalculated with the inputs' new values.
void Workbook::calculate() {
  if (open_ && changes_.is()) changes_->removeActionLock();
  open_ = false;
}

double Workbook::number(const Cell& cell) {
  if (cell->getError() != 0) throw Fault(shortName(cell) + " shows " + textOf(cell));
  const double value = cell->getValue();
  if (value != 0) return value;
  // A text's value is 0, too.
  const Variant content = contentOf(cell);
  if (content.isText()) throw Fault(shortName(cell) + " holds the text '" + content.toText() + "'");
  return value;
}

}  // namespace palvex::calc
