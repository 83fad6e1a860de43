#include "laws/Gamma.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "numerics/m_GammaRatio.h"

namespace palvex::laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

}  // namespace

Support Gamma::support() const noexcept {
  return {minimum_, infinity};
}

double Gamma::standardDensity(double x) const noexcept {
  if (x < minimum_) return 0;
  const double z = (x - minimum_) / scale_;
  if (z == 0) return shape_ < 1 ? std::numeric_limits<double>::infinity() : shape_ == 1;
  // z overflows, or is so near to 0 that the power underflows.
  if (std::isinf(z) || (shape_ > 2 && z / shape_ == 0)) return 0;
  return prepared_.power(z) / z;
}

double Gamma::density(double x) const noexcept {
  return standardDensity(x) / scale_;
}

double Gamma::logDensity(double x) const noexcept {
  const double direct = density(x);
  const double z = (x - minimum_) / scale_;
  const bool inside = z > 0 && std::isfinite(z);  // z may overflow or underflow
  if (!inside || std::isnormal(direct)) return std::log(direct);
  return prepared_.logPower(z) - std::log(z) - std::log(scale_);
}

Tails Gamma::tails(double x) const noexcept {
  if (x <= minimum_) return {0, 1};
  const double z = (x - minimum_) / scale_;
  if (std::isinf(z)) return {1, 0};
  if (shape_ * z == 0) {
    // P = z^shape / gamma(1 + shape), where z itself may be too small for a double.
    if (shape_ > 1) return {0, 1};
    const double logarithm =
        shape_ * (std::log(x - minimum_) - std::log(scale_)) - m_Gamma::gamln1(shape_);
    return {std::exp(logarithm), -std::expm1(logarithm)};
  }
  const m_Gamma::Ratio ratio = prepared_(z);
  return {ratio.p, ratio.q};
}

double Gamma::quantile(double p, double q) const noexcept {
  return minimum_ + scale_ * prepared_.quantile(p, q);
}

void addRatio(PartialMoments& moments, int order, double factor, double a, double lower,
              double upper) {
  const bool upperTails = lower > a;
  const auto add = [&](double x, double sign) {
    double p = x == 0 ? 0 : 1;
    double q = 1 - p;
    double accuracy = 0;
    if (x > 0 && std::isfinite(x)) {
      m_Gamma::gratio(a, x, p, q, 0);
      const double condition = std::abs(x - a) + std::sqrt(a) + a * std::abs(std::log(x / a)) + 1;
      accuracy = 2e-14 + 5e-16 * condition;
    }
    moments.add(static_cast<std::size_t>(order), upperTails ? -sign * factor : sign * factor,
                upperTails ? q : p, 6e-15 + accuracy);
  };
  add(upper, 1);
  add(lower, -1);
}

std::optional<Moments> Gamma::moments(const Limits& limits) const {
  if (!limits.lower && !limits.upper) {
    return Moments{minimum_ + shape_ * scale_, std::sqrt(shape_) * scale_};
  }
  PartialMoments standardized;
  for (const Interval& x : KeptIntervals(limits, minimum_, infinity)) {
    const auto tooClose = [&](double limit) {
      return underflows(distance(limit, minimum_), scale_, shape_);
    };
    if (tooClose(x.lower) || tooClose(x.upper)) return {};
    const double lower = distance(x.lower, minimum_) / scale_;
    const double upper = distance(x.upper, minimum_) / scale_;
    addRatio(standardized, 0, 1, shape_, lower, upper);
    addRatio(standardized, 1, shape_, shape_ + 1, lower, upper);
    addRatio(standardized, 2, shape_ * (shape_ + 1), shape_ + 2, lower, upper);
  }
  const std::optional<Moments> kept = standardized.moments();
  if (!kept) return {};
  return Moments{minimum_ + scale_ * kept->mean, scale_ * kept->sd};
}

Moments Gamma::integratedMoments(const Limits& limits) const {
  // t runs over ln(x - minimum), where the density is largest at x - minimum = shape scale.
  const double mode = std::max(shape_ * scale_, std::numeric_limits<double>::min());
  const double logAtMode = shape_ * std::log(shape_) - shape_ - m_Gamma::gamln(shape_);
  Mixture kept;
  for (const Interval& x : KeptIntervals(limits, minimum_, infinity)) {
    const Anchor anchor = anchorAt(mode, minimum_, x);
    const double y = anchor.fromOrigin == shape_ * scale_ ? shape_ : anchor.fromOrigin / scale_;
    const double logAtAnchor =
        underflows(anchor.fromOrigin, scale_)
            ? shape_ * (std::log(anchor.fromOrigin) - std::log(scale_)) - m_Gamma::gamln(shape_)
            : logAtMode - m_Gamma::deviance(shape_, y);
    const ExponentialScale t(minimum_, anchor.fromOrigin, 1);
    kept.add(integratedPiece(
        anchor.point, {t.position(anchor.lower), t.position(anchor.upper)}, t,
        [&](double u) { return lessExpm1(u, shape_, y); }, logAtAnchor));
  }
  return kept.moments();
}

}  // namespace palvex::laws
