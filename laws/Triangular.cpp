#include "laws/Triangular.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace palvex::laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// The piece of an interval on one side of the peak, whose ends are at the distances `lower` and
/// `upper` from the side's outer end. There the density is in proportion to the distance.
Piece linearPiece(const Interval& x, double lower, double upper, double logSide) {
  const double length = x.upper - x.lower;
  const double share = 1 / (1 + lower / upper);
  const double greater = std::max(lower, upper);
  const double logSum = std::log(greater) + std::log1p(std::min(lower, upper) / greater);
  return {std::log(length) + logSum - logSide,
          {x.lower, length * ((1 + share) / 3)},
          length * std::sqrt((1 + 2 * share * (1 - share)) / 18)};
}

}  // namespace

Support Triangular::support() const noexcept {
  return {minimum_, maximum_};
}

double Triangular::density(double x) const noexcept {
  if (!(minimum_ <= x && x <= maximum_)) return 0;
  if (maximum_ == minimum_) return 1;
  const double part = x >= likely_ && likely_ != maximum_ ? partAbove(x) : partBelow(x);
  // With the smallest widths the height is infinite, and 0 times it undefined.
  return part == 0 ? 0 : part * (2 / extent_.width / extent_.unit);
}

double Triangular::logDensity(double x) const noexcept {
  if (minimum_ == maximum_) return x == minimum_ ? 0 : -infinity;
  if (!(minimum_ <= x && x <= maximum_)) return -infinity;
  const bool isAbove = x >= likely_ && likely_ != maximum_;
  return std::log(isAbove ? partAbove(x) : partBelow(x)) + std::numbers::ln2 -
         std::log(extent_.width) - std::log(extent_.unit);
}

Tails Triangular::tails(double x) const noexcept {
  if (x >= maximum_) return {1, 0};
  if (x < minimum_) return {0, 1};
  const double below = extent_.below(x);
  const double above = extent_.above(x);
  // Each side's own tail is a square; the other is the rest of the triangle and the other side.
  if (x < likely_) {
    const double toLikely = (likely_ * extent_.scale - x * extent_.scale) / extent_.width;
    return {below * partBelow(x), shareAbove_ + toLikely * (1 + partBelow(x))};
  }
  const double fromLikely = (x * extent_.scale - likely_ * extent_.scale) / extent_.width;
  return {shareBelow_ + fromLikely * (1 + partAbove(x)), above * partAbove(x)};
}

Moments Triangular::moments(const Limits& limits) const {
  const double width = maximum_ - minimum_;
  if (std::isinf(width)) return doubled(half().moments(halved(limits)));
  Mixture kept;
  for (const Interval& x : KeptIntervals(limits, minimum_, likely_)) {
    kept.add(linearPiece(x, x.lower - minimum_, x.upper - minimum_,
                         std::log(likely_ - minimum_) + std::log(width)));
  }
  for (const Interval& x : KeptIntervals(limits, likely_, maximum_)) {
    kept.add(linearPiece(x, maximum_ - x.lower, maximum_ - x.upper,
                         std::log(maximum_ - likely_) + std::log(width)));
  }
  return kept.moments();
}

Moments Triangular::integratedMoments(const Limits& limits) const {
  // t runs from the interval's end next to the peak, in units of the interval. On it the density
  // falls by the share `fall`, in proportion to the distance from the outer end of the side.
  const double width = maximum_ - minimum_;
  if (std::isinf(width)) return doubled(half().integratedMoments(halved(limits)));
  Mixture kept;
  for (const auto& [lower, upper] : KeptIntervals(limits, minimum_, likely_)) {
    const double outward = upper - minimum_;
    const double length = upper - lower;
    const double fall = length / outward;
    kept.add(integratedPiece(
        {upper, 0}, {-1, 0}, LinearScale(length), [fall](double t) { return std::log1p(fall * t); },
        std::log(length) + std::log(outward) - std::log(likely_ - minimum_) - std::log(width)));
  }
  for (const auto& [lower, upper] : KeptIntervals(limits, likely_, maximum_)) {
    const double outward = maximum_ - lower;
    const double length = upper - lower;
    const double fall = length / outward;
    kept.add(integratedPiece(
        {lower, 0}, {0, 1}, LinearScale(length), [fall](double t) { return std::log1p(-fall * t); },
        std::log(length) + std::log(outward) - std::log(maximum_ - likely_) - std::log(width)));
  }
  return kept.moments();
}

}  // namespace palvex::laws
