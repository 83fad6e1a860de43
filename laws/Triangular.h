#pragma once

#include <cmath>

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
        halfWidth_(maximum / 2 - minimum / 2),
        shareBelow_(halfWidth_ > 0 ? (likely / 2 - minimum / 2) / halfWidth_ : 1),
        shareAbove_(halfWidth_ > 0 ? (maximum / 2 - likely / 2) / halfWidth_ : 0) {}

  [[nodiscard]] Support support() const noexcept;

  /// The density at x, from logarithms and ratios, which do not leave the range of doubles before
  /// the density does. Infinite at a pole.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its logarithm, also where the density is no double.
  [[nodiscard]] double logDensity(double x) const noexcept;

  [[nodiscard]] Tails tails(double x) const noexcept;
  /// The value with the probability p up to it and q = 1 - p above it, solved in the smaller one.
  [[nodiscard]] double quantile(double p, double q) const noexcept {
    // Of the side's own probability the part u lies beyond the value and t towards `likely`. The
    // value is counted from the nearer of the side's ends.
    const bool isBelow = p <= shareBelow_;
    const double share = isBelow ? shareBelow_ : shareAbove_;
    const double u = (isBelow ? p : q) / share;
    const double t = ((isBelow ? q : p) - (isBelow ? shareAbove_ : shareBelow_)) / share;
    const double root = std::sqrt(u);
    const double side = halfWidth_ * (isBelow ? share : -share);
    const double end = isBelow ? minimum_ : maximum_;
    return 2 * (t < 0.5 ? likely_ / 2 - side * (t / (1 + root)) : end / 2 + side * root);
  }

  /// Mean and standard deviation of what the limits keep, in closed form. Error 11 when they keep
  /// no probability.
  [[nodiscard]] Moments moments(const Limits& limits) const;

  /// The same by numerical integration, which holds everywhere.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  [[nodiscard]] Triangular half() const { return {minimum_ / 2, likely_ / 2, maximum_ / 2}; }

  double minimum_;
  double likely_;
  double maximum_;
  double halfWidth_;   // the width itself may overflow
  double shareBelow_;  // probability below `likely`
  double shareAbove_;
};

}  // namespace palvex::laws
