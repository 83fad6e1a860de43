#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "Fault.h"
#include "families/m_Johnson.h"
#include "families/m_Normal.h"
#include "laws/Johnson.h"

namespace palvex::m_Johnson {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

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
laws::Johnson::CurveMoments closedMoments(const JohnsonParams& c) {
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

void expectMoments(const laws::Johnson::CurveMoments& got, const laws::Johnson::CurveMoments& asked,
                   double location, double skewness, double kurtosis, const std::string& where) {
  EXPECT_NEAR(got.mean, asked.mean, location * asked.stdDev) << where;
  EXPECT_NEAR(got.stdDev, asked.stdDev, location * asked.stdDev) << where;
  EXPECT_NEAR(got.skewness, asked.skewness, skewness) << where;
  EXPECT_NEAR(got.kurtosis, asked.kurtosis, kurtosis) << where;
}

// ---- classification ----

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

TEST(JohnsonFit, ClassifiesTheWholePlane) {
  std::mt19937_64 random(4);
  std::uniform_real_distribution<double> uniform(0, 1);
  std::map<std::string, int> seen;
  for (int i = 0; i < 12'000; ++i) {
    const double skewness = (i % 5 == 0 ? 0.2 : 6) * (2 * uniform(random) - 1);
    double kurtosis = 100 * std::pow(uniform(random), 2);
    if (i % 3 == 0) kurtosis = lognormalKurtosis(skewness) + 0.1 * uniform(random) - 0.05;
    if (i % 7 == 0) kurtosis = skewness * skewness + 0.9 + 1.5 * uniform(random);
    if (i % 11 == 0) kurtosis = 2.97 + 0.06 * uniform(random);
    const std::string expected = expectedType(skewness, kurtosis);
    const std::string got = outcome(skewness, kurtosis);
    ++seen[got];
    EXPECT_TRUE(got == expected || (got == "no SB" && expected == "SB"))
        << skewness << ' ' << kurtosis << ": " << got << ", not " << expected;
  }
  for (const char* type : {"refused", "Normal", "SL", "SU", "SB", "no SB"}) {
    EXPECT_GT(seen[type], 100) << type;
  }
}

TEST(JohnsonFit, ClassifiesBothSidesOfEveryBorder) {
  constexpr double hair = 1e-9;
  for (const double skewness : {-3.0, -0.5, 0.02, 0.5, 1.0, 3.0}) {
    const double line = lognormalKurtosis(skewness);
    for (const double border : {line - 0.01, line + 0.01, skewness * skewness + 1}) {
      for (const double kurtosis : {border - hair, border + hair}) {
        const std::string got = outcome(skewness, kurtosis);
        const std::string expected = expectedType(skewness, kurtosis);
        EXPECT_TRUE(got == expected || (got == "no SB" && expected == "SB"))
            << skewness << ' ' << kurtosis << ": " << got << ", not " << expected;
      }
    }
  }
  const struct {
    double skewness, kurtosis;
    const char* expected;
  } cases[] = {
      {0, 3, "Normal"},
      {0, 3.01 - hair, "Normal"},
      {0, 3.01 + hair, "SU"},
      {0, 2.99 + hair, "Normal"},
      {0, 2.99 - hair, "no SB"},
      {0.01, 3.005, "Normal"},
      {0.01 + hair, 3.005, "SL"},  // on the lognormal line, once it is no longer normal
      {-0.5, 3.005, "Normal"},
      {0.5, 3.005, "SB"},
      {-0.5, 3.01 + hair, "SB"},
      {1, 2, "no SB"},
      {0, 1, "no SB"},
      {0, 1 - hair, "refused"},
      {2, 5, "no SB"},
      {2, 5 - hair, "refused"},
  };
  for (const auto& [skewness, kurtosis, expected] : cases) {
    EXPECT_EQ(outcome(skewness, kurtosis), expected) << skewness << ' ' << kurtosis;
  }
  // A skewness up to 0.01 counts as symmetric above the lognormal line.
  for (const double skewness : {0.01, -0.01, 0.0}) {
    const JohnsonParams c = fitted(7, 2, skewness, 5);
    EXPECT_EQ(c.gamma, 0);
    EXPECT_EQ(c.xi, 7);
  }
  for (const double skewness : {0.01 + hair, -0.01 - hair}) {
    EXPECT_NE(fitted(7, 2, skewness, 5).gamma, 0);
  }
}

// ---- accuracy ----

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
    const laws::Johnson::CurveMoments asked{-3, 4, skewness, kurtosis};
    JohnsonParams c;
    try {
      CalcJohnson(asked.mean, asked.stdDev, skewness, kurtosis, c);
    } catch (const RuntimeError&) {
      continue;
    }
    if (!c.message.empty() || c.delta == 0) continue;
    const std::string where =
        c.typeName + ' ' + std::to_string(skewness) + ' ' + std::to_string(kurtosis);
    ++seen[c.typeName];
    const laws::Johnson::CurveMoments real = laws::Johnson(c).curveMoments();
    if (c.typeName == "SB") {
      expectMoments(real, asked, 1e-3, 1e-4, 1e-4 * kurtosis, where);
    } else {
      const laws::Johnson::CurveMoments closed = closedMoments(c);
      expectMoments(real, closed, 1e-10, 1e-9, 1e-9 * kurtosis, where);
      const bool su = c.typeName == "SU";
      expectMoments(closed, asked, 1e-9, su ? 0.05 : 1e-8, su ? 0.015 * kurtosis : 0.0101, where);
    }
  }
  EXPECT_GT(seen["SB"], 1500);
  EXPECT_GT(seen["SL"], 1900);
  EXPECT_GT(seen["SU"], 1900);
}

TEST(JohnsonFit, MomentsOfABoundedCurve) {
  // mpmath, 30 digits: quad over the normal density of xi + lambda / (1 + exp(-(z - gamma) /
  // delta))
  const struct {
    JohnsonParams curve;
    laws::Johnson::CurveMoments expected;
  } cases[] = {
      {{0.5, 1.2, 10, -3, "SB", 3, ""},
       {1.1047064340833807, 1.7692889905581313, 0.29238263559071884, 2.4138882176544124}},
      {{-2, 0.6, 1, 0, "SB", 3, ""},
       {0.91526340251224482, 0.12701083622517692, -2.799762503232856, 12.250486323187933}},
      {{3, 2.5, 4, 1, "SB", 3, ""},
       {1.955142090580129, 0.28544598344249368, 0.57445461220710701, 3.3438060494054237}},
      {{0.02, 0.01, 2, 0, "SB", 3, ""},
       {0.98404599607027851, 0.99186369639007664, 0.031912208409314115, 1.0117443516638075}},
  };
  for (const auto& [curve, expected] : cases) {
    expectMoments(laws::Johnson(curve).curveMoments(), expected, 1e-12, 1e-11, 1e-11,
                  std::to_string(curve.gamma));
  }
  const laws::Johnson::CurveMoments normal = laws::Johnson(fitted(5, 2, 0, 3)).curveMoments();
  EXPECT_EQ(std::tuple(normal.mean, normal.stdDev, normal.skewness, normal.kurtosis),
            std::tuple(5, 2, 0, 3));
  EXPECT_EQ(
      faultNumber([] { return laws::Johnson(fitted(5, 2, 2.084, 11.55)).curveMoments().mean; }),
      11);
  EXPECT_EQ(faultNumber([] { return laws::Johnson(JohnsonParams{}).curveMoments().mean; }), 11);
}

// ---- failures ----

TEST(JohnsonFit, SaysWhyItFailed) {
  const struct {
    double stdDev, skewness, kurtosis;
    const char* message;
    std::int16_t typeCode;  // 77 was there before
  } cases[] = {
      {0, 0, 3, "Standard Deviation is not greater than zero.", 77},
      {-1, 0, 3, "Standard Deviation is not greater than zero.", 77},
      {0, 0, 0, "Kurtosis less than skewness squared plus one.", 77},
      {1, 0, -1, "Kurtosis less than skewness squared plus one.", 77},
      {1, 1, 1.9, "Kurtosis less than skewness squared plus one.", 77},
      {1, 1, 2, "Failure in fitting SB.", 3},
      {1, -4.3047412415545576, 19.775041796654605, "Failure in fitting SB.", 3},
      {1, 5.4827531128647102, 40.162453102574041, "", 3},
      {1, -4.8645197967964453, 32.417248473287515, "exceeded iteration", 3},
      {1, 5.0836526691650814, 28.510989396660989, "Zero coefficient in a()", 3},
      {1, 2.084, 11.55, "", 3},  // the Newton steps do not converge; nobody says so
  };
  for (const auto& [stdDev, skewness, kurtosis, message, typeCode] : cases) {
    JohnsonParams c{1, 2, 3, 4, "SU", 77, "before"};
    CalcJohnson(1, stdDev, skewness, kurtosis, c);
    EXPECT_EQ(c.message, message) << skewness << ' ' << kurtosis;
    EXPECT_EQ(c.typeName, c.message.empty() ? "SB" : "Error");
    EXPECT_EQ(c.typeCode, typeCode) << skewness << ' ' << kurtosis;
    EXPECT_EQ(std::tuple(c.gamma, c.delta, c.lambda, c.xi), std::tuple(0, 0, 0, 0));
  }
  // A fault once the shape is known, here an overflowing scale, leaves the shape.
  const JohnsonParams c = fitted(0, 1.7e308, 0.5, 2.8);
  EXPECT_EQ(c.message, "Unexpected error in sbfit");
  EXPECT_EQ(c.typeName, "Error");
  EXPECT_GT(c.delta, 0);
  EXPECT_EQ(c.lambda, 0);
}

TEST(JohnsonFit, BoundedMomentsFailWithAReason) {
  RawMoments mu{};
  Boolean fault = true;
  std::string message;
  SBMOM(0, 1, mu, fault, message);
  EXPECT_FALSE(fault);
  EXPECT_NEAR(mu[1], 0.5, 1e-9);
  SBMOM(701, 1, mu, fault, message);
  EXPECT_TRUE(fault);
  EXPECT_EQ(message, "Zero coefficient in a()");
  SBMOM(600, 1, mu, fault, message);  // the sixth power of exp(-600) is 0
  EXPECT_TRUE(fault);
  EXPECT_EQ(message, "Zero coefficient in a()");
  SBMOM(0, 1e-200, mu, fault, message);  // the step's square is 0: no term ever fades
  EXPECT_TRUE(fault);
  EXPECT_EQ(message, "exceeded iteration");
  EXPECT_EQ(faultNumber([&] {
              SBMOM(1, 0, mu, fault, message);
              return 0;
            }),
            11);
  double constants[4] = {1, 2, 3, 4};
  SBFIT(0, 1, 1, 2, constants[0], constants[1], constants[2], constants[3], fault, message);
  EXPECT_TRUE(fault);
  EXPECT_EQ(fault.bits(), -1);
  EXPECT_EQ(message, "Unexpected error in sbfit");
  EXPECT_EQ(constants[3], 4);
}

TEST(JohnsonFit, UnboundedFitEndsOnWhateverMoments) {
  std::mt19937_64 random(8);
  std::uniform_real_distribution<double> uniform(0, 1);
  int faults = 0;
  for (int i = 0; i < 20'000; ++i) {
    const double skewness = std::pow(10, 8 * uniform(random) - 2) * (i % 2 == 0 ? 1 : -1);
    const double above = std::pow(10, 14 * uniform(random) - 2);
    double gamma = 0;
    double delta = 0;
    double lambda = 0;
    double xi = 0;
    const int number = faultNumber([&] {
      SUFIT(0, 1, skewness, lognormalKurtosis(skewness) + above, gamma, delta, lambda, xi);
      return 0;
    });
    if (number == 0) {
      EXPECT_TRUE(delta > 0 && lambda > 0 && std::isfinite(gamma) && std::isfinite(xi));
    } else {
      EXPECT_TRUE(number == 5 || number == 6 || number == 11) << number;
      ++faults;
    }
  }
  EXPECT_LT(faults, 20'000);
  // A pair on which the iteration cycles, and one just above the lognormal line.
  const auto cycling =
      faultOf([] { return fitted(0, 1, 25161086.438915402, 1.5321376629875565e22).xi; });
  ASSERT_TRUE(cycling);
  EXPECT_EQ(cycling->number(), 6);
  EXPECT_TRUE(cycling->source().starts_with("palvex\r\nin palvex.m_Johnson.SUFIT at line "));
  EXPECT_NE(cycling->source().find("\r\nin palvex.m_Johnson.JNSN at line "), std::string::npos);
  EXPECT_NE(cycling->source().find("\r\nin palvex.m_Johnson.CalcJohnson at line "),
            std::string::npos);
  EXPECT_EQ(faultNumber([] { return fitted(0, 1, 0.4, lognormalKurtosis(0.4) + 0.0101).xi; }), 5);
}

TEST(JohnsonFit, NoConstantIsEverNaN) {
  for (const double odd : {nan, infinity, -infinity, 1e300, -1e300, 1e-300}) {
    for (std::size_t i = 0; i < 4; ++i) {
      for (const auto& [skewness, kurtosis] :
           {std::pair{0.0, 3.0}, {0.0, 5.0}, {0.5, 2.0}, {1.0, lognormalKurtosis(1)}}) {
        std::array moments{1.0, 2.0, skewness, kurtosis};
        moments[i] = odd;
        JohnsonParams c;
        const int number = faultNumber([&] {
          CalcJohnson(moments[0], moments[1], moments[2], moments[3], c);
          return 0;
        });
        EXPECT_TRUE(number == 0 || number == 5 || number == 6 || number == 11);
        EXPECT_TRUE(std::isfinite(c.gamma + c.delta + c.lambda + c.xi)) << i << ' ' << odd;
      }
    }
  }
}

// ---- evaluation ----

const JohnsonParams su{0.7, 1.5, 2, 10, "SU", 2, ""};
const JohnsonParams sb{-0.4, 0.8, 5, -1, "SB", 3, ""};
const JohnsonParams sl{1.2, 2, 1, 3, "SL", 1, ""};
const JohnsonParams slDown{1.2, 2, -1, 3, "SL", 1, ""};
const JohnsonParams normal{2, 0, 10, 0, "Normal", 4, ""};

TEST(Johnson, QuantileAndProbabilityUndoEachOther) {
  for (const JohnsonParams& c : {su, sb, sl, fitted(100, 7, -1.2, 8), fitted(-2, 0.1, 0.9, 3.4),
                                 fitted(5, 2, 1.5, lognormalKurtosis(1.5))}) {
    for (int i = -60; i <= 60; ++i) {
      const double z = i / 10.0;
      const double p = m_Normal::NormalCDF(z, false);
      const double x = JohnsonINV(p, c);
      // x carries an error of some ulp of its own size, seen through the density.
      const double tolerance = 1e-13 * p + 4e-16 + 1e-14 * std::abs(x) * jPDF(x, c);
      EXPECT_NEAR(JohnsonCDF(x, c), p, tolerance) << c.typeName << ' ' << z;
    }
  }
}

TEST(Johnson, DensityIsTheSlopeOfTheProbability) {
  for (const JohnsonParams& c : {su, sb, sl}) {
    const double unit =
        c.typeName == "SL" ? 1 : c.lambda;  // SU and SB: density of (x - xi) / lambda
    for (int i = 1; i < 40; ++i) {
      const double x = JohnsonINV(i / 40.0, c);
      const double h = 1e-4;
      const double slope = (JohnsonCDF(x + h, c) - JohnsonCDF(x - h, c)) / (2 * h);
      EXPECT_NEAR(jPDF(x, c), slope * unit, 1e-6 * slope * unit) << c.typeName << ' ' << x;
    }
  }
}

TEST(Johnson, WorkedExamples) {
  const auto bell = [](double t) { return std::exp(-t * t / 2) / std::sqrt(2 * M_PI); };
  const JohnsonParams error{1, 1, 1, 1, "Error", 3, "x"};
  const JohnsonParams st{1, 1, 1, 1, "ST", 5, ""};
  const struct {
    const char* what;
    double got, expected;
  } cases[] = {
      {"SU density at its centre is not divided by lambda", jPDF(10, su), 1.5 * bell(0.7)},
      {"SB density in its middle", jPDF(1.5, sb), 4 * 0.8 * bell(-0.4)},
      {"SL density", jPDF(4, sl), 2 * bell(1.2)},
      {"SB ends", jPDF(-1, sb) + jPDF(4, sb) + JohnsonCDF(-1, sb), 0},
      {"SB upper end", JohnsonCDF(4, sb), 1},
      {"above SB", JohnsonCDF(1e300, sb), 1},
      {"below SB", JohnsonCDF(-1e300, sb), 0},
      {"SL end", jPDF(3, sl) + JohnsonCDF(3, sl) + JohnsonCDF(-5, sl), 0},
      {"SL downwards has no density or probability",
       jPDF(2, slDown) + JohnsonCDF(2, slDown) + jPDF(4, slDown) + JohnsonCDF(4, slDown), 0},
      {"SL downwards draws", JohnsonINV(0.5, slDown), 3 - std::exp(-0.6)},
      {"normal density", jPDF(12, normal), m_Normal::NormalPDF(12, 10, 2, "none", "none")},
      {"normal probability is 0", JohnsonCDF(10, normal) + JohnsonCDF(1e6, normal), 0},
      {"normal median", JohnsonINV(0.5, normal), 10},
      {"other names", jPDF(1.5, error) + JohnsonCDF(1.5, error) + jPDF(1.5, st) + JohnsonCDF(9, st),
       0},
      {"the code draws", JohnsonINV(0.5, error), 1 + 1 / (1 + std::exp(1.0))},
      {"unknown code draws 0", JohnsonINV(0.5, st), 0},
      {"normal without spread",
       NormaltoJohnson(1, 1, 0, 5, 5, 4) + JohnsontoNormal(1, 1, 0, 5, 5, 4), 0},
      {"normal deviate", JohnsontoNormal(14, 0, 2, 10, 0, 4), 2},
      {"outside SB", JohnsontoNormal(-2, 0.8, -0.4, 5, -1, 3), 0},
      {"JohnsonPDF below a limit", JohnsonPDF(9, su, 9.5, "none"), 0},
      {"JohnsonPDF above a limit", JohnsonPDF(12, su, {}, "11"), 0},
      {"JohnsonPDF at a limit", JohnsonPDF(11, su, {}, "11"), jPDF(11, su)},
      {"JohnsonPDF between reversed limits", JohnsonPDF(10, su, 11, 9), 0},
      {"JohnsonPDF at a reversed limit", JohnsonPDF(9, su, 11, 9), jPDF(9, su)},
      {"JohnsonPDF with equal limits", JohnsonPDF(9, su, 11, 11), jPDF(9, su)},
      {"JohnsonVal without limits", JohnsonVal(0.3, su), JohnsonINV(0.3, su)},
      {"JohnsonVal p below 0", JohnsonVal(-0.2, sb, 1, 2), JohnsonVal(0, sb, 1, 2)},
      {"JohnsonVal p above 1", JohnsonVal(7, sb, 1, 2), JohnsonVal(1, sb, 1, 2)},
      {"JohnsonVal of a normal record below a limit", JohnsonVal(0.7, normal, {}, 9),
       10 - 2 * 38.5},
  };
  for (const auto& [what, got, expected] : cases) {
    EXPECT_NEAR(got, expected, 2e-14 * std::abs(expected)) << what;
  }
}

TEST(Johnson, DrawsCoverTheKeptProbability) {
  for (const JohnsonParams& c : {su, sb, sl}) {
    const double a = JohnsonINV(0.2, c);
    const double b = JohnsonINV(0.7, c);
    for (const double p : {0.0, 0.1, 0.39, 0.7, 0.999}) {
      EXPECT_NEAR(JohnsonCDF(JohnsonVal(p, c, a, b), c), 0.2 + 0.5 * p, 1e-13);
      EXPECT_NEAR(JohnsonCDF(JohnsonVal(p, c, a), c), 0.2 + 0.8 * p, 1e-13);
      EXPECT_NEAR(JohnsonCDF(JohnsonVal(p, c, {}, b), c), 0.7 * p, 1e-13);
      const double wrapped = p <= 0.4 ? 0.5 * p : 0.7 + 0.5 * (p - 0.4);
      EXPECT_NEAR(JohnsonCDF(JohnsonVal(p, c, b, a), c), wrapped, 1e-13) << p;
    }
  }
}

TEST(Johnson, TransformationsReportFaults) {
  std::int16_t fault = 9;
  double z = 9;
  const struct {
    double x;
    std::int16_t code;
    double lambda, xi;
    int fault;
    double expected;
  } cases[] = {
      {3, 1, 1, 3, 2, 0},
      {2.999, 1, -1, 3, 0, -(std::log(0.001) * 2 + 1)},
      {3.001, 1, -1, 3, 2, 0},
      {1, 3, 1, 0, 2, 0},
      {0, 3, 1, 0, 2, 0},
      {0.5, 3, 1, 0, 0, 1},
      {1, 4, 1, 0, 1, 0},
      {1, 0, 1, 0, 1, 0},
      // -63 itself takes the approximation of the far left, -62 does not.
      {-63, 2, 1, 0, 0, std::log(0.5 / 63) * 2 + 1},
      {-62, 2, 1, 0, 0, std::asinh(-62.0) * 2 + 1},
      {1e6, 2, 1, 0, 0, std::asinh(1e6) * 2 + 1},
  };
  for (const auto& [x, code, lambda, xi, expectedFault, expected] : cases) {
    SNV(x, code, 1, 2, lambda, xi, fault, z);
    EXPECT_EQ(fault, expectedFault) << x << ' ' << code;
    EXPECT_NEAR(z, expected, 1e-12 * std::abs(expected)) << x << ' ' << code;
  }
  AJV(1, 4, 1, 2, 1, 0, fault, z);
  EXPECT_EQ(fault, 1);
  EXPECT_EQ(z, 0);
}

TEST(Johnson, FaultsAreNumberedAndTraced) {
  const JohnsonParams unfitted{0, 0, 0, 0, "SB", 3, ""};
  const JohnsonParams steep{0, 0.01, 1, 0, "SU", 2, ""};
  const struct {
    const char* what;
    int number;
    const char* trace;  // routines from the innermost
    std::function<double()> call;
  } cases[] = {
      {"SB without constants", 11, "AJV NormaltoJohnson JohnsonINV JohnsonVal",
       [&] { return JohnsonVal(0.3, unfitted); }},
      {"SB without constants, middle", 6, "AJV NormaltoJohnson JohnsonINV",
       [&] { return JohnsonINV(0.5, unfitted); }},
      {"overflow of a far deviate", 6, "AJV NormaltoJohnson JohnsonINV JohnsonVal",
       [&] { return JohnsonVal(1, steep); }},
      {"underflow of a far deviate", 11, "AJV NormaltoJohnson JohnsonINV JohnsonVal",
       [&] { return JohnsonVal(0, steep); }},
      {"square in the density", 6, "jPDF JohnsonPDF",
       [&] { return JohnsonPDF(1e200, su, "none", "none"); }},
      {"logarithm in the density", 5, "jPDF JohnsonPDF",
       [&] { return JohnsonPDF(-1e10, su, "none", "none"); }},
      {"square in the probability", 6, "SNV JohnsontoNormal JohnsonCDF JohnsonVal",
       [&] { return JohnsonVal(0.5, su, 1e200); }},
      {"nothing left between reversed limits", 6, "JohnsonVal",
       [&] { return JohnsonVal(0, sb, 5, -2); }},
      {"p that is no number", 6, "JohnsonINV JohnsonVal", [&] { return JohnsonVal(nan, sb); }},
      {"p outside", 5, "JohnsonINV", [&] { return JohnsonINV(1.5, sb); }},
  };
  for (const auto& c : cases) {
    const auto fault = faultOf(c.call);
    ASSERT_TRUE(fault) << c.what;
    EXPECT_EQ(fault->number(), c.number) << c.what;
    std::istringstream routines(c.trace);
    std::string expected;
    std::size_t at = 0;
    while (routines >> expected) {
      at = fault->source().find("\r\nin palvex.m_Johnson." + expected + " at line ", at);
      ASSERT_NE(at, std::string::npos) << c.what << ": " << fault->source();
      ++at;
    }
  }
  for (const JohnsonParams& c : {su, sb, sl, slDown, normal}) {
    for (const double x : {nan, infinity, -infinity}) {
      for (const auto routine : {jPDF, JohnsonCDF, JohnsonINV}) {
        const auto fault = faultNumber([&] {
          EXPECT_TRUE(std::isfinite(routine(x, c, Line::here()))) << c.typeName;
          return 0;
        });
        EXPECT_TRUE(fault == 0 || fault == 5 || fault == 6);
      }
    }
  }
}

}  // namespace
}  // namespace palvex::m_Johnson
