#pragma once

#include "laws/Moments.h"
#include "laws/Support.h"

namespace palvex::laws {

/// The beta law with the density u^(alpha - 1) (1 - u)^(beta - 1) / (Beta(alpha, beta) width),
/// u = (x - minimum)/width, on [minimum, maximum], width = maximum - minimum: mean
/// minimum + width alpha/(alpha + beta).
class Beta {
 public:
  /// @param alpha,beta  > 0; minimum <= maximum
  Beta(double alpha, double beta, double minimum, double maximum)
      : alpha_(alpha), beta_(beta), minimum_(minimum), maximum_(maximum) {}

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
  double alpha_;
  double beta_;
  double minimum_;
  double maximum_;
};

}  // namespace palvex::laws
