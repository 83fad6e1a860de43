#include "laws/Normal.h"

#include <cmath>
#include <limits>

#include "families/m_Normal.h"

namespace palvex::laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Adds, with a sign, the integrals of the density, of z times and of z^2 times the density up to
/// z; or, apart from a constant, their negatives above z.
void addIntegrals(PartialMoments& moments, double z, bool upper, double sign) {
  const double tail = m_Normal::NormalCDF(z, upper);
  const double accuracy = std::isinf(z) ? 1e-15 : 1e-15 * (4 + z * z);
  moments.add(0, upper ? -sign : sign, tail, accuracy);
  moments.add(2, upper ? -sign : sign, tail, accuracy);
  if (std::isinf(z)) return;
  const double bell = std::exp(-z * z / 2) * inverseRootTwoPi;
  moments.add(1, -sign, bell, accuracy);
  moments.add(2, -sign * z, bell, accuracy);
}

}  // namespace

Support Normal::support() const noexcept {
  return sd_ == 0 ? Support{mean_, mean_} : Support{-infinity, infinity};
}

double Normal::density(double x) const noexcept {
  if (sd_ <= 0) return x == mean_ ? 1 : 0;
  const double z = (x - mean_) / sd_;
  return std::exp(-z * z / 2) * inverseRootTwoPi / sd_;
}

double Normal::logDensity(double x) const noexcept {
  if (sd_ == 0) return x == mean_ ? 0 : -infinity;
  const double z = (x - mean_) / sd_;
  return -z * z / 2 - logRootTwoPi - std::log(sd_);
}

std::optional<Moments> Normal::moments(const Limits& limits) const {
  if (!limits.lower && !limits.upper) return Moments{mean_, sd_};
  PartialMoments deviate;
  for (const Interval& x : KeptIntervals(limits, -infinity, infinity)) {
    const double a = distance(x.lower, mean_) / sd_;
    const double b = distance(x.upper, mean_) / sd_;
    const bool upper = a > 0;  // the smaller tails
    addIntegrals(deviate, b, upper, 1);
    addIntegrals(deviate, a, upper, -1);
  }
  const std::optional<Moments> kept = deviate.moments();
  if (!kept) return {};
  return Moments{mean_ + sd_ * kept->mean, sd_ * kept->sd};
}

Moments Normal::integratedMoments(const Limits& limits) const {
  Mixture kept;
  for (const Interval& x : KeptIntervals(limits, -infinity, infinity)) {
    const Anchor anchor = anchorAt(0, mean_, x);
    const double z = anchor.fromOrigin / sd_;
    const LinearScale scale(sd_);
    kept.add(integratedPiece(
        anchor.point, {scale.position(anchor.lower), scale.position(anchor.upper)}, scale,
        [z](double t) { return -(z + t / 2) * t; }, -z * z / 2 - logRootTwoPi));
  }
  return kept.moments();
}

}  // namespace palvex::laws
