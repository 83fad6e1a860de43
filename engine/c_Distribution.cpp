#include "engine/c_Distribution.h"

#include <string>

#include "runtime/MessageBox.h"

namespace palvex {

namespace {

template <std::size_t n>
Variant textArray(const std::array<std::string_view, n>& texts) {
  Variant array = Variant::array(static_cast<std::int32_t>(n));
  for (std::size_t i = 0; i < n; ++i) array.at(static_cast<std::int32_t>(i + 1)) = texts[i];
  return array;
}

}  // namespace

Variant c_Distribution::ValidDistributions() const {
  std::array<std::string_view, families.size()> names;
  for (std::size_t i = 0; i < names.size(); ++i) names[i] = families[i].name;
  return textArray(names);
}

Variant c_Distribution::DataConfigurations() const {
  return textArray(dataConfigurations);
}

std::string c_Distribution::distType() const {
  return family_ ? std::string(family_->name) : "";
}

void c_Distribution::distType(std::string_view name) {
  const Family* family = findFamily(name);
  if (family == nullptr) {
    showMessage("Unknown distribution type '" + std::string(name) + "'.");
    return;
  }
  family_ = family;
  paramsOk_ = false;
  dropPrepared();
}

std::int16_t c_Distribution::NumParams() const {
  return family_ ? static_cast<std::int16_t>(family_->parameters->size()) : std::int16_t{0};
}

std::string c_Distribution::ParamName(std::int32_t paramNumber) const {
  if (paramNumber < 1 || paramNumber > NumParams()) return "";
  return std::string((*family_->parameters)[static_cast<std::size_t>(paramNumber - 1)].name);
}

double c_Distribution::GuessParamValue(std::int16_t paramIndex, double cellValue) const {
  if (paramIndex < 1 || paramIndex > NumParams()) return 0;
  return checked((*family_->parameters)[static_cast<std::size_t>(paramIndex - 1)].guess(cellValue));
}

std::int16_t c_Distribution::NumPoints() const {
  return static_cast<std::int16_t>(graphX_.size());
}

Variant c_Distribution::ResizeArrays(std::int16_t size) {
  if (size < 1) return {};
  const auto points = static_cast<std::size_t>(size);
  // All or nothing: without memory for one series, none changes.
  for (Series* series : {&graphX_, &graphPDF_, &graphOL_}) series->reserve(points);
  for (Series* series : {&graphX_, &graphPDF_, &graphOL_}) series->resize(points);
  return {};
}

double c_Distribution::point(const Series& series, std::int16_t i) {
  if (i < 1 || static_cast<std::size_t>(i) > series.size()) return 0;
  return series[static_cast<std::size_t>(i - 1)];
}

void c_Distribution::setPoint(Series& series, std::int16_t i, double value) {
  if (i < 1 || static_cast<std::size_t>(i) > series.size()) return;
  series[static_cast<std::size_t>(i - 1)] = value;
}

}  // namespace palvex
