#pragma once

#include <cmath>

#include "laws/Moments.h"
#include "laws/StandardNormal.h"
#include "laws/Support.h"
#include "laws/Tails.h"

namespace palvex::laws {

/// The lognormal law of minimum + exp(location + scale Z), Z standard normal: density
/// exp(-z^2/2) / (sqrt(2 pi) scale (x - minimum)), z = (ln(x - minimum) - location)/scale, for
/// x > minimum; mean minimum + exp(location + scale^2/2).
class Lognormal {
 public:
  /// @param scale  > 0
  Lognormal(double location, double scale, double minimum)
      : location_(location), scale_(scale), minimum_(minimum) {}

  /// (minimum, infinity)
  [[nodiscard]] Support support() const noexcept;

  /// The density at x, 0 at and below the minimum.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its natural logarithm, also where the density itself overflows or underflows.
  [[nodiscard]] double logDensity(double x) const noexcept;

  /// The probabilities up to x and above it, each with its own relative accuracy.
  [[nodiscard]] Tails tails(double x) const noexcept {
    if (x <= minimum_) return {0, 1};
    return normalTails((std::log(x - minimum_) - location_) / scale_);
  }
  /// The quantile: the value with the probability p up to it and q = 1 - p above it, worked out
  /// from the smaller of the two.
  [[nodiscard]] double quantile(double p, double q) const noexcept {
    return fromDeviate(normalQuantile(p, q));
  }
  /// The value of a standard normal deviate.
  [[nodiscard]] double fromDeviate(double z) const noexcept {
    return minimum_ + std::exp(location_ + scale_ * z);
  }

  /// The standard deviation; infinite where it exceeds the double range.
  [[nodiscard]] double standardDeviation() const noexcept;

  /// Mean and standard deviation of what the limits keep, in closed form; nothing where its terms
  /// would cancel.
  [[nodiscard]] std::optional<Moments> moments(const Limits& limits) const;

  /// The same by numerical integration, accurate for any limits. Errors: see Moments.h.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  double location_;
  double scale_;
  double minimum_;
};

}  // namespace palvex::laws
