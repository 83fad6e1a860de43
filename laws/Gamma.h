#pragma once

#include "laws/Moments.h"
#include "laws/Support.h"
#include "laws/Tails.h"
#include "numerics/m_GammaFunctions.h"

namespace palvex::laws {

/// The gamma law with the density z^(shape - 1) exp(-z) / (scale gamma(shape)),
/// z = (x - minimum)/scale, for x >= minimum: mean minimum + shape scale.
class Gamma {
 public:
  /// @param shape,scale  > 0
  Gamma(double shape, double scale, double minimum)
      : shape_(shape), scale_(scale), minimum_(minimum), prepared_(shape > 0 ? shape : 1) {}

  /// [minimum, infinity)
  [[nodiscard]] Support support() const noexcept;

  /// The density of the standardised variable (x - minimum)/scale at x's place: what `density` is
  /// before it is divided by the scale. Infinite at a pole.
  [[nodiscard]] double standardDensity(double x) const noexcept;
  /// The density at x.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its natural logarithm, also where the density itself overflows or underflows.
  [[nodiscard]] double logDensity(double x) const noexcept;

  /// The probabilities up to x and above it, each with its own relative accuracy.
  [[nodiscard]] Tails tails(double x) const noexcept;
  /// The quantile: the value with the probability p up to it and q = 1 - p above it, worked out
  /// from the smaller of the two.
  [[nodiscard]] double quantile(double p, double q) const noexcept;

  /// Mean and standard deviation of what the limits keep, in closed form; nothing where its terms
  /// would cancel.
  [[nodiscard]] std::optional<Moments> moments(const Limits& limits) const;

  /// The same by numerical integration, accurate for any limits. Errors: see Moments.h.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  double shape_;
  double scale_;
  double minimum_;
  m_Gamma::IncompleteGamma prepared_;
};

/// Adds factor (P(a, upper) - P(a, lower)), P the incomplete gamma ratio, to the sum of an order,
/// from the smaller tails.
/// @param a       > 0
/// @param factor  relative error 6e-15
/// @param lower   >= 0; `upper` may be infinite
void addRatio(PartialMoments& moments, int order, double factor, double a, double lower,
              double upper);

}  // namespace palvex::laws
