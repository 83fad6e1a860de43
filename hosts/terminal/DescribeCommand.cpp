#include <algorithm>
#include <optional>

#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Members.h"
#include "hosts/terminal/Output.h"

namespace palvex::terminal {

namespace {

struct DescribeOptions : ResultOptions, DistributionArguments {
  std::string percentiles = "1,5,10,25,50,75,90,95,99";
  bool members = false;
};

/// The rows about the law itself.
void addLaw(Table& table, const Law& law, const std::vector<DistributionArguments::Item>& items,
            bool beside) {
  const auto add = [&](const char* quantity, double value) {
    std::vector<Table::Cell> row{quantity, value};
    if (beside) row.insert(row.end(), 2, {});
    table.add(std::move(row));
  };
  const bool limited = std::any_of(items.begin(), items.end(), [](const auto& item) {
    const Variant held = content(item.value);
    return item.isLimit && held.isNumeric();
  });
  if (limited) add("Kept share", law.keptProbability());
  add("Mean of the law", law.mean());
  add("Std Dev of the law", law.sd());
}

Table described(DescribeOptions& options) {
  const auto percentages = percentagesArgument("--percentiles", options.percentiles);
  const auto items = options.read();
  std::optional<Members> members;
  std::optional<Law> law;
  if (options.members) {
    members.emplace(options.type, items);
    law = members->law();
  } else {
    law = options.law(items);
  }
  Table table(members ? std::vector<std::string>{"quantity", "law", "RandVal", "not the law"}
                      : std::vector<std::string>{"quantity", "value"});
  const auto add = [&](std::string quantity, Table::Cell value) {
    std::vector<Table::Cell> row{std::move(quantity), std::move(value)};
    if (members) row.insert(row.end(), 2, {});
    table.add(std::move(row));
  };
  add("Type", options.type);
  for (const auto& item : items) add(item.name, item.shown());
  if (law) addLaw(table, *law, items, members.has_value());
  if (!law) add("Law", members->whyNoLaw());
  for (const double percent : percentages) {
    Table::Cell value;
    if (law) value = law->quantile(percent / 100);
    if (!members) {
      table.add({percentName(percent), value});
      continue;
    }
    const double draw = members->draw(percent / 100);
    const bool same = law && members->sameDraw(draw, std::get<double>(value));
    table.add({percentName(percent), value, draw, same ? "" : "RandVal"});
  }
  return table;
}

}  // namespace

void addDescribe(CLI::App& program) {
  CLI::App* command = program.add_subcommand(
      "describe", "Mean, standard deviation and percentiles of a distribution");
  command->footer(
      "All of it of the law between its limits. The kept share is the part of the whole\n"
      "distribution's probability that the limits keep. --members shows the draws of the member\n"
      "RandVal beside the percentiles.\n\n"
      "Examples:\n"
      "  palvex describe Normal 10 2 --ltl 8\n"
      "  palvex describe PERT 8 10 15 --percentiles 10,50,80,90\n"
      "  palvex describe Triangular =B2 =C2 =D2 --sheet estimate.csv --json");
  const auto options = std::make_shared<DescribeOptions>();
  options->DistributionArguments::addTo(*command);
  command->add_option("--percentiles", options->percentiles, "Percentiles to show")
      ->type_name("LIST")
      ->capture_default_str();
  addMembers(*command, options->members);
  options->ResultOptions::addTo(*command);
  command->callback([options] {
    const Table table = described(*options);
    Output output;
    output.write(table.text(options->format));
    output.close();
  });
}

}  // namespace palvex::terminal
