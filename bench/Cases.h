#pragma once

#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "engine/c_Distribution.h"

/// The distributions that are timed, and the loop that times one function on them. A benchmark is
/// named "<what>/<case>/<who>"; all that share the first two parts do the same work at the same
/// points, so that their ratio means something.
namespace palvex::bench {

/// A power of two, and enough that no branch predictor learns the sequence by heart.
inline constexpr std::size_t pointCount = std::size_t{1} << 14;
using Points = std::vector<double>;
using Parameters = std::array<double, 4>;

struct Case {
  std::string name;
  std::string type;
  Parameters parameters;
  bool density = true;  // false where a factor of the density overflows, which is an error

  [[nodiscard]] std::unique_ptr<c_Distribution> object(const Variant& lower = {},
                                                       const Variant& upper = {}) const;
  /// Where densities and probabilities are taken: the quantiles of `probabilities()`.
  [[nodiscard]] const Points& arguments() const;
};

/// Every type, those with several algorithms inside more than once.
const std::vector<Case>& cases();
const Case& caseNamed(const std::string& name);

/// Evenly spaced in (0, 1), shuffled.
const Points& probabilities();

/// Times `function(point)`, inlined into the loop where the compiler can.
template <class Function>
void timeOver(benchmark::State& state, const Points& points, Function&& function) {
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(function(points[i]));
    i = (i + 1) % pointCount;
  }
}

}  // namespace palvex::bench
