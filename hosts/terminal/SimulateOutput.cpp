#include "hosts/terminal/SimulateOutput.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <numeric>

namespace palvex::terminal {

namespace {

using nlohmann::ordered_json;
using simulation::InputStatistics;
using simulation::Moments;
using simulation::Percentile;
using simulation::Results;
using simulation::ResultStatistics;
using simulation::Sampling;
using simulation::Sensitivity;

std::string_view nameOf(Sampling sampling) {
  return sampling == Sampling::lhs ? "lhs" : "random";
}

std::string percentName(double percent) {
  return fmt::format("P{}", percent);
}

/// A cell of a table: nothing for what is undefined.
Table::Cell cell(double value) {
  if (std::isnan(value)) return {};
  return value;
}

/// A number with as many digits as people read.
Table::Cell shortCell(double value, int digits = 6) {
  return cell(std::strtod(fmt::format("{:.{}g}", value, digits).c_str(), nullptr));
}

std::string counted(std::uint64_t count) {
  std::string digits = std::to_string(count);
  for (std::ptrdiff_t i = std::ssize(digits) - 3; i > 0; i -= 3) {
    digits.insert(static_cast<std::size_t>(i), 1, ',');
  }
  return digits;
}

// For people.

constexpr double reach = 1.959963984540054;  // standard errors of a 95 % interval

std::string figures(const ResultStatistics& result) {
  const Moments& moments = result.moments;
  Table table({result.unit.empty() ? result.name : result.name + " (" + result.unit + ')', "value",
               "95 % from", "to"});
  const auto add = [&](const std::string& name, double value) {
    table.add({name, shortCell(value), {}, {}});
  };
  const double half = reach * moments.standardError();
  table.add({"mean", shortCell(moments.mean), shortCell(moments.mean - half),
             shortCell(moments.mean + half)});
  add("standard deviation", moments.sd());
  add("skewness", moments.skewness());
  add("excess kurtosis", moments.kurtosis());
  add("smallest", moments.smallest);
  for (const Percentile& percentile : result.percentiles) {
    table.add({percentName(percentile.percent), shortCell(percentile.value),
               shortCell(percentile.low), shortCell(percentile.high)});
  }
  add("greatest", moments.greatest);
  return table.text(Format::people);
}

/// How mean and P80 moved with the trials: the last observations.
std::string settling(const ResultStatistics& result) {
  constexpr std::size_t shown = 4;
  if (result.settling.size() < 2) return "";
  Table table({"after trials", "mean", "95 % from", "to", "P80", "95 % from", "to"});
  for (std::size_t i = result.settling.size() - std::min(shown, result.settling.size());
       i < result.settling.size(); ++i) {
    const auto& [trials, mean, error, p80] = result.settling[i];
    table.add({counted(trials), shortCell(mean), shortCell(mean - reach * error),
               shortCell(mean + reach * error), shortCell(p80.value), shortCell(p80.low),
               shortCell(p80.high)});
  }
  return fmt::format("{} settled\n{}\n", result.name, table.text(Format::people));
}

constexpr std::size_t strongestShown = 10;

std::string strongest(const ResultStatistics& result, const std::vector<InputStatistics>& inputs) {
  std::vector<std::size_t> order(inputs.size());
  std::iota(order.begin(), order.end(), 0);
  const auto swing = [&](std::size_t i) {
    const Sensitivity& to = result.sensitivities[i];
    const double width = std::abs(to.meanHigh - to.meanLow);
    return std::isnan(width) ? 0 : width;
  };
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return swing(a) > swing(b); });
  const std::size_t shown = std::min(order.size(), strongestShown);
  Table table({"input", "mean in its lowest tenth", "in its highest", "rank correlation",
               "share of variance"});
  for (std::size_t i = 0; i < shown; ++i) {
    const Sensitivity& to = result.sensitivities[order[i]];
    table.add({inputs[order[i]].name, shortCell(to.meanLow), shortCell(to.meanHigh),
               shortCell(to.rankCorrelation, 3), shortCell(to.varianceShare, 3)});
  }
  return fmt::format(
      "{} depends on\n{}{}", result.name, table.text(Format::people),
      shown < order.size() ? fmt::format("and {} more\n", order.size() - shown) : "");
}

std::string forPeople(const Results& results) {
  std::string text =
      fmt::format("{} trials, seed {}, {}\n", counted(results.trials), results.seed,
                  results.sampling == Sampling::lhs ? "Latin hypercube" : "random sampling");
  if (results.failures > 0) {
    text += fmt::format("{} trials failed and are left out\n", counted(results.failures));
  }
  for (const ResultStatistics& result : results.results) {
    text += fmt::format("\n{}\n{}{}", figures(result), settling(result),
                        strongest(result, results.inputs));
  }
  if (results.rankTrials < results.trials) {
    text +=
        fmt::format("\nRank correlations of the first {} trials.\n", counted(results.rankTrials));
  }
  return text;
}

// For programs.

std::string csv(const Results& results) {
  std::vector<std::string> columns{"result",   "unit", "mean", "standardError", "sd", "skewness",
                                   "kurtosis", "min",  "max"};
  for (const Percentile& percentile : results.results.at(0).percentiles) {
    const std::string name = percentName(percentile.percent);
    columns.insert(columns.end(), {name, name + " low", name + " high"});
  }
  Table table(columns);
  for (const ResultStatistics& result : results.results) {
    const Moments& moments = result.moments;
    std::vector<Table::Cell> row{result.name,
                                 result.unit.empty() ? Table::Cell{} : result.unit,
                                 cell(moments.mean),
                                 cell(moments.standardError()),
                                 cell(moments.sd()),
                                 cell(moments.skewness()),
                                 cell(moments.kurtosis()),
                                 cell(moments.smallest),
                                 cell(moments.greatest)};
    for (const Percentile& percentile : result.percentiles) {
      for (const double value : {percentile.value, percentile.low, percentile.high}) {
        row.push_back(cell(value));
      }
    }
    table.add(std::move(row));
  }
  return table.text(Format::csv);
}

// What is undefined, NaN, is written as null.

ordered_json jsonOf(const InputStatistics& input) {
  return {{"name", input.name},
          {"type", input.type},
          {"mean", input.moments.mean},
          {"sd", input.moments.sd()},
          {"min", input.moments.smallest},
          {"max", input.moments.greatest}};
}

ordered_json jsonOf(const ResultStatistics& result, const std::vector<InputStatistics>& inputs) {
  const Moments& moments = result.moments;
  ordered_json percentiles = ordered_json::array();
  for (const Percentile& percentile : result.percentiles) {
    percentiles.push_back({{"percent", percentile.percent},
                           {"value", percentile.value},
                           {"low", percentile.low},
                           {"high", percentile.high}});
  }
  ordered_json sensitivity = ordered_json::array();
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const Sensitivity& to = result.sensitivities[i];
    sensitivity.push_back({{"input", inputs[i].name},
                           {"rankCorrelation", to.rankCorrelation},
                           {"varianceShare", to.varianceShare},
                           {"meanLow", to.meanLow},
                           {"meanHigh", to.meanHigh}});
  }
  return {{"name", result.name},
          {"mean", moments.mean},
          {"standardError", moments.standardError()},
          {"sd", moments.sd()},
          {"skewness", moments.skewness()},
          {"kurtosis", moments.kurtosis()},
          {"min", moments.smallest},
          {"max", moments.greatest},
          {"percentiles", percentiles},
          {"sensitivity", sensitivity}};
}

std::string json(const Results& results) {
  ordered_json inputs = ordered_json::array();
  for (const InputStatistics& input : results.inputs) inputs.push_back(jsonOf(input));
  ordered_json list = ordered_json::array();
  for (const ResultStatistics& result : results.results) {
    list.push_back(jsonOf(result, results.inputs));
  }
  const ordered_json all{{"trials", results.trials}, {"failures", results.failures},
                         {"seed", results.seed},     {"sampling", nameOf(results.sampling)},
                         {"inputs", inputs},         {"results", list}};
  // Text from outside may be no UTF-8: its bad bytes become U+FFFD.
  return all.dump(1, ' ', false, ordered_json::error_handler_t::replace) + '\n';
}

}  // namespace

std::string resultsText(const Results& results, Format format) {
  switch (format) {
    case Format::csv:
      return csv(results);
    case Format::json:
      return json(results);
    case Format::people:
      break;
  }
  return forPeople(results);
}

std::string trialsHead(const simulation::Model& model) {
  std::vector<std::string> names;
  for (const simulation::Row& row : model.rows()) names.push_back(row.name);
  return Table(names).text(Format::csv);
}

}  // namespace palvex::terminal
