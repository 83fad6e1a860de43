#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "Fault.h"
#include "References.h"
#include "numerics/m_MathUtil.h"

namespace palvex::m_MathUtil {
namespace {

using Numbers = std::numeric_limits<double>;
constexpr double infinity = Numbers::infinity();
constexpr double nan = Numbers::quiet_NaN();

TEST(MathUtil, MachineConstantsAreExact) {
  const std::int32_t expected[] = {2, 31, 2147483647, 2, 24, -125, 128, 53, -1021, 1024};
  for (std::int32_t i = 1; i <= 10; ++i) EXPECT_EQ(ipmpar(i), expected[i - 1]) << i;
  for (std::int32_t i : {0, 11, -1, 2147483647}) {
    EXPECT_EQ(faultNumber([&] { return ipmpar(i); }), fault::subscript) << i;
  }
  const struct {
    std::int16_t i;
    double value;
  } constants[] = {{1, Numbers::epsilon()}, {0, Numbers::epsilon()}, {-5, Numbers::epsilon()},
                   {2, Numbers::min()},     {3, Numbers::max()},     {7, Numbers::max()}};
  for (const auto& c : constants) EXPECT_EQ(spmpar(c.i), c.value) << c.i;
  EXPECT_EQ(exparg(0), 709.7756150662599);
  EXPECT_EQ(exparg(1), -708.3893345680835);
  EXPECT_EQ(exparg(-1), -708.3893345680835);
}

TEST(MathUtil, MinimumMaximumAndSign) {
  EXPECT_EQ(dmin1(1, 2), 1);
  EXPECT_EQ(dmin1(2, 1), 1);
  EXPECT_EQ(dmax1(1, 2), 2);
  EXPECT_EQ(dmax1(2, 1), 2);
  // A tie gives the second argument, visible in the sign of a zero.
  EXPECT_TRUE(std::signbit(dmin1(0.0, -0.0)));
  EXPECT_TRUE(std::signbit(dmax1(0.0, -0.0)));
  EXPECT_FALSE(std::signbit(dmin1(-0.0, 0.0)));
  EXPECT_EQ(dmin1(1, nan), 1);
  EXPECT_EQ(dmax1(nan, 1), 1);
  for (double (*rule)(double, double) noexcept : {sign, fsign}) {
    EXPECT_EQ(rule(3, -0.0), 3);
    EXPECT_EQ(rule(-3, 0), 3);
    EXPECT_EQ(rule(3, -1e-320), -3);
    EXPECT_EQ(rule(-3, -2), -3);
    EXPECT_EQ(rule(3, nan), -3);
  }
}

TEST(MathUtil, FixedPointsAndLimits) {
  EXPECT_EQ(rlog(1), 0);
  EXPECT_EQ(rlog1(0), 0);
  EXPECT_EQ(rexp(0), 0);
  EXPECT_EQ(rexp("0.5"), rexp(0.5));
  EXPECT_EQ(rexp(-800), -1);
  EXPECT_EQ(alnrel(0), 0);
  EXPECT_EQ(erf(0), 0);
  for (double x : {5.8, 6.0, infinity}) {
    EXPECT_EQ(erf(x), 1) << x;
    EXPECT_EQ(erf(-x), -1) << x;
  }
  EXPECT_LT(erf(5.7), 1 + Numbers::epsilon());
  for (double x : {27.0, 101.0, 1e200, infinity}) EXPECT_EQ(erfc1(0, x), 0) << x;
  for (double x : {-5.6, -1e200, -infinity}) EXPECT_EQ(erfc1(0, x), 2) << x;
  EXPECT_NEAR(erfc1(1, 27), 0.0209, 1e-4);
  EXPECT_EQ(erfc1(1, infinity), 0);
  EXPECT_NEAR(erfc1(1, 1e200) * 1e200, 0.5641895835477563, 1e-15);
}

TEST(MathUtil, AgreesWithThePublishedFormulas) {
  const auto square = [](const std::vector<double>& a) { return a[0] * a[0]; };
  const Formula formulas[] = {
      {"rlog", 4, 1.3e-15, [](auto& a) { return rlog(a[0]); }},
      {"rlog1", 6, 1e-15, [](auto& a) { return rlog1(a[0]); }},
      {"rexp", 2, 3e-16, [](auto& a) { return rexp(a[0]); }},
      {"alnrel", 3, 3e-16, [](auto& a) { return alnrel(a[0]); }},
      {"erf", 3, 1e-15, [](auto& a) { return erf(a[0]); }},
      {"erfc0", 4, 1.2e-15, [](auto& a) { return erfc1(0, a[0]); }, square},
      {"erfc1", 4, 1.2e-15, [](auto& a) { return erfc1(1, a[0]); }, square},
  };
  for (const auto& formula : formulas) expectAgreement(formula);
}

TEST(MathUtil, FaultsAreNumberedAndTraced) {
  const struct {
    const char* routine;
    int number;
    double (*compute)();
  } cases[] = {
      {"rlog", 5, [] { return rlog(0); }},
      {"rlog", 5, [] { return rlog(-1); }},
      {"rlog", 6, [] { return rlog(infinity); }},
      {"rlog", 6, [] { return rlog(nan); }},
      {"rlog1", 5, [] { return rlog1(-1); }},
      {"rlog1", 6, [] { return rlog1(nan); }},
      {"rexp", 6, [] { return rexp(710); }},
      {"rexp", 6, [] { return rexp(nan); }},
      {"rexp", 13, [] { return rexp("abc"); }},
      {"alnrel", 5, [] { return alnrel(-1); }},
      {"alnrel", 6, [] { return alnrel(nan); }},
      {"erf", 6, [] { return erf(nan); }},
      {"erfc1", 6, [] { return erfc1(0, nan); }},
      {"erfc1", 6, [] { return erfc1(1, nan); }},
      {"erfc1", 6, [] { return erfc1(1, -27); }},
      {"erfc1", 6, [] { return erfc1(1, -infinity); }},
      {"ipmpar", 9, [] { return double(ipmpar(11)); }},
  };
  for (const auto& c : cases) {
    const auto fault = faultOf(c.compute);
    ASSERT_TRUE(fault) << c.routine << c.number;
    EXPECT_EQ(fault->number(), c.number) << c.routine;
    const std::string line = std::string("\r\nin palvex.m_MathUtil.") + c.routine + " at line ";
    const auto place = fault->source().find(line);
    EXPECT_NE(place, std::string::npos) << fault->source();
    EXPECT_EQ(fault->source().find("palvex.m_MathUtil", place + line.size()), std::string::npos);
  }
}

}  // namespace
}  // namespace palvex::m_MathUtil
