#include "hosts/terminal/Arguments.h"

#include <fmt/core.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>

#include "hosts/terminal/Output.h"
#include "hosts/terminal/Range.h"
#include "hosts/terminal/Text.h"
#include "laws/Johnson.h"
#include "runtime/NumericText.h"
#include "simulation/Text.h"

namespace palvex::terminal {

namespace {

constexpr const char* lowerLimitName = "LTL";
constexpr const char* upperLimitName = "UTL";

std::string parameterNames(const LawType& type) {
  const auto* const last = type.parameters.begin() + type.parameterCount();
  return fmt::format("{}", fmt::join(type.parameters.begin(), last, ", "));
}

/// The block that "=B3" names.
/// @throws UsageError
Block blockIn(const std::string& argument) {
  const auto block = parseReference(std::string_view(argument).substr(1));
  if (!block) {
    throw UsageError(fmt::format(
        "'{}' is no reference; write =B3 for a cell, =A2:A200 or =A:A for several", argument));
  }
  return *block;
}

/// A limit as argumentValue, with "-inf" and the like as the engine's texts for no limit.
Variant limitValue(const std::string& argument, const std::shared_ptr<const Worksheet>& sheet) {
  for (const char* text : {"-inf", "-Infinity"}) {
    if (simulation::sameLetters(argument, text)) return "-Infinity";
  }
  for (const char* text : {"inf", "+inf", "Infinity", "+Infinity"}) {
    if (simulation::sameLetters(argument, text)) return "+Infinity";
  }
  return argumentValue(argument, sheet);
}

/// A word on standard error where a fitted Johnson curve is far from the moments asked for.
void noteLooseFit(const std::vector<DistributionArguments::Item>& items) {
  m_Johnson::JohnsonParams curve;
  const auto asked = [&](std::size_t i) {
    const Variant held = content(items.at(i).value);
    return held.isEmpty() ? 0 : held.toDouble();
  };
  m_Johnson::CalcJohnson(asked(0), asked(1), asked(2), asked(3), curve);
  const auto [mean, sd, skewness, kurtosis] = laws::Johnson(curve).curveMoments();
  if (std::abs(skewness - asked(2)) > 0.1 || std::abs(kurtosis - asked(3)) > 0.05 * asked(3))
    writeMessage(fmt::format(
        "palvex: note: the fitted Johnson curve has the skewness {:.4g} and the kurtosis {:.4g}\n",
        skewness, kurtosis));
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
  command
      .add_option("--sheet", sheetFile,
                  "Worksheet that the cells belong to, a CSV file; - for standard input")
      ->type_name("FILE");
}

Table::Cell DistributionArguments::Item::shown() const {
  const Variant held = content(value);
  if (held.isArray()) return value.toObject()->get("Count").toText() + " cells";
  if (held.isNumeric()) return held.toDouble();
  if (held.isText()) return held.toText();
  if (held.isEmpty()) return isLimit ? "empty: no limit" : "empty, taken as 0";
  return {};
}

std::vector<Block> DistributionArguments::references() const {
  std::vector<Block> blocks;
  const auto add = [&](const std::string& argument) {
    if (argument.starts_with('=')) blocks.push_back(blockIn(argument));
  };
  std::for_each(parameters.begin(), parameters.end(), add);
  add(lowerLimit);
  add(upperLimit);
  return blocks;
}

std::vector<DistributionArguments::Item> DistributionArguments::read() {
  type = typeNamed(type);
  const LawType& entry = *findLawType(type);
  if (parameters.size() != static_cast<std::size_t>(entry.parameterCount())) {
    throw UsageError(fmt::format("{} has {} parameters ({}), {} given", type,
                                 entry.parameterCount(), parameterNames(entry), parameters.size()));
  }
  if (sheet == nullptr) readSheets({this, 1});

  std::vector<Item> items;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    items.push_back(
        {std::string(entry.parameters.at(i)), parameters[i], argumentValue(parameters[i], sheet)});
  }
  if (!lowerLimit.empty())
    items.push_back({lowerLimitName, lowerLimit, limitValue(lowerLimit, sheet), true});
  if (!upperLimit.empty())
    items.push_back({upperLimitName, upperLimit, limitValue(upperLimit, sheet), true});
  return items;
}

void readSheets(std::span<DistributionArguments> distributions) {
  std::map<std::string, std::vector<Block>> wanted;
  for (const DistributionArguments& one : distributions) {
    if (one.sheetFile.empty()) continue;
    std::vector<Block>& blocks = wanted[one.sheetFile];
    for (const Block& block : one.references()) blocks.push_back(block);
  }
  for (const auto& [file, blocks] : wanted) {
    const auto sheet = std::make_shared<const Worksheet>(Worksheet::fromFile(file, blocks));
    for (DistributionArguments& one : distributions) {
      if (one.sheetFile == file) one.sheet = sheet;
    }
  }
}

std::string typeNamed(const std::string& type) {
  std::vector<std::string_view> names;
  names.reserve(lawTypes.size());
  for (const LawType& entry : lawTypes) names.push_back(entry.name);
  for (const std::string_view name : names) {
    if (simulation::sameLetters(name, type)) return std::string(name);
  }
  const std::string_view near = simulation::nearest(type, names);
  throw Refusal(fmt::format("Unknown distribution type '{}'.  {}", type,
                            near.empty() ? std::string("palvex types lists them.")
                                         : fmt::format("Did you mean {}?", near)));
}

Law DistributionArguments::law(const std::vector<Item>& items) const {
  Law law = lawOf(type, items);
  if (type == "Johnson") noteLooseFit(items);
  return law;
}

Law lawOf(const std::string& type, const std::vector<DistributionArguments::Item>& items) {
  std::vector<Variant> parameters;
  Variant lower;
  Variant upper;
  for (const auto& item : items) {
    if (!item.isLimit) {
      parameters.push_back(item.value);
    } else {
      (item.name == lowerLimitName ? lower : upper) = item.value;
    }
  }
  try {
    return makeLaw(type, parameters, lower, upper);
  } catch (const std::invalid_argument& fault) {
    throw refusal(fault.what());
  }
}

void setChecked(c_Distribution& distribution, const std::string& type,
                const std::vector<DistributionArguments::Item>& items) {
  if (findFamily(type) == nullptr)
    throw Refusal(fmt::format("{} has no members pdf, cdf and RandVal, only a law.", type));
  distribution.distType(type);
  const std::array<Variant*, 4> members{&distribution.param1, &distribution.param2,
                                        &distribution.param3, &distribution.param4};
  std::size_t i = 0;
  for (const auto& item : items) {
    Variant& limit = item.name == lowerLimitName ? distribution.ltl : distribution.utl;
    (item.isLimit ? limit : *members.at(i++)) = item.value;
  }
  if (std::string cause; !distribution.ParamsOK(cause)) throw refusal(cause);
}

Refusal refusal(const std::string& sentence) {
  std::string told = sentence;
  if (sentence.starts_with("Unrecognized data configuration")) {
    told += fmt::format("; there are \"{}\".", fmt::join(dataConfigurations, "\", \""));
  } else if (sentence.starts_with("Improper value for ")) {
    told += "  Write a number, a cell such as =B3, -Infinity or +Infinity.";
  }
  Refusal made(told);
  return made;
}

std::optional<double> numberIn(const std::string& argument) {
  const bool isPercent = argument.ends_with('%');
  const std::string text = isPercent ? argument.substr(0, argument.size() - 1) : argument;
  const auto number = numericText(text);
  if (number && !commasMarkThousands(text)) {
    std::string pointed = text;
    std::replace(pointed.begin(), pointed.end(), ',', '.');
    const bool isOne = std::count(text.begin(), text.end(), ',') == 1 && numericText(pointed);
    throw UsageError(
        fmt::format("'{}': this comma marks no thousands; write a decimal point{}", argument,
                    isOne ? fmt::format(": {}{}", pointed, isPercent ? "%" : "") : ""));
  }
  if (!number || !isPercent) return number;
  return *number / 100;
}

Variant argumentValue(const std::string& argument, const std::shared_ptr<const Worksheet>& sheet) {
  if (!argument.starts_with('=')) {
    if (const auto number = numberIn(argument)) return *number;
    for (const std::string_view layout : dataConfigurations) {
      if (simulation::sameLetters(argument, layout)) return layout;
    }
    return argument;
  }
  const Block reference = blockIn(argument);
  if (!sheet) throw UsageError(fmt::format("'{}' needs a worksheet: --sheet FILE", argument));
  const Block block = sheet->ended(reference);
  if (!sheet->contains(block)) {
    throw UsageError(fmt::format("'{}' is outside the sheet, which ends at {}{}", argument,
                                 columnName(sheet->columns()), sheet->rows()));
  }
  return std::make_shared<Range>(sheet, block);
}

Variant content(const Variant& value) {
  return value.isObject() ? value.toObject()->get("Value") : value;
}

double numberArgument(const std::string& option, const std::string& argument) {
  if (const auto number = numberIn(argument)) return *number;
  throw UsageError(fmt::format("{}: '{}' is not a number", option, argument));
}

std::vector<double> percentagesArgument(const std::string& option, const std::string& list) {
  std::vector<double> percentages;
  std::string_view rest = list;
  while (true) {
    const std::string_view one = rest.substr(0, rest.find(','));
    const std::string word(one.ends_with('%') ? one.substr(0, one.size() - 1) : one);
    const auto percent = numericText(word);
    if (!percent || !(*percent >= 0 && *percent <= 100))
      throw UsageError(
          fmt::format("{}: '{}' is no percentage from 0 to 100; write 10,50,90", option, one));
    percentages.push_back(*percent);
    if (one.size() == rest.size()) return percentages;
    rest.remove_prefix(one.size() + 1);
  }
}

std::string percentName(double percent) {
  return numberText(percent) + " %";
}

std::uint64_t countArgument(const std::string& option, const std::string& argument,
                            std::uint64_t least, std::uint64_t most) {
  std::uint64_t count = 0;
  const char* const end = argument.data() + argument.size();
  const auto [stop, error] = std::from_chars(argument.data(), end, count);
  bool isWhole = error == std::errc{} && stop == end;
  if (!isWhole) {
    // "1e6" and "1,000,000", as far as every whole number is a double.
    constexpr double mostExact = 0x1p53;
    const auto number = numberIn(argument);
    isWhole = number && *number >= 0 && *number <= mostExact && *number == std::trunc(*number);
    if (isWhole) count = static_cast<std::uint64_t>(*number);
  }
  if (!isWhole || count < least || count > most) {
    throw UsageError(
        fmt::format("{}: '{}' is not a whole number from {} to {}", option, argument, least, most));
  }
  return count;
}

}  // namespace palvex::terminal
