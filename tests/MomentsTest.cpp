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

namespace palvex {
namespace {

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

void set(c_Distribution& d, const Parameters& p) {
  d.param1 = p[0];
  d.param2 = p[1];
  d.param3 = p[2];
  d.param4 = p[3];
}

TEST(Moments, ClosedFormAndIntegrationAgree) {
  for (const auto& [type, parameters] : randomParameters) {
    RandomSource random;
    int compared = 0;
    for (int i = 0; i < 600; ++i) {
      c_Distribution d;
      std::string cause;
      d.distType(type);
      set(d, parameters(random));
      ASSERT_TRUE(d.ParamsOK(cause)) << type << cause;
      const double x = d.RandVal(random.probability());
      const double y = random.uniform(0, 1) < 0.3 ? x + d.StDev() * random.magnitude(-6, 0)
                                                  : d.RandVal(random.probability());
      switch (i % 4) {
        case 0:
          break;
        case 1:
          (random.heads() ? d.ltl : d.utl) = x;
          break;
        case 2:
          d.ltl = std::min(x, y);
          d.utl = std::max(x, y);
          break;
        case 3:
          d.ltl = std::max(x, y);
          d.utl = std::min(x, y);
          break;
      }
      if (!d.ParamsOK(cause)) continue;
      if (faultNumber([&] { return d.mean(); }) != 0) {
        // A limit at the very end of the support: both say that nothing is kept.
        EXPECT_EQ(faultNumber([&] { return d.mean(); }), fault::divisionByZero) << type;
        EXPECT_EQ(faultNumber([&] { return d.CalcMean(); }), fault::divisionByZero) << type;
        continue;
      }
      const double mean = d.mean();
      const double sd = d.StDev();
      const std::string what = type + ' ' + d.param1.toText() + ' ' + d.param2.toText() + ' ' +
                               d.param3.toText() + ' ' + d.param4.toText() + " in [" +
                               d.ltl.toText() + ", " + d.utl.toText() + ']';
      const double calcMean = d.CalcMean();
      const double calcSd = d.CalcStdev(calcMean);
      EXPECT_NEAR(calcMean, mean, 1e-10 * sd + 4e-16 * std::abs(mean)) << what;
      EXPECT_NEAR(calcSd, sd, 1e-10 * sd) << what;
      ++compared;
    }
    EXPECT_GE(compared, 500) << type;
  }
}

TEST(Moments, AgreeWithHighPrecisionReferences) {
  std::ifstream file(PALVEX_TEST_DATA "/moments.csv");
  std::map<std::string, int> rows;
  for (std::string row; std::getline(file, row);) {
    std::vector<std::string> fields;
    std::istringstream stream(row);
    for (std::string field; std::getline(stream, field, ',');) fields.push_back(field);
    ASSERT_EQ(fields.size(), 9U) << row;
    const auto orEmpty = [](const std::string& text) { return text.empty() ? Variant{} : text; };
    c_Distribution d;
    d.distType(fields[0]);
    set(d, {orEmpty(fields[1]), orEmpty(fields[2]), orEmpty(fields[3]), orEmpty(fields[4])});
    d.ltl = orEmpty(fields[5]);
    d.utl = orEmpty(fields[6]);
    std::string cause;
    ASSERT_TRUE(d.ParamsOK(cause)) << row << cause;
    const double mean = std::stod(fields[7]);
    const double sd = std::stod(fields[8]);
    const double meanError = 1e-10 * sd + 4e-16 * std::abs(mean);  // the mean is a double
    EXPECT_NEAR(d.mean(), mean, meanError) << row;
    EXPECT_NEAR(d.StDev(), sd, 1e-10 * sd) << row;
    EXPECT_NEAR(d.CalcMean(), mean, meanError) << row;
    EXPECT_NEAR(d.CalcStdev(d.CalcMean()), sd, 1e-10 * sd) << row;
    ++rows[fields[0]];
  }
  EXPECT_EQ(rows.size() + 1,
            randomParameters.size());  // Johnson curves have references of their own
  for (const auto& [type, count] : rows) EXPECT_GE(count, 20) << type;
}

}  // namespace
}  // namespace palvex
