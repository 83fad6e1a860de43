#include "hosts/terminal/Report.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>
#include <utility>
#include <variant>

#include "hosts/terminal/Plot.h"
#include "hosts/terminal/Text.h"

namespace palvex::terminal {

namespace {

using simulation::Percentile;
using simulation::Results;
using simulation::ResultStatistics;
using simulation::Row;

constexpr std::string_view style = R"(<style>
:root { color-scheme: light dark; --paper: #fff; --ink: #1c2430; --quiet: #56606e; --line: #d5dae1; --bar: #9dbfe0;
  --edge: #1d4f80; --low: #c96a1b; --high: #1d4f80; --band: #dfeaf5; --panel: #f6f8fa }
@media screen and (prefers-color-scheme: dark) { :root { --paper: #12161c; --ink: #e6e9ee; --quiet: #a3adba; --line: #2e3742;
  --bar: #2f5478; --edge: #9cc7f0; --low: #f0a35e; --high: #9cc7f0; --band: #1d2f42; --panel: #1a2028 } }
* { box-sizing: border-box }
body { margin: 0 auto; padding: 28px 20px 48px; max-width: 1080px; background: var(--paper); color: var(--ink);
  font: 15px/1.5 "Helvetica Neue", Helvetica, Arial, "Liberation Sans", sans-serif }
h1 { font-size: 26px; line-height: 1.2; margin: 0 0 6px } h2 { font-size: 21px; margin: 36px 0 4px; overflow-wrap: anywhere }
h3 { font-size: 15px; margin: 22px 0 6px }
p { margin: 4px 0 10px; max-width: 72ch } .quiet, figcaption, th { color: var(--quiet) } .lead { font-size: 17px }
dl { display: flex; flex-wrap: wrap; gap: 4px 28px; margin: 10px 0; padding: 10px 14px; background: var(--panel); border-radius: 6px }
dl div { display: flex; gap: 8px } dt { color: var(--quiet) } dd { margin: 0; font-variant-numeric: tabular-nums }
code { font: 13px ui-monospace, "DejaVu Sans Mono", monospace; overflow-wrap: anywhere }
nav ul { padding: 0; margin: 8px 0; list-style: none; display: flex; flex-wrap: wrap; gap: 4px 18px } a { color: var(--edge) }
.charts { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 420px), 1fr)); gap: 8px 28px }
figure { margin: 8px 0; max-width: 560px; break-inside: avoid } figcaption { font-size: 14px; margin-bottom: 2px }
svg { display: block; width: 100%; height: auto; overflow: visible }
svg text { font-size: 12px; fill: var(--ink) } svg .soft { fill: var(--quiet) } .middle { text-anchor: middle } .last { text-anchor: end }
.bar { fill: var(--bar) } .edge { fill: none; stroke: var(--edge); stroke-width: 2; stroke-linejoin: round } .axis { stroke: var(--ink); stroke-width: 1 }
.grid { stroke: var(--line); stroke-width: 1 } .mark { stroke: var(--ink); stroke-width: 1; fill: none } .mean { stroke-dasharray: 2 3; stroke-width: 2 }
.band { fill: var(--band) } .dot { fill: var(--edge) } .cut { fill: none; stroke: var(--quiet); stroke-dasharray: 3 3 }
.low { fill: var(--low) } .high { fill: var(--high) } .low.key { color: var(--low) } .high.key { color: var(--high) }
table { border-collapse: collapse; width: 100%; font-variant-numeric: tabular-nums } th { font-weight: normal; text-align: left; font-size: 13px }
th, td { padding: 4px 10px 4px 0; border-bottom: 1px solid var(--line); vertical-align: middle } td.n, th.n { text-align: right; white-space: nowrap }
td.name { overflow-wrap: anywhere; min-width: 6em } tr { break-inside: avoid } .scroll { overflow-x: auto }
.tornado td.range { width: 46% } .tornado svg { height: 20px } .law { width: 110px } .law svg { width: 110px; height: 30px }
@media (max-width: 640px) { body { padding: 18px 14px 32px } .tornado .more { display: none }
  .tornado tr { display: grid; grid-template-columns: 1fr 7em 7em; border-bottom: 1px solid var(--line) } .tornado td, .tornado th { border: 0 }
  .tornado td.name, .tornado th:first-child { grid-column: 1 / -1; padding-bottom: 0 } .tornado td.range { width: auto } }
@media print { @page { size: A4; margin: 14mm } body { padding: 0; max-width: none; font-size: 11.5px } .charts { grid-template-columns: 1fr 1fr }
  section.result { break-before: page } section.result:first-of-type { break-before: auto } nav { display: none }
  * { -webkit-print-color-adjust: exact; print-color-adjust: exact } }
</style>
)";

// A chart's geometry, in the units of its view box.
constexpr double width = 440;
constexpr double height = 250;
constexpr double left = 14;
constexpr double right = width - 14;
constexpr double top = 46;  // the names of marks stand above
constexpr double bottom = height - 24;

/// A page as it grows.
class Page {
 public:
  template <class... T>
  void add(fmt::format_string<T...> format, T&&... values) {
    fmt::format_to(std::back_inserter(text_), format, std::forward<T>(values)...);
  }
  [[nodiscard]] std::string take() && { return std::move(text_); }

 private:
  std::string text_;
};

/// Numbers of one result in one style, fit for its spread; what is undefined is a dash.
class Numbers {
 public:
  Numbers(double from, double to) : style_(widened(from, to)) {}
  [[nodiscard]] std::string operator()(double value) const {
    if (!std::isfinite(value)) return "\u2013";
    return style_.text(value);
  }

 private:
  /// The style needs an axis with a length, also where all values are equal.
  static NumberStyle widened(double from, double to) {
    const double least = std::max(std::abs(from), std::abs(to)) * 1e-6;
    if (!(to - from > least)) to = from + (least > 0 ? least : 1);
    return {from, to};
  }

  NumberStyle style_;
};

Numbers numbersOf(const simulation::Moments& moments) {
  const double sd = std::isfinite(moments.sd()) ? moments.sd() : 0;
  return {std::max(moments.smallest, moments.mean - 3 * sd),
          std::min(moments.greatest, moments.mean + 3 * sd)};
}

/// Numbers with digits enough for the intervals of the percentiles.
Numbers fineNumbersOf(const ResultStatistics& result) {
  double width = std::numeric_limits<double>::infinity();
  for (const Percentile& p : result.percentiles) {
    if (p.high > p.low) width = std::min(width, p.high - p.low);
  }
  if (!std::isfinite(width)) return numbersOf(result.moments);
  const double middle = result.moments.mean;
  return {middle - 10 * width, middle + 10 * width};
}

std::string percentText(double percent) {
  return fmt::format("P{:g}", percent);
}

std::string shareText(double share) {
  return std::isfinite(share) ? fmt::format("{:.0f} %", 100 * share) : "\u2013";
}

/// `value` with two decimals, for people; a dash where it is not finite.
std::string plain(double value) {
  if (!std::isfinite(value)) return "\u2013";
  const double rounded = std::round(100 * value) / 100;
  return fmt::format("{}{:.2f}", rounded < 0 ? "\u2212" : "", std::abs(rounded));
}

/// Characters of a text.
std::size_t lengthOf(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string wholeText(std::uint64_t number) {
  return parameterText(static_cast<double>(number));
}

struct Range {
  double from;
  double to;
  [[nodiscard]] double length() const { return to - from; }
};

double across(double x, const Range& axis) {
  return left + (x - axis.from) / axis.length() * (right - left);
}

double up(double share) {
  return bottom - share * (bottom - top);
}

void openChart(Page& page, const std::string& caption, std::string_view described) {
  page.add(
      "<figure><figcaption>{}</figcaption>\n<svg viewBox=\"0 0 {} {}\" role=\"img\"><title>{}"
      "</title>\n",
      caption, width, height, markup(described));
}

void closeChart(Page& page) {
  page.add("</svg></figure>\n");
}

void addAxis(Page& page, const Range& axis) {
  page.add("<path class=\"axis\" d=\"M{} {}H{}\"/>\n", left, bottom, right);
  const Numbers numbers(axis.from, axis.to);
  for (const double x : roundNumbers(axis.from, axis.to, 5)) {
    const double at = across(x, axis);
    page.add(
        "<path class=\"axis\" d=\"M{0:.1f} {1}v4\"/><text class=\"{2}\" x=\"{0:.1f}\" y=\"{3}\">{4}"
        "</text>\n",
        at, bottom, "middle", bottom + 18, numbers(x));
  }
}

/// Mean and percentiles: names above the chart, moved apart where they would meet, and lines down.
void addMarks(Page& page, const ResultStatistics& result, const Range& axis, bool withMean) {
  struct Mark {
    std::string name;
    double x;
    double label;
    bool isMean;
  };
  std::vector<Mark> marks;
  for (const Percentile& mark : result.marks) {
    marks.push_back({percentText(mark.percent), mark.value, 0, false});
  }
  if (withMean) marks.push_back({"mean", result.moments.mean, 0, true});
  std::stable_sort(marks.begin(), marks.end(),
                   [](const Mark& a, const Mark& b) { return a.x < b.x; });
  const Numbers numbers = numbersOf(result.moments);
  std::size_t longest = 0;
  for (const Mark& mark : marks) longest = std::max(longest, lengthOf(numbers(mark.x)));
  const double apart = std::max(52., 6.9 * static_cast<double>(longest) + 8);
  double least = left + apart / 2;
  for (Mark& mark : marks) {
    mark.label = std::max(least, across(std::clamp(mark.x, axis.from, axis.to), axis));
    least = mark.label + apart;
  }
  double most = right - apart / 2;
  for (auto mark = marks.rbegin(); mark != marks.rend(); ++mark) {
    mark->label = std::min(mark->label, most);
    most = mark->label - apart;
  }
  for (const Mark& mark : marks) {
    const double x = across(std::clamp(mark.x, axis.from, axis.to), axis);
    page.add("<path class=\"mark{}\" d=\"M{:.1f} 32V38L{:.1f} {}V{}\"/>",
             mark.isMean ? " mean" : "", mark.label, x, top, bottom);
    page.add(
        "<text class=\"soft middle\" x=\"{0:.1f}\" y=\"13\">{1}</text><text class=\"middle\" "
        "x=\"{0:.1f}\" y=\"28\">{2}</text>\n",
        mark.label, mark.name, numbers(mark.x));
  }
}

const Percentile* markOf(const ResultStatistics& result, double percent) {
  const auto mark = std::find_if(result.marks.begin(), result.marks.end(),
                                 [&](const Percentile& p) { return p.percent == percent; });
  return mark == result.marks.end() ? nullptr : &*mark;
}

/// The axis of a result's charts: the bulk of its values, with all marks. A long tail leaves it,
/// lest everything else is squeezed.
Range axisOf(const ResultStatistics& result) {
  const auto& cells = result.histogram;
  Range axis{cells.low, cells.low + cells.width * static_cast<double>(cells.counts.size())};
  const Percentile* p10 = markOf(result, 10);
  const Percentile* p50 = markOf(result, 50);
  const Percentile* p90 = markOf(result, 90);
  if (p10 != nullptr && p50 != nullptr && p90 != nullptr) {
    constexpr double far = 4;
    if (p90->value > p50->value) {
      axis.to = std::min(axis.to, p50->value + far * (p90->value - p50->value));
    }
    if (p10->value < p50->value) {
      axis.from = std::max(axis.from, p50->value - far * (p50->value - p10->value));
    }
  }
  const auto take = [&](double x) {
    axis.from = std::min(axis.from, x);
    axis.to = std::max(axis.to, x);
  };
  for (const Percentile& mark : result.marks) take(mark.value);
  take(result.moments.mean);
  if (axis.from == axis.to) {
    const double half = axis.from == 0 ? 1 : std::abs(axis.from) / 2;
    axis = {axis.from - half, axis.to + half};
  }
  return axis;
}

/// What share of the trials lies outside of the axis, where that is not next to nothing.
std::string beyond(const ResultStatistics& result, const Range& axis) {
  const auto& cells = result.histogram;
  auto outside = static_cast<double>(cells.below + cells.above);
  for (std::size_t i = 0; i < cells.counts.size(); ++i) {
    const double middle = cells.low + cells.width * (static_cast<double>(i) + 0.5);
    if (middle < axis.from || middle > axis.to) outside += static_cast<double>(cells.counts[i]);
  }
  const double share = outside / result.moments.count;
  return share > 0.004 ? fmt::format("; {:.1f} % lie further out", 100 * share) : "";
}

/// How many of the histogram's fine cells a bar shows: some 2 n^(1/3) bars (Rice's rule), 10 to 80.
std::size_t cellsPerBar(std::size_t cells, std::uint64_t trials) {
  const double bars = std::clamp(2 * std::cbrt(static_cast<double>(trials)), 10., 80.);
  return std::max<std::size_t>(1, static_cast<std::size_t>(static_cast<double>(cells) / bars));
}

void addHistogram(Page& page, const ResultStatistics& result, const Range& axis) {
  openChart(page, "How often: a bar's area is the share of the trials" + beyond(result, axis),
            result.name + ": histogram with mean and percentiles");
  const auto& cells = result.histogram;
  const auto trials = static_cast<std::uint64_t>(result.moments.count);
  std::vector<std::uint64_t> bars;
  const std::size_t wide = cellsPerBar(cells.counts.size(), trials);
  for (std::size_t i = 0; i < cells.counts.size(); ++i) {
    if (i % wide == 0) bars.push_back(0);
    bars.back() += cells.counts[i];
  }
  const auto most = bars.empty() ? 0 : *std::max_element(bars.begin(), bars.end());
  for (std::size_t i = 0; i < bars.size() && most > 0; ++i) {
    const std::size_t end = std::min(cells.counts.size(), (i + 1) * wide);
    const double from = across(cells.low + cells.width * static_cast<double>(i * wide), axis);
    // One value alone is a bar that can be seen.
    const double to =
        std::max(from + 2, across(cells.low + cells.width * static_cast<double>(end), axis) - 0.7);
    const double y = up(static_cast<double>(bars[i]) / static_cast<double>(most));
    if (bars[i] > 0 && from >= left && to <= right + 2) {
      page.add(
          "<rect class=\"bar\" x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" height=\"{:.1f}\"/>\n",
          from, y, to - from, bottom - y);
    }
  }
  addAxis(page, axis);
  addMarks(page, result, axis, true);
  closeChart(page);
}

void addCumulative(Page& page, const ResultStatistics& result, const Range& axis) {
  openChart(page, "How sure: the share of the trials that stay at or below a value",
            result.name + ": S-curve with percentiles");
  for (const int percent : {25, 50, 75, 100}) {
    page.add(
        "<path class=\"grid\" d=\"M{0} {1:.1f}H{2}\"/><text class=\"soft\" x=\"{0}\" "
        "y=\"{3:.1f}\">{4} %</text>\n",
        left, up(percent / 100.), right, up(percent / 100.) - 3, percent);
  }
  const auto& cells = result.histogram;
  const double trials = result.moments.count;
  auto sum = static_cast<double>(cells.below);
  page.add("<path class=\"edge\" d=\"M{:.1f} {:.1f}", left, up(sum / trials));
  page.add("L{:.1f} {:.1f}", across(cells.low, axis), up(sum / trials));
  for (std::size_t i = 0; i < cells.counts.size(); ++i) {
    sum += static_cast<double>(cells.counts[i]);
    const double x = cells.low + cells.width * static_cast<double>(i + 1);
    if (x < axis.from || x > axis.to) continue;
    page.add("L{:.1f} {:.1f}", across(x, axis), up(sum / trials));
  }
  page.add("L{} {:.1f}\"/>\n", right, up(sum / trials));
  for (const Percentile& mark : result.marks) {
    page.add("<circle class=\"dot\" cx=\"{:.1f}\" cy=\"{:.1f}\" r=\"3.5\"/>\n",
             across(mark.value, axis), up(mark.percent / 100));
  }
  addAxis(page, axis);
  addMarks(page, result, axis, false);
  closeChart(page);
}

/// How far a result's mean lies apart in the lowest and in the highest tenth of an input.
double swing(const simulation::Sensitivity& sensitivity) {
  const double apart = std::abs(sensitivity.meanHigh - sensitivity.meanLow);
  return std::isfinite(apart) ? apart : 0;
}

void addTornado(Page& page, const Results& results, const ResultStatistics& result) {
  constexpr std::size_t mostRows = 12;
  std::vector<std::size_t> order(result.sensitivities.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return swing(result.sensitivities[a]) > swing(result.sensitivities[b]);
  });
  if (order.empty() || swing(result.sensitivities[order[0]]) == 0) return;
  const std::size_t shown = std::min(order.size(), mostRows);

  const double mean = result.moments.mean;
  Range axis{mean, mean};
  for (const auto& [rank, share, low, high] : result.sensitivities) {
    if (!std::isfinite(low) || !std::isfinite(high)) continue;
    axis.from = std::min({axis.from, low, high});
    axis.to = std::max({axis.to, low, high});
  }
  const auto place = [&](double x) { return 100 * (x - axis.from) / axis.length(); };
  const Numbers numbers = numbersOf(result.moments);

  page.add(
      "<h3>What moves it</h3>\n<p class=\"quiet\">The mean of {} where an input is in its "
      "<b class=\"low key\">lowest tenth</b> and in its <b class=\"high key\">highest tenth</b>; "
      "the "
      "line is the mean of all trials. The share of the variance is what the input explains "
      "alone; the rank correlation says how steadily the result follows it{}.</p>\n",
      markup(result.name),
      results.rankTrials < results.trials
          ? fmt::format(" (on the first {} trials)", wholeText(results.rankTrials))
          : "");
  page.add(
      "<table class=\"tornado\"><thead><tr><th>Input</th><th></th><th class=\"n\">lowest "
      "tenth</th><th class=\"n\">highest tenth</th><th class=\"n more\">variance</th><th class=\"n "
      "more\">"
      "rank corr.</th></tr></thead><tbody>\n");
  for (std::size_t i = 0; i < shown; ++i) {
    const auto& [rank, share, low, high] = result.sensitivities[order[i]];
    page.add("<tr><td class=\"name\">{}</td><td class=\"range\"><svg aria-hidden=\"true\">",
             markup(results.inputs[order[i]].name));
    for (const auto& [value, kind] : {std::pair{low, "low"}, std::pair{high, "high"}}) {
      if (!std::isfinite(value)) continue;
      page.add("<rect class=\"{}\" x=\"{:.2f}%\" y=\"3\" width=\"{:.2f}%\" height=\"14\"/>", kind,
               std::min(place(value), place(mean)), std::abs(place(value) - place(mean)));
    }
    page.add("<line class=\"axis\" x1=\"{0:.2f}%\" x2=\"{0:.2f}%\" y1=\"0\" y2=\"20\"/></svg></td>",
             place(mean));
    page.add(
        "<td class=\"n\">{}</td><td class=\"n\">{}</td><td class=\"n more\">{}</td><td class=\"n "
        "more\">{}"
        "</td></tr>\n",
        numbers(low), numbers(high), shareText(share), plain(rank));
  }
  page.add("</tbody></table>\n");
  if (shown < order.size()) {
    page.add("<p class=\"quiet\">{} further inputs move it less.</p>\n", order.size() - shown);
  }
}

void addFigures(Page& page, const ResultStatistics& result) {
  const Numbers numbers = fineNumbersOf(result);
  const auto& moments = result.moments;
  page.add(
      "<h3>Figures{}</h3>\n<div class=\"charts\"><div "
      "class=\"scroll\"><table><thead><tr><th>Percentile"
      "</th><th class=\"n\">value</th><th class=\"n\">95 % interval</th></tr></thead><tbody>\n",
      result.unit.empty() ? "" : " (" + markup(result.unit) + ")");
  for (const Percentile& p : result.percentiles) {
    page.add("<tr><td>{}</td><td class=\"n\">{}</td><td class=\"n\">{} to {}</td></tr>\n",
             percentText(p.percent), numbers(p.value), numbers(p.low), numbers(p.high));
  }
  page.add("</tbody></table></div>\n<div class=\"scroll\"><table><tbody>\n");
  const auto row = [&](std::string_view name, const std::string& value) {
    page.add("<tr><td>{}</td><td class=\"n\">{}</td></tr>\n", name, value);
  };
  row("Mean", numbers(moments.mean));
  row("Standard error of the mean",
      std::isfinite(moments.standardError())
          ? Numbers(0, 10 * moments.standardError())(moments.standardError())
          : "\u2013");
  row("Standard deviation", numbers(moments.sd()));
  row("Skewness", plain(moments.skewness()));
  row("Excess kurtosis", plain(moments.kurtosis()));
  row("Smallest", numbers(moments.smallest));
  row("Greatest", numbers(moments.greatest));
  page.add("</tbody></table></div></div>\n");
}

/// One figure and its interval as they were known after so many trials.
struct Known {
  double trials;
  double value;
  double low;
  double high;
};

void addSettling(Page& page, std::string_view name, const std::vector<Known>& known) {
  openChart(page, fmt::format("{} over the trials, with its 95 % interval", name), name);
  // The first blocks swing most; the axis shows all of what came after half of the observations.
  Range axis{known.back().low, known.back().high};
  for (std::size_t i = known.size() / 4; i < known.size(); ++i) {
    axis.from = std::min(axis.from, known[i].low);
    axis.to = std::max(axis.to, known[i].high);
  }
  if (!(axis.length() > 0)) axis = {axis.from - 1, axis.to + 1};
  const Range trials{std::log(known.front().trials), std::log(known.back().trials)};
  const auto x = [&](const Known& at) { return across(std::log(at.trials), trials); };
  const auto y = [&](double value) {
    return up(std::clamp((value - axis.from) / axis.length(), 0., 1.));
  };
  page.add("<path class=\"band\" d=\"");
  char command = 'M';
  for (const Known& at : known)
    page.add("{}{:.1f} {:.1f}", std::exchange(command, 'L'), x(at), y(at.high));
  for (auto at = known.rbegin(); at != known.rend(); ++at)
    page.add("L{:.1f} {:.1f}", x(*at), y(at->low));
  page.add("Z\"/>\n<path class=\"edge\" d=\"");
  command = 'M';
  for (const Known& at : known)
    page.add("{}{:.1f} {:.1f}", std::exchange(command, 'L'), x(at), y(at.value));
  page.add("\"/>\n");
  const Numbers numbers(axis.from, axis.to);
  for (const double value : roundNumbers(axis.from, axis.to, 4)) {
    page.add(
        "<path class=\"grid\" d=\"M{0} {1:.1f}H{2}\"/><text class=\"soft\" x=\"{0}\" "
        "y=\"{3:.1f}\">{4}</text>\n",
        left, y(value), right, y(value) - 3, numbers(value));
  }
  page.add("<path class=\"axis\" d=\"M{} {}H{}\"/>\n", left, bottom, right);
  page.add(
      "<text x=\"{}\" y=\"{}\">{} trials</text><text class=\"last\" x=\"{}\" y=\"{}\">{}</text>\n",
      left, bottom + 18, wholeText(static_cast<std::uint64_t>(known.front().trials)), right,
      bottom + 18, wholeText(static_cast<std::uint64_t>(known.back().trials)));
  closeChart(page);
}

void addConvergence(Page& page, const ResultStatistics& result) {
  if (result.settling.size() < 2) return;
  std::vector<Known> means;
  std::vector<Known> percentiles;
  for (const auto& [trials, mean, error, p80] : result.settling) {
    const double half = 1.96 * error;
    if (!std::isfinite(half)) continue;
    const auto count = static_cast<double>(trials);
    means.push_back({count, mean, mean - half, mean + half});
    percentiles.push_back({count, p80.value, p80.low, p80.high});
  }
  if (means.size() < 2) return;
  page.add("<h3>Were the trials enough?</h3>\n<div class=\"charts\">\n");
  addSettling(page, "P80", percentiles);
  addSettling(page, "Mean", means);
  page.add("</div>\n");
}

void addResult(Page& page, const Results& results, std::size_t index) {
  const ResultStatistics& result = results.results[index];
  const std::string unit = result.unit.empty() ? "" : " " + markup(result.unit);
  const Numbers numbers = numbersOf(result.moments);
  const Numbers fine = fineNumbersOf(result);
  page.add("<section class=\"result\" id=\"result{}\">\n<h2>{}</h2>\n", index + 1,
           markup(result.name));
  if (result.moments.smallest == result.moments.greatest) {
    page.add("<p class=\"lead\">Every trial gives <b>{}{}</b>.</p>\n</section>\n",
             numbers(result.moments.mean), unit);
    return;
  }
  const Percentile* p10 = markOf(result, 10);
  const Percentile* p80 = markOf(result, 80);
  const Percentile* p90 = markOf(result, 90);
  if (p10 != nullptr && p80 != nullptr && p90 != nullptr) {
    page.add(
        "<p class=\"lead\">Four in five trials stay at or below <b>{}{}</b> (P80; 95 % interval {} "
        "to {}). The "
        "mean is <b>{}{}</b>, and eight in ten trials lie between {} and {}.</p>\n",
        numbers(p80->value), unit, fine(p80->low), fine(p80->high), numbers(result.moments.mean),
        unit, numbers(p10->value), numbers(p90->value));
  }
  const Range axis = axisOf(result);
  page.add("<div class=\"charts\">\n");
  addHistogram(page, result, axis);
  addCumulative(page, result, axis);
  page.add("</div>\n");
  addTornado(page, results, result);
  addFigures(page, result);
  addConvergence(page, result);
  page.add("</section>\n");
}

/// A law in a hundred and some points: what its limits keep filled, what they cut dashed.
void addLaw(Page& page, const Law& law) {
  constexpr double lawWidth = 110;
  constexpr double lawHeight = 30;
  constexpr int points = 110;
  const Law whole = law.between({}, {});
  const Range axis{std::min(whole.quantile(0.002), law.quantile(0.002)),
                   std::max(whole.quantile(0.998), law.quantile(0.998))};
  page.add("<svg viewBox=\"0 0 {0} {1}\" aria-hidden=\"true\">", lawWidth, lawHeight);
  if (!(axis.length() > 0)) {
    page.add("<path class=\"edge\" d=\"M{} {}V3\"/></svg>", lawWidth / 2, lawHeight);
    return;
  }
  std::vector<double> heights(points + 1);
  for (int i = 0; i <= points; ++i) {
    heights[static_cast<std::size_t>(i)] =
        whole.density(std::lerp(axis.from, axis.to, (i + 0.5) / (points + 1)));
  }
  // A pole leaves the picture.
  std::vector<double> sorted = heights;
  std::sort(sorted.begin(), sorted.end());
  const double most = std::min(sorted.back(), 3 * sorted[sorted.size() * 9 / 10]);
  const auto y = [&](std::size_t i) {
    return most > 0 ? lawHeight - 1 - std::min(heights[i] / most, 1.1) * (lawHeight - 4)
                    : lawHeight - 1;
  };
  const auto isKept = [&](std::size_t i) {
    return law.density(
               std::lerp(axis.from, axis.to, (static_cast<double>(i) + 0.5) / (points + 1))) > 0;
  };
  for (std::size_t from = 0; from < heights.size();) {
    const bool kept = isKept(from);
    std::size_t to = from;
    while (to + 1 < heights.size() && isKept(to + 1) == kept) ++to;
    if (kept) page.add("<path class=\"bar\" d=\"M{} {}", from, lawHeight);
    for (std::size_t i = from; kept && i <= to; ++i) page.add("L{} {:.1f}", i, y(i));
    if (kept) page.add("L{} {}Z\"/>", to, lawHeight);
    page.add("<path class=\"{}\" d=\"", kept ? "edge" : "cut");
    for (std::size_t i = from; i <= to; ++i)
      page.add("{}{} {:.1f}", i == from ? 'M' : 'L', i, y(i));
    page.add("\"/>");
    from = to + 1;
  }
  page.add("</svg>");
}

void addInputs(Page& page, const simulation::Model& model, const Results& results) {
  const auto isRisk = [&](std::size_t i) {
    const double* chance = std::get_if<double>(&model.rows()[model.inputs()[i]].chance);
    return chance == nullptr || *chance < 1;
  };
  bool risks = false;
  for (std::size_t i = 0; i < results.inputs.size(); ++i) risks = risks || isRisk(i);
  page.add(
      "<section><h2>Inputs</h2>\n<p class=\"quiet\">As they were drawn{}. Filled: what limits "
      "keep; dashed: "
      "what they cut away.</p>\n<div "
      "class=\"scroll\"><table><thead><tr><th>Input</th><th>Type</th><th></th>{}"
      "<th class=\"n\">mean</th><th class=\"n\">sd</th><th class=\"n\">smallest</th><th "
      "class=\"n\">greatest</th>"
      "<th>unit</th></tr></thead><tbody>\n",
      risks ? "; a risk that does not happen counts as 0" : "",
      risks ? "<th class=\"n\">chance</th>" : "");
  for (std::size_t i = 0; i < results.inputs.size(); ++i) {
    const auto& input = results.inputs[i];
    const Row& row = model.rows()[model.inputs()[i]];
    const Numbers numbers = numbersOf(input.moments);
    page.add("<tr><td class=\"name\">{}</td><td>{}</td><td class=\"law\">", markup(input.name),
             markup(input.type));
    if (row.law) {
      addLaw(page, *row.law);
    } else {
      page.add("<span class=\"quiet\">follows other rows</span>");
    }
    page.add("</td>");
    if (risks) {
      const double* chance = std::get_if<double>(&row.chance);
      page.add("<td class=\"n\">{}</td>",
               chance == nullptr ? "varies" : fmt::format("{:.3g} %", 100 * *chance));
    }
    page.add(
        "<td class=\"n\">{}</td><td class=\"n\">{}</td><td class=\"n\">{}</td><td "
        "class=\"n\">{}</td><td>{}</td></tr>\n",
        numbers(input.moments.mean), numbers(input.moments.sd()), numbers(input.moments.smallest),
        numbers(input.moments.greatest), markup(input.unit));
  }
  page.add("</tbody></table></div></section>\n");
}

}  // namespace

std::string reportOf(const simulation::Model& model, const Results& results,
                     const RunDescription& run) {
  Page page;
  const std::string file = markup(run.file);
  page.add(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      // The page asks for nothing from anywhere, and a browser holds it to that.
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
      "'unsafe-inline'; img-src data:\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<title>Simulation of {}</title>\n<link rel=\"icon\" "
      "href=\"data:,\">\n{}</head>\n<body>\n<header>\n"
      "<h1>Simulation of {}</h1>\n<dl>",
      file, style, file);
  const auto fact = [&](std::string_view name, const std::string& value) {
    page.add("<div><dt>{}</dt><dd>{}</dd></div>", name, value);
  };
  fact("Trials", wholeText(results.trials));
  if (results.failures > 0) fact("Left out because they failed", wholeText(results.failures));
  fact("Seed", std::to_string(results.seed));
  fact("Sampling", results.sampling == simulation::Sampling::lhs ? "Latin hypercube" : "random");
  fact("palvex", run.version);
  page.add("</dl>\n");
  if (results.cancelled) {
    page.add("<p><b>Ended early</b>, after {} of {} trials.</p>\n",
             wholeText(results.trials + results.failures), wholeText(results.asked));
  }
  page.add("<p class=\"quiet\">The same figures again, on any machine: <code>{}</code></p>\n",
           markup(run.repeat));
  if (results.results.size() > 1) {
    page.add("<nav><ul>");
    for (std::size_t i = 0; i < results.results.size(); ++i) {
      page.add("<li><a href=\"#result{}\">{}</a></li>", i + 1, markup(results.results[i].name));
    }
    page.add("</ul></nav>\n");
  }
  page.add("</header>\n<main>\n");
  for (std::size_t i = 0; i < results.results.size(); ++i) addResult(page, results, i);
  addInputs(page, model, results);
  page.add("</main>\n</body>\n</html>\n");
  return std::move(page).take();
}

}  // namespace palvex::terminal
