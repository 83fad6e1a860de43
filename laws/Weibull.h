#pragma once

#include <cmath>

#include "laws/Moments.h"
#include "laws/Support.h"
#include "laws/Tails.h"
#include "numerics/Power.h"

namespace palvex::laws {

/// The Weibull law with the density (shape/scale) z^(shape - 1) exp(-z^shape),
/// z = (x - minimum)/scale, for x >= minimum: mean minimum + scale gamma(1 + 1/shape).
class Weibull {
 public:
  /// @param shape,scale  > 0
  Weibull(double shape, double scale, double minimum)
      : shape_(shape), scale_(scale), minimum_(minimum) {}

  /// [minimum, infinity)
  [[nodiscard]] Support support() const noexcept;

  /// The density at x, 0 below the minimum and, with a shape below 1, infinite at it. Worked out
  /// from logarithms, which do not leave the range of doubles before the density does.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its natural logarithm, also where the density itself overflows or underflows.
  [[nodiscard]] double logDensity(double x) const noexcept;

  /// The probabilities up to x and above it, each with its own relative accuracy.
  [[nodiscard]] Tails tails(double x) const noexcept {
    if (x <= minimum_) return {0, 1};
    const double z = (x - minimum_) / scale_;
    // With very small shapes the tails matter even where z is too small or too large for a double.
    const double power = std::isnormal(z) ? powerOf(z, shape_) : std::exp(shape_ * logShare(x));
    return {-std::expm1(-power), std::exp(-power)};
  }
  /// The quantile: the value with the probability p up to it and q = 1 - p above it, worked out
  /// from the smaller of the two.
  [[nodiscard]] double quantile(double p, double q) const noexcept {
    // Only a small p has digits that the rounding of q = 1 - p has lost.
    const double power = p < 0.01 ? -std::log1p(-p) : -std::log(q);
    const double z = powerOf(power, 1 / shape_);
    if (std::isnormal(z)) return minimum_ + scale_ * z;
    return minimum_ + std::exp(std::log(power) / shape_ + std::log(scale_));
  }

  /// Mean and standard deviation of what the limits keep, in closed form; nothing where its terms
  /// would cancel.
  [[nodiscard]] std::optional<Moments> moments(const Limits& limits) const;

  /// The same by numerical integration, accurate for any limits. Errors: see Moments.h.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  /// ln z, also where z itself overflows or underflows.
  [[nodiscard]] double logShare(double x) const noexcept {
    return std::log(x - minimum_) - std::log(scale_);
  }

  double shape_;
  double scale_;
  double minimum_;
};

}  // namespace palvex::laws
