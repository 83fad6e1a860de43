#include "laws/Weibull.h"

#include <cmath>
#include <limits>

#include "laws/Gamma.h"
#include "numerics/Power.h"
#include "numerics/m_GammaFunctions.h"

namespace palvex::laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

}  // namespace

Support Weibull::support() const noexcept {
  return {minimum_, infinity};
}

double Weibull::density(double x) const noexcept {
  if (x < minimum_) return 0;
  if (shape_ == 1) return std::exp(-(x - minimum_) / scale_) / scale_;
  const double logZ = logShare(x);
  const double fall = std::exp(shape_ * logZ);
  if (std::isinf(fall)) return 0;
  return std::exp((shape_ - 1) * logZ + std::log(shape_) - std::log(scale_) - fall);
}

double Weibull::logDensity(double x) const noexcept {
  if (x < minimum_) return -infinity;
  const double z = (x - minimum_) / scale_;
  const double logZ = std::isnormal(z) ? std::log(z) : logShare(x);
  const double power = std::isnormal(z) ? powerOf(z, shape_) : std::exp(shape_ * logZ);
  if (std::isinf(power)) return -infinity;
  const double logPower = shape_ == 1 ? 0 : (shape_ - 1) * logZ;
  return logPower + std::log(shape_) - std::log(scale_) - power;
}

std::optional<Moments> Weibull::moments(const Limits& limits) const {
  constexpr double largestArgument = 170;  // of a gamma function within the double range
  if (1 + 2 / shape_ > largestArgument) return {};
  PartialMoments standardized;
  for (const Interval& x : KeptIntervals(limits, minimum_, infinity)) {
    const auto tooClose = [&](double limit) {
      return underflows(distance(limit, minimum_), scale_);
    };
    if (tooClose(x.lower) || tooClose(x.upper)) return {};
    const double lower = powerOf(distance(x.lower, minimum_) / scale_, shape_);
    const double upper = powerOf(distance(x.upper, minimum_) / scale_, shape_);
    for (const int order : {0, 1, 2}) {
      const double argument = 1 + order / shape_;
      addRatio(standardized, order, m_Gamma::gamma(argument), argument, lower, upper);
    }
  }
  const std::optional<Moments> kept = standardized.moments();
  if (!kept) return {};
  return Moments{minimum_ + scale_ * kept->mean, scale_ * kept->sd};
}

Moments Weibull::integratedMoments(const Limits& limits) const {
  Mixture kept;
  for (const Interval& x : KeptIntervals(limits, minimum_, infinity)) {
    const Anchor anchor = anchorAt(scale_, minimum_, x);
    const double y = anchor.fromOrigin;
    const double logPower = shape_ * logRatio(y, scale_, y - scale_);
    const double power = std::exp(logPower);
    // t runs over the logarithm of ((x - minimum)/scale)^shape.
    const ExponentialScale t(minimum_, y, 1 / shape_);
    kept.add(integratedPiece(
        anchor.point, {t.position(anchor.lower), t.position(anchor.upper)}, t,
        [power](double u) { return lessExpm1(u, 1, power); }, logPower - power));
  }
  return kept.moments();
}

}  // namespace palvex::laws
