#include "hosts/calc/ResultsSheet.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <com/sun/star/awt/FontWeight.hpp>
#include <com/sun/star/awt/Rectangle.hpp>
#include <com/sun/star/beans/XPropertySet.hpp>
#include <com/sun/star/chart/ChartAxisLabelPosition.hpp>
#include <com/sun/star/chart/ChartLegendPosition.hpp>
#include <com/sun/star/chart/X3DDisplay.hpp>
#include <com/sun/star/chart/XAxisXSupplier.hpp>
#include <com/sun/star/chart/XAxisYSupplier.hpp>
#include <com/sun/star/chart/XChartDocument.hpp>
#include <com/sun/star/container/XNamed.hpp>
#include <com/sun/star/document/XEmbeddedObjectSupplier.hpp>
#include <com/sun/star/document/XUndoManagerSupplier.hpp>
#include <com/sun/star/drawing/FillStyle.hpp>
#include <com/sun/star/lang/XMultiServiceFactory.hpp>
#include <com/sun/star/sheet/CellFlags.hpp>
#include <com/sun/star/sheet/XCellRangeAddressable.hpp>
#include <com/sun/star/sheet/XCellRangeData.hpp>
#include <com/sun/star/sheet/XSheetOperation.hpp>
#include <com/sun/star/table/XColumnRowRange.hpp>
#include <com/sun/star/table/XTableChartsSupplier.hpp>
#include <com/sun/star/util/XNumberFormatsSupplier.hpp>
#include <cstdio>

#include "hosts/calc/Office.h"
#include "hosts/calc/Text.h"
#include "hosts/calc/Uno.h"
#include "simulation/Fault.h"

namespace palvex::calc {

namespace {

using css::beans::XPropertySet;
using css::chart::XChartDocument;
using css::sheet::XSpreadsheet;
using simulation::Fault;
using simulation::ResultStatistics;

constexpr std::array listedPercents{5.0, 10.0, 50.0, 80.0, 90.0, 95.0};
constexpr std::size_t mostBars = 12;     // of a tornado
constexpr sal_Int32 dataColumn = 14;     // where the figures behind the charts begin
constexpr sal_Int32 dataWidth = 6;       // columns of them for each result
constexpr sal_Int32 chartWidth = 13000;  // in hundredths of a millimetre
constexpr sal_Int32 chartHeight = 8500;
constexpr sal_Int32 chartGap = 500;
constexpr sal_Int32 blue = 0x2A6FBB;
constexpr sal_Int32 orange = 0xE08E2B;

void set(const Reference<XInterface>& object, const char* property, const Any& value) {
  Reference<XPropertySet>(object, UNO_QUERY_THROW)
      ->setPropertyValue(rtl::OUString::createFromAscii(property), value);
}

Any cell(const std::string& text) {
  return Any(wide(text));
}

/// A number; an empty cell for NaN, which stands for what is undefined.
Any cell(double number) {
  return std::isnan(number) ? cell("") : Any(number);
}

/// Rows of cells that grow one by one.
class Block {
 public:
  explicit Block(sal_Int32 width) : width_(width) {}

  void add(std::vector<Any> row) {
    row.resize(static_cast<std::size_t>(width_), cell(""));
    rows_.emplace_back(row.data(), width_);
  }
  [[nodiscard]] sal_Int32 height() const { return static_cast<sal_Int32>(rows_.size()); }

  /// Writes the block and returns its cells.
  Reference<css::table::XCellRange> write(const Reference<XSpreadsheet>& sheet, sal_Int32 column,
                                          sal_Int32 row) const {
    auto cells =
        sheet->getCellRangeByPosition(column, row, column + width_ - 1, row + height() - 1);
    Reference<css::sheet::XCellRangeData>(cells, UNO_QUERY_THROW)
        ->setDataArray(Sequence<Sequence<Any>>(rows_.data(), height()));
    return cells;
  }

 private:
  sal_Int32 width_;
  std::vector<Sequence<Any>> rows_;
};

void embolden(const Reference<css::table::XCellRange>& cells) {
  set(cells, "CharWeight", Any(css::awt::FontWeight::BOLD));
}

// ---- charts ----

struct Place {
  sal_Int32 x;
  sal_Int32 y;
};

/// A new chart over cells whose first row and column name what they show.
Reference<XChartDocument> addChart(const Reference<XSpreadsheet>& sheet, const std::string& title,
                                   const Place& place,
                                   const Reference<css::table::XCellRange>& data,
                                   const char* diagram, bool rowNames) {
  const auto charts =
      Reference<css::table::XTableChartsSupplier>(sheet, UNO_QUERY_THROW)->getCharts();
  const auto address =
      Reference<css::sheet::XCellRangeAddressable>(data, UNO_QUERY_THROW)->getRangeAddress();
  // Not named by its title: a chart whose name holds a colon, as a title may, is not found again.
  const rtl::OUString name =
      "palvex " + rtl::OUString::number(charts->getElementNames().getLength() + 1);
  charts->addNewByName(name, {place.x, place.y, chartWidth, chartHeight}, only(address), true,
                       rowNames);
  const Reference<css::document::XEmbeddedObjectSupplier> chart(charts->getByName(name),
                                                                UNO_QUERY_THROW);
  const Reference<XChartDocument> document(chart->getEmbeddedObject(), UNO_QUERY_THROW);
  const Reference<css::lang::XMultiServiceFactory> factory(document, UNO_QUERY_THROW);
  document->setDiagram(Reference<css::chart::XDiagram>(
      factory->createInstance(rtl::OUString::createFromAscii(diagram)), UNO_QUERY_THROW));
  set(document, "HasMainTitle", Any(true));
  set(document->getTitle(), "String", cell(title));
  if (const Reference<css::chart::X3DDisplay> walls(document->getDiagram(), UNO_QUERY); walls.is())
    set(walls->getWall(), "FillStyle", Any(css::drawing::FillStyle_NONE));
  return document;
}

void titleAxes(const Reference<css::chart::XDiagram>& diagram, const std::string& x,
               const std::string& y) {
  set(diagram, "HasXAxisTitle", Any(!x.empty()));
  set(diagram, "HasYAxisTitle", Any(!y.empty()));
  if (!x.empty())
    set(Reference<css::chart::XAxisXSupplier>(diagram, UNO_QUERY_THROW)->getXAxisTitle(), "String",
        cell(x));
  if (!y.empty())
    set(Reference<css::chart::XAxisYSupplier>(diagram, UNO_QUERY_THROW)->getYAxisTitle(), "String",
        cell(y));
}

std::string withUnit(const ResultStatistics& result) {
  return result.unit.empty() ? result.name : result.name + " (" + result.unit + ")";
}

void addCurve(const Reference<XSpreadsheet>& sheet, const Place& place,
              const ResultStatistics& result, sal_Int32 column, sal_Int32 row) {
  Block data(2);
  data.add({cell(withUnit(result)), cell("Probability of at most this")});
  for (const simulation::Percentile& point : result.percentiles)
    data.add({cell(point.value), cell(point.percent / 100)});
  const auto cells = data.write(sheet, column, row);
  const auto chart = addChart(sheet, "S-curve: " + result.name, place, cells,
                              "com.sun.star.chart.XYDiagram", false);
  const auto diagram = chart->getDiagram();
  set(chart, "HasLegend", Any(false));
  set(diagram, "SymbolType", Any(sal_Int32{-3}));  // none
  set(diagram, "Lines", Any(true));
  set(diagram->getDataRowProperties(0), "LineColor", Any(blue));
  titleAxes(diagram, withUnit(result), "Probability of at most this");
  const auto y = Reference<css::chart::XAxisYSupplier>(diagram, UNO_QUERY_THROW)->getYAxis();
  const auto formats =
      Reference<css::util::XNumberFormatsSupplier>(chart, UNO_QUERY_THROW)->getNumberFormats();
  sal_Int32 percent = formats->queryKey("0%", {}, false);
  if (percent == -1) percent = formats->addNew("0%", {});
  set(y, "LinkNumberFormatToSource", Any(false));
  set(y, "NumberFormat", Any(percent));
  set(y, "Min", Any(0.0));
  set(y, "Max", Any(1.0));
}

void addTornado(const Reference<XSpreadsheet>& sheet, const Place& place,
                const simulation::Results& all, const ResultStatistics& result, sal_Int32 column,
                sal_Int32 row) {
  std::vector<std::size_t> widest(result.sensitivities.size());
  for (std::size_t i = 0; i < widest.size(); ++i) widest[i] = i;
  const auto width = [&](std::size_t i) {
    const double difference = result.sensitivities[i].meanHigh - result.sensitivities[i].meanLow;
    return std::isnan(difference) ? 0 : std::abs(difference);
  };
  std::stable_sort(widest.begin(), widest.end(),
                   [&](std::size_t a, std::size_t b) { return width(a) > width(b); });
  if (widest.size() > mostBars) widest.resize(mostBars);

  Block data(3);
  data.add({cell("Input"), cell("in its lowest tenth"), cell("in its highest tenth")});
  for (const std::size_t i : widest) {
    const simulation::Sensitivity& input = result.sensitivities[i];
    data.add({cell(all.inputs[i].name), cell(input.meanLow - result.moments.mean),
              cell(input.meanHigh - result.moments.mean)});
  }
  const auto cells = data.write(sheet, column, row);
  const auto chart = addChart(sheet, "Tornado: " + result.name, place, cells,
                              "com.sun.star.chart.BarDiagram", true);
  const auto diagram = chart->getDiagram();
  set(chart, "HasLegend", Any(true));
  set(chart->getLegend(), "Alignment", Any(css::chart::ChartLegendPosition_BOTTOM));
  set(diagram, "Vertical", Any(true));
  set(diagram->getDataRowProperties(0), "FillColor", Any(blue));
  set(diagram->getDataRowProperties(1), "FillColor", Any(orange));
  std::array<char, 32> mean{};
  std::snprintf(mean.data(), mean.size(), "%.6g", result.moments.mean);
  titleAxes(diagram, "", "Mean of " + withUnit(result) + ", difference from " + mean.data());
  const auto x = Reference<css::chart::XAxisXSupplier>(diagram, UNO_QUERY_THROW)->getXAxis();
  const auto y = Reference<css::chart::XAxisYSupplier>(diagram, UNO_QUERY_THROW)->getYAxis();
  set(x, "ReverseDirection", Any(true));  // the widest on top
  set(x, "LabelPosition", Any(css::chart::ChartAxisLabelPosition_OUTSIDE_START));
  set(y, "Overlap", Any(sal_Int32{100}));
  set(y, "GapWidth", Any(sal_Int32{40}));
}

// ---- the sheet ----

Reference<XSpreadsheet> emptySheet(const Document& document) {
  const auto sheets = document->getSheets();
  const rtl::OUString name = rtl::OUString::createFromAscii(resultsName);
  if (!sheets->hasByName(name))
    sheets->insertNewByName(name, static_cast<sal_Int16>(sheets->getElementNames().getLength()));
  const Reference<XSpreadsheet> sheet(sheets->getByName(name), UNO_QUERY_THROW);
  using namespace css::sheet;
  Reference<XSheetOperation>(sheet, UNO_QUERY_THROW)
      ->clearContents(CellFlags::VALUE | CellFlags::DATETIME | CellFlags::STRING |
                      CellFlags::FORMULA | CellFlags::ANNOTATION | CellFlags::HARDATTR |
                      CellFlags::STYLES);
  const auto charts =
      Reference<css::table::XTableChartsSupplier>(sheet, UNO_QUERY_THROW)->getCharts();
  for (const rtl::OUString& chart : charts->getElementNames()) charts->removeByName(chart);
  return sheet;
}

Block table(const simulation::Results& all) {
  Block block(static_cast<sal_Int32>(all.results.size()) + 1);
  block.add({cell("Trials"), cell(static_cast<double>(all.trials))});
  block.add({cell("Seed"), cell(static_cast<double>(all.seed))});
  block.add({cell("Sampling"), cell(all.sampling == simulation::Sampling::lhs ? "lhs" : "random")});
  block.add({});
  const auto line = [&](const std::string& title, const auto& figure) {
    std::vector<Any> row{cell(title)};
    for (const ResultStatistics& result : all.results) row.push_back(cell(figure(result)));
    block.add(std::move(row));
  };
  line("Result", [](const auto& result) { return result.name; });
  line("Unit", [](const auto& result) { return result.unit; });
  line("Mean", [](const auto& result) { return result.moments.mean; });
  line("Standard error", [](const auto& result) { return result.moments.standardError(); });
  line("Standard deviation", [](const auto& result) { return result.moments.sd(); });
  line("Smallest", [](const auto& result) { return result.moments.smallest; });
  for (const double percent : listedPercents) {
    line(std::string("P").append(Variant(percent).toText()), [&](const auto& result) {
      const auto found = std::find_if(result.percentiles.begin(), result.percentiles.end(),
                                      [&](const auto& point) { return point.percent == percent; });
      return found->value;
    });
  }
  line("Greatest", [](const auto& result) { return result.moments.greatest; });
  return block;
}

void fill(const Reference<XSpreadsheet>& sheet, const simulation::Results& all) {
  const Block figures = table(all);
  const auto cells = figures.write(sheet, 0, 0);
  embolden(sheet->getCellRangeByPosition(0, 0, 0, figures.height() - 1));
  embolden(sheet->getCellRangeByPosition(0, 4, static_cast<sal_Int32>(all.results.size()), 4));
  set(Reference<css::table::XColumnRowRange>(cells, UNO_QUERY_THROW)->getColumns(), "OptimalWidth",
      Any(true));

  css::awt::Point below;
  Reference<XPropertySet>(sheet->getCellByPosition(0, figures.height() + 1), UNO_QUERY_THROW)
      ->getPropertyValue("Position") >>= below;
  Place place{chartGap, below.Y};
  sal_Int32 column = std::max(dataColumn, static_cast<sal_Int32>(all.results.size()) + 2);
  for (const ResultStatistics& result : all.results) {
    addCurve(sheet, place, result, column, 4);
    addTornado(sheet, {place.x + chartWidth + chartGap, place.y}, all, result, column + 2, 4);
    place.y += chartHeight + chartGap;
    column += dataWidth;
  }
}

}  // namespace

std::vector<double> curvePercents() {
  std::vector<double> percents;
  for (int percent = 0; percent <= 100; ++percent) percents.push_back(percent);
  return percents;
}

void checkTakesResults(const Document& document) {
  const rtl::OUString name = rtl::OUString::createFromAscii(resultsName);
  if (!document->getSheets()->hasByName(name)) {
    if (isProtected(document))
      throw Fault(
          "The document's structure is protected: it can not take the sheet 'palvex results'. "
          "Unprotect it with Tools > Protect Spreadsheet Structure.");
  } else if (isProtected(
                 Reference<XInterface>(document->getSheets()->getByName(name), UNO_QUERY))) {
    throw Fault(
        "The sheet 'palvex results' is protected. Unprotect it with Tools > Protect Sheet.");
  }
}

void writeResults(const Document& document, const simulation::Results& results) {
  const auto undo =
      Reference<css::document::XUndoManagerSupplier>(document, UNO_QUERY_THROW)->getUndoManager();
  undo->enterUndoContext("palvex: results");
  try {
    fill(emptySheet(document), results);
  } catch (...) {
    undo->leaveUndoContext();
    throw;
  }
  undo->leaveUndoContext();
}

}  // namespace palvex::calc
