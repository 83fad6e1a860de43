#pragma once

#include "laws/Moments.h"
#include "laws/Support.h"

namespace palvex::laws {

/// The gamma law with the density z^(shape - 1) exp(-z) / (scale gamma(shape)),
/// z = (x - minimum)/scale, for x >= minimum: mean minimum + shape scale.
class Gamma {
 public:
  /// @param shape,scale  > 0
  Gamma(double shape, double scale, double minimum)
      : shape_(shape), scale_(scale), minimum_(minimum) {}

  [[nodiscard]] Support support() const noexcept;

  /// The density at x, from logarithms and ratios, which do not leave the range of doubles before
  /// the density does. Infinite at a pole.
  [[nodiscard]] double density(double x) const;

  /// Mean and standard deviation of what the limits keep, in closed form; nothing where its terms
  /// would cancel.
  [[nodiscard]] std::optional<Moments> moments(const Limits& limits) const;

  /// The same by numerical integration, which holds everywhere.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  double shape_;
  double scale_;
  double minimum_;
};

/// Adds factor (P(a, upper) - P(a, lower)), P the incomplete gamma ratio, to the sum of an order,
/// from the smaller tails.
/// @param a       > 0
/// @param factor  relative error 6e-15
/// @param lower   >= 0; `upper` may be infinite
void addRatio(PartialMoments& moments, int order, double factor, double a, double lower,
              double upper);

}  // namespace palvex::laws
