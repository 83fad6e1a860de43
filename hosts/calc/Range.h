#pragma once

#include <com/sun/star/table/XCellRange.hpp>
#include <com/sun/star/uno/Reference.hxx>

#include "runtime/Object.h"

namespace css = com::sun::star;

namespace palvex::calc {

/// A rectangle of cells of an open document, live, with the members that the engine asks a range
/// for: "Application"; "Address", such as "$Costs.$A$2:$A$200"; "Count"; "Value", the content of a
/// single cell or a two-dimensional array of the contents; "Cells", a single cell by its index, row
/// by row, or by its row and column within the range.
class Range : public Object {
 public:
  explicit Range(const css::uno::Reference<css::table::XCellRange>& cells) : cells_(cells) {}

 protected:
  Variant doGet(std::string_view member, const std::vector<Variant>& arguments) override;

 private:
  [[nodiscard]] Variant answer(std::string_view member, const std::vector<Variant>& arguments);

  css::uno::Reference<css::table::XCellRange> cells_;
};

/// The content of one cell, read now: empty, a number, a text or, by Calc's number, an error.
[[nodiscard]] Variant contentOf(const css::uno::Reference<css::table::XCell>& cell);

/// The engine's view of an object of the office: a Range for a cell, a range of cells, or a Range
/// object of Basic's VBA mode; otherwise an object without members.
[[nodiscard]] std::shared_ptr<Object> rangeFrom(
    const css::uno::Reference<css::uno::XInterface>& object);

}  // namespace palvex::calc
