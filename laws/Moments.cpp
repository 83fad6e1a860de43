#include "laws/Moments.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "numerics/m_Integration.h"
#include "runtime/Arithmetic.h"

namespace palvex::laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Densities below exp(-50) of the largest are left out.
constexpr double negligible = 50;

/// A first step for walking away from the anchor in the direction of `end`: within it the density
/// falls by a factor of no more than e.
double firstStep(const std::function<double(double)>& logDensity, double end) {
  const double sign = end < 0 ? -1 : 1;
  if (std::isfinite(end) && logDensity(end) > -1) return std::abs(end);
  double near = 0x1p-1000;
  double far = std::min(std::abs(end), 0x1p1000);
  while (far / near > 2) {
    const double between = std::sqrt(near) * std::sqrt(far);
    (logDensity(sign * between) > -1 ? near : far) = between;
  }
  return near;
}

/// The integral of |distance|^order times the density, as the walk sees it: the logarithms of the
/// largest integrands of each order.
using Peaks = std::array<double, 3>;

/// Adds the breaks step, 2 step, 4 step.. towards `end`, up to where the integrands of all orders
/// are negligible against their peaks.
void walk(const std::function<double(double)>& logDensity, const Scale& scale, double step,
          double end, std::vector<double>& breaks, Peaks& peaks) {
  if (end == 0) return;
  for (double t = std::copysign(step, end);; t *= 2) {
    const bool atEnd = std::abs(t) >= std::abs(end);
    if (atEnd) t = end;
    breaks.push_back(t);
    const double density = logDensity(t);
    const double distance = scale.logDistance(t);
    bool done = true;
    for (std::size_t order = 0; order < peaks.size(); ++order) {
      const double integrand =
          order == 0 ? density : density + static_cast<double>(order) * distance;
      peaks[order] = std::max(peaks[order], integrand);
      done = done && !(integrand > peaks[order] - negligible);
    }
    if (done || atEnd) return;
  }
}

/// Puts the breaks in order, and others between them at step, 2 step, 4 step.. from the bend of the
/// scale.
void addBend(const Scale& scale, std::vector<double>& breaks) {
  std::sort(breaks.begin(), breaks.end());
  const double lowest = breaks.front();
  const double highest = breaks.back();
  const double bend = scale.bend();
  if (!(lowest < bend && bend < highest) || bend == 0) return;
  breaks.push_back(bend);
  double t = scale.length();
  while (t < highest - lowest) {
    if (bend - t > lowest) breaks.push_back(bend - t);
    if (bend + t < highest) breaks.push_back(bend + t);
    t *= 2;
  }
  std::sort(breaks.begin(), breaks.end());
}

}  // namespace

KeptIntervals::KeptIntervals(const Limits& limits, double lowest, double highest) {
  const double lower = limits.lower ? std::max(*limits.lower, lowest) : lowest;
  const double upper = limits.upper ? std::min(*limits.upper, highest) : highest;
  if (limits.reversed()) {
    add(lowest, upper);
    add(lower, highest);
  } else {
    add(lower, upper);
  }
}

void KeptIntervals::add(double lower, double upper) {
  if (lower < upper) intervals_[count_++] = {lower, upper};
}

void Mixture::add(const Piece& piece) {
  if (piece.logMass == -infinity) return;
  if (logMass_ == -infinity) {
    logMass_ = piece.logMass;
    moments_ = piece.moments;
    return;
  }
  const double gap = piece.logMass - logMass_;
  const double share = 1 / (1 + std::exp(-gap));
  const double rest = 1 / (1 + std::exp(gap));
  const double between = piece.moments.mean - moments_.mean;
  const double within =
      std::hypot(std::sqrt(share) * piece.moments.sd, std::sqrt(rest) * moments_.sd);
  moments_.mean += share * between;
  moments_.sd = std::hypot(within, std::sqrt(share * rest) * between);
  logMass_ = std::max(logMass_, piece.logMass) + std::log1p(std::exp(-std::abs(gap)));
}

Moments Mixture::moments() const {
  refuseNaN(logMass_);
  if (std::exp(logMass_) == 0) raise(fault::divisionByZero);
  return {checked(moments_.mean), checked(moments_.sd)};
}

std::optional<Moments> PartialMoments::moments() const {
  constexpr double smallestMass = 1e-280;  // far enough from where doubles lose digits
  constexpr double allowed = 1e-11;
  const double mass = sums_[0];
  if (!(mass > smallestMass)) return {};
  const double mean = sums_[1] / mass;
  const double square = sums_[2] / mass;
  const double variance = square - mean * mean;
  const double meanError = (errors_[1] + std::abs(mean) * errors_[0]) / mass;
  const double varianceError =
      (errors_[2] + 2 * std::abs(mean) * errors_[1] + (square + 2 * mean * mean) * errors_[0]) /
      mass;
  if (!(variance > 0 && std::isfinite(variance))) return {};
  const double sd = std::sqrt(variance);
  if (!(meanError <= allowed * sd && varianceError <= 2 * allowed * variance)) return {};
  return Moments{mean, sd};
}

Anchor anchorAt(double mode, double origin, const Interval& kept) {
  const double lower = kept.lower - origin;
  const double upper = kept.upper - origin;
  const double width = kept.upper - kept.lower;
  if (mode <= lower) return {kept.lower, lower, {lower, 0}, {upper, width}, false};
  if (mode >= upper) return {kept.upper, upper, {lower, -width}, {upper, 0}, false};
  return {origin + mode, mode, {lower, lower - mode}, {upper, upper - mode}, true};
}

double logRatio(double a, double b, double difference) {
  return std::abs(difference) < b / 2 ? std::log1p(difference / b) : std::log(a) - std::log(b);
}

double SinhScale::position(const End& end) const {
  if (std::isinf(end.fromOrigin)) return end.fromOrigin;
  // The difference of two inverse hyperbolic sines as one, with its argument free of cancellation.
  const double a = std::sinh(start_);
  const double b = end.fromOrigin / unit_;
  const double aRoot = std::hypot(1, a);
  const double bRoot = std::hypot(1, b);
  const bool sameSign = (a < 0) == (b < 0);
  const double argument =
      sameSign ? end.fromAnchor / unit_ * (a + b) / (b * aRoot + a * bRoot) : b * aRoot - a * bRoot;
  return std::asinh(argument) / rate_;
}

double SinhScale::logDistance(double t) const {
  const double half = rate_ * t / 2;
  const auto log2cosh = [](double u) {
    return std::abs(u) + std::log1p(std::exp(-2 * std::abs(u)));
  };
  const auto logSinh = [](double u) {
    return std::abs(u) + std::log(-std::expm1(-2 * std::abs(u)) / 2);
  };
  return std::log(unit_) + log2cosh(start_ + half) + logSinh(half);
}

Piece integratedPiece(double anchor, const Interval& t, const Scale& scale,
                      const std::function<double(double)>& logDensity, double logAtAnchor) {
  // No width of an interval makes up for a density as small as this.
  if (logAtAnchor < -1500) return {-infinity, {0, 0}};
  double step = scale.length();
  if (t.lower < 0) step = std::min(step, firstStep(logDensity, t.lower));
  if (t.upper > 0) step = std::min(step, firstStep(logDensity, t.upper));

  std::vector<double> breaks{0};
  Peaks peaks{0, -infinity, -infinity};
  walk(logDensity, scale, step, t.lower, breaks, peaks);
  walk(logDensity, scale, step, t.upper, breaks, peaks);
  addBend(scale, breaks);

  // Each integral in units of its integrand's peak: neither the density nor the square of a
  // distance needs to be a double.
  const double mass =
      m_Integration::integrate([&](double u) { return std::exp(logDensity(u)); }, breaks);
  const double first = m_Integration::integrate(
      [&](double u) {
        return std::copysign(std::exp(logDensity(u) + scale.logDistance(u) - peaks[1]), u);
      },
      breaks);
  const double toMean = first / mass * std::exp(peaks[1]);
  const double second = m_Integration::integrate(
      [&](double u) {
        const double distance = scale.distance(u) - toMean;
        const double logDistance =
            std::isfinite(distance) ? std::log(std::abs(distance)) : scale.logDistance(u);
        return std::exp(logDensity(u) + 2 * logDistance - peaks[2]);
      },
      breaks);
  return {logAtAnchor + std::log(mass),
          {anchor + toMean, std::sqrt(second / mass) * std::exp(peaks[2] / 2)}};
}

double expm1LessT(double t) {
  if (std::abs(t) > 0.5) return std::expm1(t) - t;
  double term = t * t / 2;
  double sum = term;
  for (int n = 3; n < 20; ++n) {
    term *= t / n;
    sum += term;
  }
  return sum;
}

}  // namespace palvex::laws
