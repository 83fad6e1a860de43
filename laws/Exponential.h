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

  /// The density at x, from logarithms and ratios, which do not leave the range of doubles before
  /// the density does. Infinite at a pole.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its logarithm, also where the density is no double.
  [[nodiscard]] double logDensity(double x) const noexcept;

  /// The probabilities up to x and above it, each with its own relative accuracy.
  [[nodiscard]] Tails tails(double x) const noexcept {
    if (x <= minimum_) return {0, 1};
    const double z = lambda_ * (x - minimum_);
    return {-std::expm1(-z), std::exp(-z)};
  }
  /// The value with the probability p up to it and q = 1 - p above it, solved in the smaller one.
  [[nodiscard]] double quantile(double p, double q) const noexcept {
    // Only a small p has digits that q has lost.
    return minimum_ - (p < 0.01 ? std::log1p(-p) : std::log(q)) / lambda_;
  }

  /// Mean and standard deviation of what the limits keep, in closed form. Error 11 when they keep
  /// no probability.
  [[nodiscard]] Moments moments(const Limits& limits) const;

  /// The same by numerical integration, which holds everywhere.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  double lambda_;
  double minimum_;
};

}  // namespace palvex::laws
