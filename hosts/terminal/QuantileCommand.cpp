#include <fmt/core.h>

#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Members.h"
#include "hosts/terminal/Output.h"

namespace palvex::terminal {

namespace {

struct QuantileOptions : ResultOptions, DistributionArguments {
  std::vector<std::string> at;
  bool upper = false;
  bool members = false;
};

std::vector<double> probabilities(const QuantileOptions& options) {
  std::vector<double> found;
  for (const std::string& argument : options.at) {
    found.push_back(numberArgument("--at", argument));
    if (!(found.back() >= 0 && found.back() <= 1))
      throw UsageError(fmt::format("--at: '{}' is no probability; write 0.8 or 80%", argument));
  }
  return found;
}

Table quantiles(QuantileOptions& options) {
  const std::vector<double> ps = probabilities(options);
  const auto items = options.read();
  if (!options.members) {
    const Law law = options.law(items);
    Table table({options.upper ? "exceedance" : "probability", "value"});
    for (const double p : ps)
      table.add({p, options.upper ? law.upperQuantile(p) : law.quantile(p)});
    return table;
  }
  Members members(options.type, items);
  Table table({"probability", "RandVal", "value", "not the law"});
  for (const double p : ps) {
    const double draw = members.draw(p);
    if (!members.law()) {
      table.add({p, draw, {}, members.whyNoLaw()});
      continue;
    }
    const double value = members.law()->quantile(p);
    table.add({p, draw, value, members.sameDraw(draw, value) ? "" : "RandVal"});
  }
  return table;
}

}  // namespace

void addQuantile(CLI::App& program) {
  CLI::App* command =
      program.add_subcommand("quantile", "The value that is not exceeded with a given probability");
  command->footer(
      "Of the law between its limits. With --upper, the probabilities are those of a greater "
      "value,\n"
      "so that 1e-12 can be asked for. --members shows what RandVal answers, the law beside it.\n\n"
      "Examples:\n"
      "  palvex quantile Normal 10 2 --at 0.1 0.8\n"
      "  palvex quantile PERT 8 10 15 --at 80%\n"
      "  palvex quantile Gamma 2 3 0 --at 1e-12 --upper");
  const auto options = std::make_shared<QuantileOptions>();
  options->DistributionArguments::addTo(*command);
  command->add_option("--at", options->at, "Probabilities, such as 0.8 or 80%")
      ->type_name("P")
      ->required();
  auto* upper =
      command->add_flag("--upper", options->upper, "P is the probability of a greater value");
  addMembers(*command, options->members);
  command->get_option("--members")->excludes(upper);
  options->ResultOptions::addTo(*command);
  command->callback([options] {
    const Table table = quantiles(*options);
    Output output;
    output.write(table.text(options->format));
    output.close();
  });
}

}  // namespace palvex::terminal
