#include "hosts/terminal/Range.h"

#include <cmath>

namespace palvex::terminal {

namespace {

/// An index as a host writes it, a number; error 9 outside 1..last.
std::int64_t index(const Variant& argument, std::int64_t last) {
  const double number = std::round(argument.toDouble());
  if (!(number >= 1 && number <= static_cast<double>(last))) raise(fault::subscript);
  return static_cast<std::int64_t>(number);
}

}  // namespace

Variant Range::doGet(std::string_view member, const std::vector<Variant>& arguments) {
  if (sameMember(member, "Cells") && !arguments.empty()) return cell(arguments);
  if (!arguments.empty()) return Object::doGet(member, arguments);
  if (sameMember(member, "Value")) return value();
  if (sameMember(member, "Count")) return count();
  if (sameMember(member, "Address")) return absoluteAddress(block_);
  if (sameMember(member, "Application")) return std::make_shared<Object>();
  if (sameMember(member, "Cells")) return std::make_shared<Range>(sheet_, block_);
  return Object::doGet(member, arguments);
}

Variant Range::value() const {
  const auto [row, column] = block_.first;
  if (count() == 1) return sheet_->at(block_.first);
  Variant values = Variant::array(rows(), columns());
  for (std::int32_t i = 1; i <= rows(); ++i) {
    for (std::int32_t j = 1; j <= columns(); ++j) {
      values.at(i, j) = sheet_->at({row + i - 1, column + j - 1});
    }
  }
  return values;
}

Variant Range::cell(const std::vector<Variant>& indices) const {
  if (indices.size() > 2) raise(fault::invalidCall);
  std::int64_t row = 0;
  std::int64_t column = 0;
  if (indices.size() == 2) {
    row = index(indices[0], rows()) - 1;
    column = index(indices[1], columns()) - 1;
  } else {
    const std::int64_t position = index(indices[0], count()) - 1;
    row = position / columns();
    column = position % columns();
  }
  const Place place{block_.first.row + static_cast<std::int32_t>(row),
                    block_.first.column + static_cast<std::int32_t>(column)};
  return std::make_shared<Range>(sheet_, Block{place, place});
}

}  // namespace palvex::terminal
