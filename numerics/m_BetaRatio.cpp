#include "numerics/m_BetaRatio.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "numerics/Power.h"
#include "numerics/m_BetaFunctions.h"
#include "numerics/m_GammaFunctions.h"
#include "numerics/m_MathUtil.h"

namespace palvex::m_Beta {

using m_MathUtil::alnrel;
using m_MathUtil::rlog1;

namespace {

constexpr double eps = 1e-15;  // the relative precision that the choice of method assumes
constexpr double precision = std::numeric_limits<double>::epsilon();
/// From this shape on the asymptotic series of gamma ratios is used; a smaller shape is raised by
/// `stepsToLarge` first (see stepSum).
constexpr double largeShape = 15;
constexpr int stepsToLarge = 20;
/// The expansion around the mean is used where both shapes are above this.
constexpr double aroundMeanShape = 100;
constexpr int patience = 20000;  // far beyond what any series here takes

/// Relative size of the last term of a series that is summed to full precision.
constexpr double lastTerm = precision / 2;

double logarithm(double x, double y) {
  return y <= 0.375 ? alnrel(-y) : std::log(x);
}

double largeEnough(double shape) {
  return shape > largeShape ? shape : shape + stepsToLarge;
}

double complement(double w) {
  return 0.5 + (0.5 - w);
}

/// Rounding may leave a tail a little outside [0, 1]; shapes beyond 1e300 may leave it undefined,
/// far outside the mass, where it is 0.
double tail(double w) {
  return w > 0 ? std::min(w, 1.0) : 0;
}

Tails fromLower(double w) {
  return {tail(w), complement(tail(w))};
}
Tails fromUpper(double w) {
  return {complement(tail(w)), tail(w)};
}

/// a - (a + b) x, the distance from the mean, without cancellation in the smaller shape.
/// @param sum  a + b
double distance(double a, double b, Twofold sum, double x, double y) {
  if (!std::isfinite(sum.hi)) return a * y - b * x;
  return a <= b ? (a - sum.hi * x) - sum.lo * x : (sum.hi * y - b) + sum.lo * y;
}

/// The convergents A/B of 1/(b0 + a1/(b1 + ..)), by their recurrence.
class Convergents {
 public:
  using Pair = std::array<double, 2>;
  explicit Convergents(double denominator) : last_{1, denominator} {}

  /// Takes the next two partial quotients in; whether the second changed the value. Both steps at
  /// once, so that the processor waits for one product and one sum only.
  bool advance(const Pair& numerator, const Pair& denominator) {
    const double p = denominator[1] * denominator[0] + numerator[1];
    const double q = denominator[1] * numerator[0];
    Pair middle;
    Pair next;
    for (std::size_t k = 0; k < 2; ++k) {
      middle[k] = denominator[0] * last_[k] + numerator[0] * prior_[k];
      next[k] = p * last_[k] + q * prior_[k];
    }
    const double change = std::abs(next[0] * middle[1] - middle[0] * next[1]);
    const double size = std::abs(next[0] * middle[1]);
    prior_ = middle;
    last_ = next;
    if (last_[1] > 1e100) rescale(1e-100);
    return change > 4 * precision * size;
  }

  [[nodiscard]] double value() const { return last_[0] / last_[1]; }

 private:
  void rescale(double factor) {
    for (std::size_t k = 0; k < 2; ++k) {
      prior_[k] *= factor;
      last_[k] *= factor;
    }
  }

  Pair prior_{0, 1};
  Pair last_;
};

/// Power series (bpser) for b <= 1 or b x <= 0.7.
/// @param head  x^a / (a Beta(a, b))
double powerSeries(double head, double a, double b, double x) {
  if (head == 0 || a <= 0.1 * eps) return head;
  const double tolerance = lastTerm / a;
  double c = 1;
  double sum = 0;
  double term = 1;
  for (double n = 1; n < patience && std::abs(term) > tolerance; ++n) {
    c *= (0.5 - b / n + 0.5) * x;
    term = c / (a + n);
    sum += term;
  }
  return head * (1 + a * sum);
}

/// The sum S in I_x(a, b) - I_x(a + n, b) = x^a y^b / (a Beta(a, b)) S (bup), for b <= 1, where its
/// terms fall from the first on.
double stepSum(double a, double b, double x, int n) {
  double term = 1;
  double sum = 1;
  for (int i = 0; i < n - 1 && term > lastTerm * sum; ++i) {
    term *= (a + b + i) / (a + 1 + i) * x;
    sum += term;
  }
  return sum;
}

/// I_x(a, b) for b < min(eps, eps a), x <= 0.5, a not negligible (fpser).
double seriesForTinyB(double a, double b, double x) {
  const double head = std::exp(a * std::log(x)) * (b / a);
  double power = x;
  double sum = 0;
  double term = 1;
  for (double k = 1; k < patience && (k <= 2 || term > lastTerm / a); ++k) {
    term = power / (a + k);
    sum += term;
    power *= x;
  }
  return head * (1 + a * sum);
}

/// 1 - I_x(a, b) for a <= min(eps, eps b), b x <= 1, x <= 0.5 (apser).
double seriesForTinyA(double a, double b, double x) {
  const double bx = b * x;
  double t = x - bx;
  const double c =
      (b * eps <= 0.02 ? std::log(x) + psi(b) : std::log(bx)) + std::numbers::egamma + t;
  double sum = 0;
  double term = c;
  for (double j = 2; j < patience && std::abs(term) > precision * std::abs(c); ++j) {
    t *= x - bx / j;
    term = t / j;
    sum += term;
  }
  return -a * (c + sum);
}

/// Upper incomplete gamma ratio Q(a, z) / r for a <= 1 (grat1), r = exp(-z) z^a / gamma(a).
/// @param inverse  1/gamma(a)
double upperGamma(double a, double z, double inverse) {
  if (z < 1.1) {
    // Taylor series of Q or of P = 1 - Q, whichever is not a difference of nearly equal numbers.
    double c = z;
    double sum = z / (a + 3);
    double term = 1;
    for (double n = 4; n < patience && std::abs(term) > 0.1 * lastTerm; ++n) {
      c *= -z / n;
      term = c / (a + n);
      sum += term;
    }
    const double j = a * z * ((sum / 6 - 0.5 / (a + 2)) * z + 1 / (a + 1));
    const double logPower = a * std::log(z);
    const double h = m_Gamma::gam1(a);
    const double g = 1 + h;
    const double r = inverse * std::exp(logPower - z);
    if (z < 0.25 ? logPower <= -0.13394 : a >= z / 2.59) {
      return complement(std::exp(logPower) * g * complement(j)) / r;
    }
    const double l = m_MathUtil::rexp(logPower);
    return std::max(0.0, ((0.5 + (0.5 + l)) * j - l) * g - h) / r;
  }
  // The even part of the continued fraction.
  Convergents convergents(z + 1 - a);
  for (int i = 1; i < patience; i += 2) {
    const double n = i;
    const double b = z + 1 - a;
    if (!convergents.advance({n * (a - n), (n + 1) * (a - n - 1)}, {b + 2 * n, b + 2 * n + 2}))
      break;
  }
  return convergents.value();
}

template <class Method, class... Shapes>
Method& prepared(std::optional<Method>& method, Shapes... shapes) {
  if (!method) method.emplace(shapes...);
  return *method;
}

}  // namespace

// ---- x^a y^b / Beta(a, b) ----

namespace {

/// Up to these magnitudes of the exponent, exp magnifies its rounding to 5e-15 and 1.3e-15 at most.
/// The first covers the bulk of any beta law, the second that of a power of x alone.
constexpr double smallExponent = 16;
constexpr double smallHeadExponent = 4;

/// x, from its complement y where y is the smaller one and therefore the more precise.
Twofold withAllDigits(double x, double y) {
  return x <= y ? Twofold{x} : complementOf(y, x);
}

/// scale x^a y^b; as a square, because a factor alone may leave the range of doubles.
double scaledPowers(double scale, Twofold x, double a, Twofold y, double b) {
  const double root = powerOf(x.hi, a / 2) * powerOf(y.hi, b / 2);
  return scale * root * root * std::exp(logOfRest(x, a) + logOfRest(y, b));
}

}  // namespace

BetaPower::BetaPower(double a, double b)
    : a_(a),
      b_(b),
      inverseA_(1 / a),
      inverseB_(1 / b),
      sum_(sumOf(a, b)),
      isAroundMean_(std::min(a, b) >= 8) {
  const auto [low, high] = std::minmax(a_, b_);
  if (isAroundMean_) {
    const double h = low / high;
    const double lowShare = h / (1 + h);
    const double highShare = 1 / (1 + h);
    meanX_ = a_ <= b_ ? lowShare : highShare;
    meanY_ = a_ <= b_ ? highShare : lowShare;
    scale_ = std::sqrt(low * highShare / (2 * std::numbers::pi)) * std::exp(-bcorr(a_, b_));
  } else if (high < 8) {
    scale_ = inverseGamma(low) * (inverseGamma(high) / inverseGamma(low + high));
  } else {
    scale_ = inverseGamma(low) * shiftRatio(low, high);
    if (low <= 1) {
      base_ = high;
      powerOfBase_ = powerOf(base_, low);
    } else {  // nearly 1/mean, so that ln(base_ x) is small around the mean
      base_ = high / low;
      scale_ *= powerOf(low, low);
    }
  }
}

double BetaPower::operator()(double x, double y) const {
  return (*this)(x, y, distance(a_, b_, sum_, x, y));
}

double BetaPower::operator()(double x, double y, double lambda) const {
  if (isAroundMean_) return aroundMean(x, y, lambda);
  const bool lowIsA = a_ <= b_;
  const double low = lowIsA ? a_ : b_;
  const double high = lowIsA ? b_ : a_;
  const double u = (lowIsA ? x : y) * base_;
  const double v = lowIsA ? y : x;
  const double logU = low * std::log(u);
  const double logV = high * logarithm(v, lowIsA ? x : y);
  if (std::abs(logU) + std::abs(logV) <= smallExponent) return scale_ * std::exp(logU + logV);
  return scaledPowers(scale_, {u}, low, withAllDigits(v, lowIsA ? x : y), high);
}

double BetaPower::aroundMean(double x, double y, double lambda) const {
  constexpr double nearMean = 4;
  constexpr double representable = 700;
  const auto deviation = [](double relative, double at, double mean) {
    return std::abs(relative) <= 0.6 ? rlog1(relative) : relative - std::log(at / mean);
  };
  const double exponent = a_ * deviation(-lambda * inverseA_, x, meanX_) +  //
                          b_ * deviation(lambda * inverseB_, y, meanY_);
  if (!(exponent > nearMean) || std::abs(lambda) > representable ||
      std::max(a_, b_) * precision > 1) {
    return scale_ * std::exp(-exponent);
  }
  const Twofold u = quotientOf(productOf(withAllDigits(x, y), sum_), a_);
  const Twofold v = quotientOf(productOf(withAllDigits(y, x), sum_), b_);
  return scaledPowers(scale_, u, a_, v, b_);
}

double BetaPower::head(double x, double y, double shape) const {
  const double scale = scale_ * powerOfBase_ / shape;
  const double exponent = shape * logarithm(x, y);
  if (std::abs(exponent) <= smallHeadExponent) return scale * std::exp(exponent);
  return scaledPowers(scale, withAllDigits(x, y), shape, {1}, 0);
}

double BetaPower::logBeta() const {
  const double logScale = std::log(scale_);
  if (isAroundMean_) return a_ * std::log(meanX_) + b_ * std::log(meanY_) - logScale;
  return -std::min(a_, b_) * std::log(base_) - logScale;
}

double BetaPower::headX(double x, double y) const {
  return head(x, y, a_);
}

double BetaPower::headY(double x, double y) const {
  return head(y, x, b_);
}

// ---- both shapes above 1 (bfrac) ----

ContinuedFraction::Steps ContinuedFraction::steps(double n) const {
  Steps result;
  for (std::size_t i = 0; i < 2; ++i) {
    const double m = n + static_cast<double>(i);
    const double inverse = 1 / (a_ + (2 * m - 1));
    const double v = m * (b_ - m);
    const double share = (a_ + m) / (a_ + (2 * m + 1));
    result.alpha[i] = ((a_ + (m - 1)) * inverse) * ((a_ + b_ + (m - 1)) * inverse / inverseMean_) *
                      (v / inverseMean_);
    result.constant[i] = m + share * (2 * m + 1);
    result.slope[i] = v * inverse - share * m;
    result.share[i] = share;
  }
  return result;
}

void ContinuedFraction::prepare() {
  for (; known_ < keptPairs; ++known_) {
    steps_[static_cast<std::size_t>(known_)] = steps(2 * known_ + 1);
  }
}

double ContinuedFraction::operator()(double x, double lambda) {
  const double ratio = x * inverseMean_;
  const double square = ratio * ratio;
  Convergents convergents((1 + lambda) * firstShare_);
  for (int i = 0; i < patience; ++i) {
    if (i == known_ && known_ < keptPairs) {
      steps_[static_cast<std::size_t>(known_++)] = steps(2 * i + 1);
    }
    const Steps s = i < keptPairs ? steps_[static_cast<std::size_t>(i)] : steps(2 * i + 1);
    Pair alpha;
    Pair beta;
    for (std::size_t k = 0; k < 2; ++k) {
      alpha[k] = s.alpha[k] * square;
      beta[k] = s.constant[k] + s.slope[k] * x + s.share[k] * lambda;
    }
    if (!convergents.advance(alpha, beta)) break;
  }
  return convergents.value();
}

// ---- large a, b <= 1 (bgrat) ----

LargeShape::LargeShape(double a, double b)
    : b_(b),
      nu_(sumOf(a, 0.5 * (b - 1))),
      inverseGamma_(inverseGamma(b)),
      scale_(inverseGamma_ * shiftRatio(b, a) * powerOf(a / nu_.hi, b)) {}

double LargeShape::coefficient(std::size_t n) {
  static constexpr auto inverseFactorials = [] {
    std::array<double, terms + 1> c{1};  // 1/(2 n + 1)!
    for (std::size_t i = 1; i <= terms; ++i) {
      c[i] = c[i - 1] / static_cast<double>(2 * i * (2 * i + 1));
    }
    return c;
  }();
  for (; known_ < n; ++known_) {
    const std::size_t next = known_ + 1;
    const auto order = static_cast<double>(next);
    double sum = 0;
    for (std::size_t i = 1; i < next; ++i) {
      sum += (static_cast<double>(i) * b_ - order) * inverseFactorials[i] * d_[next - i];
    }
    d_[next] = (b_ - 1) * inverseFactorials[next] + sum / order;
  }
  return d_[n];
}

void LargeShape::prepare() {
  static_cast<void>(coefficient(terms));
}

double LargeShape::power(double x, double y, double lnx, double z) const {
  if (z <= smallExponent) return std::exp(b_ * std::log(z) - z);
  const Twofold base = withAllDigits(x, y);
  return powerOf(z, b_) * powerOf(base.hi, nu_.hi) *
         std::exp(logOfRest(base, nu_.hi) + nu_.lo * lnx);
}

double LargeShape::addedTo(double w, double x, double y) {
  const double lnx = y < precision ? -y : logarithm(x, y);  // not 0 for the smallest y
  const double z = -nu_.hi * lnx;
  if (!(z > 0)) return w;
  const double u = scale_ * power(x, y, lnx, z);
  if (!(u > 0)) return w;

  const double v = 0.25 / (nu_.hi * nu_.hi);
  const double t2 = 0.25 * lnx * lnx;
  const double l = w / u;
  double j = upperGamma(b_, z, inverseGamma_);
  double sum = j;
  double t = 1;
  for (std::size_t n = 1; n <= terms; ++n) {
    const double m = b_ + static_cast<double>(2 * n);
    j = v * ((m - 2) * (m - 1) * j + (z + m - 1) * t);
    t *= t2;
    const double term = coefficient(n) * j;
    sum += term;
    if (!(sum > 0)) return w;
    if (std::abs(term) <= precision * (sum + l)) break;
  }
  return w + u * sum;
}

// ---- both shapes large, x near the mean (basym) ----

AroundMean::AroundMean(double a, double b)
    : a_(a),
      b_(b),
      h_(std::min(a, b) / std::max(a, b)),
      r1_((b - a) / std::max(a, b)),
      w0_(1 / std::sqrt(std::min(a, b) * (1 + h_))),
      scale_(2 * std::numbers::inv_sqrtpi * std::exp(-bcorr(a, b))),
      powerOfW0_(w0_) {
  a0_[1] = 2 * r1_ / 3;
  c_[1] = -0.5 * a0_[1];
  d_[1] = -c_[1];
  coefficient_[1] = d_[1] * w0_;
}

void AroundMean::extend() {
  const std::size_t n = known_ + 1;
  const auto order = static_cast<double>(n);
  powerOfH_ *= h_ * h_;
  sumOfPowers_ += powerOfH_;
  a0_[n] = 2 / (1 + h_) * (1 + h_ * powerOfH_) / (order + 2);
  a0_[n + 1] = 2 * r1_ * sumOfPowers_ / (order + 3);
  for (std::size_t i = n; i <= n + 1; ++i) {
    const double rho = -0.5 * static_cast<double>(i + 1);
    std::array<double, terms> b{};
    b[1] = rho * a0_[1];
    for (std::size_t m = 2; m <= i; ++m) {
      double sum = 0;
      for (std::size_t j = 1; j < m; ++j) {
        sum += (static_cast<double>(j) * rho - static_cast<double>(m - j)) * a0_[j] * b[m - j];
      }
      b[m] = rho * a0_[m] + sum / static_cast<double>(m);
    }
    c_[i] = b[i] / static_cast<double>(i + 1);
    double sum = c_[i];
    for (std::size_t j = 1; j < i; ++j) sum += d_[i - j] * c_[j];
    d_[i] = -sum;
    powerOfW0_ *= w0_;
    coefficient_[i] = d_[i] * powerOfW0_;
  }
  known_ += 2;
}

void AroundMean::prepare() {
  while (known_ + 2 < terms) extend();
}

double AroundMean::operator()(double lambda) {
  constexpr double e1 = std::numbers::sqrt2 / 4;
  const double f = a_ * rlog1(-lambda / a_) + b_ * rlog1(lambda / b_);
  const double bell = std::exp(-f);
  if (bell == 0) return 0;
  const double z2 = 2 * f;
  const double z = std::sqrt(z2);
  double evenJ = m_MathUtil::erfc1(1, std::sqrt(f)) / (4 * std::numbers::inv_sqrtpi);
  double oddJ = e1;
  double power = e1 * z;  // e1 z^(n - 1)
  double sum = evenJ + coefficient_[1] * oddJ;
  for (std::size_t n = 2; n + 1 < terms; n += 2) {
    if (known_ < n) extend();
    const auto order = static_cast<double>(n);
    evenJ = power + (order - 1) * evenJ;
    power *= z;
    oddJ = power + order * oddJ;
    power *= z;
    const double even = coefficient_[n] * evenJ;
    const double odd = coefficient_[n + 1] * oddJ;
    sum += even + odd;
    if (std::abs(even) + std::abs(odd) <= precision * sum) break;
  }
  return scale_ * bell * sum;
}

// ---- the choice of method ----

BetaPoint IncompleteBeta::tailsAt(double x, double y) const {
  if (a_ == b_ && x == y) return {{0.5, 0.5}, unknown};
  const double high = std::max(a_, b_);
  if (std::isinf(high)) {
    // All the mass at 1, at 0, or for two infinite shapes in the middle.
    return {std::isinf(a_) && (!std::isinf(b_) || x < y) ? Tails{0, 1} : Tails{1, 0}, 0};
  }
  if (high < 1e-3 * eps) return {{b_ / (a_ + b_), a_ / (a_ + b_)}, unknown};

  const bool small = std::min(a_, b_) <= 1;
  const double lambda = small ? 0 : distance(a_, b_, sum_, x, y);
  const bool mirrored = small ? x > 0.5 : lambda < 0;
  Side& side = sides_[mirrored ? 1 : 0];
  const double u = mirrored ? y : x;
  const double v = mirrored ? x : y;
  BetaPoint point = small ? BetaPoint{smallShapes(side, u, v), unknown}
                          : largeShapes(side, u, v, std::abs(lambda));
  if (mirrored) std::swap(point.tails.lower, point.tails.upper);
  return point;
}

BetaPoint IncompleteBeta::at(double x, double y) const {
  BetaPoint point = tailsAt(x, y);
  if (point.power == unknown) point.power = power(x, y);
  return point;
}

double IncompleteBeta::power(double x, double y) const {
  return prepared(sides_[0].power, a_, b_)(x, y);
}

double IncompleteBeta::logBeta() const {
  return prepared(sides_[0].power, a_, b_).logBeta();
}

void IncompleteBeta::prepare() {
  const double low = std::min(a_, b_);
  if (!std::isfinite(a_) || !std::isfinite(b_)) return;
  for (Side& side : sides_) {
    prepared(side.power, side.a, side.b);
    if (low > 1) prepared(side.fraction, side.a, side.b).prepare();
    if (low > aroundMeanShape) prepared(side.aroundMean, side.a, side.b).prepare();
    if (side.a <= 1) prepared(side.large, largeEnough(side.b), side.a).prepare();
  }
}

Tails IncompleteBeta::smallShapes(Side& side, double x, double y) {
  const double a = side.a;
  const double b = side.b;
  if (b < std::min(eps, eps * a)) return fromLower(seriesForTinyB(a, b, x));
  if (a < std::min(eps, eps * b) && b * x <= 1) return fromUpper(seriesForTinyA(a, b, x));

  const auto power = [&]() -> const BetaPower& { return prepared(side.power, a, b); };
  const auto series = [&] { return fromLower(powerSeries(power().headX(x, y), a, b, x)); };
  const auto mirroredSeries = [&] { return fromUpper(powerSeries(power().headY(x, y), b, a, y)); };
  if (std::max(a, b) <= 1) {
    if (a >= std::min(0.2, b) || powerOf(x, a) <= 0.9) return series();
    if (x >= 0.3) return mirroredSeries();
  } else {
    if (b <= 1) return series();
    if (x >= 0.3) return mirroredSeries();
    if (x < 0.1 && powerOf(x * b, a) <= 0.7) return series();
  }
  // I_y(b, a), with its first shape raised by steps of 1 where it is not large.
  LargeShape& large = prepared(side.large, largeEnough(b), a);
  if (b > largeShape) return fromUpper(large.addedTo(0, y, x));
  const double first = power()(x, y) * (stepSum(b, a, y, stepsToLarge) / b);
  return fromUpper(large.addedTo(first, y, x));
}

BetaPoint IncompleteBeta::largeShapes(Side& side, double x, double y, double lambda) {
  const double a = side.a;
  const double b = side.b;
  const double low = std::min(a, b);
  if (low > aroundMeanShape && lambda <= 0.03 * low) {
    return {fromLower(prepared(side.aroundMean, a, b)(lambda)), unknown};
  }
  const double power = prepared(side.power, a, b)(x, y, lambda);
  if (power == 0) return {{0, 1}, 0};
  return {fromLower(power * prepared(side.fraction, a, b)(x, lambda)), power};
}

}  // namespace palvex::m_Beta
