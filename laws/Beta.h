#pragma once

#include <memory>

#include "laws/Extent.h"
#include "laws/Moments.h"
#include "laws/Support.h"
#include "laws/Tails.h"
#include "numerics/m_BetaInverse.h"

namespace palvex::laws {

/// The beta law with the density u^(alpha - 1) (1 - u)^(beta - 1) / (Beta(alpha, beta) width),
/// u = (x - minimum)/width, on [minimum, maximum], width = maximum - minimum: mean
/// minimum + width alpha/(alpha + beta).
class Beta {
 public:
  /// @param alpha,beta  > 0; minimum <= maximum
  Beta(double alpha, double beta, double minimum, double maximum)
      : alpha_(alpha),
        beta_(beta),
        minimum_(minimum),
        maximum_(maximum),
        extent_(minimum, maximum) {}

  /// [minimum, maximum]
  [[nodiscard]] Support support() const noexcept;

  /// The density of the standardised variable (x - minimum)/(maximum - minimum) at x's place: what
  /// `density` is before it is divided by the width. Infinite at a pole.
  [[nodiscard]] double standardDensity(double x) const noexcept;
  /// The density at x.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its natural logarithm, also where the density itself overflows or underflows.
  [[nodiscard]] double logDensity(double x) const noexcept;

  /// Works out what `tails` and `quantile` take from the shapes; to be called before either.
  void prepare();
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
  /// The place of x as the fractions u of the width below it and v above it.
  [[nodiscard]] m_Beta::Fraction fraction(double x) const noexcept;

  double alpha_;
  double beta_;
  double minimum_;
  double maximum_;
  Extent extent_;
  std::shared_ptr<const m_Beta::InverseBeta> inverse_;  // large: copies share it
};

}  // namespace palvex::laws
