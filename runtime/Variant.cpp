#include "runtime/Variant.h"

#include <cmath>

#include "runtime/NumericText.h"
#include "runtime/Object.h"

namespace palvex {

Variant::Variant(const Variant&) = default;
Variant::Variant(Variant&&) noexcept = default;
Variant& Variant::operator=(const Variant&) = default;
Variant& Variant::operator=(Variant&&) noexcept = default;
Variant::~Variant() = default;

const Variant& Variant::missing() noexcept {
  static const Variant omitted = [] {
    Variant made;
    made.content_ = Missing{};
    return made;
  }();
  return omitted;
}

Variant Variant::error(std::int32_t code) noexcept {
  Variant made;
  made.content_ = ErrorValue{code};
  return made;
}

Variant Variant::array(std::int32_t n, Line line) {
  if (n < 0) raise(fault::subscript, line);
  Variant made;
  made.content_ = Array{n, 0, std::vector<Variant>(static_cast<std::size_t>(n))};
  return made;
}

Variant Variant::array(std::int32_t rows, std::int32_t columns, Line line) {
  if (rows < 0 || columns < 1) raise(fault::subscript, line);
  const std::size_t cells = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
  Variant made;
  made.content_ = Array{rows, columns, std::vector<Variant>(cells)};
  return made;
}

bool Variant::isNumeric() const {
  if (const double* number = std::get_if<double>(&content_)) return std::isfinite(*number);
  if (const std::string* text = std::get_if<std::string>(&content_))
    return numericText(*text).has_value();
  return holds<Boolean>();
}

double Variant::toDouble(Line line) const {
  if (const double* number = std::get_if<double>(&content_)) return *number;
  if (const Boolean* truth = std::get_if<Boolean>(&content_)) return truth->bits();
  if (isEmpty()) return 0;
  if (const std::string* text = std::get_if<std::string>(&content_)) {
    if (const auto value = numericText(*text)) return *value;
  }
  raise(fault::typeMismatch, line);
}

std::string Variant::toText(Line line) const {
  if (const std::string* text = std::get_if<std::string>(&content_)) return *text;
  if (const double* number = std::get_if<double>(&content_)) return numberText(*number);
  if (const Boolean* truth = std::get_if<Boolean>(&content_)) return *truth ? "True" : "False";
  if (isEmpty()) return "";
  raise(fault::typeMismatch, line);
}

std::shared_ptr<Object> Variant::toObject(Line line) const {
  const auto* object = std::get_if<std::shared_ptr<Object>>(&content_);
  if (object == nullptr || *object == nullptr) raise(fault::typeMismatch, line);
  return *object;
}

std::int32_t Variant::errorCode(Line line) const {
  const auto* value = std::get_if<ErrorValue>(&content_);
  if (value == nullptr) raise(fault::typeMismatch, line);
  return value->code;
}

const Variant::Array& Variant::toArray(Line line) const {
  const auto* array = std::get_if<Array>(&content_);
  if (array == nullptr) raise(fault::typeMismatch, line);
  return *array;
}

const Variant& Variant::at(std::int32_t i, Line line) const {
  const Array& array = toArray(line);
  if (array.columns != 0 || i < 1 || i > array.rows) raise(fault::subscript, line);
  return array.cells[static_cast<std::size_t>(i - 1)];
}

const Variant& Variant::at(std::int32_t row, std::int32_t column, Line line) const {
  const Array& array = toArray(line);
  if (row < 1 || row > array.rows || column < 1 || column > array.columns)
    raise(fault::subscript, line);
  const auto index = static_cast<std::size_t>(row - 1) * static_cast<std::size_t>(array.columns) +
                     static_cast<std::size_t>(column - 1);
  return array.cells[index];
}

Variant& Variant::at(std::int32_t i, Line line) {
  return const_cast<Variant&>(std::as_const(*this).at(i, line));
}

Variant& Variant::at(std::int32_t row, std::int32_t column, Line line) {
  return const_cast<Variant&>(std::as_const(*this).at(row, column, line));
}

std::int32_t Variant::lowerBound(std::int32_t dimension, Line line) const {
  const Array& array = toArray(line);
  if (dimension < 1 || dimension > (array.columns == 0 ? 1 : 2)) raise(fault::subscript, line);
  return 1;
}

std::int32_t Variant::upperBound(std::int32_t dimension, Line line) const {
  static_cast<void>(lowerBound(dimension, line));  // raises for a dimension that is not there
  const Array& array = toArray(line);
  return dimension == 1 ? array.rows : array.columns;
}

}  // namespace palvex
