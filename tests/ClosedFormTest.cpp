// The five families with elementary formulas: uniform, triangular, exponential, Weibull, lognormal.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <numbers>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "Fault.h"
#include "families/m_Exponential.h"
#include "families/m_Lognormal.h"
#include "families/m_Triangular.h"
#include "families/m_Uniform.h"
#include "families/m_Weibull.h"
#include "laws/Lognormal.h"

namespace palvex {
namespace {

using namespace m_Uniform;
using namespace m_Triangular;
using namespace m_Exponential;
using namespace m_Weibull;
using namespace m_Lognormal;

const Variant none = "none";
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(ClosedForm, AgreesWithHighPrecisionReferences) {
  using Arguments = std::vector<double>;
  const std::map<std::string, std::function<double(const Arguments&)>> routines{
      {"UniformPDF", [](auto& a) { return UniformPDF(a[0], a[1], a[2], none, none); }},
      {"UniformCDF", [](auto& a) { return UniformCDF(a[0], a[1], a[2]); }},
      {"UniformINV", [](auto& a) { return UniformINV(a[0], a[1], a[2]); }},
      {"TriangularPDF", [](auto& a) { return TriangularPDF(a[0], a[1], a[2], a[3], none, none); }},
      {"TriangularCDF", [](auto& a) { return TriangularCDF(a[0], a[1], a[2], a[3]); }},
      {"TriangularINV", [](auto& a) { return TriangularINV(a[0], a[1], a[2], a[3]); }},
      {"ExponentialPDF", [](auto& a) { return ExponentialPDF(a[0], a[1], a[2], none, none); }},
      {"ExponentialCDF", [](auto& a) { return ExponentialCDF(a[0], a[1], a[2]); }},
      {"ExponentialINV", [](auto& a) { return ExponentialINV(a[0], a[1], a[2]); }},
      {"WeibullPDF", [](auto& a) { return WeibullPDF(a[0], a[1], a[2], a[3], none, none); }},
      {"WeibullCDF", [](auto& a) { return WeibullCDF(a[0], a[1], a[2], a[3]); }},
      {"WeibullINV", [](auto& a) { return WeibullINV(a[0], a[1], a[2], a[3]); }},
      {"LognormalPDF", [](auto& a) { return LognormalPDF(a[0], a[1], a[2], a[3], none, none); }},
      {"LognormalCDF", [](auto& a) { return LognormalCDF(a[0], a[1], a[2], a[3], a[4] != 0); }},
      {"LognormalINV", [](auto& a) { return LognormalINV(a[0], a[1], a[2], a[3], a[4] != 0); }},
  };
  std::ifstream file(PALVEX_TEST_DATA "/closed_forms.csv");
  int points = 0;
  for (std::string row; std::getline(file, row); ++points) {
    std::istringstream fields(row);
    std::string routine;
    std::getline(fields, routine, ',');
    Arguments numbers;
    for (std::string field; std::getline(fields, field, ',');) numbers.push_back(std::stod(field));
    ASSERT_GE(numbers.size(), 5U) << row;
    EXPECT_NEAR(routines.at(routine)(numbers), numbers[numbers.size() - 2], numbers.back()) << row;
  }
  EXPECT_EQ(points, 1800);
}

TEST(ClosedForm, WorkedExamples) {
  const struct {
    const char* what;
    double value;
    double expected;
  } cases[] = {
      {"bounds in either order", UniformCDF(5, 10, 0), 0.5},
      {"the lower bound has nothing below it", UniformCDF(0, 0, 10), 0},
      {"nor is anything above the upper", UniformCDF(10, 0, 10), 1},
      {"probability of a point mass", UniformCDF(3, 3, 3), 0},
      {"but no density in the wrong order", UniformPDF(5, 10, 0, none, none), 0},
      {"point mass", UniformPDF(3, 3, 3, none, none), 1},
      {"point mass below the limit", UniformPDF(3, 3, 3, 4, none), 1},
      {"bounds belong to the density", UniformPDF(10, 0, 10, none, none), 0.1},
      {"quantile in either order", UniformINV(0.25, 8, 4), 5},
      {"p below 0", UniformINV(-0.2, 0, 1), 0},
      {"p above 1", UniformINV(1.2, 0, 1), 1},
      {"draw of a point mass", UniformVAL(0.7, 3, 3), 3},
      {"draw in the wrong order", UniformVAL(0.7, 3, 2), 0},
      {"reversed, first piece", UniformVAL(0.25, 0, 10, 6, 4), 2},
      {"reversed, second piece", UniformVAL(0.75, 0, 10, 6, 4), 8},
      {"reversed density", UniformPDF(5, 0, 10, 6, 4), 0},
      {"limits beyond the bounds", UniformVAL(0.5, 0, 10, "-3", "30"), 5},

      {"likely above maximum", TriangularCDF(3, 0, 5, 4), 0},
      {"no quantile either", TriangularINV(0.5, 0, 5, 4), 0},
      {"half below the peak", TriangularCDF(5, 0, 5, 10), 0.5},
      {"falling side at the peak", TriangularPDF(5, 0, 5, 10, none, none), 0.2},
      {"right-angled, at its peak", TriangularPDF(10, 0, 10, 10, none, none), 0.2},
      {"right-angled the other way", TriangularPDF(0, 0, 0, 10, none, none), 0.2},
      {"right-angled below its peak", TriangularCDF(5, 0, 10, 10), 0.25},
      {"right-angled, all of it", TriangularCDF(10, 0, 10, 10), 1},
      {"point mass", TriangularPDF(2, 2, 2, 2, 3, none), 1},
      {"draw of a point mass", TriangularVAL(0.2, 2, 2, 2), 2},
      {"draw with bounds in the wrong order", TriangularVAL(0.2, 3, 2, 1), 0},
      {"median", TriangularINV(0.5, 0, 5, 10), 5},
      {"p = 1", TriangularINV(1, 0, 5, 10), 10},
      {"p above 1", TriangularINV(1.5, 0, 5, 10), 10},
      {"p = 0", TriangularINV(0, 1, 5, 10), 1},
      {"reversed draw", TriangularVAL(0.25, 0, 5, 10, 5, 5), TriangularINV(0.5, 0, 5, 10)},

      {"the minimum counts", ExponentialPDF(2, 0.5, 2, none, none), 0.5},
      {"not below it", ExponentialPDF(1.9, 0.5, 2, none, none), 0},
      {"below the minimum", ExponentialCDF(1, 1, 2), 0},
      {"no rate", ExponentialCDF(3, 0, 2), 0},
      {"quantile of 0 is 0", ExponentialINV(0, 1, 2), 0},
      {"draw of 0 is the minimum", ExponentialVAL(0, 1, 2), 2},
      {"whatever the limits", ExponentialVAL(0, 1, 2, 5, 6), 2},
      {"draw without a rate", ExponentialVAL(0.5, 0, 2), 2},
      {"1 - exp(-x) where x is lost beside 1", ExponentialCDF(1e-20, 1, 0), 0},
      {"ln(1 - p), too", ExponentialINV(1e-20, 1, 0), 0},

      {"no density at the minimum", WeibullPDF(2, 1.5, 1, 2, none, none), 0},
      {"quantile of 1", WeibullINV(1, 1, 1, 0), 300 * std::numbers::ln10},
      {"quantile of 0", WeibullINV(0, 2, 3, 5), 5},
      {"draw below 0", WeibullVAL(-1, 2, 3, 5, 7), 5},
      {"draw at 0 is at the limit", WeibullVAL(0, 1, 1, 0, std::numbers::ln2), std::numbers::ln2},
      {"draw without a scale", WeibullVAL(0.5, 2, 0, 5), 5},
      {"reversed limits around nothing", WeibullVAL(0, 2, 1, 0, 1e-9, -1), 0},
      {"like the exponential", WeibullCDF(4, 1, 2, 1), ExponentialCDF(4, 0.5, 1)},

      {"nothing below the minimum", LognormalCDF(1, 0, 1, 1, false), 0},
      {"all above it", LognormalCDF(1, 0, 1, 1, true), 1},
      {"median", LognormalCDF(2, 0, 1, 1, false), 0.5},
      {"quantile", LognormalINV(0.5, 0, 1, 1, false), 2},
      {"quantile of 0", LognormalINV(0, 1, 0.5, 3, false), 3 + std::exp(1 - 38.5 * 0.5)},
      {"upper quantile of 1", LognormalINV(1, 1, 0.5, 3, true), 3 + std::exp(1 - 8.3 * 0.5)},
      {"no density at the minimum", LognormalPDF(1, 0, 1, 1, none, none), 0},
      {"no density without a scale", LognormalPDF(2, 0, 0, 1, none, none), 0},
      {"draw without a scale", LognormalVAL(0.3, 0, 0, 7), 7},
      {"limit below the minimum", LognormalVAL(0.5, 0, 1, 1, 0.5), 2},
  };
  for (const auto& c : cases) {
    EXPECT_NEAR(c.value, c.expected, 1e-15 * std::abs(c.expected)) << c.what;
  }
}

/// One distribution of each family, with its known mean and standard deviation.
struct Law {
  const char* name;
  double (*density)(double x, const Variant& ltl, const Variant& utl);
  double (*cumulative)(double x);
  double (*quantile)(double p);
  double (*value)(double p, const Variant& ltl, const Variant& utl);
  double mean;
  double sd;
};

const double gammaOf2 = std::tgamma(1 + 1 / 2.5);
const Law laws[] = {
    {"Uniform", [](double x, auto& l, auto& u) { return UniformPDF(x, -2, 7, l, u); },
     [](double x) { return UniformCDF(x, -2, 7); }, [](double p) { return UniformINV(p, -2, 7); },
     [](double p, auto& l, auto& u) { return UniformVAL(p, -2, 7, l, u); }, 2.5, std::sqrt(6.75)},
    {"Triangular", [](double x, auto& l, auto& u) { return TriangularPDF(x, -1, 4, 6, l, u); },
     [](double x) { return TriangularCDF(x, -1, 4, 6); },
     [](double p) { return TriangularINV(p, -1, 4, 6); },
     [](double p, auto& l, auto& u) { return TriangularVAL(p, -1, 4, 6, l, u); }, 3,
     std::sqrt((1 + 16 + 36 + 4 + 6 - 24) / 18.0)},
    {"Exponential", [](double x, auto& l, auto& u) { return ExponentialPDF(x, 0.4, 3, l, u); },
     [](double x) { return ExponentialCDF(x, 0.4, 3); },
     [](double p) { return ExponentialINV(p, 0.4, 3); },
     [](double p, auto& l, auto& u) { return ExponentialVAL(p, 0.4, 3, l, u); }, 5.5, 2.5},
    {"Weibull", [](double x, auto& l, auto& u) { return WeibullPDF(x, 2.5, 3, 1, l, u); },
     [](double x) { return WeibullCDF(x, 2.5, 3, 1); },
     [](double p) { return WeibullINV(p, 2.5, 3, 1); },
     [](double p, auto& l, auto& u) { return WeibullVAL(p, 2.5, 3, 1, l, u); }, 1 + 3 * gammaOf2,
     3 * std::sqrt(std::tgamma(1 + 2 / 2.5) - gammaOf2 * gammaOf2)},
    {"Lognormal", [](double x, auto& l, auto& u) { return LognormalPDF(x, 1, 0.5, -2, l, u); },
     [](double x) { return LognormalCDF(x, 1, 0.5, -2, false); },
     [](double p) { return LognormalINV(p, 1, 0.5, -2, false); },
     [](double p, auto& l, auto& u) { return LognormalVAL(p, 1, 0.5, -2, l, u); },
     std::exp(1.125) - 2, std::exp(1.125) * std::sqrt(std::expm1(0.25))},
};

TEST(ClosedForm, QuantileAndProbabilityUndoEachOther) {
  for (const Law& law : laws) {
    for (int i = 1; i < 1000; ++i) {
      const double p = i / 1000.0;
      EXPECT_NEAR(law.cumulative(law.quantile(p)), p, 1e-14) << law.name;
    }
  }
}

TEST(ClosedForm, DensityIsTheSlopeOfTheProbability) {
  for (const Law& law : laws) {
    for (double p : {0.02, 0.3, 0.6, 0.95}) {
      const double x = law.quantile(p);
      const double h = 1e-5;
      const double slope = (law.cumulative(x + h) - law.cumulative(x - h)) / (2 * h);
      EXPECT_NEAR(law.density(x, none, none), slope, 1e-9) << law.name;
    }
  }
}

TEST(ClosedForm, DensityAndDrawsKeepToTheLimits) {
  for (const Law& law : laws) {
    const double low = law.quantile(0.2);
    const double high = law.quantile(0.7);
    for (int i = 0; i < 1000; ++i) {
      const double p = (i + 0.5) / 1000;
      const double between = law.value(p, low, high);
      EXPECT_TRUE(between >= low - 1e-13 && between <= high + 1e-13) << law.name << ' ' << p;
      EXPECT_NEAR(law.cumulative(between), 0.2 + 0.5 * p, 1e-14) << law.name << ' ' << p;
      const double outside = law.value(p, high, low);
      EXPECT_TRUE(outside <= low + 1e-13 || outside >= high - 1e-13) << law.name << ' ' << p;
      EXPECT_NEAR(law.cumulative(outside), p <= 0.4 ? p * 0.5 : 0.7 + (p - 0.4) * 0.5, 1e-14)
          << law.name << ' ' << p;
      EXPECT_NEAR(law.cumulative(law.value(p, none, high)), 0.7 * p, 1e-14) << law.name << ' ' << p;
      EXPECT_NEAR(law.cumulative(law.value(p, low, Variant{})), 0.2 + 0.8 * p, 1e-14)
          << law.name << ' ' << p;

      const double x = law.quantile(p);
      const double plain = law.density(x, none, none);
      EXPECT_EQ(law.density(x, low, high), x < low || x > high ? 0 : plain);
      EXPECT_EQ(law.density(x, high, low), low < x && x < high ? 0 : plain);
    }
  }
}

TEST(ClosedForm, AverageOfDrawsIsTheMean) {
  constexpr int n = 1'000'000;
  for (const Law& law : laws) {
    std::mt19937_64 bits(20260713);
    double sum = 0;
    for (int i = 0; i < n; ++i) {
      sum += law.value((static_cast<double>(bits() >> 12) + 0.5) * 0x1p-52, none, none);
    }
    EXPECT_NEAR(sum / n, law.mean, 4 * law.sd / std::sqrt(n)) << law.name;
  }
}

TEST(ClosedForm, StandardDeviationOfTheLognormal) {
  EXPECT_NEAR(laws::Lognormal(1, 0.5, 0).standardDeviation() /
                  (std::exp(1.125) * std::sqrt(std::expm1(0.25))),
              1, 1e-15);
  // exp(s^2) alone overflows from s = 26.7 on; the location makes up for it.
  EXPECT_NEAR(laws::Lognormal(-900, 30, 0).standardDeviation(), 1, 1e-12);
  EXPECT_NEAR(laws::Lognormal(1000, 1e-200, 0).standardDeviation() /
                  std::exp(1000 - 200 * std::numbers::ln10),
              1, 1e-12);
  EXPECT_EQ(laws::Lognormal(0, 27, 0).standardDeviation(), infinity);
  EXPECT_EQ(laws::Lognormal(709.1, 1, 0).standardDeviation(), infinity);
}

TEST(ClosedForm, FaultsAreNumberedAndTraced) {
  const struct {
    const char* what;
    int number;
    std::string routines;
    double (*compute)();
  } cases[] = {
      {"width overflows", 6, "m_Uniform.UniformPDF",
       [] { return UniformPDF(0, -1e308, 1e308, none, none); }},
      {"reversed limits keep nothing", 6, "m_Uniform.UniformVAL",
       [] { return UniformVAL(0.5, 0, 1, 3, -1); }},
      {"three equal parameters", 6, "m_Triangular.TriangularINV",
       [] { return TriangularINV(0, 1, 1, 1); }},
      {"square overflows", 6, "m_Triangular.TriangularCDF m_Triangular.TriangularVAL",
       [] { return TriangularVAL(0.5, 0, 1e200, 2e200, 1e200); }},
      {"p = 1", 5, "m_Exponential.ExponentialINV", [] { return ExponentialINV(1, 1, 0); }},
      {"p = 1 without an upper limit", 5,
       "m_Exponential.ExponentialINV m_Exponential.ExponentialVAL",
       [] { return ExponentialVAL(1, 1, 0, 0.5); }},
      {"exponent overflows", 6, "m_Exponential.ExponentialPDF",
       [] { return ExponentialPDF(1e300, 1e10, 0, none, none); }},
      {"p above 1", 5, "m_Weibull.WeibullINV m_Weibull.WeibullVAL",
       [] { return WeibullVAL(1.5, 1, 1, 0); }},
      {"power overflows", 6, "m_Weibull.WeibullCDF", [] { return WeibullCDF(10, 400, 1, 0); }},
      {"0 to a negative power", 5, "m_Weibull.WeibullPDF",
       [] { return WeibullPDF(1e-300, 0.5, 1e300, 0, none, none); }},
      {"no scale", 11, "m_Lognormal.LognormalCDF", [] { return LognormalCDF(3, 0, 0, 1, false); }},
      {"a square overflows before another one vanishes", 6, "m_Lognormal.LognormalPDF",
       [] { return LognormalPDF(38, 1e300, 5e-324, -2, none, none); }},
      {"p outside [0, 1]", 5,
       "m_Normal.NormINV16 m_Normal.NormalINV m_Lognormal.LognormalINV m_Lognormal.LognormalVAL",
       [] { return LognormalVAL(1.5, 0, 1, 0); }},
      {"exponential overflows", 6, "m_Lognormal.LognormalINV",
       [] { return LognormalINV(0.5, 710, 1, 0, false); }},
  };
  for (const auto& c : cases) {
    const auto fault = faultOf(c.compute);
    ASSERT_TRUE(fault) << c.what;
    EXPECT_EQ(fault->number(), c.number) << c.what;
    EXPECT_EQ(routinesOf(*fault), c.routines) << c.what;
  }
  EXPECT_EQ(faultOf([] { return LognormalCDF(2, 0, 0, 1, false); })->description(),
            "Overflow\r\nlnCDF: (2,0,0,1,False)");
}

TEST(ClosedForm, NoArgumentGivesNaN) {
  for (const Law& law : laws) {
    EXPECT_EQ(faultNumber([&] { return law.density(nan, none, none); }), fault::overflow);
    EXPECT_EQ(faultNumber([&] { return law.cumulative(nan); }), fault::overflow);
    EXPECT_EQ(faultNumber([&] { return law.quantile(nan); }), fault::overflow);
    EXPECT_EQ(faultNumber([&] { return law.value(nan, none, none); }), fault::overflow);
  }
  // Every routine at every mix of extreme arguments: a number or an error of the run-time.
  const double extremes[] = {-infinity, -1e308, -1,    -5e-324,  0,  1e-310,
                             0.5,       1,      1e308, infinity, nan};
  const auto check = [](auto compute) {
    try {
      EXPECT_FALSE(std::isnan(compute()));
    } catch (const RuntimeError& error) {
      EXPECT_TRUE(error.number() == 5 || error.number() == 6 || error.number() == 11);
    }
  };
  for (double x : extremes) {
    for (double a : extremes) {
      for (double b : extremes) {
        check([&] { return UniformPDF(x, a, b, none, none); });
        check([&] { return UniformCDF(x, a, b); });
        check([&] { return UniformVAL(x, a, b, -1, 1); });
        check([&] { return ExponentialPDF(x, a, b, none, none); });
        check([&] { return ExponentialCDF(x, a, b); });
        check([&] { return ExponentialVAL(x, a, b, -1, 1); });
        for (double c : extremes) {
          check([&] { return TriangularPDF(x, a, b, c, none, none); });
          check([&] { return TriangularCDF(x, a, b, c); });
          check([&] { return TriangularVAL(x, a, b, c, 1, -1); });
          check([&] { return WeibullPDF(x, a, b, c, none, none); });
          check([&] { return WeibullCDF(x, a, b, c); });
          check([&] { return WeibullVAL(x, a, b, c, 1, -1); });
          check([&] { return LognormalPDF(x, a, b, c, none, none); });
          check([&] { return LognormalCDF(x, a, b, c, true); });
          check([&] { return LognormalVAL(x, a, b, c, 1, -1); });
        }
      }
    }
  }
}

}  // namespace
}  // namespace palvex
