#include <fmt/format.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "families/m_Histogram.h"
#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Faults.h"
#include "hosts/terminal/LawPicture.h"
#include "hosts/terminal/Members.h"
#include "hosts/terminal/Output.h"
#include "hosts/terminal/Plot.h"
#include "simulation/Text.h"

namespace palvex::terminal {

namespace {

struct PlotOptions : DistributionArguments {
  std::string file;
  std::string title;
  std::string from;
  std::string to;
  std::string percentiles = "5,50,95";
  std::string axisTitle = "value";
  std::string unit;
  bool cumulative = false;
  bool overlay = false;
  bool members = false;
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
  std::reverse(words.begin(), words.end());  // the parser takes them last first
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

using Items = std::vector<DistributionArguments::Item>;

std::string parameterTexts(const Items& items) {
  std::string texts;
  for (const auto& item : items) {
    if (item.isLimit) continue;
    const Table::Cell shown = item.shown();
    texts += (texts.empty() ? "" : ", ") + item.name + ' ';
    if (const double* number = std::get_if<double>(&shown)) texts += parameterText(*number);
    if (const auto* text = std::get_if<std::string>(&shown)) texts += *text;
  }
  return texts;
}

std::string limitsText(const Limits& limits) {
  const auto& [lower, upper] = limits;
  if (limits.reversed())
    return fmt::format(", without {} to {}", parameterText(*upper), parameterText(*lower));
  if (lower && upper)
    return fmt::format(", kept from {} to {}", parameterText(*lower), parameterText(*upper));
  if (lower) return fmt::format(", kept from {}", parameterText(*lower));
  return upper ? fmt::format(", kept up to {}", parameterText(*upper)) : "";
}

/// The items that are parameters only.
Items withoutLimits(const Items& items) {
  Items parameters;
  std::copy_if(items.begin(), items.end(), std::back_inserter(parameters),
               [](const auto& item) { return !item.isLimit; });
  return parameters;
}

Limits limitsIn(const Items& items) {
  Limits limits;
  for (const auto& item : items) {
    const Variant held = content(item.value);
    if (!item.isLimit || !held.isNumeric()) continue;
    (item.name == "LTL" ? limits.lower : limits.upper) = held.toDouble();
  }
  return limits;
}

/// The values of raw data, to be shown below its histogram.
std::vector<double> rawValues(const std::string& type, const Items& items) {
  constexpr std::int32_t most = 2000;
  std::vector<double> values;
  if (type != "Histogram" || content(items.at(1).value) != Variant(dataConfigurations[0]))
    return values;
  const Variant cells = content(items.at(0).value);
  if (!cells.isArray()) return values;
  for (std::int32_t row = 1; row <= std::min(most, cells.upperBound(1)); ++row) {
    for (std::int32_t column = 1; column <= cells.upperBound(2); ++column) {
      const Variant& cell = cells.at(row, column);
      if (cell.isNumeric()) values.push_back(cell.toDouble());
    }
  }
  return values;
}

/// The borders between the bins of a histogram that touch.
std::vector<Point> bordersOf(const std::string& type, const Items& items, const Law& law) {
  constexpr std::size_t most = 100;  // more would only darken the picture
  std::vector<Point> borders;
  if (type != "Histogram") return borders;
  m_Histogram::Arrays arrays;
  if (!m_Histogram::CreateHistogramArrays(items.at(0).value, items.at(1).value, arrays.density,
                                          arrays.table)
           .empty())
    return borders;
  const auto& bins = arrays.density;
  for (std::size_t i = 3; i < bins.size() && bins.size() <= 3 * most; i += 3) {
    const double height = std::min(bins[i - 1], bins[i + 2]) / law.keptProbability();
    if (bins[i - 2] == bins[i] && height > 0) borders.push_back({bins[i], height});
  }
  return borders;
}

std::vector<Mark> marksOf(const Law& law, const PlotOptions& options) {
  std::vector<Mark> marks;
  const auto add = [&](const std::string& name, double x) {
    if (std::isfinite(x)) marks.push_back({name, x, options.cumulative ? law.probability(x) : 0});
  };
  for (const double percent : percentagesArgument("--percentiles", options.percentiles))
    add(percentName(percent), law.quantile(percent / 100));
  add("mean", law.mean());
  return marks;
}

/// What a member answers over an axis; 0 where it raises an error.
Curve memberCurve(Members& members, bool cumulative, const Axis& axis) {
  const auto answer = [&](double x) {
    try {
      return cumulative ? members.cdf(x) : members.pdf(x);
    } catch (const RuntimeError&) {
      return 0.0;
    }
  };
  const auto through = members.law() ? landmarks(*members.law()) : std::vector<double>{};
  return {cumulative ? "cdf" : "pdf", {traced(answer, axis.from, axis.to, through)}, {}};
}

/// One distribution of a picture.
struct Plotted {
  std::string type;
  Items items;
  Subject subject;

  explicit Plotted(DistributionArguments& arguments)
      : type((arguments.type = typeNamed(arguments.type))),
        items(arguments.read()),
        subject{arguments.law(items), lawOf(type, withoutLimits(items)), limitsIn(items)} {}

  [[nodiscard]] std::string title() const { return type + limitsText(subject.limits); }
};

Axis chosenAxis(Axis axis, const PlotOptions& options) {
  if (!options.from.empty()) axis.from = numberArgument("--from", options.from);
  if (!options.to.empty()) axis.to = numberArgument("--to", options.to);
  if (!(axis.from < axis.to)) throw UsageError("plot: --from must be below --to");
  if (!std::isfinite(axis.to - axis.from)) throw UsageError("plot: the axis is too long");
  return axis;
}

Panel emptyPanel(const Axis& axis, const PlotOptions& options) {
  Panel panel{};
  panel.from = axis.from;
  panel.to = axis.to;
  panel.axisTitle = options.axisTitle + (options.unit.empty() ? "" : ", " + options.unit);
  panel.inPercent = options.cumulative;
  panel.filled = !options.cumulative;
  panel.heightTitle = options.cumulative     ? "probability"
                      : options.unit.empty() ? "density"
                                             : "density, 1/" + options.unit;
  return panel;
}

void setHeight(Panel& panel) {
  panel.height = panel.inPercent ? 1 : heightFor(panel.curves, {panel.from, panel.to});
}

Panel panelOf(const Plotted& plotted, const PlotOptions& options) {
  const Subject& subject = plotted.subject;
  const Axis axis = chosenAxis(axisOf(subject), options);
  Panel panel = emptyPanel(axis, options);
  panel.title = plotted.title();
  panel.note = parameterTexts(plotted.items);
  panel.marks = marksOf(subject.law, options);
  Curve curve =
      options.cumulative ? probabilityCurve(subject.law, axis) : densityCurve(subject, axis);
  if (options.members) {
    Members members(plotted.type, plotted.items);
    curve.name = "the law";
    curve.cut.clear();
    panel.curves = {std::move(curve), memberCurve(members, options.cumulative, axis)};
    panel.filled = false;
  } else {
    panel.curves = {std::move(curve)};
    panel.values = rawValues(plotted.type, plotted.items);
    if (!options.cumulative) panel.borders = bordersOf(plotted.type, plotted.items, subject.law);
  }
  setHeight(panel);
  return panel;
}

/// All distributions over one axis.
Panel overlay(const std::vector<Plotted>& all, const PlotOptions& options) {
  Axis axis = axisOf(all.front().subject);
  for (const Plotted& one : all) {
    const auto [from, to] = axisOf(one.subject);
    axis = {std::min(axis.from, from), std::max(axis.to, to)};
  }
  axis = chosenAxis(axis, options);
  Panel panel = emptyPanel(axis, options);
  panel.filled = false;
  for (const Plotted& one : all) {
    Curve curve = options.cumulative ? probabilityCurve(one.subject.law, axis)
                                     : densityCurve(one.subject, axis);
    curve.cut.clear();
    curve.name = one.title() + ": " + parameterTexts(one.items);
    panel.curves.push_back(std::move(curve));
  }
  setHeight(panel);
  return panel;
}

std::vector<Panel> panelsOf(std::vector<DistributionArguments> distributions,
                            const PlotOptions& options) {
  std::vector<Plotted> all;
  for (DistributionArguments& one : distributions) {
    if (!options.force) refuseToOverwriteInput(options.file, one.sheetFile);
    all.emplace_back(one);
  }
  if (options.overlay) return {overlay(all, options)};
  std::vector<Panel> panels;
  panels.reserve(all.size());
  for (const Plotted& one : all) panels.push_back(panelOf(one, options));
  return panels;
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
  FileAside picture(file);
  const std::string command =
      "rsvg-convert --zoom 2 --output " + shellQuoted(picture.name()) + " 2>/dev/null";
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
  picture.finish();
}

bool endsIn(const std::string& file, std::string_view ending) {
  return file.size() >= ending.size() &&
         simulation::sameLetters(std::string_view(file).substr(file.size() - ending.size()),
                                 ending);
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
      "Of the law between its limits. Filled: its density. Dashed: what the limits cut away, "
      "where\n"
      "it is near. Marked: the mean, and the values that 5, 50 and 95 % of the law do not exceed.\n"
      "Several distributions, each in quotes, stand side by side in one picture, or with "
      "--overlay\n"
      "over one axis. --members draws the member pdf (or cdf) and the law over each other.\n\n"
      "Examples:\n"
      "  palvex plot Normal 10 2 --ltl 8 -o normal.svg\n"
      "  palvex plot 'Gamma 2 3 0' 'Beta 2 5 0 1 --utl 0.6' --title 'Two costs' -o costs.png\n"
      "  palvex plot PERT 8 10 15 --cumulative --percentiles 10,50,80,90 --axis Duration --unit "
      "days "
      "-o s.svg\n"
      "  palvex plot --overlay 'Normal 10 2' 'Triangular 5 10 15' -o both.svg\n"
      "  palvex plot Histogram =A2:A200 'Raw Data' --sheet data.csv -o data.svg");
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
  command->add_option("--percentiles", options->percentiles, "Percentiles to mark")
      ->type_name("LIST")
      ->capture_default_str();
  command->add_option("--axis", options->axisTitle, "Title of the axis")->capture_default_str();
  command->add_option("--unit", options->unit, "Unit of the values");
  command->add_flag("--cumulative", options->cumulative,
                    "The probability of a value up to x: the S-curve");
  auto* overlaid = command->add_flag("--overlay", options->overlay, "All over one axis");
  addMembers(*command, options->members);
  command->get_option("--members")->excludes(overlaid);
  command->callback([options] {
    checkName(options->file);
    const std::vector<Panel> panels = panelsOf(distributionsOf(*options), *options);
    write(svgOf(panels, options->title), options->file);
  });
}

}  // namespace palvex::terminal
