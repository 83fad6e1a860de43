// The beta distribution: density, cumulative probability, inverse, value.

#include "families/m_Beta.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "families/m_Gamma.h"
#include "numerics/m_MathUtil.h"

namespace palvex::m_Beta {

namespace {

/// BetaCDF as a number; the status of cdfbet where it is a text.
double tailProbability(double x, Shapes& shapes, bool upper, std::int16_t& status) {
  if (shapes.alpha == 1) {
    const double lower = 1 - Power(1 - x, shapes.beta);
    return upper ? 1 - lower : lower;
  }
  if (shapes.beta == 1) {
    const double lower = -Power(x, shapes.alpha);
    return upper ? 1 - lower : lower;
  }
  Tails tails{};
  status = cdfbet(x, 1 - x, shapes.ratio, tails);
  return upper ? tails.upper : tails.lower;
}

/// 1/Beta(alpha, beta), infinite where it overflows.
double densityFactor(Shapes& shapes, Line line = Line::here()) {
  if (!shapes.densityFactor) {
    const double alpha = shapes.alpha;
    const double beta = shapes.beta;
    shapes.densityFactor = std::exp(m_Gamma::gamln(alpha + beta, line) -
                                    m_Gamma::gamln(alpha, line) - m_Gamma::gamln(beta, line));
  }
  return *shapes.densityFactor;
}

}  // namespace

double StdBetaPDF(double u, Shapes& shapes, Line caller) try {
  const double factor = checked(densityFactor(shapes));
  const double power = Power(u, shapes.alpha - 1);
  return checked(factor * power * Power(1 - u, shapes.beta - 1));
} catch (RuntimeError& error) {
  error.leave("m_Beta.StdBetaPDF", caller);
}

double density(double x, Shapes& shapes, double minimum, double maximum, const Limits& limits,
               Line caller) try {
  const bool defined = shapes.alpha > 0 && shapes.beta > 0 && maximum > minimum;
  if (!(defined && minimum <= x && x <= maximum) || limits.cut(x)) return 0;
  return StdBetaPDF(checked(x - minimum) / checked(maximum - minimum), shapes);
} catch (RuntimeError& error) {
  error.leave("m_Beta.BetaPDF", caller);
}

bool densityHolds(double x, Shapes& shapes, double minimum, double maximum) {
  if (!(minimum < maximum && minimum <= x && x <= maximum)) return true;
  const double u = (x - minimum) / (maximum - minimum);
  return std::isfinite(densityFactor(shapes) * std::pow(u, shapes.alpha - 1) *
                       std::pow(1 - u, shapes.beta - 1));
}

Variant BetaCDF(double x, Shapes& shapes, Boolean upper, Line caller) try {
  std::int16_t status = 0;
  const double probability = tailProbability(x, shapes, upper, status);
  if (status == 0) return probability;
  return "input parameter " + std::to_string(status) + " is out of range";
} catch (RuntimeError& error) {
  error.leave("m_Beta.BetaCDF", caller);
}

void PPFBET(double p, Shapes& shapes, double tol, std::int16_t& ier, double& x, Line caller) try {
  constexpr std::int16_t iterationLimit = 100;
  const bool closedForm = shapes.alpha == 1 || shapes.beta == 1;
  // BetaCDF less p, without its checks: t stays inside of (0, 1), and the shapes are positive.
  const auto f = [&](double t, Line line = Line::here()) {
    if (closedForm) return BetaCDF(t, shapes, false, line).toDouble(line) - p;
    return shapes.ratio(t, 1 - t).lower - p;
  };
  const auto sameSign = [](double u, double v) { return (u > 0 && v > 0) || (u < 0 && v < 0); };

  ier = 0;
  if (!(p >= 0 && p <= 1)) {
    ier = 3;
  } else if (!(shapes.alpha > 0 && shapes.beta > 0)) {
    ier = 4;
  } else if (!(tol >= 1.0E-8)) {
    ier = 5;
  }
  if (ier != 0) return;

  // b is the best point, the root lies between b and c, a was b before; d is the last step, e the
  // one before.
  double a = 0;
  double fa = -p;
  double b = 1;
  double fb = 1 - p;
  double c = b;
  double fc = fb;
  double d = 0;
  double e = 0;
  for (std::int16_t iteration = 1; iteration <= iterationLimit; ++iteration) {
    if (sameSign(fb, fc)) {
      c = a;
      fc = fa;
      d = b - a;
      e = d;
    }
    if (std::abs(fc) < std::abs(fb)) {
      a = b;
      b = c;
      c = a;
      fa = fb;
      fb = fc;
      fc = fa;
    }
    const double tol1 = 0.5 * tol + 2.0E-12 * std::abs(b);
    const double xm = 0.5 * (c - b);
    if (std::abs(xm) <= tol1 || fb == 0) {
      x = b;
      return;
    }
    bool interpolated = false;
    if (std::abs(e) >= tol1 && std::abs(fa) > std::abs(fb)) {
      const double s = fb / fa;
      double numerator = 2 * xm * s;
      double denominator = 1 - s;
      if (a != c) {
        const double q = fa / fc;
        const double r = fb / fc;
        numerator = s * (2 * xm * q * (q - r) - (b - a) * (r - 1));
        denominator = (q - 1) * (r - 1) * (s - 1);
      }
      if (numerator > 0) {
        denominator = -denominator;
      } else {
        numerator = -numerator;
      }
      interpolated = 2 * numerator < 3 * xm * denominator - std::abs(tol1 * denominator) &&
                     2 * numerator < std::abs(e * denominator);
      if (interpolated) {
        e = d;
        d = numerator / denominator;
      }
    }
    if (!interpolated) {
      d = xm;
      e = d;
    }
    a = b;
    fa = fb;
    b += std::abs(d) > tol1 ? d : m_MathUtil::sign(tol1, xm);
    fb = f(b);
  }
  ier = 7;
  x = b;
} catch (RuntimeError& error) {
  error.leave("m_Beta.PPFBET", caller);
}

Variant BetaINV(double p, Shapes& shapes, Boolean upper, Line caller) try {
  if (upper) p = 1 - p;
  if (shapes.beta == 1) return Power(p, Divide(1, shapes.alpha));
  if (shapes.alpha == 1) return 1 - Power(1 - p, Divide(1, shapes.beta));
  std::int16_t ier = 0;
  double x = 0;
  PPFBET(p, shapes, 1.0E-8, ier, x);
  switch (ier) {
    case 3:
      return "input error, p<0 OR p>1";
    case 4:
      return "P<=0 OR bayta<=0";
    default:
      return x;
  }
} catch (RuntimeError& error) {
  error.leave("m_Beta.BetaINV", caller);
}

Band band(Shapes& shapes, double minimum, double maximum, const Limits& limits, Line caller) try {
  const double width = checked(maximum - minimum);
  const auto kept = [&](double limit, double otherwise, Line line = Line::here()) {
    const double u = checked((limit - minimum) / width, line);
    return u >= 0 && u <= 1 ? BetaCDF(u, shapes, false, line).toDouble(line) : otherwise;
  };
  Band band;
  if (limits.lower) band.lower = kept(*limits.lower, 0);
  if (limits.upper) band.upper = kept(*limits.upper, 1);
  return wrappedWhere(limits, band);
} catch (RuntimeError& error) {
  error.leave("m_Beta.BetaVAL", caller);
}

double value(double p, Shapes& shapes, double minimum, double maximum, const Band& band,
             Line caller) try {
  if (ignoresLimits(p, shapes.alpha, shapes.beta, minimum, maximum)) return checked(minimum);
  const double u = BetaINV(band.probability(p), shapes, false).toDouble();
  return checked(checked(maximum - minimum) * u + minimum);
} catch (RuntimeError& error) {
  error.leave("m_Beta.BetaVAL", caller);
}

}  // namespace palvex::m_Beta
