#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

/// The point where a tail has a given probability, for laws whose density is log-concave in a
/// variable t that runs over the whole line: ln x for gamma laws, ln(x/(1 - x)) for beta laws.
namespace palvex {

/// A tail that grows with t, at one t.
struct Tail {
  double probability;  ///< of the tail at t
  double density;      ///< derivative of `probability` by t
  double slope;        ///< derivative of ln density
  double curvature;    ///< second derivative of ln density, times -1: >= 0
};

/// How far to go in t.
struct TailStep {
  double change;  ///< signed, to be added to t
  double error;   ///< the size of the first term that is neglected
};

/// The step in t from a tail to the one with the probability `target` > 0: the series, to the third
/// order, of t as a function of ln P. This is one order beyond Halley's step and takes no further
/// evaluation.
inline TailStep tailStep(const Tail& tail, double target) noexcept {
  const double relative = (target - tail.probability) / tail.probability;
  const double logarithm = std::abs(relative) < 0.5 ? std::log1p(relative)
                                                    : std::log(target) - std::log(tail.probability);
  const double hazard = tail.density / tail.probability;  // d ln P / dt
  const double newton = logarithm / hazard;
  const double bend = tail.slope - hazard;
  const double scale =
      std::abs(newton) * std::max({std::abs(bend), std::sqrt(tail.curvature), hazard, 1.0});
  if (!(scale < 0.5)) return {newton, std::abs(newton)};
  const double third = tail.curvature + bend * (hazard + 2 * bend);
  return {newton * (1 - newton * (bend / 2 - newton * third / 6)),
          std::abs(newton) * scale * scale * scale};
}

/// Moves a point until the tail there is `target`. ln P is concave in t, so that steps from the
/// left never go too far; those from the right are kept within the bracket. 100 steps at most.
/// @param tailAt  point -> Tail
/// @param moved   (point, change of t) -> point
template <class Point, class TailAt, class Moved>
Point tailQuantile(Point point, double target, TailAt&& tailAt, Moved&& moved) noexcept {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double precision = std::numeric_limits<double>::epsilon() / 2;
  double left = -infinity;  // the bracket of the quantile, in t from the point
  double right = infinity;
  double longest = 4;
  for (int steps = 0; steps < 100; ++steps) {
    const Tail tail = tailAt(point);
    if (tail.probability == target) break;
    const bool isLeft = tail.probability < target;
    (isLeft ? left : right) = 0;
    TailStep step{isLeft ? infinity : -infinity, infinity};
    if (tail.probability > 0 && tail.density > 0) step = tailStep(tail, target);
    if (!(step.change >= -longest && step.change < infinity)) {
      step = {isLeft ? longest : -longest, infinity};
      longest *= 2;
    }
    if (!(left <= step.change && step.change <= right)) step = {(left + right) / 2, infinity};
    const Point next = moved(point, step.change);
    const bool stands = next == point;
    point = next;
    if (stands || step.error <= precision) break;
    left -= step.change;
    right -= step.change;
  }
  return point;
}

}  // namespace palvex
