#include <cmath>

#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Faults.h"
#include "hosts/terminal/Output.h"

namespace palvex::terminal {

namespace {

struct EvalOptions : ResultOptions, DistributionArguments {
  std::vector<std::string> at;
  std::string from;
  std::string to;
  std::string steps = "10";
};

std::vector<double> positions(const EvalOptions& options) {
  std::vector<double> xs;
  for (const std::string& x : options.at) xs.push_back(numberArgument("--at", x));
  if (!options.from.empty()) {
    const double from = numberArgument("--from", options.from);
    const double to = numberArgument("--to", options.to);
    const std::uint64_t steps = countArgument("--steps", options.steps, 1, 1'000'000);
    for (std::uint64_t i = 0; i <= steps; ++i) {
      xs.push_back(std::lerp(from, to, static_cast<double>(i) / static_cast<double>(steps)));
    }
  }
  if (xs.empty()) throw UsageError("eval: say where, with --at X... or --from A --to B");
  return xs;
}

Table evaluated(c_Distribution& distribution, const std::vector<double>& xs) {
  Table table({"x", "density", "probability"});
  for (const double x : xs) table.add({x, distribution.pdf(x), distribution.cdf(x)});
  return table;
}

}  // namespace

void addEval(CLI::App& program) {
  CLI::App* command =
      program.add_subcommand("eval", "Density and probability at points or over a range");
  command->footer(
      "The density is 0 where a limit cuts x away, and is not rescaled by what the limits keep;\n"
      "the probability of a value up to x is that of the distribution without limits.\n\n"
      "Examples:\n"
      "  palvex eval Normal 10 2 --at 8 10 12\n"
      "  palvex eval Normal =B2 =B3 --sheet estimate.csv --from 0 --to 20 --steps 40 --csv");
  const auto options = std::make_shared<EvalOptions>();
  options->DistributionArguments::addTo(*command);
  command->add_option("--at", options->at, "Points to evaluate at")->type_name("X");
  auto* from = command->add_option("--from", options->from, "First point of a range");
  auto* to = command->add_option("--to", options->to, "Last point of the range");
  command->add_option("--steps", options->steps, "Steps from the first to the last point")
      ->capture_default_str()
      ->needs(from);
  from->type_name("A")->needs(to);
  to->type_name("B")->needs(from);
  options->ResultOptions::addTo(*command);
  command->callback([options] {
    const std::vector<double> xs = positions(*options);
    c_Distribution distribution;
    options->setChecked(distribution);
    Output output;
    output.write(evaluated(distribution, xs).text(options->format));
    output.close();
  });
}

}  // namespace palvex::terminal
