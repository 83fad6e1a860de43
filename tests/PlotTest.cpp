// The pictures of `palvex plot`: their axis, and that the SVG shows what it is given.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>

#include "hosts/terminal/Plot.h"

namespace palvex::terminal {
namespace {

Panel triangle() {
  return {"A < B & C", "", {0, 1, 2, 3, 4}, {0, 1, 2, 1, 0}, {}, {{"mean", 2}, {"5 %", 1.9}}};
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

TEST(Plot, AxesHaveRoundNumbers) {
  const struct {
    double from, to;
    std::vector<double> numbers;
    std::vector<std::string> shown;
  } cases[] = {
      {0, 10, {0, 2, 4, 6, 8, 10}, {"0", "2", "4", "6", "8", "10"}},
      {-1.1, 1.3, {-1, -.5, 0, .5, 1}, {"-1", "-0.5", "0", "0.5", "1"}},
      {.2, .8, {.2, .3, .4, .5, .6, .7, .8}, {"0.2", "0.3", "0.4", "0.5", "0.6", "0.7", "0.8"}},
      {1e20,
       3e20,
       {1e20, 1.5e20, 2e20, 2.5e20, 3e20},
       {"1E+20", "1.5E+20", "2E+20", "2.5E+20", "3E+20"}},
      {999999.9,
       1000000.1,
       {999999.95, 1000000, 1000000.05},
       {"999999.95", "1000000", "1000000.05"}},
  };
  for (const auto& c : cases) {
    const std::vector<double> numbers = roundNumbers(c.from, c.to, 6);
    ASSERT_GE(numbers.size(), c.numbers.size()) << c.from;
    for (const double number : c.numbers) {
      const auto nearest = std::min_element(
          numbers.begin(), numbers.end(),
          [&](double a, double b) { return std::abs(a - number) < std::abs(b - number); });
      EXPECT_NEAR(*nearest, number, 1e-9 * (c.to - c.from));
    }
    for (std::size_t i = 0; i < c.shown.size(); ++i)
      EXPECT_EQ(shortNumber(c.numbers[i], c.to - c.from), c.shown[i]);
  }
  EXPECT_EQ(shortNumber(.0078637, 7), "0.0079");
  EXPECT_EQ(shortNumber(-2e-17, 7), "0");
  EXPECT_EQ(shortNumber(1234.567, 7), "1234.57");
}

TEST(Plot, AxesEndForAnyInterval) {
  for (const double from : {-1e308, -1e15, -1., 0., 1e-300, 1., 1e15, 1e300}) {
    for (const double length : {1e-320, 1e-16, 1., 1e300, 1.7e308}) {
      const double to = std::max(from + length, std::nextafter(from, 1.7e308));
      if (!std::isfinite(to) || !std::isfinite(to - from)) continue;
      const std::vector<double> numbers = roundNumbers(from, to, 6);
      EXPECT_LE(numbers.size(), 13U);
      for (std::size_t i = 0; i < numbers.size(); ++i) {
        EXPECT_TRUE(numbers[i] >= from && numbers[i] <= to);
        EXPECT_TRUE(i == 0 || numbers[i] > numbers[i - 1]);
        EXPECT_FALSE(shortNumber(numbers[i], to - from).empty());
      }
    }
  }
}

TEST(Plot, FillsWhatIsKeptAndDashesWhatIsCut) {
  // The axis runs over 400 pixels from 20; its unit is 100.
  const struct {
    Limits limits;
    std::vector<std::pair<double, double>> kept, cut;
  } cases[] = {
      {{}, {{20, 420}}, {}},
      {{.lower = 1.5, .upper = {}}, {{170, 420}}, {{20, 170}}},
      {{.lower = -3, .upper = 3}, {{20, 320}}, {{320, 420}}},
      {{.lower = 3, .upper = 1}, {{20, 120}, {320, 420}}, {{120, 320}}},
      {{.lower = 5, .upper = -1}, {}, {{20, 420}}},
  };
  for (const auto& c : cases) {
    Panel panel = triangle();
    panel.limits = c.limits;
    const std::string svg = svgOf({panel}, "");
    const auto expectPieces = [&](const char* cssClass, const auto& pieces) {
      const auto drawn = paths(svg, cssClass);
      ASSERT_EQ(drawn.size(), pieces.size()) << cssClass;
      for (std::size_t i = 0; i < pieces.size(); ++i) {
        EXPECT_NEAR(drawn[i].front().first, pieces[i].first, .06) << cssClass;
        EXPECT_NEAR(drawn[i].back().first, pieces[i].second, .06) << cssClass;
      }
    };
    expectPieces("kept", c.kept);
    expectPieces("cut", c.cut);
  }
}

TEST(Plot, APoleLeavesThePanelAndALowDensityFillsIt) {
  Panel panel{"", "", {}, {}, {}, {}};
  for (int i = 0; i <= 100; ++i) {
    panel.x.push_back(i);
    panel.density.push_back(i == 0 ? 0 : std::pow(i, -.7));
  }
  const auto edge = [&] { return paths(svgOf({panel}, ""), "edge").at(0); };
  Points heights = edge();
  EXPECT_LT(heights[40].second - heights[60].second, -5);  // still to be told apart
  EXPECT_LT(heights[1].second, 100);                       // the pole is above the panel
  panel.density.assign(101, 1e-300);
  heights = edge();
  for (const auto& [x, y] : heights) EXPECT_EQ(y, 104);
  panel.density.assign(101, 0);
  heights = edge();
  for (const auto& [x, y] : heights) EXPECT_EQ(y, 266);
}

TEST(Plot, NamesOfMarksDoNotOverlapAndTextIsEscaped) {
  Panel panel = triangle();
  panel.marks = {{"95 %", 4}, {"5 %", 4}, {"50 %", 3.99}, {"mean", 4}};
  const std::string svg = svgOf({panel, panel, panel, panel, panel}, "\"x\"\x01");
  EXPECT_EQ(texts(svg, "title"), std::vector<std::string>(5, "A &lt; B &amp; C"));
  EXPECT_EQ(texts(svg, "head").at(0), "&quot;x&quot;\\x01");
  EXPECT_EQ(texts(svg, "centre quiet").at(0), "50 %");
  std::vector<double> labels;
  for (const auto& leader : paths(svgOf({panel}, ""), "leader"))
    labels.push_back(leader.back().first);
  ASSERT_EQ(labels.size(), 3U);  // the mean's has a class of its own
  for (std::size_t i = 1; i < labels.size(); ++i) EXPECT_GE(labels[i] - labels[i - 1], 57.9);
  EXPECT_LE(labels.back(), 420);
}

TEST(Plot, PointsAtMarksOutsideTheAxis) {
  Panel panel = triangle();
  panel.marks = {{"5 %", -67}, {"mean", 2}, {"95 %", 9}};
  const std::string svg = svgOf({panel}, "");
  EXPECT_EQ(texts(svg, "centre quiet"), (std::vector<std::string>{"← 5 %", "mean", "95 % →"}));
  EXPECT_TRUE(paths(svg, "leader").empty());
  EXPECT_EQ(paths(svg, "leader mean").size(), 1U);
  EXPECT_EQ(svg.find("the density is 0"), std::string::npos);
  panel.density.assign(5, 0);
  EXPECT_NE(svgOf({panel}, "").find("the density is 0"), std::string::npos);
}

}  // namespace
}  // namespace palvex::terminal
