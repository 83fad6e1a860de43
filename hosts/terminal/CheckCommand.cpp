#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Output.h"

namespace palvex::terminal {

namespace {

/// The content of a parameter or limit, that of its cell for a reference to one.
Table::Cell shownValue(const Variant& value) {
  if (value.isObject()) {
    const Variant content = value.toObject()->get("Value");
    if (!content.isArray()) return shownValue(content);
    return value.toObject()->get("Count").toText() + " cells";
  }
  if (value.isNumeric()) return value.toDouble();
  if (value.isText()) return value.toText();
  return {};
}

Table checkedTable(const std::vector<DistributionArguments::Item>& items) {
  Table table({"parameter", "given", "value"});
  for (const auto& [name, given, value] : items) table.add({name, given, shownValue(value)});
  return table;
}

}  // namespace

void addCheck(CLI::App& program) {
  CLI::App* command = program.add_subcommand(
      "check", "Check a distribution's parameters and limits, and show their values");
  command->footer(
      "A fault is one sentence on standard error, and the exit code is 1.\n\n"
      "Examples:\n"
      "  palvex check Normal 10 2\n"
      "  palvex check Triangular =B2 =C2 =D2 --ltl 0 --sheet estimate.csv\n"
      "  palvex check Normal 10 -2");
  struct Options : ResultOptions, DistributionArguments {};
  const auto options = std::make_shared<Options>();
  options->DistributionArguments::addTo(*command);
  options->ResultOptions::addTo(*command);
  command->callback([options] {
    c_Distribution distribution;
    const auto items = options->setChecked(distribution);
    Output output;
    output.write(checkedTable(items).text(options->format));
    output.close();
  });
}

}  // namespace palvex::terminal
