// Mean and standard deviation: closed forms, integration and high-precision references.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <sstream>

#include "Fault.h"
#include "engine/c_Distribution.h"
#include "laws/Beta.h"
#include "laws/Gamma.h"
#include "laws/Histogram.h"
#include "laws/Lognormal.h"
#include "laws/Normal.h"
#include "laws/Weibull.h"

namespace palvex {
namespace {

/// What a call gives, unless it raises an error.
template <class Call>
std::optional<double> valueOf(Call&& call) {
  try {
    return call();
  } catch (const RuntimeError&) {
    return {};
  }
}

class RandomSource {
 public:
  double uniform(double low, double high) {
    return low + (high - low) * (static_cast<double>(bits_() >> 11) * 0x1p-53);
  }
  double magnitude(double low, double high) { return std::pow(10, uniform(low, high)); }
  bool heads() { return (bits_() & 1) != 0; }
  /// A probability in (0, 1), often close to an end.
  double probability() {
    const double small = magnitude(-14, 0);
    return heads() ? uniform(0.001, 0.999) : heads() ? small : 1 - small;
  }

 private:
  std::mt19937_64 bits_{20260714};
};

using Parameters = std::array<Variant, 4>;
const std::map<std::string, std::function<Parameters(RandomSource&)>> randomParameters{
    {"Normal",
     [](auto& r) -> Parameters {
       return {r.uniform(-10, 10), r.magnitude(-3, 3)};
     }},
    {"Uniform",
     [](auto& r) -> Parameters {
       const double a = r.uniform(-10, 10);
       return {a, a + r.magnitude(-3, 3)};
     }},
    {"Triangular",
     [](auto& r) -> Parameters {
       const double a = r.uniform(-10, 10);
       const double width = r.magnitude(-3, 3);
       return {a, a + width * r.uniform(0, 1), a + width};
     }},
    {"Exponential",
     [](auto& r) -> Parameters {
       return {r.magnitude(-3, 3), r.uniform(-10, 10)};
     }},
    {"Weibull",
     [](auto& r) -> Parameters {
       return {r.magnitude(-0.7, 2), r.magnitude(-3, 3), r.uniform(-10, 10)};
     }},
    {"Lognormal",
     [](auto& r) -> Parameters {
       return {r.uniform(-5, 5), r.magnitude(-3, 0.6), r.uniform(-10, 10)};
     }},
    {"Gamma",
     [](auto& r) -> Parameters {
       return {r.magnitude(-1.5, 3), r.magnitude(-3, 3), r.uniform(-10, 10)};
     }},
    {"Beta",
     [](auto& r) -> Parameters {
       const double a = r.uniform(-10, 10);
       return {r.magnitude(-1.5, 2), r.magnitude(-1.5, 2), a, a + r.magnitude(-3, 3)};
     }},
    {"Johnson",
     [](auto& r) -> Parameters {
       // Every third curve on the lognormal line, the others well above and below it.
       const double skewness = r.uniform(0.1, 2) * (r.heads() ? 1 : -1);
       const double square = skewness * skewness;
       const double w = 2 * std::cosh(std::acosh(1 + square / 2) / 3) - 1;
       const double line = w * w * (3 + w * (2 + w)) - 3;
       const double kinds[] = {line, line + r.uniform(0.3, 30),
                               square + 1 + r.uniform(0.1, 0.8) * (line - square - 1)};
       const auto kind = static_cast<std::size_t>(r.uniform(0, 3));
       return {r.uniform(-10, 10), r.magnitude(-2, 3), skewness, kinds[kind]};
     }},
};

/// Bins with gaps.
m_Histogram::DensityArray randomBins(RandomSource& r) {
  m_Histogram::DensityArray bins;
  double edge = r.uniform(-5, 5);
  for (int i = 0; i < 20; ++i) {
    const double lower = edge + (r.heads() ? 0 : r.magnitude(-3, 0));
    edge = lower + r.magnitude(-3, 0);
    bins.insert(bins.end(), {lower, edge, r.uniform(0, 1)});
  }
  double total = 0;
  for (std::size_t i = 0; i < bins.size(); i += 3) total += (bins[i + 1] - bins[i]) * bins[i + 2];
  for (std::size_t i = 0; i < bins.size(); i += 3) bins[i + 2] /= total;
  return bins;
}

void set(c_Distribution& d, const Parameters& p) {
  d.param1 = p[0];
  d.param2 = p[1];
  d.param3 = p[2];
  d.param4 = p[3];
}

/// Limits of every kind, made of two values.
Limits limitsOf(int kind, double x, double y) {
  switch (kind % 5) {
    case 0:
      return {};
    case 1:
      return {.lower = x, .upper = {}};
    case 2:
      return {.lower = {}, .upper = x};
    case 3:
      return {.lower = std::min(x, y), .upper = std::max(x, y)};
    default:
      return {.lower = std::max(x, y), .upper = std::min(x, y)};
  }
}

void expectAgreement(const laws::Moments& closed, const laws::Moments& integrated,
                     const std::string& what) {
  const double sd = integrated.sd;
  EXPECT_NEAR(closed.mean, integrated.mean, 1e-10 * sd + 4e-16 * std::abs(integrated.mean)) << what;
  EXPECT_NEAR(closed.sd, sd, 1e-10 * sd) << what;
}

TEST(Moments, ClosedFormAndIntegrationAgree) {
  for (const auto& [type, parameters] : randomParameters) {
    RandomSource random;
    int compared = 0;
    int closedForms = 0;
    for (int i = 0; i < 1200 && compared < 600; ++i) {
      c_Distribution d;
      std::string cause;
      d.distType(type);
      set(d, parameters(random));
      const auto passes = [&] { return d.ParamsOK(cause); };
      if (faultNumber(passes) != 0 || !passes()) continue;
      const auto draw = [&] { return d.RandVal(random.probability()); };
      const auto x = valueOf(draw);
      const auto y = random.uniform(0, 1) < 0.3 && x
                         ? std::optional(*x + d.StDev() * random.magnitude(-6, 0))
                         : valueOf(draw);
      if (!x || !y) continue;
      const Limits limits = limitsOf(i, *x, *y);
      if (limits.lower) d.ltl = *limits.lower;
      if (limits.upper) d.utl = *limits.upper;
      if (!d.ParamsOK(cause)) continue;
      const std::string what = type + ' ' + d.param1.toText() + ' ' + d.param2.toText() + ' ' +
                               d.param3.toText() + ' ' + d.param4.toText() + " in [" +
                               d.ltl.toText() + ", " + d.utl.toText() + ']';
      const auto mean = valueOf([&] { return d.mean(); });
      if (!mean) {
        // A limit at the very end of the support: both say that nothing is kept.
        EXPECT_EQ(faultNumber([&] { return d.mean(); }), fault::divisionByZero) << what;
        EXPECT_EQ(faultNumber([&] { return d.CalcMean(); }), fault::divisionByZero) << what;
        continue;
      }
      const double integrated = d.CalcMean();
      expectAgreement({*mean, d.StDev()}, {integrated, d.CalcStdev(integrated)}, what);
      const std::array p{d.param1.toDouble(), d.param2.toDouble(), d.param3.toDouble(),
                         d.param4.toDouble()};
      if (type != "Johnson" && findFamily(type)->moments({p, {}}, limits)) ++closedForms;
      ++compared;
    }
    EXPECT_GE(closedForms, type == "Johnson" ? 0 : 150) << type;
    EXPECT_GE(compared, 500) << type;
  }
}

TEST(Moments, ClosedFormAndIntegrationAgreeOnHistograms) {
  RandomSource random;
  for (int i = 0; i < 600; ++i) {
    const m_Histogram::DensityArray bins = randomBins(random);
    const auto edge = [&] { return random.uniform(bins.front(), *(bins.end() - 2)); };
    const Limits limits = limitsOf(i, edge(), edge());
    if (laws::Histogram(bins).keepsNothing(limits)) continue;
    expectAgreement(laws::Histogram(bins).moments(limits),
                    laws::Histogram(bins).integratedMoments(limits), std::to_string(i));
  }
}

/// The moments of a row of references in both ways.
std::array<laws::Moments, 2> momentsOf(const std::vector<std::string>& fields) {
  const auto number = [&](std::size_t i) { return std::stod(fields[i]); };
  Limits limits;
  if (!fields[5].empty()) limits.lower = number(5);
  if (!fields[6].empty()) limits.upper = number(6);
  const std::string& type = fields[0];
  if (type == "Histogram") {
    m_Histogram::DensityArray bins;
    std::istringstream stream(fields[1]);
    double lower = 0;
    double upper = 0;
    double count = 0;
    char colon = 0;
    double total = 0;
    while (stream >> lower >> colon >> upper >> colon >> count) {
      bins.insert(bins.end(), {lower, upper, count / (upper - lower)});
      total += count;
    }
    for (std::size_t i = 2; i < bins.size(); i += 3) bins[i] /= total;
    return {laws::Histogram(bins).moments(limits), laws::Histogram(bins).integratedMoments(limits)};
  }
  const auto orEmpty = [](const std::string& text) { return text.empty() ? Variant{} : text; };
  c_Distribution d;
  d.distType(type);
  set(d, {orEmpty(fields[1]), orEmpty(fields[2]), orEmpty(fields[3]), orEmpty(fields[4])});
  d.ltl = orEmpty(fields[5]);
  d.utl = orEmpty(fields[6]);
  std::string cause;
  EXPECT_TRUE(d.ParamsOK(cause)) << cause;
  const double integrated = d.CalcMean();
  return {laws::Moments{d.mean(), d.StDev()}, laws::Moments{integrated, d.CalcStdev(integrated)}};
}

TEST(Moments, AgreeWithHighPrecisionReferences) {
  std::ifstream file(PALVEX_TEST_DATA "/moments.csv");
  std::map<std::string, int> rows;
  for (std::string row; std::getline(file, row);) {
    std::vector<std::string> fields;
    std::istringstream stream(row);
    for (std::string field; std::getline(stream, field, ',');) fields.push_back(field);
    ASSERT_EQ(fields.size(), 9U) << row;
    const laws::Moments reference{std::stod(fields[7]), std::stod(fields[8])};
    for (const laws::Moments& found : momentsOf(fields)) expectAgreement(found, reference, row);
    ++rows[fields[0]];
  }
  EXPECT_EQ(rows.size(), 9U);  // Johnson curves have references of their own
  for (const auto& [type, count] : rows) EXPECT_GE(count, 20) << type;
}

TEST(Moments, ClosedFormsAnswerNothingWhereTheyWouldCancel) {
  EXPECT_TRUE(laws::Normal(0, 1).moments({1, 2}));
  EXPECT_FALSE(laws::Normal(0, 1).moments({30, {}}));
  EXPECT_FALSE(laws::Normal(0, 1).moments({1, 1.0001}));
  EXPECT_FALSE(laws::Gamma(2, 1, 0).moments({480, {}}));
  EXPECT_FALSE(laws::Beta(2, 3, 0, 1).moments({0.9999999, {}}));
  EXPECT_FALSE(laws::Lognormal(0, 1e-6, 0).moments({1.000001, {}}));
  EXPECT_FALSE(laws::Weibull(2000, 1, 0).moments({}));
}

TEST(Moments, AverageOfTheDrawsOnAFineGrid) {
  const struct {
    const char* type;
    Parameters parameters;
  } cases[] = {{"Normal", {3, 2}},           {"Uniform", {0, 8}},      {"Triangular", {0, 3, 8}},
               {"Exponential", {0.5, 0}},    {"Weibull", {1.5, 3, 0}}, {"Lognormal", {1, 0.5, 0}},
               {"Johnson", {3, 2, 0.5, 3.2}}};
  for (const auto& c : cases) {
    for (int kind = 0; kind < 5; ++kind) {
      c_Distribution d;
      d.distType(c.type);
      set(d, c.parameters);
      const Limits limits = limitsOf(kind, 2, 4);
      if (limits.lower) d.ltl = *limits.lower;
      if (limits.upper) d.utl = *limits.upper;
      std::string cause;
      ASSERT_TRUE(d.ParamsOK(cause)) << c.type << cause;
      constexpr int n = 100'000;
      double sum = 0;
      for (int i = 0; i < n; ++i) sum += d.RandVal((i + 0.5) / n);
      EXPECT_NEAR(sum / n, d.mean(), 3e-5 * d.StDev()) << c.type << ' ' << kind;
    }
  }
}

}  // namespace
}  // namespace palvex
