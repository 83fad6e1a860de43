#pragma once

#include <cmath>

#include "laws/Extent.h"
#include "laws/Moments.h"
#include "laws/Support.h"
#include "laws/Tails.h"

namespace palvex::laws {

/// The triangular law: on [minimum, maximum] a density that rises linearly from 0 at the minimum to
/// 2/(maximum - minimum) at `likely` and falls to 0 at the maximum; mean (minimum + likely +
/// maximum)/3. With equal bounds a point mass.
class Triangular {
 public:
  /// minimum <= likely <= maximum
  Triangular(double minimum, double likely, double maximum)
      : minimum_(minimum),
        likely_(likely),
        maximum_(maximum),
        extent_(minimum, maximum),
        shareBelow_(extent_.width > 0 ? extent_.below(likely) : 1),
        shareAbove_(extent_.width > 0 ? extent_.above(likely) : 0) {}

  /// [minimum, maximum]
  [[nodiscard]] Support support() const noexcept;

  /// The density at x, 0 outside the bounds; of a point mass 1 at its value.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its natural logarithm, also where the density itself overflows or underflows.
  [[nodiscard]] double logDensity(double x) const noexcept;

  /// The probabilities up to x and above it, each with its own relative accuracy.
  [[nodiscard]] Tails tails(double x) const noexcept;
  /// The quantile: the value with the probability p up to it and q = 1 - p above it, worked out
  /// from the smaller of the two.
  [[nodiscard]] double quantile(double p, double q) const noexcept {
    // Of the side's own probability the part u lies beyond the value and t towards `likely`. The
    // value is counted from the nearer of the side's ends.
    const bool isBelow = (p < q ? p < shareBelow_ : q > shareAbove_) || shareAbove_ == 0;
    const double share = isBelow ? shareBelow_ : shareAbove_;
    const double otherShare = isBelow ? shareAbove_ : shareBelow_;
    const double u = (isBelow ? p : q) / share;
    // On a side that is much the smaller, the difference of the two probabilities would have few
    // digits.
    const double t = otherShare < 8 * share ? ((isBelow ? q : p) - otherShare) / share : 1 - u;
    const double root = std::sqrt(u);
    const double side = extent_.width * (isBelow ? share : -share);
    const double end = isBelow ? extent_.lower : extent_.upper;
    const double likely = likely_ * extent_.scale;
    return extent_.unit * (t < 0.5 ? likely - side * (t / (1 + root)) : end + side * root);
  }

  /// Mean and standard deviation of what the limits keep, in closed form. Error 11 when they keep
  /// no probability.
  [[nodiscard]] Moments moments(const Limits& limits) const;

  /// The same by numerical integration, accurate for any limits. Errors: see Moments.h.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  /// How far x is from the outer end of its side, as a part of the side.
  [[nodiscard]] double partBelow(double x) const noexcept {
    return (x * extent_.scale - extent_.lower) / (likely_ * extent_.scale - extent_.lower);
  }
  [[nodiscard]] double partAbove(double x) const noexcept {
    return (extent_.upper - x * extent_.scale) / (extent_.upper - likely_ * extent_.scale);
  }

  [[nodiscard]] Triangular half() const { return {minimum_ / 2, likely_ / 2, maximum_ / 2}; }

  double minimum_;
  double likely_;
  double maximum_;
  Extent extent_;
  double shareBelow_;  // probability below `likely`
  double shareAbove_;
};

}  // namespace palvex::laws
