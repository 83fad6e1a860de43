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

  /// The density at x, from logarithms and ratios, which do not leave the range of doubles before
  /// the density does. Infinite at a pole.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its logarithm, also where the density is no double.
  [[nodiscard]] double logDensity(double x) const noexcept;

  /// The probabilities up to x and above it, each with its own relative accuracy.
  [[nodiscard]] Tails tails(double x) const noexcept {
    if (x >= maximum_) return {1, 0};
    if (x < minimum_) return {0, 1};
    return {extent_.below(x), extent_.above(x)};
  }
  /// The value with the probability p up to it and q = 1 - p above it, solved in the smaller one.
  [[nodiscard]] double quantile(double p, double q) const noexcept {
    return extent_.unit *
           ((p < q ? extent_.lower : extent_.upper) + extent_.width * (p < q ? p : -q));
  }

  /// Mean and standard deviation of what the limits keep, in closed form. Error 11 when they keep
  /// no probability.
  [[nodiscard]] Moments moments(const Limits& limits) const;

  /// The same by numerical integration, which holds everywhere.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  [[nodiscard]] Uniform half() const { return {minimum_ / 2, maximum_ / 2}; }

  double minimum_;
  double maximum_;
  Extent extent_;
};

}  // namespace palvex::laws
