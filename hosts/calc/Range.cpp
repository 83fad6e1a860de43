#include "hosts/calc/Range.h"

#include <algorithm>
#include <cmath>
#include <com/sun/star/beans/XPropertySet.hpp>
#include <com/sun/star/sheet/FormulaResult.hpp>
#include <com/sun/star/sheet/XCellRangeAddressable.hpp>
#include <com/sun/star/sheet/XCellRangeData.hpp>
#include <com/sun/star/sheet/XSheetCellRange.hpp>
#include <com/sun/star/sheet/XUsedAreaCursor.hpp>
#include <com/sun/star/table/XCell.hpp>
#include <com/sun/star/text/XTextRange.hpp>
#include <ooo/vba/excel/XRange.hpp>

#include "hosts/calc/Text.h"
#include "hosts/calc/Uno.h"

namespace palvex::calc {

namespace {

using css::sheet::XCellRangeAddressable;
using css::table::CellRangeAddress;
using css::table::XCell;
using css::table::XCellRange;

constexpr std::int32_t hostError = 440;                    // a failure of the office
constexpr std::int64_t mostCells = std::int64_t{1} << 24;  // that one reading may bring

/// The size of a rectangle.
struct Size {
  explicit Size(const CellRangeAddress& place)
      : rows(place.EndRow - place.StartRow + 1), columns(place.EndColumn - place.StartColumn + 1) {}
  [[nodiscard]] std::int64_t count() const { return std::int64_t{rows} * columns; }

  std::int32_t rows;
  std::int32_t columns;
};

CellRangeAddress placeOf(const Reference<XCellRange>& cells) {
  return Reference<XCellRangeAddressable>(cells, UNO_QUERY_THROW)->getRangeAddress();
}

/// An index as a host writes it, a number; error 9 outside 1..last.
std::int32_t index(const Variant& argument, std::int64_t last) {
  const double number = std::round(argument.toDouble());
  if (!(number >= 1 && number <= static_cast<double>(last))) raise(fault::subscript);
  return static_cast<std::int32_t>(number);
}

Reference<XCellRange> cellAt(const Reference<XCellRange>& cells, const Size& size,
                             const std::vector<Variant>& indices) {
  if (indices.size() > 2) raise(fault::invalidCall);
  std::int32_t row = 0;
  std::int32_t column = 0;
  if (indices.size() == 2) {
    row = index(indices[0], size.rows) - 1;
    column = index(indices[1], size.columns) - 1;
  } else {
    const std::int32_t position =
        index(indices[0], std::min<std::int64_t>(size.count(), SAL_MAX_INT32)) - 1;
    row = position / size.columns;
    column = position % size.columns;
  }
  return cells->getCellRangeByPosition(column, row, column, row);
}

/// The last row that anything is written in, so that a whole column costs no more than its content.
std::int32_t lastUsedRow(const Reference<XCellRange>& cells) {
  const auto sheet =
      Reference<css::sheet::XSheetCellRange>(cells, UNO_QUERY_THROW)->getSpreadsheet();
  const Reference<css::sheet::XUsedAreaCursor> cursor(sheet->createCursor(), UNO_QUERY_THROW);
  cursor->gotoEndOfUsedArea(false);
  return Reference<XCellRangeAddressable>(cursor, UNO_QUERY_THROW)->getRangeAddress().EndRow;
}

/// The contents of a block in one reading; Calc hands out an error cell as a void.
Variant contentsOf(Reference<XCellRange> cells, CellRangeAddress place) {
  const std::int32_t end = std::clamp(lastUsedRow(cells), place.StartRow, place.EndRow);
  if (end < place.EndRow) {
    place.EndRow = end;
    const Size used(place);
    cells = cells->getCellRangeByPosition(0, 0, used.columns - 1, used.rows - 1);
  }
  const Size size(place);
  if (size.count() > mostCells) raise(fault::outOfMemory);
  const Sequence<Sequence<Any>> rows =
      Reference<css::sheet::XCellRangeData>(cells, UNO_QUERY_THROW)->getDataArray();
  Variant values = Variant::array(size.rows, size.columns);
  for (sal_Int32 i = 0; i < size.rows; ++i) {
    for (sal_Int32 j = 0; j < size.columns; ++j) {
      const Any& content = rows[i][j];
      Variant& value = values.at(i + 1, j + 1);
      if (double number = 0; content >>= number) {
        value = number;
      } else if (rtl::OUString text; content >>= text) {
        if (!text.isEmpty()) value = utf8(text);
      } else {
        value = contentOf(cells->getCellByPosition(j, i));
      }
    }
  }
  return values;
}

}  // namespace

Variant contentOf(const Reference<XCell>& cell) {
  if (const sal_Int32 error = cell->getError(); error != 0) return Variant::error(error);
  bool text = false;
  switch (cell->getType()) {
    case css::table::CellContentType_EMPTY:
      return {};
    case css::table::CellContentType_FORMULA: {
      sal_Int32 kind = 0;
      Reference<css::beans::XPropertySet>(cell, UNO_QUERY_THROW)
          ->getPropertyValue("FormulaResultType2") >>= kind;
      text = kind == css::sheet::FormulaResult::STRING;
      break;
    }
    default:
      text = cell->getType() == css::table::CellContentType_TEXT;
  }
  if (!text) return cell->getValue();
  return utf8(Reference<css::text::XTextRange>(cell, UNO_QUERY_THROW)->getString());
}

Variant Range::doGet(std::string_view member, const std::vector<Variant>& arguments) {
  try {
    return answer(member, arguments);
  } catch (const css::uno::Exception& failure) {
    throw RuntimeError(hostError, utf8(failure.Message), "Calc");
  }
}

Variant Range::answer(std::string_view member, const std::vector<Variant>& arguments) {
  const CellRangeAddress place = placeOf(cells_);
  const Size size(place);
  if (sameMember(member, "Cells")) {
    return std::make_shared<Range>(arguments.empty() ? cells_ : cellAt(cells_, size, arguments));
  }
  if (!arguments.empty()) return Object::doGet(member, arguments);
  if (sameMember(member, "Value")) {
    return size.count() == 1 ? contentOf(cells_->getCellByPosition(0, 0))
                             : contentsOf(cells_, place);
  }
  if (sameMember(member, "Count")) return size.count();
  if (sameMember(member, "Address")) {
    const Reference<css::beans::XPropertySet> properties(cells_, UNO_QUERY_THROW);
    return utf8(properties->getPropertyValue("AbsoluteName").get<rtl::OUString>());
  }
  if (sameMember(member, "Application")) return std::make_shared<Object>();
  return Object::doGet(member, arguments);
}

std::shared_ptr<Object> rangeFrom(const Reference<css::uno::XInterface>& object) {
  if (!object.is()) return nullptr;
  try {
    Reference<XCellRange> cells(object, UNO_QUERY);
    if (const Reference<ooo::vba::excel::XRange> range(object, UNO_QUERY); range.is())
      cells.set(range->getCellRange(), UNO_QUERY);
    if (cells.is() && Reference<XCellRangeAddressable>(cells, UNO_QUERY).is())
      return std::make_shared<Range>(cells);
  } catch (const css::uno::Exception&) {
    // An object that cannot say what it is, is no range.
  }
  return std::make_shared<Object>();
}

}  // namespace palvex::calc
