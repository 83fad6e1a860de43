#pragma once

#include "laws/Moments.h"
#include "laws/Support.h"

namespace palvex::laws {

/// The triangular law: on [minimum, maximum] a density that rises linearly from 0 at the minimum to
/// 2/(maximum - minimum) at `likely` and falls to 0 at the maximum; mean (minimum + likely +
/// maximum)/3. With equal bounds a point mass.
class Triangular {
 public:
  /// minimum <= likely <= maximum
  Triangular(double minimum, double likely, double maximum)
      : minimum_(minimum), likely_(likely), maximum_(maximum) {}

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
  double likely_;
  double maximum_;
};

}  // namespace palvex::laws
