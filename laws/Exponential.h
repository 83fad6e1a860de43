#pragma once

#include <cmath>

#include "laws/Moments.h"
#include "laws/Support.h"
#include "laws/Tails.h"

namespace palvex::laws {

/// The exponential law with the density lambda exp(-lambda (x - minimum)) for x >= minimum: mean
/// minimum + 1/lambda.
class Exponential {
 public:
  /// @param lambda  a rate, > 0
  Exponential(double lambda, double minimum) : lambda_(lambda), minimum_(minimum) {}

  /// [minimum, infinity)
  [[nodiscard]] Support support() const noexcept;

  /// The density at x, 0 below the minimum.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its natural logarithm, also where the density itself overflows or underflows.
  [[nodiscard]] double logDensity(double x) const noexcept;

  /// The probabilities up to x and above it, each with its own relative accuracy.
  [[nodiscard]] Tails tails(double x) const noexcept {
    if (x <= minimum_) return {0, 1};
    const double z = lambda_ * (x - minimum_);
    return {-std::expm1(-z), std::exp(-z)};
  }
  /// The quantile: the value with the probability p up to it and q = 1 - p above it, worked out
  /// from the smaller of the two.
  [[nodiscard]] double quantile(double p, double q) const noexcept {
    // Only a small p has digits that the rounding of q = 1 - p has lost.
    return minimum_ - (p < 0.01 ? std::log1p(-p) : std::log(q)) / lambda_;
  }

  /// Mean and standard deviation of what the limits keep, in closed form. Error 11 when they keep
  /// no probability.
  [[nodiscard]] Moments moments(const Limits& limits) const;

  /// The same by numerical integration, accurate for any limits. Errors: see Moments.h.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  double lambda_;
  double minimum_;
};

}  // namespace palvex::laws
