#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "TypesText.h"  // made of docs/types.md
#include "engine/LawTypes.h"
#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Output.h"

namespace palvex::terminal {

namespace {

Table typesTable() {
  Table table({"type", "parameter 1", "parameter 2", "parameter 3", "parameter 4"});
  for (const LawType& entry : lawTypes) {
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

/// What docs/types.md says about a type, without the picture and the marks of its format.
std::string partAbout(const std::string& type) {
  const std::string heading = "\n## " + type + "\n";
  const std::size_t start = typesText.find(heading) + 1;
  const std::string_view part = typesText.substr(start, typesText.find("\n## ", start) - start);
  std::string text = type + "\n";
  bool blank = false;
  std::string_view rest = part.substr(part.find('\n') + 1);
  while (!rest.empty()) {
    std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    if (line.starts_with("![") || line.starts_with("```")) continue;
    if (!line.empty()) {
      if (blank) text += '\n';
      for (const char c : line) {
        if (c != '`') text += c;
      }
      text += '\n';
    }
    blank = line.empty();
  }
  return text;
}

}  // namespace

void addTypes(CLI::App& program) {
  CLI::App* command = program.add_subcommand("types", "List the types and their parameters");
  command->footer("Examples:\n  palvex types\n  palvex types Gamma\n  palvex types --json");
  struct Options : ResultOptions {
    std::string type;
  };
  const auto options = std::make_shared<Options>();
  command->add_option("NAME", options->type,
                      "A type: its formula, parameters, mean, and when to use it");
  options->addTo(*command);
  command->callback([options] {
    Output output;
    if (!options->type.empty()) {
      output.write(partAbout(typeNamed(options->type)));
      output.close();
      return;
    }
    output.write(typesTable().text(options->format));
    if (options->format == Format::people) output.write(layoutsText());
    output.close();
  });
}

}  // namespace palvex::terminal
