#include "laws/Exponential.h"

#include <cmath>
#include <limits>

namespace palvex::laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Below this width the moments' terms cancel, and five terms of their series are exact to 1e-13.
constexpr double narrow = 0.25;

/// Mean of the unit exponential below `width`.
double meanBelow(double width) {
  if (width < narrow) {
    const double square = width * width;
    return width / 2 -
           square * (1 / 12. -
                     square * (1 / 720. - square * (1 / 30240. -
                                                    square * (1 / 1209600. - square / 47900160))));
  }
  return std::isinf(width) ? 1 : 1 - width / std::expm1(width);
}

/// Variance of the unit exponential below `width`.
double varianceBelow(double width) {
  if (width < narrow) {
    const double square = width * width;
    return square *
           (1 / 12. -
            square * (1 / 240. - square * (1 / 6048. - square * (1 / 172800. - square / 5322240))));
  }
  const double ratio = width > 1400 ? 0 : width / 2 / std::sinh(width / 2);
  return (1 - ratio) * (1 + ratio);
}

}  // namespace

Support Exponential::support() const noexcept {
  return {minimum_, infinity};
}

double Exponential::density(double x) const noexcept {
  return lambda_ > 0 && x >= minimum_ ? std::exp(-lambda_ * (x - minimum_)) * lambda_ : 0;
}

double Exponential::logDensity(double x) const noexcept {
  return x >= minimum_ ? std::log(lambda_) - lambda_ * (x - minimum_) : -infinity;
}

Moments Exponential::moments(const Limits& limits) const {
  Mixture kept;
  for (const auto& [lower, upper] : KeptIntervals(limits, minimum_, infinity)) {
    const double width = lambda_ * (upper - lower);
    kept.add({-lambda_ * (lower - minimum_) + std::log(-std::expm1(-width)),
              {lower + meanBelow(width) / lambda_, std::sqrt(varianceBelow(width)) / lambda_}});
  }
  return kept.moments();
}

Moments Exponential::integratedMoments(const Limits& limits) const {
  Mixture kept;
  for (const auto& [lower, upper] : KeptIntervals(limits, minimum_, infinity)) {
    kept.add(integratedPiece(
        lower, {0, lambda_ * (upper - lower)}, LinearScale(1 / lambda_),
        [](double t) { return -t; }, -lambda_ * (lower - minimum_)));
  }
  return kept.moments();
}

}  // namespace palvex::laws
