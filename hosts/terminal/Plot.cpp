#include "hosts/terminal/Plot.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
#include <utility>

#include "hosts/terminal/Text.h"
#include "runtime/NumericText.h"

namespace palvex::terminal {

namespace {

// A panel's geometry, in pixels.
constexpr double panelWidth = 440;
constexpr double panelHeight = 300;
constexpr double left = 20;
constexpr double right = panelWidth - 20;
constexpr double labelLine = 66;  // names of the marks; their values one line below
constexpr double leaderTop = 85;
constexpr double leaderKnee = 97;
constexpr double top = 104;
constexpr double bottom = panelHeight - 34;
constexpr double headHeight = 40;

constexpr const char* style = R"(<style>
  text { font-family: "Helvetica Neue", Helvetica, Arial, "Liberation Sans", sans-serif; font-size: 12px; fill: #222 }
  .paper { fill: #fff } .head { font-size: 18px; font-weight: bold } .title { font-size: 15px; font-weight: bold }
  .quiet { fill: #555 } .centre { text-anchor: middle }
  .kept { fill: #9dbfe0 } .edge { fill: none; stroke: #1d4f80; stroke-width: 1.8; stroke-linejoin: round }
  .cut { fill: none; stroke: #555; stroke-width: 1.4; stroke-dasharray: 5 4 }
  .axis { fill: none; stroke: #222; stroke-width: 1 } .leader { fill: none; stroke: #222; stroke-width: 1 }
  .mean { stroke-width: 2; stroke-dasharray: 2 3 }
  @media (prefers-color-scheme: dark) {
    text { fill: #e8e8e8 } .paper { fill: #14181d } .quiet { fill: #b0b0b0 }
    .kept { fill: #2f5478 } .edge { stroke: #9cc7f0 } .cut { stroke: #b0b0b0 }
    .axis, .leader { stroke: #e8e8e8 }
  }
</style>
)";

/// `text` as the content of an element.
std::string content(std::string_view text) {
  std::string safe;
  for (const char c : escaped(text)) {
    switch (c) {
      case '&':
        safe += "&amp;";
        break;
      case '<':
        safe += "&lt;";
        break;
      case '>':
        safe += "&gt;";
        break;
      case '"':
        safe += "&quot;";
        break;
      default:
        safe += c;
    }
  }
  return safe;
}

struct Point {
  double x;
  double y;
};
using Line = std::vector<Point>;

/// The elements of a drawing, in the order in which they are painted.
class Drawing {
 public:
  void text(Point at, std::string_view cssClass, std::string_view words) {
    fmt::format_to(out(), "<text x=\"{:.1f}\" y=\"{:.1f}\" class=\"{}\">{}</text>\n", at.x, at.y,
                   cssClass, content(words));
  }
  void line(const Line& points, std::string_view cssClass) {
    fmt::format_to(out(), R"(<path class="{}" d=")", cssClass);
    char command = 'M';
    for (const Point& point : points) {
      fmt::format_to(out(), "{}{:.1f} {:.1f}", command, point.x, point.y);
      command = 'L';
    }
    svg_ += "\"/>\n";
  }
  void open(const std::string& element) { svg_ += '<' + element + ">\n"; }
  void close(const std::string& element) { svg_ += "</" + element + ">\n"; }
  void raw(std::string_view text) { svg_ += text; }
  [[nodiscard]] std::string take() && { return std::move(svg_); }

 private:
  std::back_insert_iterator<std::string> out() { return std::back_inserter(svg_); }
  std::string svg_;
};

struct Interval {
  double from;
  double to;
};

/// The kept pieces of an axis, or those that are cut away.
std::vector<Interval> pieces(const Limits& limits, Interval axis, bool kept) {
  std::vector<double> borders{axis.from};
  std::vector<double> inside;
  for (const auto& limit : {limits.lower, limits.upper}) {
    if (limit && *limit > axis.from && *limit < axis.to) inside.push_back(*limit);
  }
  std::sort(inside.begin(), inside.end());
  borders.insert(borders.end(), inside.begin(), inside.end());
  borders.push_back(axis.to);
  std::vector<Interval> found;
  for (std::size_t i = 1; i < borders.size(); ++i) {
    const double middle = std::midpoint(borders[i - 1], borders[i]);
    if (limits.cut(middle) != kept) found.push_back({borders[i - 1], borders[i]});
  }
  return found;
}

double densityAt(const Panel& panel, double x) {
  const auto next = std::lower_bound(panel.x.begin(), panel.x.end(), x);
  const auto i = static_cast<std::size_t>(next - panel.x.begin());
  if (i == panel.x.size()) return panel.density.back();
  if (i == 0 || panel.x[i] == x) return panel.density[i];
  const double share = (x - panel.x[i - 1]) / (panel.x[i] - panel.x[i - 1]);
  return std::lerp(panel.density[i - 1], panel.density[i], share);
}

/// The points of the density over an interval.
Line curve(const Panel& panel, Interval over) {
  Line points{{over.from, densityAt(panel, over.from)}};
  for (std::size_t i = 0; i < panel.x.size(); ++i) {
    if (over.from < panel.x[i] && panel.x[i] < over.to)
      points.push_back({panel.x[i], panel.density[i]});
  }
  points.push_back({over.to, densityAt(panel, over.to)});
  return points;
}

double highest(const Line& points) {
  double most = 0;
  for (const Point& point : points) most = std::max(most, point.y);
  return most;
}

/// Whether the density rises towards the end at `first` as if it were infinite there: through each
/// of the last points, and by more than half of its height. `step` leads inwards.
bool risesWithoutEnd(const std::vector<double>& density, std::ptrdiff_t first,
                     std::ptrdiff_t step) {
  constexpr std::ptrdiff_t look = 8;
  const auto at = [&](std::ptrdiff_t i) {
    return density[static_cast<std::size_t>(first + i * step)];
  };
  for (std::ptrdiff_t i = 0; i < look; ++i) {
    if (at(i) <= at(i + 1)) return false;
  }
  return at(0) > 1.6 * at(look);
}

/// The panel without the neighbourhood of ends where the density rises without end.
Interval withoutPoles(const Panel& panel) {
  constexpr std::ptrdiff_t width = 12;
  const auto positive = [](double density) { return density > 0; };
  const auto& density = panel.density;
  const auto first = std::find_if(density.begin(), density.end(), positive) - density.begin();
  const auto last = density.rend() - std::find_if(density.rbegin(), density.rend(), positive) - 1;
  Interval found{panel.x.front(), panel.x.back()};
  if (last - first <= 2 * width) return found;
  if (risesWithoutEnd(density, first, 1))
    found.from = panel.x[static_cast<std::size_t>(first + width)];
  if (risesWithoutEnd(density, last, -1))
    found.to = panel.x[static_cast<std::size_t>(last - width)];
  return found;
}

/// The density at the upper border of a panel. A pole leaves the panel, and so may the outline of
/// what the limits cut away where that is much higher than what they keep.
double heightOf(const Panel& panel) {
  const Interval axis = withoutPoles(panel);
  double kept = 0;
  double cut = 0;
  for (const Interval& piece : pieces(panel.limits, axis, true))
    kept = std::max(kept, highest(curve(panel, piece)));
  for (const Interval& piece : pieces(panel.limits, axis, false))
    cut = std::max(cut, highest(curve(panel, piece)));
  double height = kept > 0 ? std::min(std::max(kept, cut), 2.5 * kept) : cut;
  if (axis.from > panel.x.front() || axis.to < panel.x.back()) height *= 2;
  return height > 0 ? height : 1;
}

/// Draws one panel with its upper left corner at the origin.
class PanelDrawing {
 public:
  PanelDrawing(Drawing& drawing, const Panel& panel)
      : drawing_(drawing),
        panel_(panel),
        axis_{panel.x.front(), panel.x.back()},
        height_(heightOf(panel)) {}

  void draw() {
    drawing_.text({left, 22}, "title", panel_.title);
    const bool empty = std::all_of(panel_.density.begin(), panel_.density.end(),
                                   [](double density) { return density == 0; });
    drawing_.text({left, 41}, "quiet",
                  panel_.subtitle + (empty ? "; the density is 0 throughout" : ""));
    drawing_.open("g clip-path=\"url(#chart)\"");
    for (const Interval& piece : pieces(panel_.limits, axis_, false)) drawCut(piece);
    for (const Interval& piece : pieces(panel_.limits, axis_, true)) drawKept(piece);
    drawing_.close("g");
    drawMarks();
    drawAxis();
  }

 private:
  [[nodiscard]] double across(double x) const {
    return left + (x - axis_.from) / (axis_.to - axis_.from) * (right - left);
  }
  [[nodiscard]] double up(double density) const {
    return bottom - std::min(density / height_, 4.0) * (bottom - top);  // the clip hides the rest
  }
  [[nodiscard]] Line placed(const Line& points) const {
    Line placed;
    for (const Point& point : points) placed.push_back({across(point.x), up(point.y)});
    return placed;
  }

  void drawKept(Interval piece) {
    Line outline = placed(curve(panel_, piece));
    Line filled = outline;
    filled.insert(filled.begin(), {across(piece.from), bottom});
    filled.push_back({across(piece.to), bottom});
    drawing_.line(filled, "kept");
    // A limit is an edge, the end of the axis is not.
    if (piece.from > axis_.from) outline.insert(outline.begin(), filled.front());
    if (piece.to < axis_.to) outline.push_back(filled.back());
    drawing_.line(outline, "edge");
  }

  void drawCut(Interval piece) { drawing_.line(placed(curve(panel_, piece)), "cut"); }

  void drawAxis() {
    drawing_.line({{left, bottom}, {right, bottom}}, "axis");
    const double length = axis_.to - axis_.from;
    for (const double x : roundNumbers(axis_.from, axis_.to, 6)) {
      drawing_.line({{across(x), bottom}, {across(x), bottom + 5}}, "axis");
      drawing_.text({across(x), bottom + 19}, "centre", shortNumber(x, length));
    }
  }

  /// Where the names of marks in increasing order stand: above their values, or moved apart.
  [[nodiscard]] std::vector<double> labelPlaces(const std::vector<Mark>& marks) const {
    constexpr double apart = 58;
    std::vector<double> places;
    for (const Mark& mark : marks) {
      const double wish = std::clamp(across(std::clamp(mark.x, axis_.from, axis_.to)),
                                     left + apart / 2, right - apart / 2);
      places.push_back(places.empty() ? wish : std::max(wish, places.back() + apart));
    }
    double most = right - apart / 2;
    for (std::size_t i = places.size(); i-- > 0; most = places[i] - apart)
      places[i] = std::min(places[i], most);
    return places;
  }

  /// A line up from the axis for each mark, with its name and value above.
  void drawMarks() {
    std::vector<Mark> marks = panel_.marks;
    std::sort(marks.begin(), marks.end(), [](const Mark& a, const Mark& b) { return a.x < b.x; });
    const std::vector<double> labels = labelPlaces(marks);
    for (std::size_t i = 0; i < marks.size(); ++i) {
      const auto& [name, value] = marks[i];
      const bool before = value < axis_.from;
      const bool beyond = value > axis_.to;
      if (!before && !beyond) {
        const double x = across(value);
        const std::string leader = name == "mean" ? "leader mean" : "leader";
        drawing_.line({{x, bottom}, {x, leaderKnee}, {labels[i], leaderTop}}, leader);
      }
      drawing_.text({labels[i], labelLine}, "centre quiet",
                    (before ? "\u2190 " : "") + name + (beyond ? " \u2192" : ""));
      drawing_.text({labels[i], labelLine + 14}, "centre",
                    shortNumber(value, axis_.to - axis_.from));
    }
  }

  Drawing& drawing_;
  const Panel& panel_;
  Interval axis_;
  double height_;
};

/// How many panels stand side by side.
std::size_t columnsFor(std::size_t panels) {
  if (panels <= 1) return 1;
  return panels <= 4 ? 2 : 3;
}

}  // namespace

std::vector<double> roundNumbers(double from, double to, int parts) {
  const double rough = (to - from) / parts;
  const double magnitude = std::pow(10, std::floor(std::log10(rough)));
  double step = 10 * magnitude;
  for (const double factor : {1., 2., 5.}) {
    if (factor * magnitude >= rough * 0.75) {
      step = factor * magnitude;
      break;
    }
  }
  std::vector<double> numbers;
  const double first = std::ceil(from / step);
  for (int i = 0; i <= 2 * parts; ++i) {
    const double number = (first + i) * step;
    if (number > to) break;
    if (number >= from && (numbers.empty() || number > numbers.back())) numbers.push_back(number);
  }
  return numbers;
}

std::string shortNumber(double value, double axisLength) {
  double unit = std::pow(10, std::floor(std::log10(axisLength / 2)) - 2);
  // Two digits of a small value, unless it is a rounding error beside the axis.
  const double size = std::abs(value);
  if (size > 1e-6 * axisLength)
    unit = std::min(unit, std::pow(10, std::floor(std::log10(size)) - 1));
  const double steps = std::round(value / unit);
  if (!std::isfinite(steps) || std::abs(steps) > 1e15) return numberText(value);
  // Through a decimal text: the product of steps and unit would show its rounding.
  const auto exponent = static_cast<int>(std::lround(std::log10(unit)));
  return numberText(numericText(fmt::format("{:.0f}E{}", steps + 0.0, exponent)).value_or(value));
}

std::string svgOf(const std::vector<Panel>& panels, const std::string& title) {
  const std::size_t columns = columnsFor(panels.size());
  const std::size_t rows = (panels.size() + columns - 1) / columns;
  const double head = title.empty() ? 0 : headHeight;
  const double width = panelWidth * static_cast<double>(columns);
  const double height = head + panelHeight * static_cast<double>(rows);

  Drawing drawing;
  drawing.open(
      fmt::format("svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" "
                  "viewBox=\"0 0 {0} {1}\" role=\"img\"",
                  width, height));
  std::string summary = title;
  for (const Panel& panel : panels) {
    if (!summary.empty()) summary += "; ";
    summary += panel.title + ", " + panel.subtitle;
  }
  drawing.raw("<title>" + content(summary) + "</title>\n");
  drawing.raw(style);
  drawing.raw(fmt::format(
      "<clipPath id=\"chart\"><rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\"/></clipPath>\n",
      left - 1, top - 2, right - left + 2, bottom - top + 3));
  drawing.raw("<rect class=\"paper\" width=\"100%\" height=\"100%\"/>\n");
  if (!title.empty()) drawing.text({left, 29}, "head", title);
  for (std::size_t i = 0; i < panels.size(); ++i) {
    const std::size_t row = i / columns;
    const double x = panelWidth * static_cast<double>(i % columns);
    const double y = head + panelHeight * static_cast<double>(row);
    drawing.open(fmt::format("g transform=\"translate({} {})\"", x, y));
    PanelDrawing(drawing, panels[i]).draw();
    drawing.close("g");
  }
  drawing.close("svg");
  return std::move(drawing).take();
}

}  // namespace palvex::terminal
