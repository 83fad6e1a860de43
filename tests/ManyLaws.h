#pragma once

#include <array>
#include <vector>

#include "engine/Law.h"

namespace palvex {

/// One or more laws of every type, absurd ones too.
inline std::vector<Law> manyLaws() {
  const std::array data{1.0, 2.0, 2.0, 3.0, 5.0, 8.0};
  const std::array edges{0.0, 1.0, 2.0, 3.0, 5.0};
  const std::array counts{2.0, 0.0, 3.0, 0.0};
  return {
      Law::normal(-3, 0.5),          Law::normal(1e9, 1e-3),     Law::normal(3, 0),
      Law::uniform(-1e308, 1.5e308), Law::uniform(2, 3),         Law::triangular(0, 0, 1),
      Law::triangular(-1, 4, 4),     Law::triangular(1, 1.5, 7), Law::triangular(0, 1e-300, 1e200),
      Law::lognormal(1, 2, -3),      Law::lognormal(0, 20),      Law::exponential(3, 1),
      Law::exponential(1e-300),      Law::weibull(0.1, 2),       Law::weibull(30, 1, 5),
      Law::beta(0.01, 0.02),         Law::beta(1, 1, -5, 5),     Law::beta(1e5, 3),
      Law::beta(1e-3, 1e4),          Law::gamma(0.01, 1),        Law::gamma(1, 2, 3),
      Law::gamma(1e7, 0.5),          Law::johnson(0, 1, 0.5, 4), Law::johnson(5, 2, -0.5, 2.5),
      Law::johnson(0, 1, -1, 4.83),  Law::johnson(10, 3, 0, 3),  Law::pert(1, 2, 9),
      Law::lognormalMean(10, 3),     Law::histogram(data),       Law::histogram(edges, counts)};
}

/// A law whole, between limits and outside them.
inline std::vector<Law> withLimits(const Law& law) {
  std::vector<Law> cut{law};
  const double a = law.quantile(0.2);
  const double b = law.quantile(0.7);
  if (law.support().lower < a && a < b && b < law.support().upper) {
    cut.push_back(law.between(a, b));
    cut.push_back(law.between(b, a));
    cut.push_back(law.between(b, {}));
    cut.push_back(law.between({}, a));
  }
  return cut;
}

}  // namespace palvex
