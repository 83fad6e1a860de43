// Plot range and graph data of the distribution object.

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <random>

#include "FakeRange.h"
#include "Fault.h"
#include "engine/c_Distribution.h"

namespace palvex {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct Law {
  std::string type;
  std::vector<Variant> parameters;
  Variant ltl = {};
  Variant utl = {};
};

std::string set(c_Distribution& d, const Law& law) {
  d.distType(law.type);
  Variant* const members[] = {&d.param1, &d.param2, &d.param3, &d.param4};
  for (std::size_t i = 0; i < law.parameters.size(); ++i) *members[i] = law.parameters[i];
  d.ltl = law.ltl;
  d.utl = law.utl;
  std::string fault;
  d.ParamsOK(fault);
  return fault;
}

std::string name(const Law& law) {
  std::string text = law.type;
  for (const Variant& parameter : law.parameters)
    text += ' ' + (parameter.isObject() ? std::string("cells") : parameter.toText());
  return text + ", " + law.ltl.toText() + " .. " + law.utl.toText();
}

/// The area below a series by the trapezoidal rule.
double area(const c_Distribution& d, double (c_Distribution::*series)(std::int16_t) const) {
  double sum = 0;
  for (std::int16_t i = 2; i <= d.NumPoints(); ++i) {
    const auto before = static_cast<std::int16_t>(i - 1);
    sum += (d.GraphX(i) - d.GraphX(before)) * ((d.*series)(i) + (d.*series)(before)) / 2;
  }
  return sum;
}

std::shared_ptr<FakeRange> someBins() {
  return block(3, {0, 1, 2, 2, 3, 1, 3, 5, 4});
}

TEST(PlotRange, EndsAtLimitsFiniteEndsOrDeviations) {
  // Of the standard normal law beyond 30, from its Mills ratio by arbitrary precision.
  const double farMean = 30.033259667433677;
  const double farSd = 0.033223056931746829;
  const struct {
    Law law;
    double numSD, from, to;
  } cases[] = {
      {{"Normal", {10, 2}}, 4, 2, 18},
      {{"Normal", {10, 2}}, 0, 2, 18},
      {{"Normal", {10, 2}}, -1, 2, 18},
      {{"Normal", {10, 2}}, 1, 8, 12},
      {{"Normal", {10, 2}, 7}, 4, 7, 18},
      {{"Normal", {10, 2}, 7, 11}, 4, 7, 11},
      {{"Normal", {10, 2}, 11, 7}, 4, 2, 18},  // reversed
      {{"Normal", {0, 1}, 30}, 4, 30, farMean + 4 * farSd},
      {{"Normal", {0, 1}, {}, -30}, 4, -farMean - 4 * farSd, -30},
      {{"Normal", {3, 0}}, 4, 2, 4},
      {{"Uniform", {2, 8}}, 4, 2, 8},
      {{"Uniform", {2, 8}, 1, 5}, 4, 2, 5},
      {{"Uniform", {5, 5}}, 4, 4, 6},
      {{"Triangular", {0, 2, 10}, "-Infinity", 12}, 4, 0, 10},
      {{"Exponential", {.5, 1}}, 3, 1, 9},
      {{"Exponential", {.5, 1}, 100}, 3, 100, 108},
      {{"Histogram", {someBins(), "Bins and Counts (3 cols)"}, {}, 4}, 4, 0, 4},
      {{"Histogram", {cell(1e300), "Raw Data"}},
       4,
       std::nextafter(1e300, 0),
       std::nextafter(1e300, infinity)},
  };
  for (const auto& c : cases) {
    c_Distribution d;
    ASSERT_EQ(set(d, c.law), "") << name(c.law);
    EXPECT_NEAR(d.XMin(c.numSD), c.from, 1e-9 * std::abs(c.from)) << name(c.law);
    EXPECT_NEAR(d.XMax(c.numSD), c.to, 1e-9 * std::abs(c.to)) << name(c.law);
  }
  c_Distribution none;
  EXPECT_EQ(none.XMin(), 0);
  none.distType("Histogram");
  const auto fault = faultOf([&] { return none.XMax(); });
  ASSERT_TRUE(fault);
  EXPECT_EQ(fault->number(), 9);
  EXPECT_NE(fault->source().find("in palvex.c_Distribution.XMax at line "), std::string::npos);
}

TEST(PlotRange, BeginsBelowItsEnd) {
  std::mt19937_64 random(5);
  std::uniform_real_distribution<double> uniform;
  const auto size = [&](double digits) { return std::pow(10, digits * (2 * uniform(random) - 1)); };
  const auto real = [&](double digits) { return (uniform(random) < .5 ? -1 : 1) * size(digits); };
  const auto law = [&](const std::string& type) -> Law {
    const double least = real(6);
    if (type == "Normal") return {type, {least, random() % 9 == 0 ? 0 : size(9)}};
    if (type == "Uniform") return {type, {least, least + (random() % 9 == 0 ? 0 : size(9))}};
    if (type == "Triangular") {
      const double likely = least + (random() % 3 == 0 ? 0 : size(3));
      return {type, {least, likely, likely + (random() % 3 == 0 ? 0 : size(3))}};
    }
    if (type == "Lognormal") return {type, {real(.7), size(.5), least}};
    if (type == "Exponential") return {type, {size(9), least}};
    if (type == "Weibull") return {type, {size(1), size(6), least}};
    if (type == "Gamma") return {type, {size(3), size(6), least}};
    if (type == "Beta") return {type, {size(2), size(2), least, least + size(6)}};
    if (type == "Johnson") {
      const double skewness = real(.5);
      return {type, {real(3), size(3), skewness, skewness * skewness + 1 + size(1)}};
    }
    std::vector<Variant> cells;
    const auto count = random() % 20 + 1;
    for (std::size_t i = 0; i < count; ++i) cells.emplace_back(real(3));
    return {type, {block(1, cells), "Raw Data"}};
  };
  const c_Distribution catalogue;
  for (std::int32_t i = 1; i <= 10; ++i) {
    const std::string type = catalogue.ValidDistributions().at(i).toText();
    int checked = 0;
    for (int attempt = 0; attempt < 12000 && checked < 1000; ++attempt) {
      Law one = law(type);
      c_Distribution d;
      try {
        if (!set(d, one).empty()) continue;
        const double p = uniform(random);
        const double q = uniform(random);
        if (random() % 2 == 0) one.ltl = d.RandVal(p);
        if (random() % 2 == 0) one.utl = d.RandVal(q);
        if (!set(d, one).empty()) continue;
      } catch (const RuntimeError&) {
        continue;  // a curve that can not be fitted
      }
      const double from = d.XMin();
      const double to = d.XMax();
      ASSERT_TRUE(std::isfinite(from) && std::isfinite(to)) << name(one);
      ASSERT_LT(from, to) << name(one);
      ++checked;
    }
    EXPECT_EQ(checked, 1000) << type;
  }
}

TEST(GraphData, HaveEqualStepsBothEndsAndTheDensityOfPdf) {
  c_Distribution d;
  ASSERT_EQ(set(d, {"Normal", {10, 2}, 9.05, 12}), "");
  d.ScaleFactor(3);
  d.CreateGraphData(.1, 19.7);
  ASSERT_EQ(d.NumPoints(), 101);
  EXPECT_EQ(d.GraphX(1), .1);
  EXPECT_EQ(d.GraphX(101), 19.7);
  for (std::int16_t i = 1; i <= 101; ++i) {
    const double x = d.GraphX(i);
    EXPECT_NEAR(x, .1 + .196 * (i - 1), 1e-13);
    EXPECT_EQ(d.GraphPDF(i), 3 * d.pdf(x));
    EXPECT_EQ(d.GraphOL(i), 3 * d.pdf(x, true));
  }
  d.CreateGraphData(.1, 19.7, true);
  for (std::int16_t i = 1; i <= 101; ++i) EXPECT_EQ(d.GraphPDF(i), d.GraphOL(i));
  d.ResizeArrays(1);
  d.CreateGraphData(9, 11);
  EXPECT_EQ(d.GraphX(1), 9);
  d.Dynamic = true;  // the limits as they are now
  d.ltl = 8;
  d.CreateGraphData(9, 11);
  EXPECT_EQ(d.GraphPDF(1), 3 * d.pdf(9, true));
}

TEST(GraphData, OfAPointMassIsThatOfPdf) {
  c_Distribution d;
  d.Dynamic = true;  // a limit that leaves nothing does not pass validation
  d.ResizeArrays(3);
  for (const char* type : {"Uniform", "Triangular"}) {
    set(d, {type, {3, 3, 3}, 5});
    d.CreateGraphData(2, 4);
    EXPECT_EQ(d.GraphPDF(2), 1) << type;
    EXPECT_EQ(d.pdf(3), 1) << type;
  }
}

TEST(GraphData, TakeNoTimeWhereTheFormulaOverflows) {
  const Law laws[] = {{"Beta", {1e5, 1e5, 0, 1}},
                      {"Gamma", {1e6, 1, 0}},
                      {"Weibull", {400, 1, 0}},
                      {"Johnson", {0, 1, 0, 6}}};
  for (const Law& law : laws) {
    c_Distribution d;
    ASSERT_EQ(set(d, law), "") << name(law);
    d.ResizeArrays(32766);
    const auto start = std::chrono::steady_clock::now();
    const bool wide = law.type == "Weibull" || law.type == "Johnson";
    d.CreateGraphData(wide ? -1e9 : d.XMin(), wide ? 1e9 : d.XMax());
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    // An error raised and caught for each point takes a second.
    EXPECT_LT(seconds.count(), .25) << name(law);
    if (!wide) {
      EXPECT_NEAR(area(d, &c_Distribution::GraphPDF), 1, 1e-3) << name(law);
    }
  }
}

TEST(GraphData, StayAsTheyWereOnFailure) {
  c_Distribution d;
  ASSERT_EQ(set(d, {"Normal", {0, 1}}), "");
  const struct {
    double from, to;
    int fault;
  } cases[] = {{1, 1, 5}, {2, 1, 5}, {nan, 1, 5}, {0, nan, 5}, {0, infinity, 6}, {-infinity, 0, 6}};
  for (const auto& [from, to, number] : cases) {
    const auto fault = faultOf([&, a = from, b = to] {
      d.CreateGraphData(a, b);
      return 0;
    });
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->number(), number);
    EXPECT_TRUE(
        fault->source().starts_with("palvex\r\nin palvex.c_Distribution.CreateGraphData at line "));
    EXPECT_EQ(d.NumPoints(), 0);
  }
  d.CreateGraphData(-1, 1);
  d.distType("Histogram");  // without data
  EXPECT_EQ(faultNumber([&] {
              d.CreateGraphData(0, 5);
              return 0;
            }),
            9);
  EXPECT_EQ(d.NumPoints(), 101);
  EXPECT_EQ(d.GraphX(101), 1);
}

// The reported density is a true one, except for types whose density is that of a standardised
// variable: (X - minimum) / scale for Gamma, (X - minimum) / (maximum - minimum) for Beta,
// (X - xi) / lambda for Johnson's SB and SU. The whole area then is the divisor.
TEST(GraphData, KeptAndCutAreasAreTheProbabilities) {
  const struct {
    Law law;
    double total;
  } cases[] = {
      {{"Normal", {10, 2}, 8, 13}, 1},
      {{"Normal", {10, 2}, 13, 8}, 1},
      {{"Uniform", {2, 8}, 3}, 1},
      {{"Triangular", {0, 2, 10}, {}, 7}, 1},
      {{"Lognormal", {0, .5, 1}, 1.5, 3}, 1},
      {{"Exponential", {.5, 1}, 2}, 1},
      {{"Weibull", {2, 3, 1}, 2, 4}, 1},
      {{"Histogram", {someBins(), "Bins and Counts (3 cols)"}, .5, 4}, 1},
      {{"Gamma", {2.5, 1, 0}, 1, 4}, 1},  // cdf takes the scale as a rate: no limits beside one
      {{"Gamma", {2.5, 2, 3}}, 2},
      {{"Beta", {2, 3, 10, 14}, 11, 13}, 4},
  };
  for (const auto& [law, total] : cases) {
    c_Distribution d;
    ASSERT_EQ(set(d, law), "") << name(law);
    c_Distribution whole;
    ASSERT_EQ(set(whole, {law.type, law.parameters}), "");
    const double from = whole.XMin(14);
    const double to = whole.XMax(14);
    d.ResizeArrays(20001);
    d.CreateGraphData(from, to);
    const double below = d.ltl.isEmpty() ? 0 : d.cdf(d.ltl.toDouble());
    const double above = d.utl.isEmpty() ? 1 : d.cdf(d.utl.toDouble());
    const double kept = above > below ? above - below : 1 - below + above;
    EXPECT_NEAR(area(d, &c_Distribution::GraphOL), total, 1e-3 * total) << name(law);
    EXPECT_NEAR(area(d, &c_Distribution::GraphPDF), kept * total, 1e-3 * total) << name(law);
  }
}

TEST(GraphData, ShowABinNarrowerThanTheStep) {
  c_Distribution d;
  const auto bins = block(3, {0, 50, 1, 50.1, 50.2, 1, 60, 100, 1});
  ASSERT_EQ(set(d, {"Histogram", {bins, "Bins and Counts (3 cols)"}}), "");
  d.ResizeArrays(11);
  d.CreateGraphData(0, 100);
  EXPECT_EQ(d.pdf(60), d.GraphPDF(8));
  EXPECT_NEAR(d.GraphPDF(7), 1 / .3, 1e-12);  // at 60, for the bin since 50
}

TEST(GraphData, HoldWhereADensityOverflowsOrHasAPole) {
  // The density in the first and last point; by symmetry, by hand, or 0 where it is below the
  // smallest double.
  const struct {
    Law law;
    double from, to, first, last;
  } cases[] = {
      {{"Normal", {0, 1e-170}}, -1e-170, 1e170, 2.4197072451914337e+169, 0},
      {{"Uniform", {-1.5e308, 1.5e308}}, -1, 1, 1 / 1.5e308 / 2, 1 / 1.5e308 / 2},
      {{"Triangular", {0, 1e200, 1e200}}, 0, 1e200, 0, 2e-200},
      {{"Exponential", {1e200, 0}}, 0, 1e200, 1e200, 0},
      {{"Weibull", {400, 1, 0}}, 1, 20, 400 * std::exp(-1), 0},
      {{"Lognormal", {0, 1e-170, 0}}, 1, 2, 3.9894228040143268e+169, 0},
      {{"Johnson", {0, 1, 0, 6}}, -1e9, 1e9, nan, nan},
      // Poles at the ends: the density half a step (0.05) inside.
      {{"Gamma", {.5, 2, 0}},
       0,
       10,
       std::exp(-.025) / std::sqrt(M_PI * .025),
       std::exp(-5) / std::sqrt(M_PI * 5)},
      {{"Beta", {.5, .5, 0, 10}},
       0,
       10,
       1 / M_PI / std::sqrt(.005 * .995),
       1 / M_PI / std::sqrt(.005 * .995)},
      // Half a step is wider than the support: the density at its middle.
      {{"Beta", {.5, .5, 0, 1}}, 0, 1000, 2 / M_PI, 0},
  };
  for (const auto& c : cases) {
    c_Distribution d;
    ASSERT_EQ(set(d, c.law), "") << name(c.law);
    EXPECT_EQ(faultNumber([&] {
                d.CreateGraphData(c.from, c.to);
                return 0;
              }),
              0)
        << name(c.law);
    for (std::int16_t i = 1; i <= d.NumPoints(); ++i)
      EXPECT_TRUE(std::isfinite(d.GraphPDF(i)) && d.GraphPDF(i) >= 0) << name(c.law) << i;
    const double first = std::isnan(c.first) ? d.GraphPDF(101) : c.first;
    const double last = std::isnan(c.last) ? d.GraphPDF(1) : c.last;
    EXPECT_NEAR(d.GraphPDF(1), first, 1e-9 * first) << name(c.law);
    EXPECT_NEAR(d.GraphPDF(101), last, 1e-9 * last) << name(c.law);
  }
}

}  // namespace
}  // namespace palvex
