// What is fitted to a range or to moments: the Johnson curves over the whole plane, histograms of
// any data.

#include <array>
#include <cmath>
#include <map>
#include <random>

#include "Routines.h"
#include "families/m_Histogram.h"
#include "families/m_Johnson.h"
#include "laws/Johnson.h"

namespace palvex::script {
namespace {

using CurveMoments = laws::Johnson::CurveMoments;
using m_Johnson::JohnsonParams;

JohnsonParams fitted(double mean, double sd, double skewness, double kurtosis) {
  JohnsonParams params;
  CalcJohnson(mean, sd, skewness, kurtosis, params);
  return params;
}

/// Kurtosis of the lognormal curve with a given skewness, by the trigonometric solution of
/// (w - 1)(w + 2)^2 = skewness^2; the fit uses Cardano's.
double lognormalKurtosis(double skewness) {
  const double w = 2 * std::cosh(std::acosh(1 + skewness * skewness / 2) / 3) - 1;
  return std::pow(w, 4) + 2 * std::pow(w, 3) + 3 * w * w - 3;
}

/// The moments of an SL or SU curve in closed form (N. L. Johnson, Biometrika 36 (1949) 149-176).
CurveMoments closedMoments(const JohnsonParams& c) {
  const double w = std::exp(1 / (c.delta * c.delta));
  const double omega = c.gamma / c.delta;
  if (c.typeName == "SL") {
    const double scale = std::exp(-omega);
    return {c.xi + c.lambda * scale * std::sqrt(w), scale * std::sqrt(w * (w - 1)),
            c.lambda * (w + 2) * std::sqrt(w - 1),
            std::pow(w, 4) + 2 * std::pow(w, 3) + 3 * w * w - 3};
  }
  const double variance = (w - 1) * (w * std::cosh(2 * omega) + 1) / 2;
  const double third = -std::sqrt(w) * (w - 1) * (w - 1) *
                       (w * (w + 2) * std::sinh(3 * omega) + 3 * std::sinh(omega)) / 4;
  const double fourth =
      (w - 1) * (w - 1) *
      (w * w * (std::pow(w, 4) + 2 * std::pow(w, 3) + 3 * w * w - 3) * std::cosh(4 * omega) +
       4 * w * w * (w + 2) * std::cosh(2 * omega) + 3 * (2 * w + 1)) /
      8;
  return {c.xi - c.lambda * std::sqrt(w) * std::sinh(omega), c.lambda * std::sqrt(variance),
          third / std::pow(variance, 1.5), fourth / (variance * variance)};
}

void expectMoments(const CurveMoments& got, const CurveMoments& asked, double location,
                   double skewness, double kurtosis) {
  EXPECT_NEAR(got.mean, asked.mean, location * asked.stdDev);
  EXPECT_NEAR(got.stdDev, asked.stdDev, location * asked.stdDev);
  EXPECT_NEAR(got.skewness, asked.skewness, skewness);
  EXPECT_NEAR(got.kurtosis, asked.kurtosis, kurtosis);
}

/// What the fit makes of a pair: a type, "refused", or "no SB" for an SB fit without a curve.
std::string outcome(double skewness, double kurtosis) {
  JohnsonParams c;
  c.typeCode = 77;
  try {
    CalcJohnson(1, 2, skewness, kurtosis, c);
  } catch (const RuntimeError& error) {
    // Only an SU iteration may leave the real numbers.
    return c.typeCode == 2 && (error.number() == 5 || error.number() == 6) ? "SU" : "fault";
  }
  constexpr std::array names{"SL", "SU", "SB", "Normal"};
  if (c.message.empty()) {
    const bool named = c.typeCode >= 1 && c.typeCode <= 4 &&
                       c.typeName == names[static_cast<std::size_t>(c.typeCode - 1)];
    if (!named) return "wrong name " + c.typeName;
    if (c.typeName != "SB" || c.delta > 0) return c.typeName;
  }
  if (!c.message.empty() && c.typeName != "Error") return "wrong name " + c.typeName;
  if (c.gamma != 0 || c.delta != 0 || c.lambda != 0 || c.xi != 0) return "constants left";
  if (c.typeCode == 77)
    return c.message == "Kurtosis less than skewness squared plus one." ? "refused" : c.message;
  if (c.typeCode != 3) return "wrong code";
  const bool low = kurtosis <= skewness * skewness + 2;
  for (const char* text : {"", "Zero coefficient in a()", "exceeded iteration",
                           "Unexpected error in sbfit", "Failure in fitting SB."}) {
    if (c.message == text) return low == c.message.starts_with("Failure") ? "no SB" : c.message;
  }
  return c.message;
}

std::string expectedType(double skewness, double kurtosis) {
  if (kurtosis < skewness * skewness + 1) return "refused";
  if (std::abs(kurtosis - 3) <= 0.01 && skewness <= 0.01) return "Normal";
  const double line = lognormalKurtosis(skewness);
  if (std::abs(kurtosis - line) <= 0.01) return "SL";
  return kurtosis > line ? "SU" : "SB";
}

std::string expectType(double skewness, double kurtosis, const std::string& expected) {
  const std::string got = outcome(skewness, kurtosis);
  EXPECT_TRUE(got == expected || (got == "no SB" && expected == "SB"))
      << skewness << ' ' << kurtosis << ": " << got << ", not " << expected;
  return got;
}

TEST(JohnsonFit, ClassifiesTheWholePlaneAndBothSidesOfEveryBorder) {
  std::mt19937_64 random(4);
  std::uniform_real_distribution<double> uniform(0, 1);
  std::map<std::string, int> seen;
  for (int i = 0; i < 12'000; ++i) {
    const double skewness = (i % 5 == 0 ? 0.2 : 6) * (2 * uniform(random) - 1);
    double kurtosis = 100 * std::pow(uniform(random), 2);
    if (i % 3 == 0) kurtosis = lognormalKurtosis(skewness) + 0.1 * uniform(random) - 0.05;
    if (i % 7 == 0) kurtosis = skewness * skewness + 0.9 + 1.5 * uniform(random);
    if (i % 11 == 0) kurtosis = 2.97 + 0.06 * uniform(random);
    ++seen[expectType(skewness, kurtosis, expectedType(skewness, kurtosis))];
  }
  for (const char* type : {"refused", "Normal", "SL", "SU", "SB", "no SB"})
    EXPECT_GT(seen[type], 100) << type;

  constexpr double hair = 1e-9;
  for (const double skewness : {-3.0, -0.5, 0.02, 0.5, 1.0, 3.0}) {
    const double line = lognormalKurtosis(skewness);
    for (const double border : {line - 0.01, line + 0.01, skewness * skewness + 1}) {
      for (const double kurtosis : {border - hair, border + hair}) {
        expectType(skewness, kurtosis, expectedType(skewness, kurtosis));
      }
    }
  }
  for (const auto& row : table("johnson_types.csv")) {
    expectType(row[0].toDouble(), row[1].toDouble(), row[2].toText());
  }
  // A skewness up to 0.01 counts as symmetric above the lognormal line.
  for (const double skewness : {0.01, -0.01, 0.0}) {
    const JohnsonParams c = fitted(7, 2, skewness, 5);
    EXPECT_EQ(c.gamma, 0);
    EXPECT_EQ(c.xi, 7);
  }
  for (const double skewness : {0.01 + hair, -0.01 - hair})
    EXPECT_NE(fitted(7, 2, skewness, 5).gamma, 0);
}

TEST(JohnsonFit, CurveHasTheAskedMoments) {
  std::mt19937_64 random(6);
  std::uniform_real_distribution<double> uniform(0, 1);
  std::map<std::string, int> seen;
  for (int i = 0; i < 6'000; ++i) {
    const double skewness = 8 * uniform(random) - 4;
    const double line = lognormalKurtosis(skewness);
    const double low = skewness * skewness + 1;
    double kurtosis = low + uniform(random) * (line - low);                          // SB
    if (i % 3 == 1) kurtosis = line + 0.02 * uniform(random) - 0.01;                 // SL
    if (i % 3 == 2) kurtosis = line + 0.1 + 60 * uniform(random) * uniform(random);  // SU
    const CurveMoments asked{-3, 4, skewness, kurtosis};
    JohnsonParams c;
    const int fault =
        faultNumber([&] { return c = fitted(asked.mean, asked.stdDev, skewness, kurtosis), 0; });
    if (fault != 0 || !c.message.empty() || c.delta == 0) continue;
    SCOPED_TRACE(c.typeName + ' ' + std::to_string(skewness) + ' ' + std::to_string(kurtosis));
    ++seen[c.typeName];
    const CurveMoments real = laws::Johnson(c).curveMoments();
    if (c.typeName == "SB") {
      expectMoments(real, asked, 1e-3, 1e-4, 1e-4 * kurtosis);
    } else {
      const CurveMoments closed = closedMoments(c);
      expectMoments(real, closed, 1e-10, 1e-9, 1e-9 * kurtosis);
      const bool su = c.typeName == "SU";
      expectMoments(closed, asked, 1e-9, su ? 0.05 : 1e-8, su ? 0.015 * kurtosis : 0.0101);
    }
  }
  EXPECT_GT(seen["SB"], 1500);
  EXPECT_GT(seen["SL"], 1900);
  EXPECT_GT(seen["SU"], 1900);
}

// ---- histograms ----

using m_Histogram::layouts;

m_Histogram::Arrays build(const Variant& range, std::size_t layout) {
  m_Histogram::Arrays built;
  EXPECT_EQ(
      m_Histogram::CreateHistogramArrays(range, layouts.at(layout), built.density, built.table),
      "");
  return built;
}

TEST(HistogramFit, RawDataChooseTheNumberOfBins) {
  Values values;
  for (int i = 0; i < 100; ++i) values.emplace_back(i);
  const auto bins = [&] { return build(block(1, values), 0).table.size(); };
  EXPECT_EQ(bins(), 8);  // Sturges; the other rule has 5
  values.emplace_back(1000);
  EXPECT_EQ(bins(), 47);  // Freedman and Diaconis: 1000 / (2 50 / 101^(1/3)) = 46.6
  values.erase(values.begin() + 99);
  EXPECT_EQ(bins(), 47);  // quartiles between two values: 1000 / (2 49.5 / 100^(1/3)) = 46.9
  values.emplace_back(1e9);
  EXPECT_EQ(bins(), 1000);
  values.assign(100, 5);
  values.emplace_back(6);
  EXPECT_EQ(bins(), 8);  // no spread between the quartiles: Sturges
}

TEST(HistogramFit, ReadsTheRangeOnceAndKeepsTheArraysOnFailure) {
  const auto range = block(1, {4, 1, 3, 2});
  m_Histogram::Arrays arrays = build(range, 0);
  EXPECT_EQ(range->reads, 1);
  const m_Histogram::Arrays before = arrays;
  const auto again = [&] {
    return m_Histogram::CreateHistogramArrays(range, layouts[0], arrays.density, arrays.table);
  };
  range->cells[1] = "x";
  EXPECT_NE(again(), "");
  range->cells = {-1e308, 1e308};
  EXPECT_EQ(faultNumber(again), 6);
  range->failingRead = {{"Value", 1}};
  const auto fault = faultOf(again);
  ASSERT_TRUE(fault);
  EXPECT_EQ(fault->number(), 1004);
  EXPECT_TRUE(
      fault->source().starts_with("host\r\nin palvex.m_Histogram.CreateHistogramArrays at line "));
  EXPECT_EQ(arrays.density, before.density);
  EXPECT_EQ(arrays.table, before.table);
}

}  // namespace
}  // namespace palvex::script
