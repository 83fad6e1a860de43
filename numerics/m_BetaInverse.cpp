// The inverse of the incomplete beta ratio.

#include "numerics/m_BetaInverse.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <utility>

#include "numerics/NormalDeviate.h"
#include "numerics/TailQuantile.h"

namespace palvex::m_Beta {

namespace {

constexpr double smallest = std::numeric_limits<double>::min();

/// The fraction whose odds x/y are e^t times those of `at`.
Fraction moved(const Fraction& at, double t) {
  if (t < 0) {
    const Fraction mirrored = moved({at.y, at.x}, -t);
    return {mirrored.y, mirrored.x};
  }
  const double y = at.y * std::exp(-t);  // where x e^t could overflow
  const double total = at.x + y;
  return {at.x / total, std::max(y / total, smallest)};
}

/// x and y for the odds x/y = e^t.
Fraction fromLogOdds(double t) {
  const double inverseOdds = std::exp(-std::abs(t));
  const double high = 1 / (1 + inverseOdds);
  const double low = inverseOdds * high;
  return t < 0 ? Fraction{low, high} : Fraction{high, low};
}

/// For shapes above 1/2 the approximation of ln(x/y)/2 from a normal deviate z by A. H. Carter,
/// Approximation to percentage points of the z-distribution, Biometrika 34 (1947) 352-358.
double carter(double a, double b, double z) {
  const double s = 1 / (2 * a - 1);
  const double t = 1 / (2 * b - 1);
  const double h = 2 / (s + t);
  const double r = (z * z - 3) / 6;
  return z * std::sqrt(h + r) / h + (t - s) * (r + 5.0 / 6 - 2 / (3 * h));
}

/// The quantile of the arcsine law.
Fraction arcsine(double p, double q) {
  const double root = std::sin(std::min(p, q) * (std::numbers::pi / 2));
  const std::array<double, 2> parts{root * root, 1 - root * root};
  const std::size_t x = p <= q ? 0 : 1;  // an index: a branch on a random p would be mispredicted
  return {parts[x], parts[1 - x]};
}

/// Whether three terms of the series x = u (1 + second u + ..) are a good start.
bool isShort(double u, double second, double bound) {
  return u * (std::abs(second) + 0.3) <= bound && u < 0.9;
}

}  // namespace

InverseBeta::InverseBeta(double a, double b) : ratio_(a, b) {
  ratio_.prepare();
  const double logBeta = std::isfinite(a) && std::isfinite(b) ? ratio_.logBeta() : 0;
  sides_ = {side(a, b, logBeta), side(b, a, logBeta)};
}

InverseBeta::Side InverseBeta::side(double a, double b, double logBeta) {
  const double next = a + 1;
  const double second = (b - 1) / next;
  const double third = ((a + 3 * b - 1) * (a / next) + (5 * b - 4) / next) / (2 * (a + 2));
  return {.a = a, .b = b, .logScale = std::log(a) + logBeta, .second = second, .third = third};
}

Fraction InverseBeta::start(const Side& side, const Side& other, double p, double q) noexcept {
  const double logPower = (std::log(p) + side.logScale) / side.a;
  const double u = std::exp(logPower);
  const bool isNormal = std::min(side.a, side.b) > 1.5;
  if (isShort(u, side.second, isNormal ? 0.2 : 0.35)) {
    const double x = u * (1 + side.second * u * (1 + side.third * u));
    return {x, 1 - x};
  }
  if (isNormal) {
    return fromLogOdds(std::log(side.a / side.b) +
                       2 * carter(side.a, side.b, roughNormalDeviate(p)));
  }
  const double v = std::exp((std::log(q) + other.logScale) / other.a);
  if (isShort(v, other.second, 0.35) || logPower >= 0) {
    const double y = std::clamp(v * (1 + v * other.second), smallest, 0.9);
    return {1 - y, y};
  }
  return {u, -std::expm1(logPower)};
}

Fraction InverseBeta::operator()(double p, double q) const noexcept {
  const auto& [a, b] = std::pair{sides_[0].a, sides_[1].a};
  if (!(p >= 0 && q >= 0 && a > 0 && b > 0)) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    return {nan, nan};
  }
  if (a == 0.5 && b == 0.5) return arcsine(p, q);
  if (p == 0) return {0, 1};
  if (q == 0) return {1, 0};
  if (std::isinf(a) || std::isinf(b)) {
    if (a == b) return {0.5, 0.5};
    return std::isinf(a) ? Fraction{1, 0} : Fraction{0, 1};
  }
  const bool mirrored = q < p;
  const Side& side = sides_[mirrored ? 1 : 0];
  const double target = mirrored ? q : p;
  const auto tailAt = [&](const Fraction& at) {
    const BetaPoint point = mirrored ? ratio_.at(at.y, at.x) : ratio_.at(at.x, at.y);
    return Tail{.probability = mirrored ? point.tails.upper : point.tails.lower,
                .density = point.power,
                .slope = side.a * at.y - side.b * at.x,
                .curvature = (side.a + side.b) * at.x * at.y};
  };
  Fraction first = start(side, sides_[mirrored ? 0 : 1], target, mirrored ? p : q);
  if (!(first.x >= 0 && first.y >= 0)) first = {0.5, 0.5};  // shapes near the largest double
  if (first.x <= smallest) return mirrored ? Fraction{1, 0} : Fraction{0, 1};
  const Fraction found = tailQuantile(first, target, tailAt, moved);
  if (found.x <= smallest || found.y <= smallest) {
    return (found.x < found.y) == mirrored ? Fraction{1, 0} : Fraction{0, 1};
  }
  return mirrored ? Fraction{found.y, found.x} : found;
}

}  // namespace palvex::m_Beta
