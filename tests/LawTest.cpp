// The laws themselves: references, round trips, limits, sentences, blocks and draws.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "FakeRange.h"
#include "Fault.h"
#include "ManyLaws.h"
#include "laws/Beta.h"
#include "laws/Exponential.h"
#include "laws/Gamma.h"
#include "laws/Histogram.h"
#include "laws/Johnson.h"
#include "laws/Kept.h"
#include "laws/Lognormal.h"
#include "laws/Normal.h"
#include "laws/Triangular.h"
#include "laws/Uniform.h"
#include "laws/Weibull.h"
#include "palvex/palvex.h"

namespace palvex {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double eps = std::numeric_limits<double>::epsilon();

/// What is asked of a row of tests/data/law.csv, in the units of its condition numbers.
template <class AnyLaw>
void expectReference(const AnyLaw& law, bool isRatio, const std::vector<double>& v,
                     const std::string& row) {
  const auto& [x, p, q, logDensity, kp, kq, kf, density] =
      std::array{v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]};
  // Gamma and beta tails have their own bound where they are well conditioned.
  const auto tail = [&](double k) {
    return isRatio && k <= 100 ? 2e-14 : 8 * eps * std::max(1.0, k);
  };
  EXPECT_NEAR(law.probability(x), p, p * tail(kp)) << row;
  EXPECT_NEAR(law.exceedance(x), q, q * tail(kq)) << row;
  EXPECT_NEAR(law.logDensity(x), logDensity, 1e-13 * std::max(1.0, kf + std::abs(logDensity)))
      << row;
  if (std::isnormal(density)) {
    EXPECT_NEAR(std::log(law.density(x)), logDensity,
                1e-13 * std::max({1.0, kf, std::abs(logDensity)}))
        << row;
  }
  const double found = p < q ? law.quantile(p) : law.upperQuantile(q);
  const double condition = (p < q ? kp * p : kq * q) / (std::abs(x) * density);
  const double k = std::max({1.0, condition, std::min(p, q) / (std::abs(x) * density)});
  EXPECT_NEAR(found, x, 1e-13 * (x == 0 ? 1 : std::abs(x) * k)) << row;
}

TEST(Law, AgreesWithHighPrecisionReferences) {
  std::ifstream file(PALVEX_TEST_DATA "/law.csv");
  std::map<std::string, int> rows;
  for (std::string row; std::getline(file, row);) {
    std::vector<std::string> fields;
    std::istringstream stream(row);
    for (std::string field; std::getline(stream, field, ',');) fields.push_back(field);
    ASSERT_EQ(fields.size(), 15U) << row;
    const auto number = [&](std::size_t i) { return std::strtod(fields[i].c_str(), nullptr); };
    std::vector<double> parameters;
    for (std::size_t i = 1; i < 5 && !fields[i].empty(); ++i) parameters.push_back(number(i));
    Limits limits;
    if (!fields[5].empty()) limits.lower = number(5);
    if (!fields[6].empty()) limits.upper = number(6);
    std::vector<double> values;
    for (std::size_t i = 7; i < 15; ++i) values.push_back(number(i));
    const std::string& type = fields[0];
    if (type.substr(0, 7) == "Johnson") {
      const laws::Johnson curve({parameters[0], parameters[1], parameters[2], parameters[3],
                                 m_Johnson::curveOf(type.substr(8))});
      expectReference(laws::Kept("Johnson", curve, limits), false, values, row);
    } else {
      expectReference(makeLaw(*findLawType(type), parameters, limits),
                      type == "Gamma" || type == "Beta", values, row);
    }
    ++rows[type];
  }
  EXPECT_EQ(rows.size(), 11U);
  for (const auto& [type, count] : rows) EXPECT_GE(count, 25) << type;
}

std::vector<double> probabilities() {
  std::vector<double> p{0, 1e-300, 1e-40, 1e-12};
  for (int i = 1; i < 200; ++i) p.push_back(i / 200.0);
  p.insert(p.end(), {1 - 1e-9, 1 - 1e-15, 1});
  return p;
}

TEST(Law, QuantilesRoundTripRiseAndStayInside) {
  const std::vector<double> positions = probabilities();
  for (const Law& whole : manyLaws()) {
    for (const Law& law : withLimits(whole)) {
      const Support support = law.support();
      const std::string what = std::string(law.type()) + ' ' + std::to_string(support.lower) + ' ' +
                               std::to_string(support.upper);
      EXPECT_EQ(law.quantile(0), support.lower) << what;
      EXPECT_EQ(law.upperQuantile(0), support.upper) << what;
      EXPECT_EQ(law.quantile(1), support.upper) << what;
      EXPECT_EQ(law.upperQuantile(1), support.lower) << what;
      double previous = support.lower;
      for (const double p : positions) {
        const double x = law.quantile(p);
        EXPECT_TRUE(previous <= x && x <= support.upper) << what << ' ' << p;
        previous = x;
        if (p == 0 || p == 1 || std::isinf(x)) continue;
        // Of the doubles about x one has the probability p; what is below the normal ones is 0.
        const double next =
            x == 0 ? std::numeric_limits<double>::min() : std::nextafter(x, infinity);
        const double below = law.probability(std::nextafter(x, -infinity));
        const double above = law.probability(next);
        EXPECT_LE(below, p + 1e-13) << what << ' ' << p << ' ' << x;
        EXPECT_GE(above, p - 1e-13) << what << ' ' << p << ' ' << x;
        EXPECT_NEAR(law.probability(x) + law.exceedance(x), 1, 1e-13) << what << ' ' << p;
        EXPECT_GE(law.density(x), 0) << what << ' ' << p;
      }
      for (const double x :
           {-infinity, support.lower, 0.0, 1e-310, support.upper, 1e308, infinity}) {
        for (const double answer : {law.density(x), law.logDensity(x), law.probability(x)}) {
          EXPECT_FALSE(std::isnan(answer)) << what << ' ' << x;
        }
      }
      for (const double p : {nan, -0.1, 1.1}) {
        EXPECT_TRUE(std::isnan(law.quantile(p)) && std::isnan(law.upperQuantile(p))) << what;
      }
      EXPECT_TRUE(std::isnan(law.density(nan)) && std::isnan(law.logDensity(nan)) &&
                  std::isnan(law.probability(nan)) && std::isnan(law.exceedance(nan)));
      EXPECT_FALSE(std::isnan(law.mean()) || std::isnan(law.sd())) << what;
    }
  }
}

TEST(Law, BlocksHaveTheBitsOfTheQuantile) {
  std::mt19937_64 bits(20260801);
  std::vector<double> p = probabilities();
  p.insert(p.end(), {nan, -1, 2});
  for (int i = 0; i < 1500; ++i) p.push_back(static_cast<double>(bits() >> 11) * 0x1p-53);
  for (const Law& whole : manyLaws()) {
    for (const Law& law : withLimits(whole)) {
      std::vector<double> x = p;
      law.quantiles(x, x);
      for (std::size_t i = 0; i < p.size(); ++i) {
        EXPECT_EQ(std::bit_cast<std::uint64_t>(x[i]),
                  std::bit_cast<std::uint64_t>(law.quantile(p[i])))
            << law.type() << ' ' << p[i];
      }
    }
  }
  EXPECT_THROW(Law::normal(0, 1).quantiles(p, std::span(p).first(3)), std::invalid_argument);
}

TEST(Law, IsWhatTheMembersGiveWhereTheyAreTheLaw) {
  const struct {
    const char* type;
    std::vector<double> parameters;
  } cases[] = {{"Normal", {1, 2}},         {"Uniform", {1, 3}},     {"Triangular", {1, 2, 5}},
               {"Lognormal", {0, 0.5, 1}}, {"Exponential", {2, 1}}, {"Weibull", {2, 3, 1}},
               {"Beta", {2, 3, 0, 1}},     {"Gamma", {2, 1, 0}},    {"Johnson", {0, 1, 0.5, 4}}};
  for (const auto& [type, parameters] : cases) {
    c_Distribution members;
    members.distType(type);
    const std::array values{&members.param1, &members.param2, &members.param3, &members.param4};
    for (std::size_t i = 0; i < parameters.size(); ++i) *values[i] = parameters[i];
    EXPECT_THROW(static_cast<void>(members.law()), std::logic_error);
    std::string cause;
    ASSERT_TRUE(members.ParamsOK(cause)) << cause;
    const Law whole = members.law();
    members.ltl = whole.quantile(0.1);
    members.utl = whole.quantile(0.8);
    ASSERT_TRUE(members.ParamsOK(cause)) << cause;
    const Law law = members.law();
    const bool isStandardised = std::string(type) == "Johnson";
    for (const double p : {0.05, 0.25, 0.5, 0.9}) {
      const double x = law.quantile(p);
      EXPECT_NEAR(members.cdf(x), whole.probability(x), 1e-14) << type;
      EXPECT_NEAR(members.RandVal(p), x, 2e-8) << type;
      if (!isStandardised) {
        EXPECT_NEAR(members.pdf(x), whole.density(x), 1e-13) << type;
      }
    }
    EXPECT_NEAR(members.mean(), law.mean(), 1e-14) << type;
    if (!isStandardised) {
      members.Dynamic = true;  // the law of what is there now
      members.param1 = 1.25 * parameters[0];
      EXPECT_EQ(members.law().mean(), members.mean()) << type;
    }
    members.ltl = members.utl = 0;
    EXPECT_FALSE(members.ParamsOK(cause));
    EXPECT_THROW(static_cast<void>(members.law()), std::logic_error);
  }
}

TEST(Law, FaultsAreTheEnginesSentences) {
  const Variant text = "three";
  const std::array<Variant, 3> unordered{1, 5, 4};
  const std::array<double, 0> none{};
  const std::array bins{1.0, 2.0};
  const struct {
    const char* sentence;
    std::function<Law()> make;
  } cases[] = {
      {"Negative value for Std Dev.  Must be a non-negative real number.",
       [] { return Law::normal(0, -1); }},
      {"Non-numeric value for Mean.", [] { return Law::normal(nan, 1); }},
      {"Non-numeric value for Maximum.", [] { return Law::uniform(0, infinity); }},
      {"Likely can not be less than Minimum.", [] { return Law::pert(3, 2, 4); }},
      {"Maximum can not be less than Likely.", [&] { return makeLaw("PERT", unordered); }},
      {"Value of zero for Shape.  Must be positive real number.",
       [] { return Law::weibull(0, 1); }},
      {"Value of zero for Std Dev.  Must be a positive real number.",
       [] { return Law::lognormalMean(1, 0); }},
      {"Non-numeric value for Mean.",
       [&] {
         return makeLaw("LognormalMean", std::array<Variant, 2>{text, 1});
       }},
      {"Mean must be greater than Minimum.", [] { return Law::lognormalMean(1, 1, 2); }},
      {"Number overflow.  Please choose a smaller value for Location or Scale.",
       [] { return Law::lognormal(0, 30); }},
      {"Impossible combination of skewness and kurtosis.  Kurtosis must be greater than (1 + "
       "Skewness^2).",
       [] { return Law::johnson(0, 1, 2, 3); }},
      {"No Johnson curve was found for these moments.",
       [] { return Law::johnson(0, 1, 2.084, 11.55); }},
      {"No Johnson curve was found for these moments.",
       [] { return Law::johnson(0, 1, 0.4, 3.296); }},
      {"No Johnson curve was found for these moments.",
       [] {
         return makeLaw("Johnson", std::array<Variant, 4>{0, 1, 0.4, 3.296});
       }},
      {"No Johnson curve was found for these moments.",
       [] {
         return makeLaw("Johnson", std::array<Variant, 4>{0, 1, 2.084, 11.55});
       }},
      {"Incorrect distribution type.",
       [&] { return makeLaw(*findLawType("Histogram"), bins, {}); }},
      {"Truncation limits exclude all distribution values.  Please adjust.",
       [] {
         return Law::histogram(std::array{0.0, 1.0, 2.0, 3.0}, std::array{1.0, 0.0, 1.0})
             .between(1.2, 1.8);
       }},
      {"Truncation limits keep no probability in double precision.",
       [] { return Law::uniform(0, 1).between(-3, 0); }},
      {"No Johnson curve was found for these moments.",
       [] { return Law::johnson(0, 5e-324, 0, 1000); }},
      {"The bins or their densities leave the range of doubles.",
       [] {
         return Law::histogram(std::array{-1e308, 1e308}, std::array{1.0});
       }},
      {"No data", [&] { return Law::histogram(none); }},
      {"Counts can not be negative.", [&] { return Law::histogram(bins, std::array{-1.0}); }},
      {"A histogram has one edge more than counts.", [&] { return Law::histogram(bins, bins); }},
      {"Incorrect distribution type.", [] { return makeLaw("normal", {}, {}, {}); }},
      {"LTL value can not be equal to UTL value.", [] { return Law::normal(0, 1).between(1, 1); }},
      {"Improper value for LTL.", [] { return Law::normal(0, 1).between(nan, 1); }},
      {"Improper value for UTL.", [] { return Law::normal(0, 1).between({}, nan); }},
      {"Truncation limits exclude all distribution values.  Please adjust.",
       [] { return Law::uniform(0, 1).between(2, 3); }},
      {"Truncation limits exclude all distribution values.  Please adjust.",
       [] { return Law::lognormal(0, 1).between({}, 0); }},
      {"Truncation limits exclude all distribution values.  Please adjust.",
       [] { return Law::normal(2, 0).between(3, 1); }},
      {"Truncation limits keep no probability in double precision.",
       [] { return Law::uniform(0, 1).between(1, 3); }},
      {"Truncation limits keep no probability in double precision.",
       [] { return Law::normal(0, 1).between(50, {}); }},
  };
  for (const auto& c : cases) {
    try {
      static_cast<void>(c.make());
      ADD_FAILURE() << "no fault: " << c.sentence;
    } catch (const std::invalid_argument& fault) {
      EXPECT_STREQ(fault.what(), c.sentence);
    }
  }
  const auto closed = cell(1);
  closed->failingRead["count"] = 1;
  const std::array<Variant, 2> parameters{closed, 1};
  EXPECT_EQ(faultNumber([&] { return makeLaw("Normal", parameters); }), 1004);
}

TEST(Law, LimitsAndPointMasses) {
  const Law normal = Law::normal(10, 2);
  EXPECT_EQ(normal.between(-infinity, infinity).keptProbability(), 1);
  EXPECT_EQ(normal.between(5, 15).between(12, {}).support().lower, 12);
  EXPECT_EQ(normal.between(5, 15).between(12, {}).support().upper, infinity);
  const Law deep = normal.between(84, {});  // 37 standard deviations above the mean
  EXPECT_NEAR(deep.mean(), 84.05397538, 1e-8);
  EXPECT_EQ(deep.density(83.9), 0);
  EXPECT_EQ(deep.logDensity(83.9), -infinity);
  const Law split = Law::uniform(0, 10).between(6, 4);
  EXPECT_EQ(split.quantile(0.5), 4);
  EXPECT_EQ(split.density(5), 0);
  EXPECT_NEAR(split.density(1), 0.125, 1e-16);
  EXPECT_EQ(Law::uniform(0, 1).between(0.5, -1).mean(), 0.75);  // of two pieces one is empty
  EXPECT_EQ(Law::uniform(0, 1).between(2, 0.5).mean(), 0.25);
  for (const Law& point :
       {Law::normal(3, 0), Law::uniform(3, 3), Law::triangular(3, 3, 3), Law::beta(2, 2, 3, 3),
        Law::pert(3, 3, 3), Law::normal(3, 0).between(2, 4)}) {
    EXPECT_EQ(point.quantile(0.3), 3);
    EXPECT_EQ(point.probability(3), 1);
    EXPECT_EQ(point.exceedance(2), 1);
    EXPECT_EQ(point.density(3), 1);
    EXPECT_EQ(point.mean(), 3);
    EXPECT_EQ(point.sd(), 0);
  }
  // Between two bins the least value with the probability is the end of the first.
  const std::array edges{0.0, 1.0, 2.0, 3.0};
  const std::array counts{1.0, 0.0, 3.0};
  const Law gap = Law::histogram(edges, counts);
  EXPECT_EQ(gap.quantile(0.25), 1);
  EXPECT_EQ(gap.between(1.5, {}).support().lower, 2);
  EXPECT_EQ(makeLaw("LognormalMean", std::array<Variant, 2>{"5", 2}).type(), "LognormalMean");
  EXPECT_EQ(makeLaw(*findLawType("LognormalMean"), std::array{5.0, 2.0, 1.0}, {}).mean(), 5);
  EXPECT_EQ(makeLaw(*findLawType("PERT"), std::array{1.0, 2.0, 9.0}, {}).mean(), 3);
  EXPECT_NEAR(Law::lognormalMean(5, 2, 1).sd(), 2, 1e-14);
}

TEST(Law, MomentsFarFromOne) {
  // Ends farther apart than the largest double: by the formulas in units of a double that is one.
  constexpr double end = 1.5e308;
  const struct {
    Law law;
    double mean, sd;
  } cases[] = {
      {Law::beta(2, 3, -end, end), -0.2 * end, 0.4 * end},
      {Law::beta(2, 3, -end, end).between(-end, {}), -0.2 * end, 0.4 * end},
      {Law::triangular(-end, 0, end), 0, end / std::sqrt(6)},
      {Law::triangular(-end, 0, end).between(0, {}), end / 3, end / std::sqrt(18)},
      // A limit so near to an end that it is none in units of the law.
      {Law::gamma(2, 1e300).between(1e-100, {}), 2e300, std::sqrt(2) * 1e300},
      {Law::weibull(1, 1e300).between(1e-100, {}), 1e300, 1e300},
  };
  for (const auto& [law, mean, sd] : cases) {
    EXPECT_NEAR(law.mean() / sd, mean / sd, 1e-12) << law.type() << ' ' << mean;
    EXPECT_NEAR(law.sd() / sd, 1, 1e-12) << law.type() << ' ' << mean;
  }
  EXPECT_EQ(Law::weibull(0.005, 1).mean(), infinity);  // 200 factorial
}

// The types themselves, where a law does not ask them.
TEST(Law, TypesBeyondTheirEnds) {
  const auto expectNothing = [](const auto& type, double x) {
    const auto [lower, upper] = type.tails(x);
    EXPECT_EQ(lower, x > 3 ? 1 : 0);
    EXPECT_EQ(upper, x > 3 ? 0 : 1);
    EXPECT_EQ(type.density(x), 0);
    EXPECT_EQ(type.logDensity(x), -infinity);
  };
  laws::Beta beta(2, 3, 1, 4);
  beta.prepare();
  for (const double x : {0.0, 5.0}) {
    expectNothing(laws::Uniform(1, 4), x);
    expectNothing(laws::Triangular(1, 2, 4), x);
    expectNothing(beta, x);
    expectNothing(laws::Histogram(m_Histogram::DensityArray{1, 2, 0.5, 3, 4, 0.5}), x);
    expectNothing(laws::Normal(2, 0), x);
  }
  expectNothing(laws::Lognormal(0, 1, 1), 0);
  expectNothing(laws::Exponential(2, 1), 0);
  expectNothing(laws::Weibull(2, 3, 1), 0);
  expectNothing(laws::Gamma(2, 3, 1), 0);
  EXPECT_EQ(laws::Gamma(2, 1e300, 0).tails(1e-300).upper, 1);
  EXPECT_EQ(laws::Gamma(2, 1e-300, 0).tails(1e300).lower, 1);
  // A share of the scale, here 1e-400 and 3^1000, need not be a double.
  EXPECT_NEAR(laws::Gamma(0.001, 1e300, 0).tails(1e-100).lower, 0.3983367031222318, 1e-15);
  const laws::Weibull wide(0.1, 1e300, 0);
  EXPECT_NEAR(wide.quantile(1e-40, 1) * 1e100, 1, 1e-12);
  EXPECT_NEAR(wide.tails(1e-100).lower * 1e40, 1, 1e-12);
  const laws::Weibull steep(0.001, 1e-300, 0);
  EXPECT_NEAR(steep.quantile(1 - std::exp(-3), std::exp(-3)) / 1.3220708194808066e177, 1, 1e-12);
  EXPECT_NEAR(steep.tails(1.3220708194808066e177).upper, std::exp(-3), 1e-14);
  EXPECT_NEAR(steep.logDensity(1.3220708194808066e177), -416.64590376021, 1e-10);
  // The ends themselves belong to a law.
  const auto expectDensity = [](const auto& type, double x, double density) {
    EXPECT_EQ(type.density(x), density);
    EXPECT_EQ(type.logDensity(x), std::log(density));
  };
  expectDensity(laws::Exponential(2, 1), 1, 2);
  expectDensity(laws::Weibull(1, 4, 1), 1, 0.25);
  for (const double x : {1.0, 5.0}) expectDensity(laws::Uniform(1, 5), x, 0.25);
  EXPECT_EQ(laws::Beta(2, 2, 3, 3).density(4), 0);
  EXPECT_EQ(laws::Normal(3, 0).logDensity(3), 0);
  EXPECT_EQ(laws::Normal(3, 0).tails(3).lower, 1);
  EXPECT_EQ(laws::Uniform(3, 3).logDensity(3), 0);
  EXPECT_EQ(laws::Triangular(3, 3, 3).logDensity(3), 0);
  EXPECT_EQ(laws::Triangular(3, 3, 3).logDensity(4), -infinity);
}

TEST(Law, QuantilesOfTheSmallestTails) {
  for (const Law& law :
       {Law::normal(0, 1), Law::lognormal(0, 1), Law::exponential(2), Law::weibull(3, 1),
        Law::gamma(0.01, 1), Law::gamma(50, 1), Law::gamma(1e4, 1), Law::johnson(0, 1, 0.5, 4)}) {
    for (const double q : {1e-250, 1e-300, 1e-305}) {
      EXPECT_NEAR(law.exceedance(law.upperQuantile(q)), q, 1e-12 * q) << law.type();
    }
  }
}

TEST(Law, DrawsWithTheStandardGenerators) {
  const Law law = Law::gamma(4, 2).between(3, 12);
  std::mt19937 bits(7);
  double sum = 0;
  constexpr int n = 100000;
  for (int i = 0; i < n; ++i) sum += law(bits);
  EXPECT_NEAR(sum / n, law.mean(), 4 * law.sd() / std::sqrt(n));
}

}  // namespace
}  // namespace palvex
