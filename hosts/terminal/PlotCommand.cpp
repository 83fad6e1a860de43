#include <fmt/format.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Faults.h"
#include "hosts/terminal/Output.h"
#include "hosts/terminal/Plot.h"
#include "hosts/terminal/Text.h"
#include "runtime/NumericText.h"

namespace palvex::terminal {

namespace {

constexpr std::int16_t points = 481;

struct PlotOptions : DistributionArguments {
  std::string file;
  std::string title;
  std::string from;
  std::string to;
  bool force = false;
};

/// The words of a text as a shell parts them: by blanks, quotes of either kind keeping them
/// together.
/// @throws UsageError for a quote that is not closed
std::vector<std::string> wordsIn(const std::string& text) {
  std::vector<std::string> words;
  std::string word;
  bool inWord = false;
  char quote = 0;
  for (const char c : text) {
    if (quote != 0 ? c == quote : c == '\'' || c == '"') {
      quote = quote != 0 ? '\0' : c;
      inWord = true;
    } else if (quote == 0 && (c == ' ' || c == '\t' || c == '\n' || c == '\r')) {
      if (inWord) words.push_back(std::exchange(word, {}));
      inWord = false;
    } else {
      word += c;
      inWord = true;
    }
  }
  if (quote != 0) throw UsageError(fmt::format("'{}': a quote is not closed", text));
  if (inWord) words.push_back(word);
  return words;
}

/// What "TYPE PARAMETER... --ltl --utl --sheet" in one text stands for.
DistributionArguments argumentsIn(const std::string& description) {
  CLI::App parser;
  DistributionArguments arguments;
  arguments.addTo(parser);
  std::vector<std::string> words = wordsIn(description);
  std::reverse(words.begin(), words.end());  // as the parser takes them
  try {
    parser.parse(words);
  } catch (const CLI::ParseError& error) {
    throw UsageError(fmt::format("'{}': {}", description, error.what()));
  }
  return arguments;
}

/// One distribution in the words of the command line, or several with one text for
/// each.
std::vector<DistributionArguments> distributionsOf(const DistributionArguments& options) {
  std::vector<DistributionArguments> found;
  if (options.type.find(' ') == std::string::npos) {
    found.push_back(options);
  } else {
    found.push_back(argumentsIn(options.type));
    for (const std::string& description : options.parameters)
      found.push_back(argumentsIn(description));
  }
  for (DistributionArguments& one : found) {
    if (one.lowerLimit.empty()) one.lowerLimit = options.lowerLimit;
    if (one.upperLimit.empty()) one.upperLimit = options.upperLimit;
    if (one.sheetFile.empty()) one.sheetFile = options.sheetFile;
  }
  readSheets(found);
  return found;
}

std::string parameterText(const DistributionArguments::Item& item) {
  const Table::Cell shown = item.shown();
  if (const double* number = std::get_if<double>(&shown))
    return item.name + ' ' + numberText(*number);
  const std::string* text = std::get_if<std::string>(&shown);
  return item.name + ' ' + (text != nullptr ? *text : "");
}

std::string limitsText(const Limits& limits) {
  const auto& [lower, upper] = limits;
  if (limits.reversed())
    return fmt::format(", without {} to {}", numberText(*upper), numberText(*lower));
  if (lower && upper)
    return fmt::format(", kept from {} to {}", numberText(*lower), numberText(*upper));
  if (lower) return fmt::format(", kept from {}", numberText(*lower));
  return upper ? fmt::format(", kept up to {}", numberText(*upper)) : "";
}

/// Where a picture begins and ends: at the distribution's own plot range, but no further than six
/// standard deviations from the mean; with some of what the limits cut away beside it, and a
/// margin.
std::pair<double, double> axisOf(c_Distribution& distribution, c_Distribution& whole,
                                 const Limits& limits) {
  double from = distribution.XMin();
  double to = distribution.XMax();
  if (const double reach = 6 * distribution.StDev(); reach > 0) {
    from = std::max(from, distribution.mean() - reach);
    to = std::min(to, distribution.mean() + reach);
  }
  const double most = limits.lower || limits.upper ? 0.6 * (to - from) : 0;
  from = std::min(from, std::max(whole.XMin(), from - most));
  to = std::max(to, std::min(whole.XMax(), to + most));
  const double margin = 0.02 * (to - from);
  return {from - margin, to + margin};
}

/// The marks of a distribution; one whose value can not be had is left out.
std::vector<Mark> marksOf(c_Distribution& distribution) {
  std::vector<Mark> marks;
  const auto add = [&](const char* name, auto&& valueOf) {
    try {
      marks.push_back({name, valueOf()});
    } catch (const RuntimeError&) {
    }
  };
  add("5 %", [&] { return distribution.RandVal(0.05); });
  add("50 %", [&] { return distribution.RandVal(0.5); });
  add("mean", [&] { return distribution.mean(); });
  add("95 %", [&] { return distribution.RandVal(0.95); });
  return marks;
}

/// The points of the density; a single value is a needle, which equal steps
/// could miss.
void drawDensity(c_Distribution& whole, double from, double to, Panel& panel) {
  const double only = whole.mean();
  if (whole.StDev() == 0 && from < only && only < to) {
    panel.x = {from, std::nextafter(only, from), only, std::nextafter(only, to), to};
    panel.density = {0, 0, 1, 0, 0};
    return;
  }
  whole.ResizeArrays(points);
  whole.CreateGraphData(from, to);
  for (std::int16_t i = 1; i <= points; ++i) {
    panel.x.push_back(whole.GraphX(i));
    panel.density.push_back(whole.GraphPDF(i));
  }
}

Panel panelOf(DistributionArguments& arguments, const PlotOptions& options) {
  c_Distribution distribution;
  const auto items = arguments.setChecked(distribution);
  c_Distribution whole;
  DistributionArguments unlimited = arguments;
  unlimited.lowerLimit.clear();
  unlimited.upperLimit.clear();
  unlimited.setChecked(whole);

  Panel panel;
  panel.limits = limitsFrom(content(distribution.ltl), content(distribution.utl));
  panel.title = arguments.type + limitsText(panel.limits);
  for (std::size_t i = 0; i < static_cast<std::size_t>(distribution.NumParams()); ++i)
    panel.subtitle += (i > 0 ? ", " : "") + parameterText(items[i]);
  panel.marks = marksOf(distribution);

  auto [from, to] = axisOf(distribution, whole, panel.limits);
  if (!options.from.empty()) from = numberArgument("--from", options.from);
  if (!options.to.empty()) to = numberArgument("--to", options.to);
  if (from >= to) throw UsageError("plot: --from must be below --to");
  drawDensity(whole, from, to, panel);
  return panel;
}

/// `text` as one word of the shell.
std::string shellQuoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

/// Writes a picture as PNG by the program rsvg-convert.
void writePng(const std::string& svg, const std::string& file) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::absolute(file).parent_path();
  if (std::error_code none; !fs::is_directory(folder, none))
    throw OutputError(fmt::format("can not write '{}': there is no folder '{}'", file,
                                  fs::path(file).parent_path().string()));
  constexpr int commandNotFound = 127;
  const std::string command =
      "rsvg-convert --zoom 2 --output " + shellQuoted(file) + " 2>/dev/null";
  std::FILE* const pipe = popen(command.c_str(), "w");
  const bool written =
      pipe != nullptr && std::fwrite(svg.data(), 1, svg.size(), pipe) == svg.size();
  const int status = pipe != nullptr ? pclose(pipe) : -1;
  if (status != -1 && WIFEXITED(status) && WEXITSTATUS(status) == commandNotFound)
    throw OutputError(
        "PNG needs the program rsvg-convert (Debian: librsvg2-bin); a file that ends in .svg needs "
        "no other program");
  if (!written || status != 0)
    throw OutputError(fmt::format("rsvg-convert could not write '{}'", file));
}

bool endsIn(const std::string& file, std::string_view ending) {
  return file.size() >= ending.size() &&
         sameLetters(std::string_view(file).substr(file.size() - ending.size()), ending);
}

/// @throws UsageError for a name that is no picture's
void checkName(const std::string& file) {
  if (!file.empty() && !endsIn(file, ".svg") && !endsIn(file, ".png"))
    throw UsageError("plot: '" + file + "' ends neither in .svg nor in .png");
}

void write(const std::string& svg, const std::string& file) {
  if (endsIn(file, ".png")) return writePng(svg, file);
  Output output(file);
  output.write(svg);
  output.close();
}

}  // namespace

void addPlot(CLI::App& program) {
  CLI::App* command = program.add_subcommand("plot", "Draw densities, as SVG or PNG");
  command->footer(
      "Filled: the density that the limits keep. Dashed: what they "
      "cut away, where it is near.\n"
      "Marked: the mean, and the values that 5, 50 and 95 % of the "
      "draws do not exceed.\n"
      "Several distributions, each in quotes, stand side by side "
      "in one picture.\n\n"
      "Examples:\n"
      "  palvex plot Normal 10 2 --ltl 8 -o normal.svg\n"
      "  palvex plot 'Gamma 2 3 0' 'Beta 2 5 0 1 --utl 0.6' "
      "--title 'Two costs' -o costs.png\n"
      "  palvex plot Histogram =A2:A200 'Raw Data' --sheet "
      "data.csv -o data.svg");
  const auto options = std::make_shared<PlotOptions>();
  options->DistributionArguments::addTo(*command);
  command
      ->add_option("-o,--output", options->file,
                   "File to write, .svg or .png (PNG needs rsvg-convert); else "
                   "standard output")
      ->type_name("FILE");
  command->add_flag("--force", options->force, "Write even over the worksheet that is read");
  command->add_option("--title", options->title, "Heading of the picture");
  command->add_option("--from", options->from, "Where the axis begins")->type_name("A");
  command->add_option("--to", options->to, "Where the axis ends")->type_name("B");
  command->callback([options] {
    checkName(options->file);
    std::vector<DistributionArguments> distributions = distributionsOf(*options);
    std::vector<Panel> panels;
    for (DistributionArguments& one : distributions) {
      if (!options->force) refuseToOverwriteInput(options->file, one.sheetFile);
      panels.push_back(panelOf(one, *options));
    }
    write(svgOf(panels, options->title), options->file);
  });
}

}  // namespace palvex::terminal
