#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "Fault.h"
#include "numerics/m_Integration.h"

namespace palvex::m_Integration {
namespace {

TEST(Integration, KnownIntegrals) {
  const double pi = std::numbers::pi;
  const struct {
    const char* what;
    double (*f)(double);
    std::vector<double> breaks;
    double integral;
  } cases[] = {
      {"polynomial", [](double x) { return 5 * x * x * x * x; }, {0, 2}, 32},
      {"reaching backwards", [](double x) { return x; }, {-3, 1}, -4},
      {"bell", [](double x) { return std::exp(-x * x); }, {-10, 0, 10}, std::sqrt(pi)},
      {"narrow peak",
       [](double x) { return 1e-4 / (x * x + 1e-8); },
       {-1, 0.3, 1},
       2 * std::atan(1e4)},
      {"waves", [](double x) { return std::cos(100 * x); }, {0, 0.1}, std::sin(10.0) / 100},
      {"kink", [](double x) { return std::abs(x - 0.3); }, {0, 1}, 0.29},
      {"root at the end", [](double x) { return std::sqrt(x); }, {0, 1}, 2.0 / 3},
      {"singular end", [](double x) { return 1 / std::sqrt(x); }, {0, 1}, 2},
      {"nothing", [](double) { return 0.0; }, {0, 1}, 0},
      {"minute", [](double x) { return 1e-300 * x; }, {0, 1}, 5e-301},
  };
  for (const auto& c : cases) {
    EXPECT_NEAR(integrate(c.f, c.breaks), c.integral, 1e-12 * std::abs(c.integral)) << c.what;
  }
}

TEST(Integration, WhatHasNoIntegralIsAFault) {
  const double infinity = std::numeric_limits<double>::infinity();
  const auto fault = [](double (*f)(double), std::vector<double> breaks) {
    return faultNumber([&] { return integrate(f, breaks); });
  };
  EXPECT_EQ(fault([](double x) { return 1 / (x - 0.3); }, {0, 1}), fault::overflow);
  EXPECT_EQ(fault([](double x) { return std::log(x); }, {-1, 1}), fault::overflow);
  EXPECT_EQ(fault([](double) { return 1.0; }, {0, infinity}), fault::overflow);
}

}  // namespace
}  // namespace palvex::m_Integration
