// The inverse of the incomplete gamma ratios.

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "numerics/Polynomial.h"
#include "numerics/TailQuantile.h"
#include "numerics/m_GammaRatio.h"
#include "numerics/m_MathUtil.h"
#include "runtime/Arithmetic.h"

namespace palvex::m_Gamma {

namespace {

constexpr double euler = 0.577215664901533;
constexpr double largest = std::numeric_limits<double>::max();

/// Where an iteration starts, or that there is nothing to start from.
struct Start {
  double x;
  bool byQ;
  std::int16_t failure = 0;
};

/// Q(a, x) Gamma(a) = B solved for a small B, by an expansion in 1/y with y = -ln B.
double farTail(double a, double y) {
  const double s = 0.5 + (0.5 - a);
  const double c1 = -s * std::log(y);
  const double c2 = -s * (1 + c1);
  const double c3 = s * ((0.5 * c1 + (2 - a)) * c1 + (2.5 - 1.5 * a));
  const double c4 = -s * (((c1 / 3 + (2.5 - 1.5 * a)) * c1 + ((a - 6) * a + 7)) * c1 +
                          ((11 * a - 46) * a + 47) / 6);
  const double c5 = -s * ((((-c1 / 4 + (11 * a - 17) / 6) * c1 + ((-3 * a + 13) * a - 13)) * c1 +
                           0.5 * (((2 * a - 25) * a + 72) * a - 61)) *
                              c1 +
                          (((25 * a - 195) * a + 477) * a - 379) / 12);
  return ((((c5 / y + c4) / y + c3) / y + c2) / y + c1) + y;
}

/// Start for a < 1 from the power law P ~ (x^a) / gamma(a + 1) of small x.
Start powerStart(const IncompleteGamma& shape, double p, double q, double b, bool byQ) {
  const double a = shape.a();
  double x = 0;
  if (b * q <= 1e-8) {
    x = std::exp(-(q / a + euler));
  } else if (p > 0.9) {
    x = std::exp((m_MathUtil::alnrel(-q) + gamln1(a)) / a);
  } else {
    x = std::exp(std::log(p / (1 + shape.gam1())) / a);
  }
  if (x == 0) return {0, byQ, -3};
  return {x / (0.5 + (0.5 - x / (a + 1))), byQ};
}

Start smallShapeStart(const IncompleteGamma& shape, double p, double q) {
  const double a = shape.a();
  const bool byQ = p > 0.5;
  const double qg = q / (1 + shape.gam1());
  const double b = qg / a;
  if (qg > 0.6 * a) return powerStart(shape, p, q, b, byQ);
  if (a < 0.3 && b >= 0.35) {
    const double t = std::exp(-(b + euler));
    return {t * std::exp(t * std::exp(t)), byQ};
  }
  if (b >= 0.45) return powerStart(shape, p, q, b, byQ);
  const double y = -std::log(b);
  if (b <= 0.01) return {farTail(a, y), true};
  const double s = 0.5 + (0.5 - a);
  const double t = y - s * std::log(y);
  if (b >= 0.15) return {y - s * std::log(t) - std::log(1 + s / (t + 1)), true};
  const double ratio = ((t + 2 * (3 - a)) * t + (2 - a) * (3 - a)) / ((t + (5 - a)) * t + 2);
  return {y - s * std::log(t) - std::log(ratio), true};
}

/// Start for a > 1 from the normal deviate (Cornish and Fisher), refined in the far tails.
Start largeShapeStart(double a, double p, double q) {
  constexpr std::array numerator{3.31125922108741, 11.6616720288968, 4.28342155967104,
                                 0.213623493715853};
  constexpr std::array denominator{1.0, 6.61053765625462, 6.40691597760039, 1.27364489782223,
                                   0.036117081018842};
  const bool isRight = p > 0.5;
  double w = std::log(std::min(p, q));
  const double t = std::sqrt(-2 * w);
  const double magnitude = t - polynomial(numerator, t) / polynomial(denominator, t);
  const double s = q > 0.5 ? -magnitude : magnitude;
  const double root = std::sqrt(a);
  const double s2 = s * s;
  double x = a + s * root + (s2 - 1) / 3 + s * (s2 - 7) / (36 * root) -
             ((3 * s2 + 7) * s2 - 16) / (810 * a) +
             s * ((9 * s2 + 256) * s2 - 433) / (38880 * a * root);
  x = std::max(x, 0.0);

  if (isRight) {
    if (x < 3 * a) return {x, true};
    const double y = -(w + gamln(a));
    constexpr double ln10 = 2.302585;
    if (y >= ln10 * std::max(2.0, a * (a - 1))) return {farTail(a, y), true};
    for (int sweep = 0; sweep < 2; ++sweep) {
      x = y + (a - 1) * std::log(x) - m_MathUtil::alnrel(-(a - 1) / (x + 1));
    }
    return {x, true};
  }

  const double a1 = a + 1;
  if (x > 0.7 * a1) return {x, false};
  w += gamln(a1);
  if (x <= 0.15 * a1) {
    const double a2 = a + 2;
    const double a3 = a + 3;
    x = std::exp(w / a);
    x = std::exp((w + x - std::log(1 + (x / a1) * (1 + x / a2))) / a);
    x = std::exp((w + x - std::log(1 + (x / a1) * (1 + x / a2))) / a);
    x = std::exp((w + x - std::log(1 + (x / a1) * (1 + (x / a2) * (1 + x / a3)))) / a);
    if (x <= 0.01 * a1) return {x, false};
  }
  double divisor = a1;
  double term = x / divisor;
  double sum = 1 + term;
  do {
    divisor += 1;
    term *= x / divisor;
    sum += term;
  } while (term > 1e-4);
  const double rest = w - std::log(sum);
  x = std::exp((x + rest) / a);
  return {x * (1 - (a * std::log(x) - x - rest) / (a - x)), false};
}

/// Improves x until P(a, x) = p, or Q(a, x) = q when `byQ`. Returns ierr of `gaminv`.
std::int16_t iterate(const IncompleteGamma& shape, double& x, double p, double q, bool byQ) {
  constexpr double smallestProbability = 1e10 * std::numeric_limits<double>::min();
  constexpr std::int16_t uncertain = -8;
  if ((byQ ? q : p) <= smallestProbability) return uncertain;
  const double am1 = (shape.a() - 0.5) - 0.5;
  for (std::int16_t steps = 1; steps <= 20; ++steps) {
    const Ratio at = shape(x);
    if (at.p == 0 || at.q == 0 || at.density == 0) return uncertain;
    const double t = (byQ ? q - at.q : at.p - p) / at.density;
    // The derivatives of f = P - p all follow from the density, so that the series of the inverse
    // function in t = f/(x f') is taken to the third order: one order beyond Schroeder's step.
    // `error` bounds the first neglected term.
    const double slope = am1 - x;
    double change = t;
    double error = 1;
    if (std::abs(t) <= 0.1 && std::abs(slope * t) <= 0.2) {
      const double curvature = 2 * slope * slope + am1;
      change = t * (1 + t * (0.5 * slope + t * curvature / 6));
      const double scale = std::abs(t) * std::max({std::abs(slope), std::sqrt(shape.a()), 1.0});
      error = scale * scale * scale;
    }
    const double next = x * (1 - change);
    if (!(next > 0)) return -7;
    const bool stands = next == x;
    x = next;
    if (stands || std::abs(change) * error <= 1e-16) return steps;
  }
  return -6;
}

Start startFor(const IncompleteGamma& shape, double p, double q) {
  return shape.a() < 1 ? smallShapeStart(shape, p, q) : largeShapeStart(shape.a(), p, q);
}

/// The quantile of the exponential law.
double exponential(double p, double q) {
  return q >= 0.9 ? -m_MathUtil::alnrel(-p) : -std::log(q);
}

}  // namespace

void gaminv(const IncompleteGamma& shape, double& x, double x0, double p, double q,
            std::int16_t& ierr, Line caller) try {
  const double a = shape.a();
  x = 0;
  ierr = 0;
  if (!(a > 0)) {
    ierr = -2;
    return;
  }
  if (!(std::abs(((p + q) - 0.5) - 0.5) <= std::numeric_limits<double>::epsilon())) {
    ierr = -4;
    return;
  }
  if (p < 0 || q < 0) raise(fault::invalidCall);
  if (p == 0) return;
  if (q == 0) {
    x = largest;
    return;
  }
  if (a == 1) {
    x = exponential(p, q);
    return;
  }
  checked(a);
  const Start start = x0 > 0 && std::isfinite(x0) ? Start{x0, p > 0.5} : startFor(shape, p, q);
  x = start.x;
  ierr = start.failure != 0 ? start.failure : iterate(shape, x, p, q, start.byQ);
  if (ierr == -7) x = 0;
} catch (RuntimeError& error) {
  error.leave("m_Gamma.gaminv", caller);
}

double IncompleteGamma::quantile(double p, double q) const noexcept {
  using Double = std::numeric_limits<double>;
  if (!(p >= 0 && q >= 0 && a_ > 0)) return Double::quiet_NaN();
  if (p == 0) return 0;
  if (q == 0 || std::isinf(a_)) return Double::infinity();
  if (a_ == 1) return exponential(p, q);
  const Start start = startFor(*this, p, q);
  if (start.failure == 0) {
    double x = start.x;
    if (iterate(*this, x, p, q, start.byQ) > 0) return x;
  }
  constexpr double smallest = Double::min();
  if (start.x < smallest) return 0;
  const bool upper = q < p;
  const auto tailAt = [&](double x) {
    const Ratio at = (*this)(x);
    return Tail{.probability = upper ? at.q : at.p,
                .density = at.density,
                .slope = upper ? x - a_ : a_ - x,
                .curvature = x};
  };
  const auto moved = [&](double x, double t) {
    return std::clamp(x * std::exp(upper ? -t : t), smallest, largest);
  };
  const double x = tailQuantile(std::min(start.x, largest), std::min(p, q), tailAt, moved);
  return x <= smallest ? 0 : x;
}

}  // namespace palvex::m_Gamma
