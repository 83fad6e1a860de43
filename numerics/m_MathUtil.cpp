#include "numerics/m_MathUtil.h"

#include <array>
#include <cmath>

#include "numerics/Polynomial.h"
#include "numerics/PublishedConstants.h"
#include "runtime/Arithmetic.h"

namespace palvex::m_MathUtil {

namespace {

/// 2 t (1/(1 - r) - r W(t)), r = u/(u + 2), t = r^2: u - ln(1 + u) for |u| <= 0.18.
double reducedRlog(double u) noexcept {
  constexpr std::array p{0.333333333333333, -0.224696413112536, 0.00620886815375787};
  constexpr std::array q{1.0, -1.27408923933623, 0.354508718369557};
  const double r = u / (u + 2);
  const double t = r * r;
  const double w = polynomial(p, t) / polynomial(q, t);
  return 2 * t * (1 / (1 - r) - r * w);
}

constexpr double rlogAtSevenTenths = 0.0566749439387324;
constexpr double rlogAtFourThirds = 0.0456512608815524;

// Cody's rational approximations, in powers of x^2, |x| and 1/x^2.

double erfNear(double t) noexcept {
  constexpr std::array a{0.128379167095513, 0.0479137145607681, 0.0323076579225834,
                         -0.00133733772997339, 7.7105849500132E-5};
  constexpr std::array b{1.0, 0.375795757275549, 0.0538971687740286, 0.00301048631703895};
  return (polynomial(a, t) + 1) / polynomial(b, t);
}

double scaledErfcMiddle(double u) noexcept {
  constexpr std::array p{300.459261020162,  451.918953711873,    339.320816734344,
                         152.98928504694,   43.1622272220567,    7.21175825088309,
                         0.564195517478974, -1.36864857382717E-7};
  constexpr std::array q{300.459260956983, 790.950925327898, 931.35409485061,  638.980264465631,
                         277.585444743988, 77.0001529352295, 12.7827273196294, 1.0};
  return polynomial(p, u) / polynomial(q, u);
}

double scaledErfcFar(double x) noexcept {
  constexpr std::array r{0.282094791773523, 4.6580782871847, 21.3688200555087, 26.2370141675169,
                         2.10144126479064};
  constexpr std::array s{1.0, 18.0124575948747, 99.0191814623914, 187.11481179959, 94.153775055546};
  const double t = (1 / x) * (1 / x);
  return (published::inverseRootPi - t * polynomial(r, t) / polynomial(s, t)) / std::abs(x);
}

}  // namespace

std::int32_t ipmpar(std::int32_t i, Line caller) try {
  constexpr std::array<std::int32_t, 10> parameters{2,    31,  2147483647, 2,     24,
                                                    -125, 128, 53,         -1021, 1024};
  if (i < 1 || i > 10) raise(fault::subscript);
  return parameters[static_cast<std::size_t>(i - 1)];
} catch (RuntimeError& error) {
  error.leave("m_MathUtil.ipmpar", caller);
}

double spmpar(std::int16_t i) {
  const double base = ipmpar(4);
  const double digits = ipmpar(8);
  if (i <= 1) return std::pow(base, 1 - digits);
  if (i == 2) {
    const double inverse = 1 / base;
    const double w = std::pow(base, ipmpar(9) + 2);
    return ((w * inverse) * inverse) * inverse;
  }
  // The factors are kept apart so that nothing overflows on the way to the largest number.
  const double ones = std::pow(base, digits - 1);
  const double w = ((ones - 1) * base + (base - 1)) / (base * ones);
  const double power = std::pow(base, ipmpar(10) - 2);
  return ((w * power) * base) * base;
}

double exparg(std::int32_t l) {
  const std::int32_t exponent = l == 0 ? ipmpar(10) : ipmpar(9) - 1;
  return (exponent * published::ln2) * 0.99999;
}

double rlog(double x, Line caller) try {
  if (x < 0.61 || x > 1.57) {
    const double r = (x - 0.5) - 0.5;
    return checked(r - Log(x));
  }
  if (x < 0.82) {
    const double u = (x - 0.7) / 0.7;
    return reducedRlog(u) + (rlogAtSevenTenths - 0.3 * u);
  }
  if (x > 1.18) {
    const double u = 0.75 * x - 1;
    return reducedRlog(u) + (rlogAtFourThirds + u / 3);
  }
  return checked(reducedRlog((x - 0.5) - 0.5));
} catch (RuntimeError& error) {
  error.leave("m_MathUtil.rlog", caller);
}

double rlog1(double x, Line caller) try {
  if (x < -0.39 || x > 0.57) return checked(x - Log((x + 0.5) + 0.5));
  // The constants to full precision: where the result is small, 15 digits of them would show.
  if (x < -0.18) {
    const double u = (x + 0.3) / 0.7;
    return reducedRlog(u) + (0.056674943938732378912 - 0.3 * u);
  }
  if (x > 0.18) {
    const double u = 0.75 * x - 0.25;
    return reducedRlog(u) + (0.045651260881552405889 + u / 3);
  }
  return checked(reducedRlog(x));
} catch (RuntimeError& error) {
  error.leave("m_MathUtil.rlog1", caller);
}

double rexp(double x, Line caller) try {
  if (std::abs(x) <= 0.15) {
    constexpr std::array p{1.0, 9.14041914819518E-10, 0.0238082361044469};
    constexpr std::array q{1.0, -0.499999999085958, 0.107141568980644, -0.0119041179760821,
                           0.000595130811860248};
    return x * (polynomial(p, x) / polynomial(q, x));
  }
  const double w = Exp(x);
  if (x > 0) return w * (0.5 - 1 / w + 0.5);
  return (w - 0.5) - 0.5;
} catch (RuntimeError& error) {
  error.leave("m_MathUtil.rexp", caller);
}

double rexp(const Variant& x, Line caller) {
  double number = 0;
  try {
    number = x.toDouble();
  } catch (RuntimeError& error) {
    error.leave("m_MathUtil.rexp", caller);
  }
  return rexp(number, caller);
}

double alnrel(double a, Line caller) try {
  if (std::abs(a) <= 0.375) {
    constexpr std::array p{1.0, -1.29418923021993, 0.405303492862024, -0.0178874546012214};
    constexpr std::array q{1.0, -1.62752256355323, 0.747811014037616, -0.0845104217945565};
    const double t = a / (a + 2);
    const double t2 = t * t;
    return 2 * t * (polynomial(p, t2) / polynomial(q, t2));
  }
  return Log(1 + a);
} catch (RuntimeError& error) {
  error.leave("m_MathUtil.alnrel", caller);
}

double erf(double x, Line caller) try {
  const double y = std::abs(x);
  if (y <= 0.5) return x * erfNear(x * x);
  if (y >= 5.8) return sign(1, x);
  const double scaled = y <= 4 ? scaledErfcMiddle(y) : scaledErfcFar(y);
  const double magnitude = checked(0.5 + (0.5 - std::exp(-x * x) * scaled));
  return x < 0 ? -magnitude : magnitude;
} catch (RuntimeError& error) {
  error.leave("m_MathUtil.erf", caller);
}

double erfc1(std::int16_t ind, double x, Line caller) try {
  const bool isScaled = ind != 0;
  const double y = std::abs(x);
  if (y <= 0.5) {
    const double t = x * x;
    const double complement = 0.5 + (0.5 - x * erfNear(t));
    return isScaled ? complement * std::exp(t) : complement;
  }
  if (x <= -5.6) return isScaled ? checked(2 * std::exp(x * x)) : 2;
  if (!isScaled && (x > 100 || (y > 4 && x * x > -exparg(1)))) return 0;
  const double scaled = y <= 4 ? scaledErfcMiddle(y) : scaledErfcFar(x);
  if (isScaled) return checked(x < 0 ? 2 * std::exp(x * x) - scaled : scaled);
  const double tail = checked(scaled * std::exp(-(x * x)));
  return x < 0 ? 2 - tail : tail;
} catch (RuntimeError& error) {
  error.leave("m_MathUtil.erfc1", caller);
}

}  // namespace palvex::m_MathUtil
