#include "laws/Beta.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "numerics/m_BetaRatio.h"
#include "numerics/m_GammaFunctions.h"
#include "numerics/m_MathUtil.h"

namespace palvex::laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Adds `factor` times a tail of the incomplete beta ratio at x = 1 - y, negative for the upper
/// one.
void addTail(PartialMoments& moments, int order, m_Beta::IncompleteBeta& ratio, double x, double y,
             bool upper, double factor) {
  m_Beta::Tails tails{x > 0 ? 1.0 : 0.0, y > 0 ? 1.0 : 0.0};
  double accuracy = 0;
  if (x > 0 && y > 0) {
    tails = ratio(x, y);
    const double condition = (ratio.a() + ratio.b()) / std::min(x, y);
    accuracy = 2e-14 + 1e-16 * condition;
  }
  moments.add(static_cast<std::size_t>(order), upper ? -factor : factor,
              upper ? tails.upper : tails.lower, accuracy + 1e-15);
}

/// ln u^a (1 - u)^b relative to its value at u = p = 1 - q, at a distance t from there in
/// ln(u/(1 - u)).
double logFromMode(double t, double a, double b, double p, double q) {
  const double change = p * std::expm1(t);  // of 1/(1 - u), relative
  if (std::abs(q * std::expm1(-t)) < std::abs(change)) return logFromMode(-t, b, a, q, p);
  if (std::abs(change) > 0.5) return a * t - (a + b) * std::log(q + p * std::exp(t));
  if (std::abs(t) > 0.5) return a * t - (a + b) * std::log1p(change);
  // The same without the part of the logarithm that cancels the slope of a t at the mode.
  return (a * q - b * p) * t - (a + b) * (p * expm1LessT(t) - m_MathUtil::rlog1(change));
}

}  // namespace

Support Beta::support() const noexcept {
  return {minimum_, maximum_};
}

m_Beta::Fraction Beta::fraction(double x) const noexcept {
  return {extent_.below(x), extent_.above(x)};
}

double Beta::standardDensity(double x) const noexcept {
  if (!(minimum_ < maximum_ && minimum_ <= x && x <= maximum_)) return 0;
  const auto [u, v] = fraction(x);
  const auto atEnd = [](double shape, double other) {
    if (shape == 1) return other;
    return shape < 1 ? infinity : 0;
  };
  if (u == 0) return atEnd(alpha_, beta_);
  if (v == 0) return atEnd(beta_, alpha_);
  const double power =
      inverse_ ? inverse_->ratio().power(u, v) : m_Beta::IncompleteBeta(alpha_, beta_).power(u, v);
  return power > 0 ? power / u / v : 0;  // the power of the largest shapes may be undefined
}

double Beta::density(double x) const noexcept {
  if (minimum_ == maximum_) return x == minimum_ ? 1 : 0;
  return standardDensity(x) / extent_.width / extent_.unit;
}

double Beta::logDensity(double x) const noexcept {
  const double direct = density(x);
  const bool inside = x > minimum_ && x < maximum_;
  if (!inside || std::isnormal(direct)) return std::log(direct);
  const auto [u, v] = fraction(x);
  const double logarithm = (alpha_ - 1) * std::log(u) + (beta_ - 1) * std::log(v) -
                           m_Beta::IncompleteBeta(alpha_, beta_).logBeta() -
                           std::log(extent_.width) - std::log(extent_.unit);
  return std::isnan(logarithm) ? -infinity : logarithm;  // undefined for the largest shapes only
}

void Beta::prepare() {
  if (!inverse_) inverse_ = std::make_shared<const m_Beta::InverseBeta>(alpha_, beta_);
}

Tails Beta::tails(double x) const noexcept {
  if (x >= maximum_) return {1, 0};
  if (x <= minimum_) return {0, 1};
  // A part of the width that is too small for a double counts as the smallest one: with the
  // smallest shapes it still has a probability.
  constexpr double smallest = std::numeric_limits<double>::denorm_min();
  const auto [u, v] = fraction(x);
  const m_Beta::Tails both = inverse_->ratio()(std::max(u, smallest), std::max(v, smallest));
  return {both.lower, both.upper};
}

double Beta::quantile(double p, double q) const noexcept {
  const auto [u, v] = (*inverse_)(p, q);
  const auto& [unit, scale, lower, upper, width] = extent_;
  return unit * (u < v ? lower + width * u : upper - width * v);
}

std::optional<Moments> Beta::moments(const Limits& limits) const {
  const double width = maximum_ - minimum_;
  if (std::isinf(width)) {
    const auto half = Beta(alpha_, beta_, minimum_ / 2, maximum_ / 2).moments(halved(limits));
    if (!half) return {};
    return doubled(*half);
  }
  const double sum = alpha_ + beta_;
  if (!limits.lower && !limits.upper) {
    // From the nearer end, whose distance is the more precise one.
    return Moments{
        alpha_ < beta_ ? minimum_ + width * (alpha_ / sum) : maximum_ - width * (beta_ / sum),
        width * (std::sqrt(alpha_) / std::sqrt(sum) * (std::sqrt(beta_) / std::sqrt(sum)) /
                 std::sqrt(sum + 1))};
  }
  PartialMoments standardized;
  double factor = 1;
  for (const int order : {0, 1, 2}) {
    const double a = alpha_ + order;
    m_Beta::IncompleteBeta ratio(a, beta_);
    for (const Interval& x : KeptIntervals(limits, minimum_, maximum_)) {
      const auto tooClose = [&](double limit) {
        return underflows(limit - minimum_, width, alpha_) ||
               underflows(maximum_ - limit, width, beta_);
      };
      if (tooClose(x.lower) || tooClose(x.upper)) return {};
      const bool upperTails = (x.lower - minimum_) * beta_ > (maximum_ - x.lower) * a;
      const auto add = [&](double limit, double sign) {
        addTail(standardized, order, ratio, (limit - minimum_) / width, (maximum_ - limit) / width,
                upperTails, sign * factor);
      };
      add(x.upper, 1);
      add(x.lower, -1);
    }
    factor *= a / (sum + order);
  }
  const std::optional<Moments> kept = standardized.moments();
  if (!kept) return {};
  return Moments{minimum_ + width * kept->mean, width * kept->sd};
}

Moments Beta::integratedMoments(const Limits& limits) const {
  // t runs over the logarithm of u/(1 - u), where the density is largest at u = alpha/(alpha +
  // beta).
  const double width = maximum_ - minimum_;
  if (std::isinf(width)) {
    return doubled(
        Beta(alpha_, beta_, minimum_ / 2, maximum_ / 2).integratedMoments(halved(limits)));
  }
  const Bounds ends{minimum_, maximum_};
  const double sum = alpha_ + beta_;
  const double logOdds = std::log(alpha_) - std::log(beta_);
  const double logAtMode = -alpha_ * softplus(-logOdds) - beta_ * softplus(logOdds) +
                           m_Gamma::gamln(sum) - m_Gamma::gamln(alpha_) - m_Gamma::gamln(beta_);
  Mixture kept;
  for (const Interval& x : KeptIntervals(limits, minimum_, maximum_)) {
    const Anchor anchor = anchorWithin(ends, width * (alpha_ / sum), width * (beta_ / sum), x);
    const double below = anchor.fromOrigin;
    const double above = anchor.toUpperEnd;
    const double fromMode = anchor.isMode ? 0 : std::log(below) - std::log(above) - logOdds;
    const LogisticScale t(ends, below, above, 1);
    kept.add(integratedPiece(
        anchor.point, {t.position(anchor.lower), t.position(anchor.upper)}, t,
        [&](double u) { return logFromMode(u, alpha_, beta_, below / width, above / width); },
        logAtMode + logFromMode(fromMode, alpha_, beta_, alpha_ / sum, beta_ / sum)));
  }
  return kept.moments();
}

}  // namespace palvex::laws
