#include "hosts/terminal/Arguments.h"

#include <fmt/core.h>

#include <charconv>

#include "hosts/terminal/Faults.h"
#include "hosts/terminal/Range.h"
#include "runtime/MessageBox.h"
#include "runtime/NumericText.h"

namespace palvex::terminal {

namespace {

std::string parameterNames(const c_Distribution& distribution) {
  std::string names;
  for (std::int16_t i = 1; i <= distribution.NumParams(); ++i) {
    names.append(i > 1 ? ", " : "").append(distribution.ParamName(i));
  }
  return names;
}

}  // namespace

void ResultOptions::addTo(CLI::App& command) {
  auto* csv = command.add_flag_callback(
      "--csv", [this] { format = Format::csv; }, "Write comma-separated values");
  auto* json = command.add_flag_callback(
      "--json", [this] { format = Format::json; }, "Write JSON");
  csv->excludes(json);
}

void DistributionArguments::addTo(CLI::App& command) {
  command.add_option("TYPE", type, "Type of the distribution (see: palvex types)")->required();
  command.add_option("PARAMETER", parameters,
                     "Its parameters in order: numbers, or cells of the sheet such as =B3");
  command.add_option("--ltl", lowerLimit, "Lower truncation limit: a number or a cell");
  command.add_option("--utl", upperLimit, "Upper truncation limit: a number or a cell");
  command.add_option("--sheet", sheetFile, "Worksheet that the cells belong to, a CSV file")
      ->type_name("FILE");
}

std::vector<DistributionArguments::Item> DistributionArguments::set(
    c_Distribution& distribution) const {
  setType(distribution, type);
  if (parameters.size() != static_cast<std::size_t>(distribution.NumParams())) {
    throw UsageError(fmt::format("{} has {} parameters ({}), {} given", type,
                                 distribution.NumParams(), parameterNames(distribution),
                                 parameters.size()));
  }
  std::shared_ptr<const Worksheet> sheet;
  if (!sheetFile.empty()) {
    sheet = std::make_shared<const Worksheet>(Worksheet::fromFile(sheetFile));
  }

  std::vector<Item> items;
  const auto add = [&](Variant& member, std::string name, const std::string& argument) {
    member = argumentValue(argument, sheet);
    items.push_back({std::move(name), argument, member});
  };
  const std::array<Variant*, 4> members{&distribution.param1, &distribution.param2,
                                        &distribution.param3, &distribution.param4};
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    add(*members.at(i), distribution.ParamName(static_cast<std::int32_t>(i + 1)), parameters[i]);
  }
  if (!lowerLimit.empty()) add(distribution.ltl, "LTL", lowerLimit);
  if (!upperLimit.empty()) add(distribution.utl, "UTL", upperLimit);
  return items;
}

std::vector<DistributionArguments::Item> DistributionArguments::setChecked(
    c_Distribution& distribution) const {
  std::vector<Item> items = set(distribution);
  if (std::string cause; !distribution.ParamsOK(cause)) throw Refusal(cause);
  return items;
}

void setType(c_Distribution& distribution, const std::string& type) {
  std::string refusal;
  setMessageBox([&refusal](std::string_view text) { refusal = text; });
  distribution.distType(type);
  setMessageBox({});
  if (!refusal.empty()) throw Refusal(refusal);
}

Variant argumentValue(const std::string& argument, const std::shared_ptr<const Worksheet>& sheet) {
  if (!argument.starts_with('=')) {
    if (const auto number = numericText(argument)) return *number;
    return argument;
  }
  const auto block = parseReference(std::string_view(argument).substr(1));
  if (!block) {
    throw UsageError(
        fmt::format("'{}' is no reference; write =B3 for a cell, =A2:A200 for several", argument));
  }
  if (!sheet) throw UsageError(fmt::format("'{}' needs a worksheet: --sheet FILE", argument));
  if (!sheet->contains(*block)) {
    throw UsageError(fmt::format("'{}' is outside the sheet, which ends at {}{}", argument,
                                 columnName(sheet->columns()), sheet->rows()));
  }
  return std::make_shared<Range>(sheet, *block);
}

Variant content(const Variant& value) {
  return value.isObject() ? value.toObject()->get("Value") : value;
}

Table::Cell shownContent(const Variant& value) {
  const Variant held = content(value);
  if (held.isArray()) return value.toObject()->get("Count").toText() + " cells";
  if (held.isNumeric()) return held.toDouble();
  if (held.isText()) return held.toText();
  return {};
}

double numberArgument(const std::string& option, const std::string& argument) {
  if (const auto number = numericText(argument)) return *number;
  throw UsageError(fmt::format("{}: '{}' is not a number", option, argument));
}

std::uint64_t countArgument(const std::string& option, const std::string& argument,
                            std::uint64_t least, std::uint64_t most) {
  std::uint64_t count = 0;
  const char* const end = argument.data() + argument.size();
  const auto [stop, error] = std::from_chars(argument.data(), end, count);
  if (error != std::errc{} || stop != end || count < least || count > most) {
    throw UsageError(
        fmt::format("{}: '{}' is not a whole number from {} to {}", option, argument, least, most));
  }
  return count;
}

}  // namespace palvex::terminal
