#include "laws/Johnson.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "families/m_Normal.h"
#include "laws/Lognormal.h"
#include "laws/Normal.h"
#include "laws/StandardNormal.h"
#include "numerics/m_Integration.h"

namespace palvex::laws {

namespace {

using m_Johnson::Curve;
using Constants = Johnson::Constants;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// What a fit without a curve leaves has no moments.
void refuseUnfitted(const Constants& c) {
  if (c.curve == Curve::none || (c.curve != Curve::normal && !(c.delta > 0))) {
    raise(fault::divisionByZero);
  }
}

/// sinh(t) in half its usual time, to a relative 4e-15.
double hyperbolicSine(double t) {
  if (std::abs(t) < 0.05) return std::sinh(t);
  const double e = std::exp(t);
  return 0.5 * (e - 1 / e);
}

double logistic(double u) {
  return 1 / (1 + std::exp(-u));
}

/// The variate of the standard curve (xi = 0, scale 1) at the normal deviate z.
double standardVariate(double z, const Constants& c) {
  const double t = (z - c.gamma) / c.delta;
  switch (c.curve) {
    case Curve::SL:
      return c.lambda * std::exp((c.lambda * z - c.gamma) / c.delta);
    case Curve::SU:
      return std::sinh(t);
    default:
      return logistic(t);
  }
}

/// The expectation of f(Z), Z standard normal, by the trapezoidal rule, whose error falls
/// exponentially with 1 / step for an f analytic near the real axis.
template <class Function>
double expectation(double reach, double step, Function&& f) {
  const auto half = static_cast<int>(reach / step);
  double sum = 0;
  for (int i = -half; i <= half; ++i) {
    const double z = i * step;
    sum += f(z) * std::exp(-0.5 * z * z);
  }
  return checked(sum * step * inverseRootTwoPi);
}

/// The normal deviate of x in or at the ends of the range of an SU or SB curve.
double deviate(double x, const Constants& c) {
  if (c.curve == Curve::SU) return c.gamma + c.delta * std::asinh((x - c.xi) / c.lambda);
  const Bounds ends = Bounds::ofWidth(c.xi, c.lambda);
  const double below = ends.below(x);
  const double above = ends.above(x);
  if (below == 0) return -infinity;
  if (above == 0) return infinity;
  return c.gamma + c.delta * (std::log(below) - std::log(above));
}

KeptIntervals kept(const Constants& c, const Limits& limits) {
  if (c.curve == Curve::SB) return {limits, c.xi, Bounds::ofWidth(c.xi, c.lambda).ceiling()};
  return {limits, -infinity, infinity};
}

// ---- SL: a lognormal distribution, upside down for a negative skewness ----

Limits mirrored(const Limits& limits) {
  Limits mirror;
  if (limits.upper) mirror.lower = -*limits.upper;
  if (limits.lower) mirror.upper = -*limits.lower;
  return mirror;
}

template <class Result>
Result ofLognormal(Result (Lognormal::*moments)(const Limits&) const, const Constants& c,
                   const Limits& limits) {
  const double location = -c.gamma / c.delta;
  const double scale = 1 / c.delta;
  if (c.lambda > 0) return (Lognormal(location, scale, c.xi).*moments)(limits);
  return (Lognormal(location, scale, -c.xi).*moments)(mirrored(limits));
}

// ---- SU: X = xi + lambda sinh((Z - gamma) / delta), a sum of two lognormals ----

Moments wholeUnbounded(const Constants& c) {
  const double square = 1 / (c.delta * c.delta);
  const double omega = c.gamma / c.delta;
  const double w = std::exp(square);
  return {c.xi - c.lambda * std::sqrt(w) * std::sinh(omega),
          c.lambda * std::sqrt(std::expm1(square) * (w * std::cosh(2 * omega) + 1) / 2)};
}

/// Adds factor E(exp(k (Z - gamma) / delta); a < Z < b) to the sum of an order: by completing the
/// square it is a normal integral.
void addExponential(PartialMoments& sums, std::size_t order, int k, double factor, double a,
                    double b, const Constants& c) {
  const double shift = k / c.delta;
  const double exponent = shift * (shift / 2 - c.gamma);
  const bool upper = a > shift;  // the smaller tails
  const auto add = [&](double z, double sign) {
    const double tail = m_Normal::NormalCDF(z - shift, upper);
    const double rounded =
        std::isinf(z) ? 0 : (std::abs(z - shift) + 1) * (std::abs(z) + std::abs(shift) + c.delta);
    sums.add(order, sign * factor * std::exp(exponent), tail,
             4e-15 + 2e-16 * (rounded + std::abs(shift) * (std::abs(shift) + std::abs(c.gamma))));
  };
  add(b, upper ? -1 : 1);
  add(a, upper ? 1 : -1);
}

std::optional<Moments> keptUnbounded(const Constants& c, const Limits& limits) {
  PartialMoments sums;  // of sinh
  for (const Interval& x : kept(c, limits)) {
    const double a = deviate(x.lower, c);
    const double b = deviate(x.upper, c);
    addExponential(sums, 0, 0, 1, a, b, c);
    for (const int sign : {1, -1}) {
      addExponential(sums, 1, sign, sign * 0.5, a, b, c);
      addExponential(sums, 2, 2 * sign, 0.25, a, b, c);
    }
    addExponential(sums, 2, 0, -0.5, a, b, c);
  }
  const auto standard = sums.moments();
  if (!standard) return {};
  return Moments{c.xi + c.lambda * standard->mean, c.lambda * standard->sd};
}

// ---- SB ----

/// By quadrature over the normal deviate; nothing for the far tails and for a spread that is small
/// against the distance from the nearer end.
std::optional<Moments> keptBounded(const Constants& c, const Limits& limits) {
  constexpr double farthest = 12;
  const double side = c.gamma < 0 ? -1 : 1;  // count from the end where most of the values are
  double mass = 0;
  double first = 0;
  double second = 0;
  for (const Interval& x : kept(c, limits)) {
    const double a = std::max(deviate(x.lower, c), -farthest);
    const double b = std::min(deviate(x.upper, c), farthest);
    if (!(a < b)) continue;
    std::vector<double> breaks{a};
    for (const double z : {-4.0, 0.0, 4.0}) {
      if (a < z && z < b) breaks.push_back(z);
    }
    breaks.push_back(b);
    const auto integral = [&](int order) {
      const auto weighted = [&](double z) {
        const double v = logistic(side * (z - c.gamma) / c.delta);
        const double power = order == 0 ? 1 : order == 1 ? v : v * v;
        return power * std::exp(-z * z / 2) * inverseRootTwoPi;
      };
      return m_Integration::integrate(weighted, breaks);
    };
    mass += integral(0);
    first += integral(1);
    second += integral(2);
  }
  if (!(mass > 1e-12)) return {};
  const double mean = first / mass;
  const double square = second / mass;
  const double variance = square - mean * mean;
  if (!(variance > 1e-4 * square)) return {};
  return Moments{side > 0 ? c.xi + c.lambda * mean : c.xi + c.lambda - c.lambda * mean,
                 c.lambda * std::sqrt(variance)};
}

}  // namespace

Support Johnson::support() const noexcept {
  switch (c_.curve) {
    case Curve::SL:
      return c_.lambda > 0 ? Support{c_.xi, infinity, false}
                           : Support{-infinity, c_.xi, true, false};
    case Curve::SB:
      // A fit that failed without a message has no ends.
      if (c_.delta > 0) return {c_.xi, c_.xi + c_.lambda, false, false};
      break;
    default:
      break;
  }
  return {-infinity, infinity};
}

double Johnson::deviate(double x) const noexcept {
  const auto& [gamma, delta, lambda, xi, curve] = c_;
  switch (curve) {
    case Curve::normal:
      return (x - lambda) / gamma;
    case Curve::SL: {
      const double fromXi = lambda * (x - xi);
      return fromXi > 0 ? lambda * (gamma + delta * std::log(fromXi)) : -lambda * infinity;
    }
    case Curve::SU:
      return gamma + delta * std::asinh((x - xi) / lambda);
    default:
      return palvex::laws::deviate(x, c_);
  }
}

double Johnson::logSlope(double x) const noexcept {
  const auto& [gamma, delta, lambda, xi, curve] = c_;
  const double fromXi = x - xi;
  switch (curve) {
    case Curve::normal:
      return -std::log(gamma);
    case Curve::SL:
      return std::log(delta) - std::log(lambda * fromXi);
    case Curve::SU:
      return std::log(delta) - std::log(std::hypot(1, fromXi / lambda));
    default: {
      const Bounds ends = Bounds::ofWidth(xi, lambda);
      return std::log(delta) - std::log(ends.below(x) / lambda) - std::log(ends.above(x) / lambda);
    }
  }
}

double Johnson::standardDensity(double x) const noexcept {
  const double z = deviate(x);
  return std::isfinite(z) ? std::exp(-z * z / 2 + logSlope(x)) * inverseRootTwoPi : 0;
}

double Johnson::density(double x) const noexcept {
  const bool isScaled = c_.curve == Curve::SU || c_.curve == Curve::SB;
  return standardDensity(x) / (isScaled ? c_.lambda : 1);
}

double Johnson::logDensity(double x) const noexcept {
  const double z = deviate(x);
  if (!std::isfinite(z)) return -infinity;
  const bool isScaled = c_.curve == Curve::SU || c_.curve == Curve::SB;
  return -z * z / 2 + logSlope(x) - logRootTwoPi - (isScaled ? std::log(c_.lambda) : 0);
}

Tails Johnson::tails(double x) const noexcept {
  return normalTails(deviate(x));
}

double Johnson::fromDeviate(double z) const noexcept {
  const auto& [gamma, delta, lambda, xi, curve] = c_;
  switch (curve) {
    case Curve::normal:
      return lambda + gamma * z;
    case Curve::SL:
      return xi + lambda * std::exp((lambda * z - gamma) / delta);
    case Curve::SU:
      return xi + lambda * hyperbolicSine((z - gamma) / delta);
    default: {
      // From the nearer end.
      const double t = (z - gamma) / delta;
      const double small = std::exp(-std::abs(t));
      const double part = lambda * (small / (1 + small));
      return t < 0 ? xi + part : xi + lambda - part;
    }
  }
}

Johnson::CurveMoments Johnson::curveMoments() const {
  refuseUnfitted(c_);
  if (c_.curve == Curve::normal) return {c_.lambda, c_.gamma, 0, 3};

  // The fourth power of an exponential tail exp(z / delta) gathers about z = 4 / delta; a bounded
  // variate stops growing at z = gamma. Its poles lie pi delta beside the real axis.
  const double tail = 4 / c_.delta;
  const bool bounded = c_.curve == Curve::SB;
  const double reach = 10 + (bounded ? std::min(tail, std::abs(c_.gamma)) : tail);
  const double step = std::max(bounded ? std::min(0.2, 0.4 * c_.delta) : 0.2, reach * 1e-6);

  const auto variate = [&](double z) { return standardVariate(z, c_); };
  const double mean = expectation(reach, step, variate);
  const auto central = [&](int order) {
    return expectation(reach, step, [&](double z) { return std::pow(variate(z) - mean, order); });
  };
  const double sd = std::sqrt(central(2));
  const double scale = c_.curve == Curve::SL ? 1 : c_.lambda;
  return {checked(c_.xi + scale * mean), checked(scale * sd), Divide(central(3), sd * sd * sd),
          Divide(central(4), sd * sd * sd * sd)};
}

std::optional<Moments> Johnson::moments(const Limits& limits) const {
  refuseUnfitted(c_);
  switch (c_.curve) {
    case Curve::SL: {
      auto result = ofLognormal(&Lognormal::moments, c_, limits);
      if (result && c_.lambda < 0) result->mean = -result->mean;
      return result;
    }
    case Curve::SU:
      if (!limits.lower && !limits.upper) return wholeUnbounded(c_);
      return keptUnbounded(c_, limits);
    case Curve::SB:
      return keptBounded(c_, limits);
    default:
      return Normal(c_.lambda, c_.gamma).moments(limits);
  }
}

Moments Johnson::integratedMoments(const Limits& limits) const {
  refuseUnfitted(c_);
  if (c_.curve == Curve::normal) return Normal(c_.lambda, c_.gamma).integratedMoments(limits);
  if (c_.curve == Curve::SL) {
    Moments result = ofLognormal(&Lognormal::integratedMoments, c_, limits);
    if (c_.lambda < 0) result.mean = -result.mean;
    return result;
  }
  // Over the normal deviate, from the median where Z = 0.
  const auto& [gamma, delta, lambda, xi, curve] = c_;
  const double rate = 1 / delta;
  const double atMedian = -gamma * rate;
  const auto piece = [](const Anchor& anchor, const Interval& t, const Scale& scale, double z) {
    return integratedPiece(
        anchor.point, t, scale, [z](double u) { return -(z + u / 2) * u; },
        -z * z / 2 - logRootTwoPi);
  };
  Mixture mixture;
  for (const Interval& x : kept(c_, limits)) {
    if (c_.curve == Curve::SU) {
      const Anchor anchor = anchorAt(lambda * std::sinh(atMedian), xi, x);
      const double start = anchor.isMode ? atMedian : std::asinh(anchor.fromOrigin / lambda);
      const SinhScale t(lambda, start, rate);
      mixture.add(piece(anchor, {t.position(anchor.lower), t.position(anchor.upper)}, t,
                        anchor.isMode ? 0 : gamma + delta * start));
    } else {
      const Bounds ends = Bounds::ofWidth(xi, lambda);
      const Anchor anchor =
          anchorWithin(ends, lambda * logistic(atMedian), lambda * logistic(-atMedian), x);
      const LogisticScale t(ends, anchor.fromOrigin, anchor.toUpperEnd, rate);
      const double logOdds = std::log(anchor.fromOrigin) - std::log(anchor.toUpperEnd);
      mixture.add(piece(anchor, {t.position(anchor.lower), t.position(anchor.upper)}, t,
                        anchor.isMode ? 0 : gamma + delta * logOdds));
    }
  }
  return mixture.moments();
}

}  // namespace palvex::laws
