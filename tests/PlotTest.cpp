// The pictures of `palvex plot`: their axes, and that the SVG shows what it is given.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>

#include "hosts/terminal/LawPicture.h"
#include "hosts/terminal/Plot.h"

namespace palvex::terminal {
namespace {

Panel triangle() {
  Panel panel{};
  panel.title = "A < B & C";
  panel.from = 0;
  panel.to = 4;
  panel.height = 2;
  panel.curves = {{"", {{{0, 0}, {2, 2}, {4, 0}}}, {}}};
  panel.marks = {{"mean", 2}, {"5 %", 1.9}};
  return panel;
}

using Points = std::vector<std::pair<double, double>>;

/// What stands between `before` and `after`, each time.
std::vector<std::string> between(const std::string& svg, const std::string& before,
                                 const std::string& after) {
  std::vector<std::string> found;
  for (std::size_t at = 0; (at = svg.find(before, at)) != std::string::npos;) {
    at += before.size();
    found.push_back(svg.substr(at, svg.find(after, at) - at));
  }
  return found;
}

/// The points of each path of a class, in pixels.
std::vector<Points> paths(const std::string& svg, const std::string& cssClass) {
  std::vector<Points> found;
  for (const std::string& path : between(svg, "<path class=\"" + cssClass + "\" d=\"", "\"")) {
    std::istringstream points(path);
    found.emplace_back();
    char command = 0;
    double x = 0;
    double y = 0;
    while (points >> command >> x >> y) found.back().emplace_back(x, y);
  }
  return found;
}

std::vector<std::string> texts(const std::string& svg, const std::string& cssClass) {
  return between(svg, "class=\"" + cssClass + "\">", "<");
}

TEST(Plot, AxesHaveRoundNumbersThatPeopleRead) {
  const struct {
    double from, to;
    std::vector<double> numbers;
    std::vector<std::string> shown;
  } cases[] = {
      {0, 10, {0, 2, 4, 6, 8, 10}, {"0", "2", "4", "6", "8", "10"}},
      {-1.1, 1.3, {-1, -.5, 0, .5, 1}, {"−1", "−0.5", "0", "0.5", "1"}},
      {.2, .8, {.2, .3, .8}, {"0.2", "0.3", "0.8"}},
      {0, 25000, {0, 5000, 25000}, {"0", "5,000", "25,000"}},
      {0, 400000, {0, 100000, 400000}, {"0", "100 k", "400 k"}},
      {-3e6, 2e6, {-3e6, -1e6, 2e6}, {"−3 M", "−1 M", "2 M"}},
      {0, 1.2e12, {2e11, 1e12}, {"0.2 T", "1 T"}},
      {0, 3e-9, {0, 1e-9, 2e-9}, {"0", "1×10⁻⁹", "2×10⁻⁹"}},
      {1e20, 3e20, {1e20, 1.5e20, 3e20}, {"1×10²⁰", "1.5×10²⁰", "3×10²⁰"}},
      {999999.9, 1000000.1, {999999.95, 1000000}, {"999,999.95", "1,000,000"}},
  };
  for (const auto& c : cases) {
    const std::vector<double> numbers = roundNumbers(c.from, c.to, 6);
    for (const double number : c.numbers) {
      const auto nearest = std::min_element(
          numbers.begin(), numbers.end(),
          [&](double a, double b) { return std::abs(a - number) < std::abs(b - number); });
      ASSERT_NE(nearest, numbers.end());
      EXPECT_NEAR(*nearest, number, 1e-9 * (c.to - c.from));
    }
    for (std::size_t i = 0; i < c.shown.size(); ++i) {
      std::string shown = NumberStyle(c.from, c.to).text(c.numbers[i]);
      if (const auto at = shown.find("\u00a0"); at != std::string::npos) shown.replace(at, 2, " ");
      EXPECT_EQ(shown, c.shown[i]);
    }
  }
  EXPECT_EQ(NumberStyle(0, 7).text(.0078637), "0.0079");
  EXPECT_EQ(NumberStyle(0, 7).text(-2e-17), "0");
  EXPECT_EQ(NumberStyle(1230, 1237).text(1234.567), "1,234.57");
  EXPECT_EQ(parameterText(-1234567.5), "−1,234,567.5");
  EXPECT_EQ(parameterText(2.5e-9), "2.5×10⁻⁹");
}

// A jump is upright to a fiftieth of a pixel, and no bin is lost however narrow.
TEST(Plot, TracesJumpsAndNarrowBins) {
  const auto bars = [](double x) { return x < 1 ? 0. : x < 1.0001 ? 9. : x <= 2 ? 1. : 0.; };
  const Line line = traced(bars, 0, 3, {1, 1.00005});
  std::vector<double> highest;
  for (std::size_t i = 1; i < line.size(); ++i) {
    EXPECT_GT(line[i].x, line[i - 1].x);
    if (std::abs(line[i].y - line[i - 1].y) > .5) {
      EXPECT_LE(line[i].x - line[i - 1].x, 3. / 20000);
      highest.push_back(line[i].y);
    }
  }
  EXPECT_EQ(highest, (std::vector<double>{9, 1, 0}));
}

TEST(Plot, DrawsWhatIsKeptAndDashesWhatIsCut) {
  const Law whole = Law::triangular(0, 2, 4);
  const struct {
    Limits limits;
    std::vector<std::pair<double, double>> kept, cut;
  } cases[] = {
      {{}, {{0, 4}}, {}},
      {{.lower = 1.5, .upper = {}}, {{1.5, 4}}, {{0, 1.5}}},
      {{.lower = -3, .upper = 3}, {{0, 3}}, {{3, 4}}},
      {{.lower = 3, .upper = 1}, {{0, 1}, {3, 4}}, {{1, 3}}},
  };
  for (const auto& c : cases) {
    const Law law = c.limits.lower ? whole.between(c.limits.lower, c.limits.upper) : whole;
    const Curve curve = densityCurve({law, whole, c.limits}, {0, 4});
    const auto expectPieces = [&](const std::vector<Line>& lines, const auto& pieces) {
      ASSERT_EQ(lines.size(), pieces.size());
      for (std::size_t i = 0; i < pieces.size(); ++i) {
        EXPECT_EQ(lines[i].front().x, pieces[i].first);
        EXPECT_EQ(lines[i].back().x, pieces[i].second);
      }
    };
    expectPieces(curve.lines, c.kept);
    expectPieces(curve.cut, c.cut);
    // What is cut goes on where what is kept ends.
    if (!curve.cut.empty() && !c.limits.reversed()) {
      const double border = c.limits.upper && *c.limits.upper < 4 ? 3 : 1.5;
      EXPECT_NEAR(whole.density(border) / law.keptProbability(), law.density(border), 1e-12);
    }
  }
}

TEST(Plot, APoleLeavesThePanelAndAHighCutToo) {
  const Law law = Law::gamma(.3, 1);
  const Axis axis = axisOf({law, law, {}});
  EXPECT_LT(axis.from, 0);
  EXPECT_GT(axis.to, 2);
  const double height = heightFor({densityCurve({law, law, {}}, axis)}, axis);
  EXPECT_GT(height, law.density(.2));
  EXPECT_LT(height, 10 * law.density(.2));

  const Law whole = Law::normal(0, 1);
  const Limits limits{.lower = 2, .upper = {}};
  const Subject tail{whole.between(2, {}), whole, limits};
  const double kept = tail.law.density(2);
  const Axis shown = axisOf(tail);
  EXPECT_LE(heightFor({densityCurve(tail, shown)}, shown), 2.5 * kept);
}

TEST(Plot, LabelsStayApartAndInside) {
  Panel panel = triangle();
  panel.from = 1e12;
  panel.to = 1.000001e12;
  panel.curves = {{"", {{{1e12, 0}, {1.000001e12, 1}}}, {}}};
  panel.marks = {
      {"95 %", 1.000001e12}, {"5 %", 1.000001e12}, {"50 %", 1.0000009e12}, {"mean", 1.000001e12}};
  panel.title = std::string(60, 'W') + " and so on";
  const std::string svg = svgOf({panel, panel, panel}, "\"x\"\x01");
  EXPECT_EQ(texts(svg, "head").at(0), "&quot;x&quot;\\x01");
  EXPECT_EQ(texts(svg, "centre quiet").at(0), "50 %");
  EXPECT_EQ(texts(svg, "title").size() % 3, 0U);
  EXPECT_GT(texts(svg, "title").size(), 3U);  // wrapped
  const double width = std::stod(between(svg, "width=\"", "\"").at(0)) / 2;
  std::vector<std::pair<double, double>> labels;  // where, and how wide at least
  for (const std::string& text : between(svgOf({panel}, ""), "<text x=\"", "</text>")) {
    if (text.find("class=\"centre\"") == std::string::npos) continue;
    const std::string shown = text.substr(text.find('>') + 1);
    const double half = 5.5 * static_cast<double>(shown.size()) / 2;
    const double x = std::stod(text);
    EXPECT_GE(x - half, 0) << shown;
    EXPECT_LE(x + half, width) << shown;
    const bool isMark = labels.size() < panel.marks.size();
    if (isMark && !labels.empty()) {
      EXPECT_GE(x - half, labels.back().first + labels.back().second) << shown;
    }
    labels.emplace_back(x, half);
  }
  EXPECT_GT(labels.size(), panel.marks.size());
  panel = triangle();
  panel.marks = {{"5 %", -67}, {"mean", 2}, {"95 %", 9}};
  const std::string beyond = svgOf({panel}, "");
  EXPECT_EQ(texts(beyond, "title"), std::vector<std::string>{"A &lt; B &amp; C"});
  EXPECT_EQ(texts(beyond, "centre quiet"), (std::vector<std::string>{"← 5 %", "mean", "95 % →"}));
  EXPECT_TRUE(paths(beyond, "leader").empty());
  EXPECT_EQ(paths(beyond, "leader mean").size(), 1U);
}

}  // namespace
}  // namespace palvex::terminal
