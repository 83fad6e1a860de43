#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>

#include "Fault.h"
#include "families/m_Normal.h"

namespace palvex::m_Normal {
namespace {

const Variant none = "none";
constexpr double infinity = std::numeric_limits<double>::infinity();

double relativeError(double value, double reference) {
  if (std::abs(reference) < std::numeric_limits<double>::min()) return 0;  // no normal number
  return std::abs(value - reference) / std::abs(reference);
}

TEST(Normal, AgreesWithHighPrecisionReferences) {
  std::ifstream file(PALVEX_TEST_DATA "/normal.csv");
  int points = 0;
  for (std::string row; std::getline(file, row); ++points) {
    std::istringstream fields(row.substr(4));
    double at = 0;
    double first = 0;
    double second = 0;
    char comma = 0;
    ASSERT_TRUE(fields >> at >> comma >> first >> comma >> second) << row;
    if (row.starts_with("cdf")) {
      EXPECT_LE(relativeError(NormalCDF(at, false), first), 4e-15) << row;
      EXPECT_LE(relativeError(NormalCDF(at, true), second), 4e-15) << row;
      EXPECT_LE(relativeError(NormalCDF(at, true), NormalCDF(-at, false)), 4e-15) << row;
    } else {
      EXPECT_LE(relativeError(NormINV16(at), first), 4e-15) << row;
      EXPECT_EQ(NormalINV(at, true), -NormalINV(at, false)) << row;
    }
  }
  EXPECT_GT(points, 1500);
}

TEST(Normal, DensityCutsWhatTheLimitsExclude) {
  const double plain = 1 / std::sqrt(6.28318530717958);
  const double at2 = plain * std::exp(-2);
  const struct {
    double x, mean, sd;
    Variant ltl, utl;
    double density;
  } cases[] = {
      {0, 0, 1, none, none, plain},
      {5, 5, 0, none, none, 1},
      {4, 5, 0, none, none, 0},
      {5, 5, -1, none, none, 1},
      {5, 5, 0, 6, none, 0},  // the limits come first
      {0, 0, 1, 2, -2, 0},    // reversed: the open band between is cut out
      {2, 0, 1, 2, -2, at2},
      {-2, 0, 1, 2, -2, at2},
      {2, 0, 1, "-2", "2", at2},  // ordinary: the limits themselves stay
      {2.001, 0, 1, -2, 2, 0},
      {0, 0, 1, 1, 1, plain},  // equal limits cut nothing
      {-2, 0, 1, -1.9, "+Infinity", 0},
      {-2, 0, 1, -2, Variant{}, at2},
      {2, 0, 1, "none", 1.9, 0},
      {2, 0, 1, Variant::missing(), Variant::error(2042), at2},
  };
  for (const auto& c : cases) {
    EXPECT_NEAR(NormalPDF(c.x, c.mean, c.sd, c.ltl, c.utl), c.density, 1e-16)
        << c.x << ' ' << c.mean;
  }
}

TEST(Normal, ProbabilityAtTheEndsOfItsRegions) {
  EXPECT_EQ(NormalCDF(0, false), 0.5);
  EXPECT_EQ(NormalCDF(40, false), 1);
  EXPECT_EQ(NormalCDF(-40, false), 0);
  EXPECT_EQ(NormalCDF(-40, true), 1);
  EXPECT_EQ(NormalCDF(infinity, false), 1);
  EXPECT_EQ(NormalCDF(infinity, true), 0);
  EXPECT_EQ(NormalCDF(39.9, false), 1);
  EXPECT_EQ(NormalCDF(1e-17, false), 0.5);
}

TEST(Normal, QuantileHasFixedEnds) {
  EXPECT_EQ(NormalINV(0, false), -38.5);
  EXPECT_EQ(NormalINV(1, false), 8.3);
  EXPECT_EQ(NormalINV(0, true), 38.5);
  EXPECT_EQ(NormalINV(1, true), -8.3);
  EXPECT_EQ(NormalINV(0.5, false), 0);
}

TEST(Normal, ValueBetweenLimits) {
  EXPECT_EQ(NormalVAL(0.3, 7, 0, 8, 9), 7);
  EXPECT_EQ(NormalVAL(0.5, 0, 1), 0);
  EXPECT_EQ(NormalVAL(0, 0, 1, 0), 0);
  EXPECT_EQ(NormalVAL(0, 10, 2), 10 - 38.5 * 2);
  EXPECT_EQ(NormalVAL(1, 10, 2), 10 + 8.3 * 2);
  for (int i = 0; i <= 1000; ++i) {
    const double p = i / 1000.0;
    const double between = NormalVAL(p, 1, 2, 0.5, "3");
    EXPECT_TRUE(between > 0.5 - 1e-14 && between < 3 + 1e-14) << p;
    const double outside = NormalVAL(p, 1, 2, 3, 0.5);
    EXPECT_TRUE(outside < 0.5 + 1e-14 || outside > 3 - 1e-14) << p;
    EXPECT_NEAR((NormalCDF((between - 1) / 2, false) - NormalCDF(-0.25, false)) /
                    (NormalCDF(1, false) - NormalCDF(-0.25, false)),
                p, 1e-14);
  }
}

TEST(Normal, FaultsAreNumberedAndTraced) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    const char* what;
    int number;
    std::string routines;
    double (*compute)();
  } cases[] = {
      {"p above 1", 5, "m_Normal.NormINV16", [] { return NormINV16(1.5); }},
      {"p = 0", 5, "m_Normal.NormINV16", [] { return NormINV16(0); }},
      {"p below 0", 5, "m_Normal.NormINV16 m_Normal.NormalINV",
       [] { return NormalINV(-0.1, false); }},
      {"draw outside [0, 1]", 5, "m_Normal.NormINV16 m_Normal.NormalINV m_Normal.NormalVAL",
       [] { return NormalVAL(1.1, 0, 1); }},
      {"square overflows", 6, "m_Normal.NormalPDF",
       [] { return NormalPDF(1e200, 0, 1, none, none); }},
      {"denominator underflows", 11, "m_Normal.NormalPDF",
       [] { return NormalPDF(1, 0, 1e-170, none, none); }},
      {"reversed limits keep nothing", 6, "m_Normal.NormalVAL",
       [] { return NormalVAL(0.5, 0, 1, 50, -50); }},
      {"no lower piece at p = 0", 6, "m_Normal.NormalVAL",
       [] { return NormalVAL(0, 0, 1, 0, -50); }},
      {"value overflows", 6, "m_Normal.NormalVAL", [] { return NormalVAL(0, 0, 1e307); }},
  };
  for (const auto& c : cases) {
    const auto fault = faultOf(c.compute);
    ASSERT_TRUE(fault) << c.what;
    EXPECT_EQ(fault->number(), c.number) << c.what;
    EXPECT_EQ(routinesOf(*fault), c.routines) << c.what;
  }
  for (double x : {nan, infinity}) {
    EXPECT_EQ(faultNumber([&] { return NormINV16(x); }), fault::overflow);
    EXPECT_EQ(faultNumber([&] { return NormalVAL(x, 0, 1); }), fault::overflow);
    EXPECT_EQ(faultNumber([&] { return NormalPDF(x, 0, 1, none, none); }), fault::overflow);
  }
  EXPECT_EQ(faultNumber([&] { return NormalCDF(nan, false); }), fault::overflow);
  EXPECT_EQ(faultNumber([&] { return NormalVAL(0.3, nan, 1); }), fault::overflow);
}

}  // namespace
}  // namespace palvex::m_Normal
