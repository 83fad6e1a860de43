#pragma once

#include "laws/Moments.h"
#include "laws/Support.h"

namespace palvex::laws {

/// The Weibull law with the density (shape/scale) z^(shape - 1) exp(-z^shape),
/// z = (x - minimum)/scale, for x >= minimum: mean minimum + scale gamma(1 + 1/shape).
class Weibull {
 public:
  /// @param shape,scale  > 0
  Weibull(double shape, double scale, double minimum)
      : shape_(shape), scale_(scale), minimum_(minimum) {}

  [[nodiscard]] Support support() const noexcept;

  /// The density at x, from logarithms and ratios, which do not leave the range of doubles before
  /// the density does. Infinite at a pole.
  [[nodiscard]] double density(double x) const noexcept;

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

}  // namespace palvex::laws
