#pragma once

#include "laws/Moments.h"
#include "laws/StandardNormal.h"
#include "laws/Support.h"
#include "laws/Tails.h"

namespace palvex::laws {

/// The normal law with the density exp(-z^2/2) / (sqrt(2 pi) sd), z = (x - mean)/sd, on the whole
/// line: mean `mean`, standard deviation `sd`. Without spread a point mass.
class Normal {
 public:
  /// @param sd  >= 0
  Normal(double mean, double sd) : mean_(mean), sd_(sd) {}

  /// The whole line; the mean alone without spread.
  [[nodiscard]] Support support() const noexcept;

  /// The density at x; of a point mass 1 at its value, else 0.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its natural logarithm, also where the density itself overflows or underflows.
  [[nodiscard]] double logDensity(double x) const noexcept;

  /// The probabilities up to x and above it, each with its own relative accuracy.
  [[nodiscard]] Tails tails(double x) const noexcept {
    if (sd_ == 0) return x < mean_ ? Tails{0, 1} : Tails{1, 0};
    return normalTails((x - mean_) / sd_);
  }
  /// The quantile: the value with the probability p up to it and q = 1 - p above it, worked out
  /// from the smaller of the two.
  [[nodiscard]] double quantile(double p, double q) const noexcept {
    return fromDeviate(normalQuantile(p, q));
  }
  /// The value of a standard normal deviate.
  [[nodiscard]] double fromDeviate(double z) const noexcept { return mean_ + sd_ * z; }

  /// Mean and standard deviation of what the limits keep, in closed form; nothing where its terms
  /// would cancel.
  [[nodiscard]] std::optional<Moments> moments(const Limits& limits) const;

  /// The same by numerical integration, accurate for any limits. Errors: see Moments.h.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  double mean_;
  double sd_;
};

}  // namespace palvex::laws
