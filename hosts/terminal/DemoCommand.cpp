#include <fmt/core.h>

#include <array>

#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/CsvSheet.h"
#include "hosts/terminal/Faults.h"
#include "hosts/terminal/Output.h"
#include "hosts/terminal/SimulateOutput.h"
#include "palvex/simulation.h"

namespace palvex::terminal {

namespace {

constexpr std::string_view sheetText =
    "Work package,Low,Likely,High,Past delays\n"
    "Build (days),8,10,15,0\n"
    "Test (days),4,5.5,9,2.5\n"
    "Rates and risks,Mean,Std Dev,At least,1\n"
    "Day rate,620,45,550,4\n"
    "Rework (days),3,1.5,0,1.5\n"
    "Licence,#N/A,20,,3\n";

struct Example {
  const char* name;
  const char* type;
  std::vector<const char*> parameters;
  const char* lowerLimit;
  double at;

  [[nodiscard]] std::vector<DistributionArguments::Item> items(
      const std::shared_ptr<const Worksheet>& sheet) const {
    DistributionArguments arguments;
    arguments.type = type;
    arguments.parameters.assign(parameters.begin(), parameters.end());
    if (lowerLimit != nullptr) arguments.lowerLimit = lowerLimit;
    arguments.sheet = sheet;
    return arguments.read();
  }
};

const std::array<Example, 6> examples{{
    {"Build", "Triangular", {"=B2", "=C2", "=D2"}, nullptr, 10},
    {"Test", "Triangular", {"=B3", "=C3", "=D3"}, nullptr, 6},
    {"Day rate", "Normal", {"=B5", "=C5"}, "=D5", 600},
    {"Rework", "Normal", {"=B6", "=C6"}, "=D6", 4},
    {"Delay", "Histogram", {"=E2:E7", "Raw Data"}, nullptr, 2},
    {"Licence", "Normal", {"=B7", "=C7"}, nullptr, 100},
}};

std::string sheetGrid(const Worksheet& sheet) {
  std::vector<std::string> names{""};
  for (std::int32_t column = 1; column <= sheet.columns(); ++column) {
    names.push_back(columnName(column));
  }
  Table grid(std::move(names));
  for (std::int32_t row = 1; row <= sheet.rows(); ++row) {
    std::vector<Table::Cell> cells{static_cast<double>(row)};
    for (std::int32_t column = 1; column <= sheet.columns(); ++column) {
      const Variant content = sheet.at({row, column});
      cells.emplace_back(content.isError() ? "#N/A" : content.toText());
    }
    grid.add(std::move(cells));
  }
  return grid.text(Format::people);
}

std::string description(const Example& example) {
  std::string text = example.type;
  for (const std::string_view parameter : example.parameters) {
    const bool blank = parameter.find(' ') != std::string_view::npos;
    text += fmt::format(" {1}{0}{1}", parameter, blank ? "\"" : "");
  }
  if (example.lowerLimit != nullptr) text += fmt::format(" --ltl {}", example.lowerLimit);
  return text;
}

std::string results(const std::shared_ptr<const Worksheet>& sheet) {
  Table table(
      {"name", "distribution", "x", "density", "probability", "5 %", "median", "95 %", "fault"});
  for (const Example& example : examples) {
    try {
      const Law law = lawOf(example.type, example.items(sheet));
      table.add({example.name,
                 description(example),
                 example.at,
                 law.density(example.at),
                 law.probability(example.at),
                 law.quantile(0.05),
                 law.quantile(0.5),
                 law.quantile(0.95),
                 {}});
    } catch (const Refusal& fault) {
      table.add({example.name, description(example), {}, {}, {}, {}, {}, {}, fault.what()});
    }
  }
  return table.text(Format::people, 5);
}

constexpr std::string_view registerText =
    "Name,Type,Param1,Param2,Param3,Chance,Formula,Unit\n"
    "Build,PERT,8,10,15,,,days\n"
    "Test,PERT,4,5.5,9,,,days\n"
    "Rework,LognormalMean,3,1.5,,30%,,days\n"
    "Day rate,Normal,620,45,,,,EUR\n"
    "Duration,,,,,,[Build] + [Test] + [Rework],days\n"
    "Cost,,,,,,[Duration] * [Day rate],EUR\n";

std::string simulatedRegister(const Worksheet& sheet) {
  const simulation::Model model = simulation::Model::fromSheet(CsvSheet(sheet));
  simulation::Settings settings;
  settings.percents = {50, 80, 90};
  return resultsText(simulation::run(model, settings), Format::people);
}

std::string demonstration() {
  const Worksheet table = Worksheet::fromCsv(registerText, "register");
  const auto sheet = std::make_shared<const Worksheet>(Worksheet::fromCsv(sheetText, "estimate"));
  return fmt::format(
      "A worksheet holds the figures of an estimate:\n\n{}\n"
      "Each distribution below takes its parameters, and some a lower limit, from cells of the\n"
      "sheet. Each is checked first; a fault is one sentence. Then, of the law between its "
      "limits:\n"
      "the density at x, the probability of a value up to x, and the values that it does not\n"
      "exceed with a probability of 5, 50 and 95 %.\n\n{}\n"
      "What may all of it cost? A register says what is uncertain, what may happen, and what\n"
      "follows from it:\n\n{}\n"
      "palvex simulate draws it ten thousand times:\n\n{}\n"
      "Try next (in the source tree, ./run stands for palvex):\n"
      "  palvex simulate --example > register.csv                   a longer register, and then\n"
      "  palvex simulate register.csv -n 1e6\n"
      "  palvex types                                               the types there are\n"
      "  palvex eval Normal 620 45 --ltl 550 --from 500 --to 740    density and probability\n"
      "  palvex check Normal 620 -45                                a fault in one sentence\n"
      "  palvex demo --save estimate.csv                            the sheet as a file, and then\n"
      "  palvex check Normal =B5 =C5 --ltl =D5 --sheet estimate.csv\n"
      "  palvex --help                                              everything else\n",
      sheetGrid(*sheet), results(sheet), sheetGrid(table), simulatedRegister(table));
}

}  // namespace

void addDemo(CLI::App& program) {
  CLI::App* command =
      program.add_subcommand("demo", "Distributions on a small worksheet, with an explanation");
  command->footer("Examples:\n  palvex demo\n  palvex demo --save estimate.csv");
  struct Options {
    std::string file;
    bool force = false;
  };
  const auto options = std::make_shared<Options>();
  auto* save = command->add_option("--save", options->file, "Write the worksheet to a file instead")
                   ->type_name("FILE");
  command->add_flag("--force", options->force, "Write over a file that is there")->needs(save);
  command->callback([options] {
    if (!options->force) refuseToOverwrite(options->file);
    Output output(options->file);
    output.write(options->file.empty() ? demonstration() : std::string(sheetText));
    output.close();
  });
}

}  // namespace palvex::terminal
