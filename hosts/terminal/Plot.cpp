#include "hosts/terminal/Plot.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <string_view>
#include <utility>

#include "hosts/terminal/Text.h"
#include "runtime/NumericText.h"

namespace palvex::terminal {

namespace {

// Lengths in pixels.
constexpr double leastWidth = 440;
constexpr double chartHeight = 162;
constexpr double rightMargin = 22;
constexpr double labelGap = 10;
constexpr double nameIndent = 54;  // of a curve's name, behind a piece of its line
constexpr double textSize = 12;
constexpr double titleSize = 15 * 1.12;  // bold type is wider
constexpr double headSize = 18 * 1.12;

constexpr const char* style = R"(<style>
  text { font-family: "Helvetica Neue", Helvetica, Arial, "Liberation Sans", sans-serif; font-size: 12px; fill: #222 }
  .paper { fill: #fff } .head { font-size: 18px; font-weight: bold } .title { font-size: 15px; font-weight: bold }
  .quiet { fill: #555 } .centre { text-anchor: middle } .end { text-anchor: end }
  .kept { fill: #9dbfe0 } .edge { fill: none; stroke: #1d4f80; stroke-width: 1.8; stroke-linejoin: round }
  .border { fill: none; stroke: #1d4f80; stroke-width: 0.8 }
  .cut { fill: none; stroke: #555; stroke-width: 1.4; stroke-dasharray: 5 4 }
  .axis, .leader, .value { fill: none; stroke: #222; stroke-width: 1 } .grid { fill: none; stroke: #ddd; stroke-width: 1 }
  .mean { stroke-width: 2; stroke-dasharray: 2 3 } .across { fill: none; stroke: #555; stroke-width: 1; stroke-dasharray: 1 3 }
  .edge1 { stroke: #c04a00; stroke-dasharray: 9 3 } .edge2 { stroke: #00704e; stroke-dasharray: 3 3 }
  .edge3 { stroke: #9c3f77; stroke-dasharray: 10 3 2 3 } .edge4 { stroke: #7a6200; stroke-dasharray: 6 2 2 2 2 2 } .edge5 { stroke: #444; stroke-dasharray: 1.5 2.5 }
  @media (prefers-color-scheme: dark) {
    text { fill: #e8e8e8 } .paper { fill: #14181d } .quiet { fill: #b0b0b0 }
    .kept { fill: #2f5478 } .edge, .border { stroke: #9cc7f0 } .cut, .across { stroke: #b0b0b0 } .grid { stroke: #30363d }
    .axis, .leader, .value { stroke: #e8e8e8 }
    .edge1 { stroke: #ff9d5c } .edge2 { stroke: #4fd6a8 } .edge3 { stroke: #eba5cf } .edge4 { stroke: #e6d25a } .edge5 { stroke: #ccc }
  }
</style>
)";
constexpr std::size_t curveStyles = 6;

/// How wide a text is at most: in DejaVu Sans, the widest of the common sans-serif types.
double widthOf(std::string_view text, double size) {
  double width = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xC0) == 0x80) continue;  // within a character
    if (byte >= 0xE3) {
      width += 1;  // East Asian and the like
    } else if (byte >= 0x80) {
      width += 0.84;
    } else if (std::string_view("ijl.,:;!|'() ft-").find(c) != std::string_view::npos) {
      width += 0.38;
    } else if (std::string_view("mwMW%").find(c) != std::string_view::npos) {
      width += 0.98;
    } else {
      width += c >= 'A' && c <= 'Z' ? 0.74 : 0.64;
    }
  }
  return width * size;
}

/// The lines of a text that fit into a width, broken at blanks, or anywhere in a longer word.
std::vector<std::string> wrapped(const std::string& text, double size, double width) {
  std::vector<std::string> lines;
  std::string line;
  const auto end = [&] {
    if (!line.empty()) lines.push_back(std::exchange(line, {}));
  };
  std::string_view rest = text;
  while (!rest.empty()) {
    std::string_view word = rest.substr(0, rest.find(' '));
    rest.remove_prefix(std::min(word.size() + 1, rest.size()));
    if (!line.empty() && widthOf(line + ' ' + std::string(word), size) > width) end();
    if (!line.empty()) line += ' ';
    for (const char c : word) {
      const bool startsCharacter = (static_cast<unsigned char>(c) & 0xC0) != 0x80;
      if (startsCharacter && widthOf(line + c, size) > width) end();
      line += c;
    }
  }
  end();
  return lines;
}

/// The elements of a drawing, in the order in which they are painted.
class Drawing {
 public:
  void text(Point at, std::string_view cssClass, std::string_view words) {
    fmt::format_to(out(), "<text x=\"{:.1f}\" y=\"{:.1f}\" class=\"{}\">{}</text>\n", at.x, at.y,
                   cssClass, markup(words));
  }
  /// Upwards, centred at the point.
  void upwards(Point at, std::string_view cssClass, std::string_view words) {
    fmt::format_to(
        out(), "<text transform=\"translate({:.1f} {:.1f}) rotate(-90)\" class=\"{}\">{}</text>\n",
        at.x, at.y, cssClass, markup(words));
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

/// Whether a point lies on the straight line from `a` to `b`, to a twentieth of a pixel.
bool isBetween(const Point& point, const Point& a, const Point& b) {
  const double length = std::hypot(b.x - a.x, b.y - a.y);
  const double across = (b.x - a.x) * (point.y - a.y) - (b.y - a.y) * (point.x - a.x);
  const double along = (b.x - a.x) * (point.x - a.x) + (b.y - a.y) * (point.y - a.y);
  return length > 0 && std::abs(across) <= 0.05 * length && along >= 0 && along <= length * length;
}

/// The points that a line needs to look the same.
Line thinned(const Line& points) {
  Line kept;
  std::size_t from = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const bool straight =
        i + 1 < points.size() && i > from &&
        std::all_of(points.begin() + static_cast<std::ptrdiff_t>(from) + 1,
                    points.begin() + static_cast<std::ptrdiff_t>(i) + 1, [&](const Point& point) {
                      return isBetween(point, points[from], points[i + 1]);
                    });
    if (straight) continue;
    kept.push_back(points[i]);
    from = i;
  }
  return kept;
}

// ---- what stands where ----

struct Label {
  std::string name;
  std::string value;
  double width;
  const Mark* mark;
};

/// The labels of a panel's marks, in increasing order.
std::vector<Label> labelsOf(const Panel& panel) {
  const NumberStyle numbers(panel.from, panel.to);
  std::vector<Label> labels;
  for (const Mark& mark : panel.marks) {
    const std::string name =
        (mark.x < panel.from ? "\u2190 " : "") + mark.name + (mark.x > panel.to ? " \u2192" : "");
    std::string value = numbers.text(mark.x);
    const double width = std::max(widthOf(name, textSize), widthOf(value, textSize)) + labelGap;
    labels.push_back({name, std::move(value), width, &mark});
  }
  std::sort(labels.begin(), labels.end(),
            [](const Label& a, const Label& b) { return a.mark->x < b.mark->x; });
  return labels;
}

std::vector<std::string> heightTexts(const Panel& panel) {
  std::vector<std::string> texts;
  const NumberStyle numbers(0, panel.height);
  for (const double height : roundNumbers(0, panel.height, 3))
    texts.push_back(panel.inPercent ? fmt::format("{:.0f} %", 100 * height) : numbers.text(height));
  return texts;
}

/// The measures that all panels of a picture share.
struct Layout {
  double width = leastWidth;
  double left = 0;
  double right = 0;
  std::size_t titleLines = 0;
  std::size_t noteLines = 0;
  std::size_t legendLines = 0;
  bool hasMarks = false;
  bool hasAxisTitle = false;

  explicit Layout(const std::vector<Panel>& panels) {
    double heights = 0;
    double labels = 0;
    double names = 0;
    for (const Panel& panel : panels) {
      for (const std::string& text : heightTexts(panel))
        heights = std::max(heights, widthOf(text, textSize));
      double all = 0;
      for (const Label& label : labelsOf(panel)) all += label.width;
      labels = std::max(labels, all);
      for (const Curve& curve : panel.curves)
        names = std::max(names, widthOf(curve.name, textSize));
      hasMarks = hasMarks || !panel.marks.empty();
      hasAxisTitle = hasAxisTitle || !panel.axisTitle.empty();
    }
    left = 30 + heights;
    constexpr double mostForNames = 700;
    width = std::max({leastWidth, left + labels + rightMargin,
                      std::min(mostForNames, nameIndent + names + rightMargin)});
    right = width - rightMargin;
    for (const Panel& panel : panels) {
      titleLines = std::max(titleLines, wrapped(panel.title, titleSize, textWidth()).size());
      noteLines = std::max(noteLines, wrapped(panel.note, textSize, textWidth()).size());
      std::size_t legend = 0;
      for (const Curve& curve : panel.curves) legend += curve.name.empty() ? 0 : 1;
      legendLines = std::max(legendLines, legend);
    }
  }

  [[nodiscard]] double textWidth() const { return width - 16 - rightMargin; }
  [[nodiscard]] double titleLine() const { return 22; }
  [[nodiscard]] double noteLine() const {
    return titleLine() + 19 * static_cast<double>(titleLines);
  }
  [[nodiscard]] double legendLine() const {
    return noteLine() + 15 * static_cast<double>(noteLines) + (legendLines > 0 ? 4 : 0);
  }
  /// The names of the marks; their values one line below.
  [[nodiscard]] double labelLine() const {
    return legendLine() + 17 * static_cast<double>(legendLines) + 9;
  }
  [[nodiscard]] double leaderTop() const { return labelLine() + 19; }
  [[nodiscard]] double top() const { return hasMarks ? leaderTop() + 19 : labelLine() + 5; }
  [[nodiscard]] double bottom() const { return top() + chartHeight; }
  [[nodiscard]] double height() const { return bottom() + (hasAxisTitle ? 48 : 30); }
};

/// Draws one panel with its upper left corner at the origin.
class PanelDrawing {
 public:
  PanelDrawing(Drawing& drawing, const Panel& panel, const Layout& layout)
      : drawing_(drawing), panel_(panel), layout_(layout) {}

  void draw() {
    drawTexts();
    drawHeights();
    drawing_.open("g clip-path=\"url(#chart)\"");
    for (std::size_t i = 0; i < panel_.curves.size(); ++i) drawCurve(panel_.curves[i], i);
    drawing_.close("g");
    drawMarks();
    drawAxis();
  }

 private:
  [[nodiscard]] double across(double x) const {
    const double share = (x / 2 - panel_.from / 2) / (panel_.to / 2 - panel_.from / 2);
    return std::lerp(layout_.left, layout_.right, share);
  }
  [[nodiscard]] double up(double height) const {
    constexpr double beyond = 4;  // the clip hides the rest
    return layout_.bottom() - std::min(height / panel_.height, beyond) * chartHeight;
  }
  [[nodiscard]] Line placed(const Line& points) const {
    Line placed;
    for (const Point& point : points) placed.push_back({across(point.x), up(point.y)});
    return thinned(placed);
  }

  void drawTexts() {
    constexpr double margin = 16;
    double y = layout_.titleLine();
    for (const std::string& line : wrapped(panel_.title, titleSize, layout_.textWidth())) {
      drawing_.text({margin, y}, "title", line);
      y += 19;
    }
    y = layout_.noteLine();
    for (const std::string& line : wrapped(panel_.note, textSize, layout_.textWidth())) {
      drawing_.text({margin, y}, "quiet", line);
      y += 15;
    }
    y = layout_.legendLine();
    for (std::size_t i = 0; i < panel_.curves.size(); ++i) {
      if (panel_.curves[i].name.empty()) continue;
      drawing_.line({{margin, y - 4}, {margin + 30, y - 4}}, edgeClass(i));
      const double room = layout_.width - nameIndent - rightMargin + 1;
      const auto lines = wrapped(panel_.curves[i].name, textSize, room);
      drawing_.text({nameIndent, y}, "name", lines.front() + (lines.size() > 1 ? " \u2026" : ""));
      y += 17;
    }
  }

  static std::string edgeClass(std::size_t curve) {
    const std::size_t kind = curve % curveStyles;
    return kind == 0 ? "edge" : fmt::format("edge edge{}", kind);
  }

  void drawHeights() {
    const auto heights = roundNumbers(0, panel_.height, 3);
    const auto texts = heightTexts(panel_);
    for (std::size_t i = 0; i < heights.size(); ++i) {
      const double y = up(heights[i]);
      drawing_.line({{layout_.left, y}, {layout_.right, y}}, "grid");
      drawing_.text({layout_.left - 6, y + 4}, "end quiet", texts[i]);
    }
    if (!panel_.heightTitle.empty())
      drawing_.upwards({14, layout_.bottom() - chartHeight / 2}, "centre quiet",
                       panel_.heightTitle);
  }

  void drawCurve(const Curve& curve, std::size_t index) {
    for (const Line& line : curve.cut) drawing_.line(placed(line), "cut");
    for (const Line& line : curve.lines) {
      if (line.empty()) continue;
      Line outline = placed(line);
      if (panel_.filled) {
        Line filled = outline;
        filled.insert(filled.begin(), {filled.front().x, layout_.bottom()});
        filled.push_back({filled.back().x, layout_.bottom()});
        drawing_.line(filled, "kept");
        for (const auto& [x, height] : panel_.borders) {
          if (x > line.front().x && x < line.back().x)
            drawing_.line({{across(x), layout_.bottom()}, {across(x), up(height)}}, "border");
        }
        // A limit is an edge, the end of the axis is not.
        if (line.front().x > panel_.from) outline.insert(outline.begin(), filled.front());
        if (line.back().x < panel_.to) outline.push_back(filled.back());
      }
      drawing_.line(outline, edgeClass(index));
    }
  }

  /// Where a text of this width stands when it is to be centred at x but to stay in the panel.
  [[nodiscard]] double within(double x, double width) const {
    return std::clamp(x, width / 2 + 2, layout_.width - width / 2 - 2);
  }

  /// Round numbers in as many parts as their texts have room for.
  [[nodiscard]] std::vector<std::pair<double, std::string>> axisNumbers() const {
    const NumberStyle numbers(panel_.from, panel_.to);
    std::vector<std::pair<double, std::string>> found;
    for (int parts = 6; parts >= 1; --parts) {
      found.clear();
      bool fits = true;
      double end = -leastWidth;
      for (const double x : roundNumbers(panel_.from, panel_.to, parts)) {
        found.emplace_back(x, numbers.text(x));
        const double width = widthOf(found.back().second, textSize);
        const double middle = within(across(x), width);
        fits = fits && middle - width / 2 > end + 4;
        end = middle + width / 2;
      }
      if (fits) break;
    }
    return found;
  }

  void drawAxis() {
    const double bottom = layout_.bottom();
    drawing_.line({{layout_.left, bottom}, {layout_.right, bottom}}, "axis");
    for (const auto& [x, text] : axisNumbers()) {
      drawing_.line({{across(x), bottom}, {across(x), bottom + 5}}, "axis");
      drawing_.text({within(across(x), widthOf(text, textSize)), bottom + 19}, "centre", text);
    }
    for (const double x : panel_.values) {
      if (x >= panel_.from && x <= panel_.to)
        drawing_.line({{across(x), bottom - 7}, {across(x), bottom}}, "value");
    }
    if (!panel_.axisTitle.empty())
      drawing_.text({(layout_.left + layout_.right) / 2, bottom + 37}, "centre quiet",
                    panel_.axisTitle);
  }

  /// Where labels in increasing order stand: above their values, or moved apart.
  [[nodiscard]] std::vector<double> placesOf(const std::vector<Label>& labels) const {
    std::vector<double> places;
    for (std::size_t i = 0; i < labels.size(); ++i) {
      const double half = labels[i].width / 2;
      double place = std::clamp(across(std::clamp(labels[i].mark->x, panel_.from, panel_.to)),
                                layout_.left + half, layout_.right - half);
      if (i > 0) place = std::max(place, places.back() + labels[i - 1].width / 2 + half);
      places.push_back(place);
    }
    double end = layout_.right;
    for (std::size_t i = places.size(); i-- > 0;) {
      places[i] = std::min(places[i], end - labels[i].width / 2);
      end = places[i] - labels[i].width / 2;
    }
    return places;
  }

  /// A line up from the axis for each mark, with its name and value above.
  void drawMarks() {
    const std::vector<Label> labels = labelsOf(panel_);
    const std::vector<double> places = placesOf(labels);
    for (std::size_t i = 0; i < labels.size(); ++i) {
      const auto& [name, value, width, mark] = labels[i];
      if (mark->x >= panel_.from && mark->x <= panel_.to) {
        const double x = across(mark->x);
        if (mark->height > 0)
          drawing_.line({{layout_.left, up(mark->height)}, {x, up(mark->height)}}, "across");
        drawing_.line(
            {{x, layout_.bottom()}, {x, layout_.top() - 7}, {places[i], layout_.leaderTop()}},
            mark->name == "mean" ? "leader mean" : "leader");
      }
      drawing_.text({places[i], layout_.labelLine()}, "centre quiet", name);
      drawing_.text({places[i], layout_.labelLine() + 14}, "centre", value);
    }
  }

  Drawing& drawing_;
  const Panel& panel_;
  const Layout& layout_;
};

/// How many panels stand side by side.
std::size_t columnsFor(std::size_t panels) {
  if (panels <= 1) return 1;
  return panels <= 4 ? 2 : 3;
}

/// Appends the points of a function from (but without) `a` to `b`, as dense as it is steep.
void refine(const std::function<double(double)>& function, Point a, Point b, double least,
            double step, Line& points) {
  const bool flat = std::abs(b.y - a.y) <= step || (std::isinf(a.y) && std::isinf(b.y));
  const double middle = a.x + (b.x / 2 - a.x / 2);
  if (!flat && b.x / 2 - a.x / 2 > least / 2 && middle > a.x && middle < b.x) {
    const Point between{middle, function(middle)};
    refine(function, a, between, least, step, points);
    refine(function, between, b, least, step, points);
  } else {
    points.push_back(b);
  }
}

/// "1,234,567" from digits that may have a sign and a decimal point.
std::string withThousands(std::string digits) {
  const std::size_t start = digits.starts_with('-') ? 1 : 0;
  const std::size_t point = std::min(digits.find('.'), digits.size());
  for (std::size_t at = point; at > start + 3;) digits.insert(at -= 3, 1, ',');
  return digits;
}

/// With the minus sign in place of a hyphen.
std::string withMinus(const std::string& number) {
  return number.starts_with('-') ? "\u2212" + number.substr(1) : number;
}

std::string superscript(int exponent) {
  static constexpr std::array<std::string_view, 10> digits{"\u2070", "\u00b9", "\u00b2", "\u00b3",
                                                           "\u2074", "\u2075", "\u2076", "\u2077",
                                                           "\u2078", "\u2079"};
  std::string text = exponent < 0 ? "\u207b" : "";
  for (const char digit : std::to_string(std::abs(exponent)))
    text += digits[static_cast<std::size_t>(digit - '0')];
  return text;
}

}  // namespace

Line traced(const std::function<double(double)>& function, double from, double to,
            const std::vector<double>& through) {
  constexpr int parts = 360;
  constexpr double visible = 1. / 20000;  // of the axis
  constexpr double smooth = 0.02;         // of the greatest height
  std::vector<double> xs;
  for (int i = 0; i <= parts; ++i) xs.push_back(std::lerp(from, to, i / double{parts}));
  for (const double x : through) {
    if (x > from && x < to) xs.push_back(x);
  }
  std::sort(xs.begin(), xs.end());
  xs.erase(std::unique(xs.begin(), xs.end()), xs.end());

  Line coarse;
  double greatest = 0;
  for (const double x : xs) {
    coarse.push_back({x, function(x)});
    if (std::isfinite(coarse.back().y)) greatest = std::max(greatest, coarse.back().y);
  }
  Line points{coarse.front()};
  for (std::size_t i = 1; i < coarse.size(); ++i) {
    refine(function, coarse[i - 1], coarse[i], visible * (to / 2 - from / 2) * 2, smooth * greatest,
           points);
  }
  return points;
}

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

NumberStyle::NumberStyle(double from, double to) : length_(to - from) {
  const double most = std::max(std::abs(from), std::abs(to));
  constexpr std::array<std::pair<double, const char*>, 4> units{
      {{1e12, "T"}, {1e9, "G"}, {1e6, "M"}, {1e3, "k"}}};
  scientific_ = most < 1e-3 || most >= 1e15;
  if (scientific_) return;
  for (const auto& [unit, letter] : units) {
    // Below 100 k thousands are marked instead; and no more than four decimals.
    if (most >= (unit == 1e3 ? 1e5 : unit) && length_ >= 1e-2 * unit) {
      unit_ = unit;
      suffix_ = std::string("\u00a0") + letter;
      return;
    }
  }
}

std::string NumberStyle::text(double value) const {
  const double size = std::abs(value);
  if (size <= 1e-6 * length_) return "0";  // a rounding error beside the axis
  // In steps that tell numbers apart on the axis, and at least with two digits.
  const double step = std::min(std::pow(10, std::floor(std::log10(length_ / 2)) - 2),
                               std::pow(10, std::floor(std::log10(size)) - 1));
  double unit = unit_;
  std::string suffix = suffix_;
  if (scientific_) {
    // The small factor keeps 1e-9, which is below 10^-9, from becoming 10 x 10^-10.
    const auto exponent = static_cast<int>(std::floor(std::log10(size) + 1e-12));
    unit = std::pow(10., exponent);
    suffix = "\u00d710" + superscript(exponent);
  } else if (size < 1e-2 * unit_) {
    unit = 1;
    suffix.clear();
  }
  constexpr double mostDecimals = 15;
  const double decimals = std::clamp(-std::floor(std::log10(step / unit) + 1e-9), 0., mostDecimals);
  std::string digits = fmt::format("{:.{}f}", value / unit, static_cast<int>(decimals));
  if (decimals > 0) {
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.ends_with('.')) digits.pop_back();
  }
  return withMinus(withThousands(digits)) + suffix;
}

std::string parameterText(double value) {
  std::string digits = numberText(value);
  const std::size_t mark = digits.find('E');
  if (mark == std::string::npos) return withMinus(withThousands(digits));
  const int exponent = std::stoi(digits.substr(mark + 1));
  return withMinus(digits.substr(0, mark)) + "\u00d710" + superscript(exponent);
}

std::string svgOf(const std::vector<Panel>& panels, const std::string& title) {
  const Layout layout(panels);
  const std::size_t columns = columnsFor(panels.size());
  const std::size_t rows = (panels.size() + columns - 1) / columns;
  const double width = layout.width * static_cast<double>(columns);
  const auto heads = wrapped(title, headSize, width - 40);
  const double head = heads.empty() ? 0 : 16 + 24 * static_cast<double>(heads.size());
  const double height = head + layout.height() * static_cast<double>(rows);

  Drawing drawing;
  drawing.open(
      fmt::format("svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0:.0f}\" height=\"{1:.0f}\" "
                  "viewBox=\"0 0 {0:.0f} {1:.0f}\" role=\"img\"",
                  width, height));
  std::string summary = title;
  for (const Panel& panel : panels) {
    if (!summary.empty()) summary += "; ";
    summary += panel.title + (panel.note.empty() ? "" : ", " + panel.note);
    for (const Curve& curve : panel.curves) {
      if (!curve.name.empty()) summary += "; " + curve.name;
    }
  }
  drawing.raw("<title>" + markup(summary) + "</title>\n");
  drawing.raw(style);
  drawing.raw(
      fmt::format("<clipPath id=\"chart\"><rect x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" "
                  "height=\"{:.1f}\"/></clipPath>\n",
                  layout.left - 1, layout.top() - 2, layout.right - layout.left + 2,
                  layout.bottom() - layout.top() + 3));
  drawing.raw("<rect class=\"paper\" width=\"100%\" height=\"100%\"/>\n");
  for (std::size_t i = 0; i < heads.size(); ++i)
    drawing.text({16, 29 + 24 * static_cast<double>(i)}, "head", heads[i]);
  for (std::size_t i = 0; i < panels.size(); ++i) {
    const std::size_t row = i / columns;
    const double x = layout.width * static_cast<double>(i % columns);
    const double y = head + layout.height() * static_cast<double>(row);
    drawing.open(fmt::format("g transform=\"translate({:.1f} {:.1f})\"", x, y));
    PanelDrawing(drawing, panels[i], layout).draw();
    drawing.close("g");
  }
  drawing.close("svg");
  return std::move(drawing).take();
}

}  // namespace palvex::terminal
