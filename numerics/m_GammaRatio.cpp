// The incomplete gamma ratios.

#include "numerics/m_GammaRatio.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "numerics/Power.h"
#include "numerics/Twofold.h"
#include "numerics/m_MathUtil.h"

namespace palvex::m_Gamma {

namespace {

constexpr double accuracy = 5e-15;  // of a sum or fraction, relative
constexpr double inverseRootTwoPi = 0.39894228040143267794;
constexpr double inverseRootPi = 0.56418958354775628695;

/// From this shape on the ratios work in a rlog(x/a) instead of exp(-x) x^a. The publication does
/// so from 20 on, where Temme's polynomials in 1/a still show their truncation (1e-13).
constexpr double largeShape = 30;
/// |x/a - 1| up to which Temme's expansion is used.
constexpr double temmeRange = 0.4;
/// From here on Q is expanded in 1/x.
constexpr double farX = 31;

constexpr Ratio allAbove{.p = 0, .q = 1, .density = 0};
constexpr Ratio allBelow{.p = 1, .q = 0, .density = 0};

constexpr Ratio limitRatio(double a, double x) {
  return x <= a ? allAbove : allBelow;
}

constexpr Ratio fromP(double p, double density) {
  return {.p = p, .q = 0.5 + (0.5 - p), .density = density};
}

constexpr Ratio fromQ(double q, double density) {
  return {.p = 0.5 + (0.5 - q), .q = q, .density = density};
}

/// 1 + sum of the products ratio(1) ratio(2) .. ratio(k), the small terms added first; the sum ends
/// with the first term that is not above the tolerance in magnitude, or with term `last`.
template <class RatioOfTerms>
double sumOfProducts(RatioOfTerms ratio, double tolerance, double last) {
  std::array<double, 20> large;  // NOLINT: filled as far as it is read
  std::size_t count = 0;
  double k = 1;
  double term = ratio(k);
  while (count < large.size() && std::abs(term) > 1e-3) {
    large[count++] = term;
    term *= ratio(++k);
  }
  double sum = term;
  while (std::abs(term) > tolerance && k < last) {
    term *= ratio(++k);
    sum += term;
  }
  while (count > 0) sum += large[--count];
  return 1 + sum;
}

/// P / density by Taylor's series, x <= max(a, ln 10).
double taylor(double a, double x) {
  constexpr double endless = std::numeric_limits<double>::infinity();
  return sumOfProducts([=](double k) { return x / (a + k); }, accuracy / 20, endless) / a;
}

/// Q / density by the expansion in 1/x, x >= max(a, 31): its terms grow again from k = x + a on.
double asymptotic(double a, double x) {
  return sumOfProducts([=](double k) { return (a - k) / x; }, accuracy / 20, x + a) / x;
}

/// Q / density by Legendre's continued fraction, x >= max(a, 1.1), x < 31 for a >= 1: 80 steps at
/// most, in which the denominators stay below 1e125.
double continuedFraction(double a, double x) {
  double oddA = 1;
  double evenA = 1;
  double oddB = x;
  double evenB = x + (1 - a);
  for (double c = 1;; ++c) {
    oddA = x * evenA + c * oddA;
    oddB = x * evenB + c * oddB;
    const double m = c + 1 - a;
    evenA = oddA + m * evenA;
    evenB = oddB + m * evenB;
    const double even = evenA / evenB;
    if (!(std::abs(even - oddA / oddB) >= accuracy * even)) return even;
  }
}

/// a = 1/2.
Ratio oneHalf(double x) {
  const double root = std::sqrt(x);
  const double e = std::exp(-x);
  const double density = inverseRootPi * root * e;
  if (x < 0.25) return fromP(m_MathUtil::erf(root), density);
  return fromQ(e * m_MathUtil::erfc1(1, root), density);
}

/// 1 <= a < 30, 2 a an integer, x < 31 and not so far below a that P = 1 - Q would lose accuracy:
/// finite sums for Q.
Ratio finiteSum(double a, double x) {
  const double e = std::exp(-x);
  const bool isInteger = a == std::floor(a);
  double term = e;
  double sum = e;
  double n = 0;
  if (!isInteger) {
    const double root = std::sqrt(x);
    term = e * inverseRootPi / root;
    sum = e * m_MathUtil::erfc1(1, root);
    n = -0.5;
  }
  for (double last = a - 1; n < last;) {
    n += 1;
    term *= x / n;
    sum += term;
  }
  return fromQ(sum, term * x);
}

/// The polynomial of Temme's expansion, its even and odd powers side by side.
double temmeSum(const std::array<double, 14>& c, double z) {
  const double square = z * z;
  double even = c[12];
  double odd = c[13];
  for (std::size_t i = 12; i > 0;) {
    i -= 2;
    even = even * square + c[i];
    odd = odd * square + c[i + 1];
  }
  return even + odd * z;
}

/// exp(-y) for y = a rlog(x/a), a >= 30.
double bellAt(double a, double x, double y) {
  constexpr double nearPeak = 4;
  constexpr double representable = 700;
  if (y <= nearPeak || std::abs(x - a) > representable) return std::exp(-y);
  // (x/a)^a e^(a - x), because exp would magnify the rounding of a large y; as a square, because a
  // factor alone may leave the range of doubles.
  const Twofold base = quotientOf({x}, a);
  const Twofold exponent = sumOf(a, -x);
  const double root = powerOf(base.hi, a / 2) * std::exp(exponent.hi / 2);
  return root * root * std::exp(logOfRest(base, a) + exponent.lo);
}

/// The factor of exp(-a rlog(x/a)) in the density for a >= 30.
double largeShapeFactor(double a) {
  const double v = (1 / a) * (1 / a);
  const double correction = (((0.75 * v - 1) * v + 3.5) * v - 105) / (a * 1260);
  return inverseRootTwoPi * std::sqrt(a) * std::exp(correction);
}

/// Temme's double expansion, summed over the powers of 1/a.
std::array<double, 14> temmePolynomial(double a) {
  constexpr std::array c0{-0.33333333333333333,  0.083333333333333333, -0.014814814814814815,
                          0.0011574074074074074, 0.000352733686067019, -0.000178755144032922,
                          3.91926317852244E-5,   -2.18544851067999E-6, -1.85406221071516E-6,
                          8.29671134095309E-7,   -1.76659527368261E-7, 6.7078535434015E-9,
                          1.02618097842403E-8,   -4.38203601845335E-9};
  constexpr std::array c1{-0.00185185185185185, -0.00347222222222222, 0.00264550264550265,
                          -0.00099022633744856, 0.000205761316872428, -4.01877572016461E-7,
                          -1.809855033449E-5,   7.64916091608111E-6,  -1.61209008945634E-6,
                          4.64712780280743E-9,  1.37863344691572E-7,  -5.7525456035177E-8,
                          1.19516285997781E-8};
  constexpr std::array c2{0.00413359788359788,  -0.00268132716049383,  0.000771604938271605,
                          2.0093878600823E-6,   -0.000107366532263652, 5.29234488291201E-5,
                          -1.27606351886187E-5, 3.42357873409614E-8,   1.37219573090629E-6,
                          -6.29899213838006E-7, 1.42806142060642E-7};
  constexpr std::array c3{0.000649434156378601, 0.000229472093621399, -0.000469189494395256,
                          0.000267720632062839, -7.56180167188398E-5, -2.3965051138673E-7,
                          1.10826541153473E-5,  -5.6749528269916E-6,  1.42309007324359E-6};
  constexpr std::array c4{-0.000861888290916712, 0.000784039221720067, -0.00029907248030319,
                          -1.46384525788434E-6,  6.64149821546512E-5,  -3.96836504717943E-5,
                          1.13757269706784E-5};
  constexpr std::array c5{-0.000336798553366358, -6.97281375836586E-5, 0.000277275324495939,
                          -0.000199325705161888, 6.79778047793721E-5};
  constexpr std::array c6{0.000531307936463992, -0.000592166437353694, 0.000270878209671804};
  constexpr std::array c7{0.000344367606892378};

  const double u = 1 / a;
  std::array<double, 14> sum{};
  const auto add = [&](const auto& c) {
    for (std::size_t j = 0; j < c.size(); ++j) sum[j] = sum[j] * u + c[j];
  };
  if (u > 1e-3) {  // else below the rounding
    add(c7);
    add(c6);
    add(c5);
  }
  add(c4);
  add(c3);
  add(c2);
  add(c1);
  add(c0);
  return sum;
}

/// 1/gamma(a) for 1 <= a < 30. More accurate than the approximation of gamma itself.
double reciprocalGamma(double a) {
  double product = 1;
  double x = a;
  for (int factors = static_cast<int>(a) - 1; factors > 0; --factors) {
    x -= 1;
    product *= x;
  }
  return (1 + gam1(x - 1)) / product;
}

}  // namespace

IncompleteGamma::IncompleteGamma(double a) noexcept : a_(a) {
  if (!(a > 0 && std::isfinite(a))) return;
  if (a < 1) {
    gam1_ = m_Gamma::gam1(a);
    factor_ = a * (1 + gam1_);
  } else if (a < largeShape) {
    factor_ = reciprocalGamma(a);
  } else {
    factor_ = largeShapeFactor(a);
    temme_ = temmePolynomial(a);
  }
}

double deviance(double a, double x) {
  const double s = (x - a) / a;
  if (s > -0.39 && s < 0.57) return a * m_MathUtil::rlog1(s);
  return (x - a) - a * std::log(x / a);
}

double IncompleteGamma::power(double x) const {
  const double a = a_;
  if (x == 0) return 0;
  if (a >= largeShape) return factor_ * bellAt(a, x, deviance(a, x));
  if (a < 4 && x > 0.125 && x < 8) return factor_ * std::exp(a * std::log(x) - x);
  // The power itself, because exp would magnify the rounding of a large logarithm.
  if (x < 700) return factor_ * (std::exp(-x) * powerOf(x, a));
  if (x > 2000) return 0;
  const double root = std::exp(-x / 2);
  return factor_ * (root * powerOf(x, a)) * root;
}

double IncompleteGamma::logPower(double x) const noexcept {
  const double exponent = a_ >= largeShape ? -deviance(a_, x) : a_ * std::log(x) - x;
  return std::log(factor_) + exponent;
}

/// a < 1, x < 1.1: gamma(1 + a) x^-a P = 1 - J with J = a x (1/(a + 1) - x (0.5/(a + 2) - ...)).
Ratio IncompleteGamma::smallShape(double x) const {
  const double a = a_;
  double c = x;
  double s = x / (a + 3);
  const double tolerance = accuracy / 10;
  double term = 0;
  double n = 3;
  do {
    n += 1;
    c = -c * (x / n);
    term = c / (a + n);
    s += term;
  } while (std::abs(term) > tolerance);
  const double j = a * x * ((s / 6 - 0.5 / (a + 2)) * x + 1 / (a + 1));

  const double z = a * std::log(x);
  const double g = 1 + gam1_;
  if (x < 0.25 ? z <= -0.13394 : a >= x / 2.59) {
    // The power itself, because exp(z) would magnify the rounding of a large z.
    const double power = z > -2 ? std::exp(z) : powerOf(x, a);
    return fromP(power * g * (0.5 + (0.5 - j)), factor_ * (power * std::exp(-x)));
  }
  const double l = m_MathUtil::rexp(z);
  const double w = 0.5 + (0.5 + l);
  const double q = (w * j - l) * g - gam1_;
  return q < 0 ? allBelow : fromQ(q, factor_ * (w * std::exp(-x)));
}

/// a >= 30, x near a, y = a rlog(x/a), bell = exp(-y).
Ratio IncompleteGamma::temme(double x, double y, double bell) const {
  const double a = a_;
  const double root = std::sqrt(y);
  const double z = std::copysign(std::sqrt(2 * (y / a)), x - a);
  const double w = 0.5 * m_MathUtil::erfc1(1, root);
  const double t = inverseRootTwoPi * temmeSum(temme_, z) / std::sqrt(a);
  const double density = factor_ * bell;
  return x >= a ? fromQ(bell * (w + t), density) : fromP(bell * (w - t), density);
}

Ratio IncompleteGamma::operator()(double x) const {
  const double a = a_;
  if (a * x == 0 || std::isinf(x)) return limitRatio(a, x);

  double density = 0;
  if (a >= largeShape) {
    const double y = deviance(a, x);
    if (!(y < 700)) return limitRatio(a, x);
    const double bell = bellAt(a, x, y);
    if (std::abs(x - a) <= temmeRange * a) return temme(x, y, bell);
    density = factor_ * bell;
  } else {
    if (a == 0.5) return oneHalf(x);
    if (a < 1 && x < 1.1) return smallShape(x);
    if (a >= 1 && x >= a - 0.7 * std::sqrt(a) && x < farX && 2 * a == std::floor(2 * a)) {
      return finiteSum(a, x);
    }
    density = power(x);
  }
  if (density == 0) return limitRatio(a, x);
  constexpr double ln10 = 2.30258509299405;
  if (a >= 1 && x <= std::max(a, ln10)) return fromP(density * taylor(a, x), density);
  if (a < 1 || x < farX) return fromQ(density * continuedFraction(a, x), density);
  return fromQ(density * asymptotic(a, x), density);
}

void gratio(const IncompleteGamma& shape, double x, double& ans, double& qans, std::int16_t) {
  const double a = shape.a();
  if (!(a >= 0 && x >= 0) || (a == 0 && x == 0) || (std::isinf(a) && std::isinf(x))) {
    ans = 2;
    return;
  }
  const Ratio ratio = a * x == 0 || std::isinf(a) ? limitRatio(a, x) : shape(x);
  ans = ratio.p;
  qans = ratio.q;
}

}  // namespace palvex::m_Gamma
