#include "runtime/Cells.h"

#include <limits>
#include <memory>

namespace palvex {

namespace {

/// An index as a caller writes it; error 9 outside of 1..last.
std::int32_t indexOf(const Variant& argument, std::size_t last) {
  const double number = argument.toDouble();
  if (!(number >= 1 && number <= static_cast<double>(last))) raise(fault::subscript);
  return static_cast<std::int32_t>(number);
}

std::int32_t rowsOf(std::size_t cells, std::int32_t columns) {
  constexpr auto most = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
  if (columns < 1 || cells == 0 || cells > most) raise(fault::subscript);
  if (cells % static_cast<std::size_t>(columns) != 0) raise(fault::subscript);
  return static_cast<std::int32_t>(cells / static_cast<std::size_t>(columns));
}

}  // namespace

Cells::Cells(std::int32_t rows, std::int32_t columns) : rows_(rows), columns_(columns) {
  if (rows < 1 || columns < 1) raise(fault::subscript);
  contents_.resize(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
}

Cells::Cells(std::span<const double> values, std::int32_t columns)
    : rows_(rowsOf(values.size(), columns)),
      columns_(columns),
      contents_(values.begin(), values.end()) {}

Variant& Cells::at(std::int32_t row, std::int32_t column) {
  if (row < 1 || row > rows_ || column < 1 || column > columns_) raise(fault::subscript);
  return contents_[static_cast<std::size_t>(row - 1) * static_cast<std::size_t>(columns_) +
                   static_cast<std::size_t>(column - 1)];
}

Variant Cells::doGet(std::string_view member, const std::vector<Variant>& arguments) {
  if (sameMember(member, "Cells") && !arguments.empty()) return cell(arguments);
  if (!arguments.empty()) return Object::doGet(member, arguments);
  if (sameMember(member, "Value")) return value();
  if (sameMember(member, "Count")) return contents_.size();
  if (sameMember(member, "Address")) return "cells of the program";
  if (sameMember(member, "Application")) return std::make_shared<Object>();
  return Object::doGet(member, arguments);
}

Variant Cells::value() const {
  if (contents_.size() == 1) return contents_.front();
  Variant values = Variant::array(rows_, columns_);
  std::size_t i = 0;
  for (std::int32_t row = 1; row <= rows_; ++row) {
    for (std::int32_t column = 1; column <= columns_; ++column)
      values.at(row, column) = contents_[i++];
  }
  return values;
}

Variant Cells::cell(const std::vector<Variant>& indices) const {
  if (indices.size() > 2) raise(fault::invalidCall);
  std::size_t position = 0;
  if (indices.size() == 2) {
    const std::int32_t row = indexOf(indices[0], static_cast<std::size_t>(rows_));
    const std::int32_t column = indexOf(indices[1], static_cast<std::size_t>(columns_));
    position = static_cast<std::size_t>(row - 1) * static_cast<std::size_t>(columns_) +
               static_cast<std::size_t>(column - 1);
  } else {
    position = static_cast<std::size_t>(indexOf(indices[0], contents_.size()) - 1);
  }
  const auto single = std::make_shared<Cells>(1, 1);
  single->at(1) = contents_[position];
  return single;
}

}  // namespace palvex
