#pragma once

#include "laws/Moments.h"
#include "laws/Support.h"

namespace palvex::laws {

/// The uniform law with the density 1/(maximum - minimum) on [minimum, maximum]: mean
/// (minimum + maximum)/2. With equal bounds a point mass.
class Uniform {
 public:
  /// minimum <= maximum
  Uniform(double minimum, double maximum) : minimum_(minimum), maximum_(maximum) {}

  [[nodiscard]] Support support() const noexcept;

  /// The density at x, from logarithms and ratios, which do not leave the range of doubles before
  /// the density does. Infinite at a pole.
  [[nodiscard]] double density(double x) const noexcept;

  /// Mean and standard deviation of what the limits keep, in closed form. Error 11 when they keep
  /// no probability.
  [[nodiscard]] Moments moments(const Limits& limits) const;

  /// The same by numerical integration, which holds everywhere.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  double minimum_;
  double maximum_;
};

}  // namespace palvex::laws
