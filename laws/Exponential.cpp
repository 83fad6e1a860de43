#include "laws/Exponential.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace palvex::laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Below this width the moments' terms cancel, and five terms of their series are exact to 1e-13.
constexpr double narrow = 0.25;

/// Mean and standard deviation of the unit exponential below a narrow width, in widths.
Moments momentsInNarrow(double width) {
  const double square = width * width;
  const double mean =
      0.5 - width * (1 / 12. -
                     square * (1 / 720. - square * (1 / 30240. -
                                                    square * (1 / 1209600. - square / 47900160))));
  const double variance =
      1 / 12. -
      square * (1 / 240. - square * (1 / 6048. - square * (1 / 172800. - square / 5322240)));
  return {mean, std::sqrt(variance)};
}

/// Mean and standard deviation of the unit exponential below a width that is not narrow.
Moments momentsBelow(double width) {
  if (width > 1400) return {1, 1};
  const double ratio = width / 2 / std::sinh(width / 2);
  return {1 - width / std::expm1(width), std::sqrt((1 - ratio) * (1 + ratio))};
}

}  // namespace

Support Exponential::support() const noexcept {
  return {minimum_, infinity};
}

double Exponential::density(double x) const noexcept {
  return x >= minimum_ ? std::exp(-lambda_ * (x - minimum_)) * lambda_ : 0;
}

double Exponential::logDensity(double x) const noexcept {
  return x >= minimum_ ? std::log(lambda_) - lambda_ * (x - minimum_) : -infinity;
}

Moments Exponential::moments(const Limits& limits) const {
  Mixture kept;
  for (const auto& [lower, upper] : KeptIntervals(limits, minimum_, infinity)) {
    const double length = upper - lower;
    const double width = lambda_ * length;
    const bool isNarrow = width < narrow;
    const Moments standard = isNarrow ? momentsInNarrow(width) : momentsBelow(width);
    const double unit = isNarrow ? length : 1 / lambda_;
    kept.add({-lambda_ * distance(lower, minimum_) + std::log(-std::expm1(-width)),
              {lower, unit * standard.mean},
              unit * standard.sd});
  }
  return kept.moments();
}

Moments Exponential::integratedMoments(const Limits& limits) const {
  Mixture kept;
  for (const auto& [lower, upper] : KeptIntervals(limits, minimum_, infinity)) {
    const double unit = std::min(upper - lower, 1 / lambda_);
    const double rate = lambda_ * unit;
    kept.add(integratedPiece(
        {lower, 0}, {0, (upper - lower) / unit}, LinearScale(unit),
        [rate](double t) { return -rate * t; },
        std::log(rate) - lambda_ * distance(lower, minimum_)));
  }
  return kept.moments();
}

}  // namespace palvex::laws
