#include <gtest/gtest.h>

#include <cmath>

#include "Fault.h"
#include "engine/c_Distribution.h"

namespace palvex {
namespace {

TEST(Guess, EveryTypeAtEverySign) {
  const double k = 0.886226925452761;
  const double ln2 = std::log(2.0);
  const struct {
    const char* type;
    double x;
    std::array<double, 4> guesses;
  } cases[] = {
      {"Normal", 50, {50, 5}},
      {"Normal", 0, {0, 0.1}},
      {"Normal", -20, {-20, 2}},
      {"Uniform", 10, {9, 11}},
      {"Uniform", 0, {0, 0.1}},
      {"Uniform", -10, {-11, -9}},
      {"Triangular", 10, {9, 10, 11}},
      {"Triangular", 0, {-0.1, 0, 0.1}},
      {"Triangular", -10, {-11, -10, -9}},
      {"Exponential", 20, {0.5, 18}},
      {"Exponential", 0, {1, 0}},
      {"Exponential", -20, {0.5, -22}},
      {"Weibull", 5, {2, 5 / k, 0}},
      {"Weibull", 0, {2, 1, -k}},
      {"Weibull", -1, {2, 1, -1.886226925452761}},
      {"Lognormal", 3, {std::log(3) - ln2 / 2, std::sqrt(ln2), 0}},
      {"Lognormal", 0, {0, std::sqrt(ln2), 0}},
      {"Lognormal", -3, {0, std::sqrt(ln2), -3 - std::sqrt(2.0)}},
      {"Gamma", 5, {2, 2.5, 0}},
      {"Gamma", 0, {2, 1, 0}},
      {"Gamma", -5, {2, 1, -7}},
      {"Beta", 10, {2, 2, 9, 11}},
      {"Beta", 0, {2, 2, 0, 1}},
      {"Beta", -10, {2, 2, -11, -9}},
      {"Johnson", 50, {50, 5, 0, 3}},
      {"Johnson", 0, {0, 0.1, 0, 3}},
      {"Histogram", 5, {}},
  };
  c_Distribution d;
  EXPECT_EQ(d.GuessParamValue(1, 5), 0);
  for (const auto& c : cases) {
    d.distType(c.type);
    for (std::int16_t i = 1; i <= 4; ++i) {
      const double expected = c.guesses[static_cast<std::size_t>(i - 1)];
      EXPECT_NEAR(d.GuessParamValue(i, c.x), expected, 4e-16 * std::abs(expected))
          << c.type << ' ' << i << ' ' << c.x;
    }
    for (int i : {-32768, -1, 0, 5, 32767}) {
      EXPECT_EQ(d.GuessParamValue(static_cast<std::int16_t>(i), c.x), 0);
    }
  }
}

TEST(Guess, AFaultComesAsRaised) {
  c_Distribution d;
  d.distType("Exponential");
  const auto fault = faultOf([&] { return d.GuessParamValue(1, 5e-324); });
  ASSERT_TRUE(fault);
  EXPECT_EQ(fault->number(), fault::overflow);
  EXPECT_EQ(fault->source(), "palvex");
}

}  // namespace
}  // namespace palvex
