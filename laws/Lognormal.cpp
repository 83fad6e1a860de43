#include "laws/Lognormal.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "families/m_Normal.h"

namespace palvex::laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Adds `factor` times the probability of the normal deviate beyond z, when the mean of the deviate
/// is `shift`.
void addTail(PartialMoments& moments, int order, double z, double shift, bool upper,
             double factor) {
  const double tail = m_Normal::NormalCDF(z - shift, upper);
  const double roundedArgument = std::isinf(z) ? 0 : std::abs(z - shift) * (std::abs(z) + shift);
  moments.add(static_cast<std::size_t>(order), factor, tail, 4e-15 + 2e-16 * roundedArgument);
}

}  // namespace

Support Lognormal::support() const noexcept {
  return {.lower = minimum_, .upper = infinity, .lowerIncluded = false};
}

double Lognormal::density(double x) const noexcept {
  if (!(x > minimum_)) return 0;
  const double logX = std::log(x - minimum_);
  const double z = (logX - location_) / scale_;
  return std::exp(-z * z / 2 - logX) * inverseRootTwoPi / scale_;
}

double Lognormal::logDensity(double x) const noexcept {
  if (!(x > minimum_)) return -infinity;
  const double logX = std::log(x - minimum_);
  const double z = (logX - location_) / scale_;
  return -z * z / 2 - logX - std::log(scale_) - logRootTwoPi;
}

double Lognormal::standardDeviation() const noexcept {
  // exp(location + s^2/2) sqrt(exp(s^2) - 1), in logarithms: no factor overflows before the
  // product.
  const double square = scale_ * scale_;
  const double logRoot = scale_ < 1e-8 ? std::log(scale_) : std::log(-std::expm1(-square)) / 2;
  return std::exp(location_ + square + logRoot);
}

std::optional<Moments> Lognormal::moments(const Limits& limits) const {
  const double mean = std::exp(location_ + scale_ * scale_ / 2);
  if (!limits.lower && !limits.upper) {
    return Moments{minimum_ + mean, standardDeviation()};
  }
  if (mean == 0 || std::isinf(mean)) return {};
  PartialMoments multiple;  // of the mean above the minimum
  for (const Interval& x : KeptIntervals(limits, minimum_, infinity)) {
    const double a = (std::log(distance(x.lower, minimum_)) - location_) / scale_;
    const double b = (std::log(distance(x.upper, minimum_)) - location_) / scale_;
    for (const int order : {0, 1, 2}) {
      const double shift = order * scale_;
      const bool upper = a > shift;  // the smaller tails
      const double factor = (upper ? -1 : 1) * (order == 2 ? std::exp(scale_ * scale_) : 1);
      addTail(multiple, order, b, shift, upper, factor);
      addTail(multiple, order, a, shift, upper, -factor);
    }
  }
  const std::optional<Moments> kept = multiple.moments();
  if (!kept) return {};
  return Moments{minimum_ + mean * kept->mean, mean * kept->sd};
}

Moments Lognormal::integratedMoments(const Limits& limits) const {
  const double median = std::exp(location_);
  constexpr double smallest =
      std::numeric_limits<double>::min();  // in place of a median that underflows
  Mixture kept;
  for (const Interval& x : KeptIntervals(limits, minimum_, infinity)) {
    const Anchor anchor = anchorAt(std::max(median, smallest), minimum_, x);
    const double y = anchor.fromOrigin;
    const double z = y == median ? 0 : (std::log(y) - location_) / scale_;
    const ExponentialScale t(minimum_, y, scale_);
    kept.add(integratedPiece(
        anchor.point, {t.position(anchor.lower), t.position(anchor.upper)}, t,
        [z](double u) { return -(z + u / 2) * u; }, -z * z / 2 - logRootTwoPi));
  }
  return kept.moments();
}

}  // namespace palvex::laws
