#include <fmt/core.h>

#include <cmath>

#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Faults.h"
#include "hosts/terminal/Output.h"

namespace palvex::terminal {

namespace {

struct DescribeOptions : ResultOptions, DistributionArguments {};

/// The probability of a value below x, or of one up to x: where the draw of a distribution without
/// limits passes x. (`cdf` is no help: for a gamma distribution with a minimum, and for some
/// Johnson curves, it is not the inverse of the draw.)
double probability(double x, bool upTo, c_Distribution& unlimited) {
  double low = 0;
  double high = 1;
  for (;;) {
    const double p = low + (high - low) / 2;
    if (p <= low || p >= high) return p;
    const double value = unlimited.RandVal(p);
    (value < x || (upTo && value == x) ? low : high) = p;
  }
}

/// What a checked distribution's limits keep of its probability; empty when they are none.
Table::Cell keptShare(DescribeOptions& options) {
  c_Distribution unlimited;
  options.set(unlimited);
  const auto limit = [](const Variant& given) {
    const Variant value = content(given);
    return value.isNumeric() ? std::optional(value.toDouble()) : std::nullopt;
  };
  const auto lower = limit(unlimited.ltl);
  const auto upper = limit(unlimited.utl);
  if (!lower && !upper) return {};
  unlimited.ltl = unlimited.utl = {};
  if (std::string cause; !unlimited.ParamsOK(cause)) throw Refusal(cause);

  double share = upper ? probability(*upper, true, unlimited) : 1;
  if (lower) share -= probability(*lower, false, unlimited);
  if (lower && upper && *lower > *upper) share += 1;
  // A difference of probabilities that are known by draws: those of a beta distribution have no
  // more digits than this.
  constexpr double decimals = 1e8;
  if (share < 1 / decimals) return fmt::format("less than {}", 1 / decimals);
  return std::round(share * decimals) / decimals;
}

Table described(c_Distribution& distribution, DescribeOptions& options) {
  const auto items = options.setChecked(distribution);
  Table table({"quantity", "value"});
  table.add({"Type", options.type});
  for (const auto& item : items) table.add({item.name, item.shown()});
  const Table::Cell share = keptShare(options);
  if (!std::holds_alternative<std::monostate>(share)) table.add({"Kept share", share});
  table.add({"Mean of the law", distribution.mean()});
  table.add({"Std Dev of the law", distribution.StDev()});
  for (const int percent : {1, 5, 10, 25, 50, 75, 90, 95, 99}) {
    table.add({fmt::format("{} %", percent), distribution.RandVal(percent / 100.0)});
  }
  return table;
}

}  // namespace

void addDescribe(CLI::App& program) {
  CLI::App* command = program.add_subcommand(
      "describe", "Mean, standard deviation and percentiles of a distribution");
  command->footer(
      "Mean and standard deviation are those of the law that the limits keep; the percentiles "
      "are\n"
      "its draws, which end where double precision can not tell probabilities apart (a normal "
      "draw\n"
      "8.3 standard deviations above the mean). The kept share is the part of the whole\n"
      "distribution's probability that the limits keep, to 8 decimals.\n\n"
      "Examples:\n"
      "  palvex describe Normal 10 2 --ltl 8\n"
      "  palvex describe Triangular =B2 =C2 =D2 --sheet estimate.csv --json");
  const auto options = std::make_shared<DescribeOptions>();
  options->DistributionArguments::addTo(*command);
  options->ResultOptions::addTo(*command);
  command->callback([options] {
    c_Distribution distribution;
    const Table table = described(distribution, *options);
    Output output;
    output.write(table.text(options->format));
    output.close();
  });
}

}  // namespace palvex::terminal
