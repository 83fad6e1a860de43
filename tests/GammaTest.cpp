#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "Fault.h"
#include "References.h"
#include "families/m_Gamma.h"

namespace palvex::m_Gamma {
namespace {

const Variant none = "none";
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double largest = std::numeric_limits<double>::max();

struct Tails {
  double p;
  double q;
};

Tails tails(double a, double x, std::int16_t ind = 0) {
  Tails result{-3, -3};
  gratio(a, x, result.p, result.q, ind);
  return result;
}

struct Solution {
  double x;
  std::int16_t ierr;
};

Solution solve(double a, double p, double q, double x0 = -1) {
  Solution solution{-3, -3};
  gaminv(a, solution.x, x0, p, q, solution.ierr);
  return solution;
}

TEST(GammaFunctions, AgreeWithThePublishedFormulas) {
  const Formula formulas[] = {
      {"gamma", 6, 3e-6, [](auto& a) { return gamma(a[0]); },
       [](auto& a) { return std::abs(a[0]) < 15 ? 0 : std::lgamma(std::abs(a[0])); }},
      {"gamln", 4, 1.6e-14, [](auto& a) { return gamln(a[0]); }},
      {"gamln1", 4, 2.2e-15, [](auto& a) { return gamln1(a[0]); }},
      {"gam1", 8, 2.2e-15, [](auto& a) { return gam1(a[0]); }},
      {"rcomp", 7, 6e-15, [](auto& a) { return rcomp(a[0], a[1]); },
       [](auto& a) {
         const double logarithm = a[0] < 15 ? 0 : std::lgamma(a[0]);
         return a[0] < 20 ? a[0] * std::abs(std::log(a[1])) + a[1] + logarithm
                          : a[1] - a[0] - a[0] * std::log(a[1] / a[0]) + std::abs(a[1] - a[0]);
       }},
  };
  for (const auto& formula : formulas) expectAgreement(formula);
  // The true error of gamma is that small only for positive arguments.
  for (const auto& row : references("formulas/gamma.csv")) {
    if (row[0] > 0) {
      EXPECT_LE(std::abs(row[2]), 6e-15) << row[0];
    }
  }
}

TEST(GammaFunctions, FixedPoints) {
  const struct {
    double a, value;
  } gammas[] = {{5, 24},        {0.5, std::sqrt(3.141592653589793)},
                {0, 0},         {-3, 0},
                {-14, 0},       {-20, 0},
                {1000, 0},      {-1000, 0},
                {171.7, 0},     {infinity, 0},
                {-infinity, 0}, {1e-308, 1e308},
                {1e-310, 0}};
  for (const auto& c : gammas) EXPECT_NEAR(gamma(c.a), c.value, 6e-15 * c.value) << c.a;
  EXPECT_NEAR(gamln1(0), 0, 1e-16);
  EXPECT_NEAR(gamln1(1), 0, 1e-16);
  EXPECT_EQ(gam1(0), 0);
  EXPECT_EQ(gam1(1), 0);
  EXPECT_EQ(rcomp(20, 0), 0);
  EXPECT_EQ(rcomp(1e308, 1e-300), 0);
}

TEST(GammaFunctions, DepartFromThePublicationOnPurpose) {
  // The floor takes one factor more for a negative a and lands outside the approximation's
  // interval.
  EXPECT_NEAR(gamma(-2.5), -0.94530873, 1e-8);
  EXPECT_GT(std::abs(gamma(-2.5) + 0.94530872048294188), 1e-9);
  // The rounded count of factors asks gamln1 for arguments down to -0.25, where it is less
  // accurate.
  const double above = std::nextafter(2.75, 3);
  const double error = relativeError(gamln(above), 0.47521466691493708);
  EXPECT_TRUE(error > 2e-15 && error < 2e-14) << error;
  EXPECT_LE(relativeError(gamln(2.7), 0.434820553655104673), 2e-15);
  EXPECT_EQ(gamln(2.75), gamln1(-0.25) + std::log(1.75 * 0.75));
  EXPECT_EQ(gamln(2.7), gamln1((2.7 - 1) - 1) + std::log(2.7 - 1));
}

TEST(GammaRatio, AgreesWithHighPrecisionReferences) {
  const auto rows = references("gratio.csv");
  EXPECT_GE(rows.size(), 3900U);
  for (const auto& row : rows) {
    const Tails found = tails(row[0], row[1]);
    for (const auto& [value, expected, conditioning] :
         {std::tuple{found.p, row[2], row[4]}, std::tuple{found.q, row[3], row[5]}}) {
      const double tolerance = conditioning <= 100 ? 2e-14 : 5e-13;
      EXPECT_LE(relativeError(value, expected), tolerance) << row[0] << ' ' << row[1];
    }
  }
}

TEST(GammaInverse, AgreesWithHighPrecisionReferences) {
  const auto rows = references("gaminv.csv");
  EXPECT_GE(rows.size(), 3900U);
  for (const auto& row : rows) {
    const Solution found = solve(row[0], row[1], row[2]);
    EXPECT_TRUE(found.ierr >= 0 && found.ierr <= 4) << row[0] << ' ' << row[1];
    EXPECT_LE(relativeError(found.x, row[3]), 3e-15 * (1 + row[4]))
        << row[0] << ' ' << row[1] << ' ' << row[2];
  }
}

TEST(GammaRatio, LimitsAndErrors) {
  const struct {
    double a, x, p, q;
  } cases[] = {
      {0, 1, 1, 0},          {5, 0, 0, 1},        {5, 1e-320, 0, 1}, {1e-300, 1e-100, 1, 0},
      {2, infinity, 1, 0},   {infinity, 2, 0, 1}, {0.5, 1e4, 1, 0},  {1e7, 9e6, 0, 1},
      {1e-5, 800, 1, 0},     {0, infinity, 1, 0}, {-1, 1, 2, -3},    {1, -1, 2, -3},
      {0, 0, 2, -3},         {nan, 1, 2, -3},     {1, nan, 2, -3},   {infinity, infinity, 2, -3},
      {-infinity, 1, 2, -3},
  };
  for (const auto& c : cases) {
    const Tails found = tails(c.a, c.x);
    EXPECT_EQ(found.p, c.p) << c.a << ' ' << c.x;
    EXPECT_EQ(found.q, c.q) << c.a << ' ' << c.x;
  }
  // A shape far beyond those of the references, within the spacing of its doubles of the median.
  EXPECT_NEAR(tails(7e28, 7e28).p, 0.5, 1e-14);
  // A coarser class is as accurate as the full one.
  EXPECT_EQ(tails(2.5, 1.5, 1).p, tails(2.5, 1.5).p);
  EXPECT_EQ(tails(2.5, 1.5, 7).q, tails(2.5, 1.5).q);
}

TEST(GammaInverse, LimitsAndErrors) {
  const struct {
    double a, p, q, x0, x;
    int ierr;
  } cases[] = {
      {0, 0.5, 0.5, -1, 0, -2},
      {-1, 0.5, 0.5, -1, 0, -2},
      {nan, 0.5, 0.5, -1, 0, -2},
      {2, 0.5, 0.6, -1, 0, -4},
      {2, nan, 0.5, -1, 0, -4},
      {2, 0, 1, -1, 0, 0},
      {2, 1, 0, -1, largest, 0},
      {1, 0.5, 0.5, -1, std::log(2), 0},
      {1, 1e-20, 1, -1, 1e-20, 0},
      {0.001, 1e-10, 1 - 1e-10, -1, 0, -3},
      {2, 0.5, 0.5, 5000, 5000, -8},  // nothing is left there to start from
      {2, 0.5, 0.5, 60, 0, -7},       // the first step leaves the positive numbers
      {1e-305, 1 - 1e-15, 1e-15, -1, 0, -3},
  };
  for (const auto& c : cases) {
    const Solution found = solve(c.a, c.p, c.q, c.x0);
    EXPECT_EQ(found.ierr, c.ierr) << c.a << ' ' << c.p << ' ' << c.x0;
    EXPECT_EQ(found.x, c.x) << c.a << ' ' << c.p << ' ' << c.x0;
  }
  EXPECT_EQ(solve(2, 1e-299, 1).ierr, -8);
  EXPECT_NEAR(solve(2, 1e-299, 1).x * std::sqrt(1e299 / 2), 1, 1e-10);
  EXPECT_NEAR(solve(2, 0.5, 0.5, 1.5).x, solve(2, 0.5, 0.5).x, 1e-15);
  EXPECT_NEAR(solve(1e21, 0.5, 0.5).x, 1e21, 1e6);
  EXPECT_EQ(faultNumber([] { return solve(infinity, 0.5, 0.5).x; }), fault::overflow);
  EXPECT_EQ(faultNumber([] { return GammaINV(0.5, Shape(infinity), 1, false); }), fault::overflow);
  EXPECT_EQ(faultNumber([] { return solve(2, -0.1, 1.1).x; }), fault::invalidCall);
  EXPECT_EQ(faultNumber([] { return solve(1, 1.1, -0.1).x; }), fault::invalidCall);
}

TEST(GammaDistribution, ProbabilityOrText) {
  EXPECT_EQ(GammaCDF(0, 2, 1, false), Variant(0));
  EXPECT_EQ(GammaCDF(0, 2, 1, true), Variant(1));
  EXPECT_EQ(GammaCDF(infinity, 2, 1, false), Variant(1));
  EXPECT_NEAR(GammaCDF(3, 1, 2, true).toDouble(), std::exp(-6), 1e-17);  // the rate multiplies x
  EXPECT_EQ(GammaCDF(-1, 2, 1, false), Variant("upper_limit is out of range"));
  EXPECT_EQ(GammaCDF(1, 0, 1, false), Variant("deg_freedom is out of range"));
  EXPECT_EQ(GammaCDF(-1, 0, 0, false), Variant("upper_limit is out of range"));
  EXPECT_EQ(GammaCDF(1, 2, 0, false), Variant());
  EXPECT_EQ(GammaCDF(infinity, infinity, 1, false), Variant());  // the ratio fails
  const struct {
    int status;
    Variant text;
  } texts[] = {{1, "answer appears to be lower than lowest search bound"},
               {2, "answer appears to be  higher than greatest search bound"},
               {-1, "probability is out of range"},
               {-2, "probability is out of range"},
               {-3, {}},
               {-4, "upper_limit is out of range"},
               {-5, "deg_freedom is out of range"},
               {-6, {}},
               {3, {}},
               {10, {}}};
  for (const auto& c : texts) {
    EXPECT_EQ(statusText(static_cast<std::int16_t>(c.status)), c.text) << c.status;
  }
}

TEST(GammaDistribution, QuantileOrError) {
  EXPECT_NEAR(GammaINV(0.5, 2, 1, false), 1.6783469900166605, 1e-15);
  EXPECT_NEAR(GammaINV(0.25, 2, 4, true), 2.6926345288896958 / 4, 1e-15);
  EXPECT_EQ(GammaINV(0, 2, 1, false), 0);
  EXPECT_EQ(GammaINV(1, 2, 2, false), largest / 2);
  const struct {
    int ierr;
    const char* text;
  } texts[] = {
      {-2, "input error, dShape <=0"},
      {-3, "no solution obtained. the ratio q/dShape is too large."},
      {-4, "input error, p + q <> 1"},
      {-6,
       "20 iterations were performed. the most recent value obtained for x is given.  this cannot "
       "occur if x0 <=0"},
      {-7, "iteration failed. no value is given for x."},
      {-8,
       "a value for x has been obtained, but the routine is not certain of its accuracy. iteration "
       "cannot be performed in this case."},
      {-5, ""},
  };
  for (const auto& c : texts) EXPECT_EQ(failureText(static_cast<std::int16_t>(c.ierr)), c.text);
  const struct {
    double p, shape;
    int ierr;
  } failures[] = {{0.5, 0, -2}, {1e-10, 0.001, -3}, {nan, 2, -4}, {1e-299, 2, -8}};
  for (const auto& c : failures) {
    const auto fault = faultOf([&] { return GammaINV(c.p, c.shape, 1, false); });
    ASSERT_TRUE(fault) << c.ierr;
    EXPECT_EQ(fault->number(), fault::typeMismatch);
    EXPECT_EQ(fault->description(), failureText(static_cast<std::int16_t>(c.ierr)));
    EXPECT_TRUE(fault->source().starts_with("palvex\r\nin palvex.m_Gamma.GammaINV at line "));
  }
  EXPECT_EQ(faultNumber([] { return GammaINV(1.5, 2, 1, false); }), fault::invalidCall);
  EXPECT_EQ(faultNumber([] { return GammaINV(0.5, 2, 0, false); }), fault::divisionByZero);
}

TEST(GammaDistribution, FourModes) {
  struct Call {
    int which;
    double p, q, x, shape, scale;
    int status;
    double bound;
  };
  const Call refusals[] = {
      {0, 0.5, 0.5, 1, 2, 1, -1, 1},       {5, 0.5, 0.5, 1, 2, 1, -1, 4},
      {2, -0.1, 1, 1, 2, 1, -2, 0},        {2, 1.1, 1, 1, 2, 1, -2, 1},
      {2, 0.5, 0, 1, 2, 1, -3, 0},         {2, 0.5, 1.1, 1, 2, 1, -3, 1},
      {1, 7, 7, -1, 2, 1, -4, 0},          {1, 7, 7, 1, 0, 1, -5, 0},
      {1, 7, 7, 1, 2, 0, -6, 0},           {2, 0.5, 0.4, -1, 2, 1, 3, 1},
      {4, 0.5, 0.4, 1, 2, -1, 3, 1},       {3, 0.5, 0.4, 1, -2, 1, 3, 1},
      {2, 0.5, 0.5, 1, 0, 1, -5, 0},       {4, 0.5, 0.5, -1, 2, 1, -4, 0},
      {2, 1e-299, 1, 1, 2, 1, 10, 0},      {1, 0, 0, infinity, infinity, 1, 10, 0},
      {3, 0.75, 0.25, 2, 9, 1, 1, 1e-100},  // the search forgets its bracket
  };
  const auto call = [](Call& c) {
    std::int16_t status = 77;
    double bound = 77;
    cdfgam(static_cast<std::int16_t>(c.which), c.p, c.q, c.x, c.shape, c.scale, status, bound);
    EXPECT_EQ(status, c.status) << c.which << ' ' << c.status;
    EXPECT_EQ(bound, c.bound) << c.which << ' ' << c.status;
  };
  for (Call c : refusals) call(c);

  Call probability{1, 0, 0, 2, 3, 0.5, 0, 0};
  call(probability);
  EXPECT_NEAR(probability.p, 1 - 2.5 * std::exp(-1), 1e-16);
  EXPECT_NEAR(probability.q, 2.5 * std::exp(-1), 1e-15);
  Call argument{2, probability.p, probability.q, 0, 3, 0.5, 0, 0};
  call(argument);
  EXPECT_NEAR(argument.x, 2, 1e-14);
  Call scale{4, probability.p, probability.q, 4, 3, 0, 0, 0};
  call(scale);
  EXPECT_NEAR(scale.scale, 0.25, 1e-15);
}

TEST(GammaDistribution, DensityCutsWhatTheLimitsExclude) {
  const double at2 = std::exp(-1);  // not divided by the scale
  const struct {
    double x, shape, scale, location;
    Variant ltl, utl;
    double density;
  } cases[] = {
      {2, 1, 2, 0, none, none, at2}, {0, 1, 2, 0, none, none, 0},
      {5, 1, 2, 3, "", {}, at2},     {5, 1, 2, 5, none, none, 0},
      {2, 0, 2, 0, none, none, 0},   {2, 1, -1, 0, none, none, 0},
      {2, 1, 2, 0, 2, none, at2},    {2, 1, 2, 0, 2.1, none, 0},
      {2, 1, 2, 0, none, "2", at2},  {2, 1, 2, 0, none, 1.9, 0},
      {2, 1, 2, 0, 3, 1, 0},         {2, 1, 2, 0, 2, 1, at2},
      {2, 1, 2, 0, 3, 2, at2},       {2, 1, 2, 0, 1, 1, at2},
      {2, 1, 2, 0, 1, 1.5, 0},       {6, 3.5, 2, 0, none, none, 0.233530431982279009},
  };
  for (const auto& c : cases) {
    EXPECT_NEAR(GammaPDF(c.x, c.shape, c.scale, c.location, c.ltl, c.utl), c.density, 1e-14)
        << c.x << ' ' << c.shape;
  }
  EXPECT_EQ(faultNumber([] { return GammaPDF(1e-300, 5, 1, 0, none, none); }), fault::invalidCall);
  EXPECT_EQ(faultNumber([] { return GammaPDF(1e3, 500, 1, 0, none, none); }), fault::overflow);
  EXPECT_EQ(faultNumber([] { return GammaPDF(nan, 5, 1, 0, none, none); }), fault::overflow);
}

TEST(GammaDistribution, ValueBetweenLimits) {
  EXPECT_EQ(GammaVAL(0.3, -1, 1, 7), 7);
  EXPECT_EQ(GammaVAL(0.3, 1, 0, 7, -9, 1e300), 7);  // the limits are not looked at
  EXPECT_NEAR(GammaVAL(0.5, 2, 3, 10), 10 + 3 * 1.6783469900166605, 1e-14);
  EXPECT_EQ(GammaVAL(0, 2, 3, 10), 10);
  for (double shape : {0.3, 2.5, 50.0, 5000.0}) {
    const double deviation = std::sqrt(shape);
    const double low = shape - 0.5 * std::min(deviation, shape);
    const double high = shape + deviation;
    const auto p = [&](double x) { return GammaCDF(x / 2, shape, 1, false).toDouble(); };
    EXPECT_EQ(value(0.4, Shape(shape), 2, 1, Band{}), GammaVAL(0.4, shape, 2, 1));
    const double l = 2 * low;
    const double u = 2 * high;
    for (int i = 0; i < 100; ++i) {
      const double uniform = (i + 0.5) / 100;
      const double between = GammaVAL(uniform, shape, 2, 0, l, u);
      EXPECT_NEAR((p(between) - p(l)) / (p(u) - p(l)), uniform, 1e-13) << shape;
      const double outside = GammaVAL(uniform, shape, 2, 0, u, l);
      const double kept = p(l) + 1 - p(u);
      const double position = outside <= l ? p(outside) / kept : (p(l) + p(outside) - p(u)) / kept;
      EXPECT_NEAR(position, uniform, 1e-13) << shape;
      EXPECT_TRUE(outside <= l * (1 + 1e-14) || outside >= u * (1 - 1e-14)) << outside;
    }
  }
  // A limit below the location has a text for a probability.
  const auto fault = faultOf([] { return GammaVAL(0.3, 2, 1, 5, 4); });
  ASSERT_TRUE(fault);
  EXPECT_EQ(fault->number(), fault::typeMismatch);
  EXPECT_TRUE(fault->source().starts_with("palvex\r\nin palvex.m_Gamma.GammaVAL at line "));
  const auto certain = faultOf([] { return GammaVAL(1, 2, 2, 5); });
  ASSERT_TRUE(certain);
  EXPECT_EQ(certain->number(), fault::overflow);
}

TEST(Gamma, NoArgumentGivesNaNOrAnEndlessLoop) {
  std::vector<double> wild{nan, infinity, 0.0, 1, 0.5, 1.5, 19.999, 20, 30, 31, 700, 1e-5};
  for (double magnitude : {5e-324, 1e-310, 3e-308, 1e-300, 1e-150, 1e-16, 1e5, 1e15, 1e20, 7e28,
                           1e100, 1e155, 1e300, largest}) {
    wild.push_back(magnitude);
  }
  for (std::size_t i = wild.size(); i-- > 0;) wild.push_back(-wild[i]);
  const auto numberOrError = [](auto&& compute) {
    double value = 0;
    faultOf([&] { return value = compute(); });
    return !std::isnan(value);
  };
  for (double a : wild) {
    for (auto* routine : {&gamma, &gamln, &gamln1, &gam1}) {
      EXPECT_TRUE(numberOrError([&] { return routine(a, Line::here()); })) << a;
    }
    for (double x : wild) {
      EXPECT_TRUE(numberOrError([&] { return rcomp(a, x); })) << a << ' ' << x;
      const Tails ratio = tails(a, x);
      EXPECT_TRUE(ratio.p >= 0 && ratio.p <= 2) << a << ' ' << x << ' ' << ratio.p;
      EXPECT_TRUE(ratio.p == 2 || std::abs(ratio.p + ratio.q - 1) < 1e-15) << a << ' ' << x;
      EXPECT_TRUE(numberOrError([&] { return solve(a, x, 1 - x).x; })) << a << ' ' << x;
      EXPECT_TRUE(numberOrError([&] { return solve(a, 1 - x, x).x; })) << a << ' ' << x;
      EXPECT_TRUE(numberOrError([&] { return solve(a, 0.3, 0.7, x).x; })) << a << ' ' << x;
      EXPECT_TRUE(numberOrError([&] { return GammaCDF(x, a, 1, false).toDouble(); }))
          << a << ' ' << x;
      EXPECT_TRUE(numberOrError([&] { return GammaPDF(x, a, 2, 1, none, none); })) << a << ' ' << x;
      EXPECT_TRUE(numberOrError([&] { return GammaVAL(0.4, a, x, 1); })) << a << ' ' << x;
      EXPECT_TRUE(numberOrError([&] { return GammaVAL(x, 2, a, a); })) << a << ' ' << x;
    }
  }
}

}  // namespace
}  // namespace palvex::m_Gamma
