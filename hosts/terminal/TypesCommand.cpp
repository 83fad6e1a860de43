#include <fmt/format.h>
#include <fmt/ranges.h>

#include "engine/Catalogue.h"
#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Output.h"

namespace palvex::terminal {

namespace {

Table typesTable() {
  Table table({"type", "parameter 1", "parameter 2", "parameter 3", "parameter 4"});
  for (const CatalogueEntry& entry : catalogue) {
    std::vector<Table::Cell> row{std::string(entry.name)};
    for (const std::string_view parameter : entry.parameters) {
      row.push_back(parameter.empty() ? Table::Cell{} : std::string(parameter));
    }
    table.add(std::move(row));
  }
  return table;
}

/// The layouts of a histogram's data, which are its second parameter.
std::string layoutsText() {
  return fmt::format("\nData Config of a histogram is one of \"{}\".\n",
                     fmt::join(dataConfigurations, "\", \""));
}

}  // namespace

void addTypes(CLI::App& program) {
  CLI::App* command = program.add_subcommand("types", "List the types and their parameters");
  command->footer("Examples:\n  palvex types\n  palvex types --json");
  const auto options = std::make_shared<ResultOptions>();
  options->addTo(*command);
  command->callback([options] {
    Output output;
    output.write(typesTable().text(options->format));
    if (options->format == Format::people) output.write(layoutsText());
    output.close();
  });
}

}  // namespace palvex::terminal
