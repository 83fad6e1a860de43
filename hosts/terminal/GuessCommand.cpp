#include <fmt/core.h>

#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Faults.h"
#include "hosts/terminal/Output.h"

namespace palvex::terminal {

namespace {

struct GuessOptions : ResultOptions {
  std::string type;
  std::string value;
};

Table guesses(const c_Distribution& distribution, double value) {
  Table table({"parameter", "value"});
  for (std::int16_t i = 1; i <= distribution.NumParams(); ++i) {
    table.add({distribution.ParamName(i), distribution.GuessParamValue(i, value)});
  }
  return table;
}

}  // namespace

void addGuess(CLI::App& program) {
  CLI::App* command =
      program.add_subcommand("guess", "Starting parameters for a distribution around a value");
  command->footer(
      "A histogram has no parameters that could be guessed.\n\n"
      "Examples:\n"
      "  palvex guess Triangular 50\n"
      "  palvex guess Lognormal 12.5 --json");
  const auto options = std::make_shared<GuessOptions>();
  command->add_option("TYPE", options->type, "Type of the distribution (see: palvex types)")
      ->required();
  command->add_option("VALUE", options->value, "What the distribution is to lie around")
      ->required();
  options->addTo(*command);
  command->callback([options] {
    const double value = numberArgument("VALUE", options->value);
    c_Distribution distribution;
    const std::string type = typeNamed(options->type);
    if (findFamily(type) == nullptr)
      throw UsageError(fmt::format("guess: there is no guess for {}", type));
    distribution.distType(type);
    if (type == "Histogram") throw UsageError("guess: a histogram is made from data");
    Output output;
    output.write(guesses(distribution, value).text(options->format));
    output.close();
  });
}

}  // namespace palvex::terminal
