#include "hosts/calc/Register.h"

#include <array>
#include <com/sun/star/awt/FontWeight.hpp>
#include <com/sun/star/beans/XPropertySet.hpp>
#include <com/sun/star/document/XUndoManagerSupplier.hpp>
#include <com/sun/star/frame/XModel.hpp>
#include <com/sun/star/sheet/XCellRangeFormula.hpp>
#include <com/sun/star/sheet/XSpreadsheetView.hpp>
#include <com/sun/star/table/XColumnRowRange.hpp>

#include "hosts/calc/Text.h"
#include "hosts/calc/Uno.h"
#include "hosts/calc/Workbook.h"
#include "simulation/Fault.h"

namespace palvex::calc {

namespace {

using simulation::Fault;

constexpr sal_Int32 columns = 12;
constexpr sal_Int32 titles = 6;  // the row that names the columns, from 0
using Line = std::array<const char*, columns>;

constexpr std::array<Line, 13> lines{{
    {"# The uncertain figures of this workbook. palvex > Simulate draws them and writes 'palvex "
     "results'."},
    {"# A row with a Type is an input: its Cell receives a draw in each trial. A row with a Cell "
     "alone is a result, read from it."},
    {"# Cells are written like Costs.B7; parameters are numbers or formulas. Chance is the "
     "probability that an input happens at all."},
    {"# Types: Normal, Uniform, Triangular, PERT, Lognormal, LognormalMean, Exponential, Weibull, "
     "Beta, Gamma, Johnson, Histogram."},
    {"# The column Value is this example's own: its workbook. Put your own rows in place of these, "
     "and delete it."},
    {},
    {"Name", "Type", "Param1", "Param2", "Param3", "LTL", "UTL", "Chance", "Cell", "Unit", "",
     "Value"},
    {"Trials", "", "10000"},
    {"Seed", "", "1"},
    {"Price", "Triangular", "8", "10", "15", "", "", "", "L10", "EUR", "", "10"},
    {"Volume", "Normal", "1000", "120", "", "0", "", "", "L11", "pieces", "", "1000"},
    {"Repair", "PERT", "500", "800", "2500", "", "", "40%", "L12", "EUR", "", "0"},
    {"Profit", "", "", "", "", "", "", "", "L13", "EUR", "", "=L10*L11-6500-L12"},
}};

void fill(const Reference<css::sheet::XSpreadsheet>& sheet) {
  Sequence<Sequence<OUString>> rows(static_cast<sal_Int32>(lines.size()));
  for (std::size_t i = 0; i < lines.size(); ++i) {
    Sequence<OUString> row(columns);
    for (std::size_t j = 0; j < lines[i].size(); ++j) {
      if (lines[i][j] != nullptr) row.getArray()[j] = OUString::createFromAscii(lines[i][j]);
    }
    rows.getArray()[i] = row;
  }
  const auto cells = sheet->getCellRangeByPosition(0, 0, columns - 1, rows.getLength() - 1);
  Reference<css::sheet::XCellRangeFormula>(cells, UNO_QUERY_THROW)->setFormulaArray(rows);
  const Reference<css::beans::XPropertySet> head(
      sheet->getCellRangeByPosition(0, titles, columns - 1, titles), UNO_QUERY_THROW);
  head->setPropertyValue("CharWeight", Any(css::awt::FontWeight::BOLD));
}

}  // namespace

void insertRegister(const Document& document) {
  const auto sheets = document->getSheets();
  const OUString name = wide(tableName);
  if (sheets->hasByName(name)) throw Fault("There is a sheet 'palvex' already.");
  if (isProtected(document)) {
    throw Fault(
        "The document's structure is protected: it can not take the sheet 'palvex'. "
        "Unprotect it with Tools > Protect Spreadsheet Structure.");
  }
  const auto undo =
      Reference<css::document::XUndoManagerSupplier>(document, UNO_QUERY_THROW)->getUndoManager();
  undo->enterUndoContext("palvex: new register");
  sheets->insertNewByName(name, static_cast<sal_Int16>(sheets->getElementNames().getLength()));
  const Reference<css::sheet::XSpreadsheet> sheet(sheets->getByName(name), UNO_QUERY_THROW);
  fill(sheet);
  undo->leaveUndoContext();
  const Reference<css::sheet::XSpreadsheetView> view(
      Reference<css::frame::XModel>(document, UNO_QUERY_THROW)->getCurrentController(), UNO_QUERY);
  if (view.is()) view->setActiveSheet(sheet);
}

}  // namespace palvex::calc
