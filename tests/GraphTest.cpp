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

}  // namespace
}  // namespace palvex
