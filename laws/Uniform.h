#pragma once

#include "laws/Extent.h"
#include "laws/Moments.h"
#include "laws/Support.h"
#include "laws/Tails.h"

namespace palvex::laws {

/// The uniform law with the density 1/(maximum - minimum) on [minimum, maximum]: mean
/// (minimum + maximum)/2. With equal bounds a point mass.
class Uniform {
 public:
  /// minimum <= maximum
  Uniform(double minimum, double maximum)
      : minimum_(minimum), maximum_(maximum), extent_(minimum, maximum) {}

  /// [minimum, maximum]
  [[nodiscard]] Support support() const noexcept;

  /// The density at x, 0 outside the bounds; of a point mass 1 at its value.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its natural logarithm, also where the density itself overflows or underflows.
  [[nodiscard]] double logDensity(double x) const noexcept;

  /// The probabilities up to x and above it, each with its own relative accuracy.
  [[nodiscard]] Tails tails(double x) const noexcept {
    if (x >= maximum_) return {1, 0};
    if (x < minimum_) return {0, 1};
    return {extent_.below(x), extent_.above(x)};
  }
  /// The quantile: the value with the probability p up to it and q = 1 - p above it, worked out
  /// from the smaller of the two.
  [[nodiscard]] double quantile(double p, double q) const noexcept {
    return extent_.unit *
           ((p < q ? extent_.lower : extent_.upper) + extent_.width * (p < q ? p : -q));
  }

  /// Mean and standard deviation of what the limits keep, in closed form. Error 11 when they keep
  /// no probability.
  [[nodiscard]] Moments moments(const Limits& limits) const;

  /// The same by numerical integration, accurate for any limits. Errors: see Moments.h.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  [[nodiscard]] Uniform half() const { return {minimum_ / 2, maximum_ / 2}; }

  double minimum_;
  double maximum_;
  Extent extent_;
};

}  // namespace palvex::laws
