// The fit of a Johnson curve to four moments: Algorithm AS 99.

#include <cmath>
#include <numbers>
#include <utility>

#include "families/m_Johnson.h"
#include "numerics/PublishedConstants.h"
#include "numerics/m_MathUtil.h"

namespace palvex::m_Johnson {

namespace {

constexpr double tolerance = 0.01;

/// The lognormal curve of a skewness: w = exp(delta^-2), and its kurtosis.
struct LognormalPoint {
  double w;
  double kurtosis;
};

LognormalPoint lognormalPoint(double skewness) {
  const double b1 = skewness * skewness;
  const double x = 0.5 * b1 + 1;
  const double y = std::abs(skewness) * std::sqrt(0.25 * b1 + 1);
  const double u = std::pow(x + y, 1.0 / 3);
  const double w = u + 1 / u - 1;
  return {w, checked(w * w * (3 + w * (2 + w)) - 3)};
}

}  // namespace

void CalcJohnson(double mean, double stdDev, double skewness, double kurtosis,
                 JohnsonParams& params, Line caller) try {
  JNSN(mean, stdDev, skewness, kurtosis, params.typeCode, params.gamma, params.delta, params.lambda,
       params.xi, params.message);
  constexpr std::array names{"SL", "SU", "SB", "Normal"};  // of the codes that the fit gives
  params.typeName =
      params.message.empty() ? names.at(static_cast<std::size_t>(params.typeCode - 1)) : "Error";
} catch (RuntimeError& error) {
  error.leave("m_Johnson.CalcJohnson", caller);
}

void JNSN(double mean, double stdDev, double skewness, double kurtosis, std::int16_t& typeCode,
          double& gamma, double& delta, double& lambda, double& xi, std::string& message,
          Line caller) try {
  gamma = delta = lambda = xi = 0;
  message.clear();
  const double b1 = checked(skewness * skewness);
  // Every test is made: the last one that fails is reported.
  if (stdDev <= 0) message = "Standard Deviation is not greater than zero.";
  if (kurtosis <= 0) message = "Kurtosis value is not greater than zero.";
  if (b1 + 1 > kurtosis) message = "Kurtosis less than skewness squared plus one.";
  if (!message.empty()) return;
  for (const double moment : {mean, stdDev, kurtosis}) checked(moment);

  // The sign counts: a negative skewness of any size passes as normal here.
  if (std::abs(kurtosis - 3) <= tolerance && skewness <= tolerance) {
    typeCode = 4;
    lambda = mean;
    gamma = stdDev;
    return;
  }

  const auto [w, lognormalKurtosis] = lognormalPoint(skewness);
  const double below = lognormalKurtosis - kurtosis;
  if (std::abs(below) <= tolerance) {
    typeCode = 1;
    lambda = m_MathUtil::fsign(1, skewness);
    delta = Divide(1, Sqr(Log(w)));
    gamma = 0.5 * delta * Log(Divide(w * (w - 1), checked(stdDev * stdDev)));
    xi = checked(lambda * (lambda * mean - Exp((0.5 / delta - gamma) / delta)));
  } else if (below <= 0) {
    typeCode = 2;
    SUFIT(mean, stdDev, skewness, kurtosis, gamma, delta, lambda, xi);
  } else {
    typeCode = 3;
    Boolean sbFault = false;
    SBFIT(mean, stdDev, skewness, kurtosis, gamma, delta, lambda, xi, sbFault, message);
    if (sbFault && b1 + 2 >= kurtosis) message = "Failure in fitting SB.";
  }
} catch (RuntimeError& error) {
  error.leave("m_Johnson.JNSN", caller);
}

void SUFIT(double mean, double stdDev, double skewness, double kurtosis, double& gamma,
           double& delta, double& lambda, double& xi, Line caller) try {
  constexpr int mostPasses = 1000;  // a fit that converges takes about 12
  const double b1 = checked(skewness * skewness);
  const double b3 = kurtosis - 3;
  double w = Sqr(Sqr(2 * kurtosis - 2.8 * b1 - 2) - 1);  // exp(delta^-2), first estimate
  double y = 0;
  if (std::abs(skewness) > tolerance) {
    double z = 0;  // the squared skewness of the curve
    int passes = 0;
    do {
      if (++passes > mostPasses) raise(fault::overflow);
      const double w1 = w + 1;
      const double wm1 = w - 1;
      const double scaled = w1 * b3;
      const double v = w * (6 + w * (3 + w));
      const double a = 8 * (wm1 * (3 + w * (7 + v)) - scaled);
      const double b = 16 * (wm1 * (6 + v) - b3);
      const double root =
          Sqr(a * a - 2 * b * (wm1 * (3 + w * (9 + w * (10 + v))) - 2 * w1 * scaled));
      y = Divide(root - a, b);
      const double factor = 4 * (w + 2) * y + 3 * w1 * w1;
      const double base = 2 * y + w1;
      z = Divide(y * wm1 * (factor * factor), checked(2 * (base * base * base)));
      const double w2 = w * w;
      const double quotient = Divide(b1 * (kurtosis - 1.5 - w2 * (1 + 0.5 * w2)), z);
      w = Sqr(Sqr(1 - 2 * (1.5 - kurtosis + quotient)) - 1);
    } while (std::abs(b1 - z) > tolerance);
    y = Divide(y, w);
    y = Log(Sqr(y) + Sqr(y + 1));
    if (skewness > 0) y = -y;
  }
  const double x = Sqr(Divide(1, Log(w)));
  delta = x;
  gamma = checked(y * x);
  const double e = Exp(y);
  const double z = checked(e * e);
  lambda = Divide(stdDev, Sqr(0.5 * (w - 1) * (0.5 * w * (z + Divide(1, z)) + 1)));
  xi = checked(0.5 * Sqr(w) * (e - 1 / e) * lambda + mean);
} catch (RuntimeError& error) {
  error.leave("m_Johnson.SUFIT", caller);
}

namespace {

struct ShapePair {
  double g;
  double d;
};

/// The first estimate of the SB curve's shape: published empirical formulas.
ShapePair firstSbEstimate(double rootB1, double b1, double kurtosis) {
  const auto [w, lognormalKurtosis] = lognormalPoint(rootB1);
  const double lowest = b1 + 1;
  const double share = Divide(kurtosis - lowest, lognormalKurtosis - lowest);
  double f = 2;
  if (rootB1 > tolerance) {
    const double d = Divide(1, Sqr(Log(w)));
    f = d >= 0.64 ? 2 - Divide(8.5245, d * (d * (d - 2.163) + 11.346)) : 1.25 * d;
  }
  f = share * f + 1;
  const double d = f >= 1.8 ? (0.626 * f - 0.408) * Power(3 - f, -0.479) : 0.8 * (f - 1);

  if (b1 < tolerance * tolerance) return {0, d};
  if (d <= 1) return {(0.7466 * Power(d, 1.7973) + 0.5955) * Power(b1, 0.485), d};
  const auto [u, y] = d <= 2.5 ? std::pair(0.0623, 0.4043) : std::pair(0.0124, 0.5291);
  return {Power(b1, u * d + y) * (0.9281 + d * (1.0614 * d - 0.7077)), d};
}

}  // namespace

void SBFIT(double mean, double stdDev, double skewness, double kurtosis, double& gamma,
           double& delta, double& lambda, double& xi, Boolean& sbFault, std::string& message) try {
  constexpr double smallStep = tolerance * tolerance;
  constexpr int mostSteps = 50;
  const double rootB1 = std::abs(skewness);
  const double b1 = checked(rootB1 * rootB1);
  auto [g, d] = firstSbEstimate(rootB1, b1, kurtosis);
  RawMoments mu{};
  double h2 = 0;  // central moments of the standard curve: h2, h3, h4
  double gStep = 0;
  double dStep = 0;
  int steps = 0;
  do {
    sbFault = ++steps > mostSteps;
    if (sbFault) return;
    SBMOM(g, d, mu, sbFault, message);
    if (sbFault) return;
    const double square = mu[1] * mu[1];
    h2 = mu[2] - square;
    sbFault = h2 <= 0;
    if (sbFault) return;
    const double root = Sqr(h2);
    const double h2a = root * h2;
    const double h2b = h2 * h2;
    const double h3 = mu[3] - mu[1] * (3 * mu[2] - 2 * square);
    const double h4 = mu[4] - mu[1] * (4 * mu[3] - mu[1] * (6 * mu[2] - 3 * square));
    const double skewnessNow = Divide(h3, h2a);
    const double kurtosisNow = Divide(h4, h2b);
    const double w = checked(g * d);
    const double d2 = checked(d * d);

    std::array<double, 5> derivative{};  // of the skewness (1, 2) and kurtosis (3, 4), by g and d
    for (const std::size_t j : {std::size_t{1}, std::size_t{2}}) {
      std::array<double, 5> dd{};  // of the raw moments
      for (std::size_t k = 1; k <= 4; ++k) {
        const auto t = static_cast<double>(k);
        const double s =
            j == 1 ? mu[k + 1] - mu[k]
                   : Divide((w - t) * (mu[k] - mu[k + 1]) + (t + 1) * (mu[k + 1] - mu[k + 2]), d2);
        dd[k] = Divide(t * s, d);
      }
      const double t = 2 * mu[1] * dd[1];
      const double s = mu[1] * dd[2];
      const double y = dd[2] - t;
      derivative[j] = Divide(dd[3] - 3 * (s + mu[2] * dd[1] - t * mu[1]) - 1.5 * h3 * y / h2, h2a);
      derivative[j + 2] = Divide(dd[4] - 4 * (dd[3] * mu[1] + dd[1] * mu[3]) +
                                     6 * (mu[2] * t + mu[1] * (s - t * mu[1])) - 2 * h4 * y / h2,
                                 h2b);
    }
    const double scale =
        Divide(1, checked(derivative[1] * derivative[4] - derivative[2] * derivative[3]));
    const double skewnessError = skewnessNow - rootB1;
    const double kurtosisError = kurtosisNow - kurtosis;
    gStep = checked((derivative[4] * skewnessError - derivative[2] * kurtosisError) * scale);
    dStep = checked((derivative[1] * kurtosisError - derivative[3] * skewnessError) * scale);
    g = checked(g - gStep);
    if (b1 == 0 || g < 0) g = 0;
    d = checked(d - dStep);
  } while (std::abs(gStep) > smallStep || std::abs(dStep) > smallStep);

  delta = d;
  lambda = Divide(stdDev, Sqr(h2));
  const bool mirrored = skewness < 0;
  gamma = mirrored ? -g : g;
  xi = checked(mean - (mirrored ? 1 - mu[1] : mu[1]) * lambda);
} catch (const RuntimeError&) {
  message = "Unexpected error in sbfit";
  sbFault = true;
}

namespace {

enum class Change { none, some, vanished };

/// Whether the moments still change, by more than a relative `limit`; `vanished` when one is 0.
Change change(const RawMoments& now, const RawMoments& before, double limit) {
  for (std::size_t i = 1; i <= 6; ++i) {
    if (now[i] == 0) return Change::vanished;
    if (std::abs(checked((now[i] - before[i]) / now[i])) > limit) return Change::some;
  }
  return Change::none;
}

/// The sums of the trapezoidal series for one step width h, outwards from its middle w = g / d.
/// Ends with `some` when the series is not exhausted after the permitted number of terms.
Change trapezoidalSums(double w, double d, double h, RawMoments& a) {
  constexpr int mostTerms = 10000;  // far beyond the dozens that a series takes
  constexpr double innerTolerance = 1.0e-8;
  constexpr double negligible = 23.7;  // 1 + exp(-23.7) is taken as 1
  const double step = Divide(std::numbers::sqrt2, d) * h;
  const double e = std::exp(w) + 1;
  a[1] = 1 / e;
  for (std::size_t i = 2; i <= 6; ++i) a[i] = a[i - 1] / e;

  const double y0 = h * h;
  double y = y0;  // odd multiples of h^2, whose sums v are the squares of the abscissae
  double v = y0;
  double t = w;
  double u = w;
  for (int term = 1; term <= mostTerms; ++term) {
    const RawMoments before = a;
    u -= step;
    t += step;
    const double z = u > -negligible ? std::exp(u) + 1 : 1;
    bool rightNegligible = t > negligible;
    const double s = rightNegligible ? 1 : std::exp(t) + 1;
    double p = std::exp(-v);
    double q = p;
    for (std::size_t i = 1; i <= 6; ++i) {
      p /= z;
      const double withLeft = a[i] + p;
      if (withLeft == a[i]) break;
      a[i] = withLeft;
      if (rightNegligible) continue;
      q /= s;
      const double withRight = withLeft + q;
      rightNegligible = withRight == withLeft;
      a[i] = withRight;
    }
    y += 2 * y0;
    v += y;
    const Change last = change(a, before, innerTolerance);
    if (last != Change::some) return last;
  }
  return Change::some;
}

}  // namespace

void SBMOM(double g, double d, RawMoments& mu, Boolean& sbFault, std::string& message) {
  // The published limits, 80 for the exponent and 500 for the loops, suit a machine of that time. A
  // double can hold exp(700), and the limits here only make sure that the loops end.
  constexpr double greatestExponent = 700;
  constexpr int mostHalvings = 10000;
  constexpr double outerTolerance = 1.0e-5;
  const auto fail = [&](const char* reason) {
    sbFault = true;
    message = reason;
  };
  constexpr const char* zeroMoment = "Zero coefficient in a()";

  sbFault = false;
  const double w = Divide(g, d);
  if (w > greatestExponent) return fail(zeroMoment);
  double h = d < 3 ? 0.25 * d : 0.75;
  RawMoments before{};
  for (int pass = 1; pass <= mostHalvings; ++pass) {
    switch (trapezoidalSums(w, d, h, mu)) {
      case Change::some:
        return fail("exceeded iteration");
      case Change::vanished:
        return fail(zeroMoment);
      case Change::none:
        break;
    }
    for (std::size_t i = 1; i <= 6; ++i) mu[i] *= published::inverseRootPiToTenDigits * h;
    switch (change(mu, before, outerTolerance)) {
      case Change::vanished:
        return fail(zeroMoment);
      case Change::none:
        return;
      case Change::some:
        break;
    }
    before = mu;
    h /= 2;
  }
  fail(zeroMoment);
}

}  // namespace palvex::m_Johnson
