// The complete gamma functions.

#include <array>
#include <cmath>

#include "numerics/Polynomial.h"
#include "numerics/PublishedConstants.h"
#include "numerics/m_GammaRatio.h"
#include "numerics/m_MathUtil.h"
#include "runtime/Arithmetic.h"

namespace palvex::m_Gamma {

namespace {

/// gamma(1 + x), approximated for 0 <= x <= 1.
double gammaOfOnePlus(double x) noexcept {
  constexpr std::array p{1.0,
                         0.553413866010467,
                         0.279648642639792,
                         0.0730981088720487,
                         0.020449366759492,
                         0.0026193926004269,
                         5.39637273585445E-4};
  constexpr std::array q{1.0,
                         1.13062953091122,
                         -0.056790276197494,
                         -0.17045896931336,
                         0.022521113103534,
                         0.00470059485860584,
                         -8.32979206704073E-4};
  return polynomial(p, x) / polynomial(q, x);
}

/// gamma(a) for 1 <= a < 15.
double gammaByFactors(double a) noexcept {
  double product = 1;
  double x = a;
  for (int factors = static_cast<int>(a) - 1; factors > 0; --factors) {
    x -= 1;
    product *= x;
  }
  return product * gammaOfOnePlus(x - 1);
}

/// gamma(a) for -15 < a < 1.
double gammaByRecurrence(double a) {
  double product = a;
  double x = a;
  if (a <= 0) {
    // One factor more than a truncation would take, unless a is an integer.
    for (int factors = -static_cast<int>(std::floor(a)); factors > 0; --factors) {
      x += 1;
      product *= x;
    }
    x = (x + 0.5) + 0.5;
    product *= x;
    if (product == 0) return 0;
  }
  if (std::abs(product) < 1e-30) {
    return std::abs(product) * m_MathUtil::spmpar(3) <= 1.0001 ? 0 : 1 / product;
  }
  return gammaOfOnePlus(x) / product;
}

/// gamma(a) for 15 <= |a| < 1000.
double gammaByStirling(double a) {
  constexpr std::array r{0.0833333333333333, -0.00277777777770481, 7.93650663183693E-4,
                         -5.95156336428591E-4, 8.20756370353826E-4};
  const double x = std::abs(a);
  double reflection = 0;
  if (a < 0) {
    const double nearest = std::nearbyint(x);
    reflection = std::sin(published::pi * (x - nearest)) / published::pi;
    if (std::fmod(nearest, 2) == 0) reflection = -reflection;
    if (reflection == 0) return 0;
  }
  const double t = 1 / (x * x);
  const double logarithm =
      (published::halfLogTwoPiLessHalf + polynomial(r, t) / x) + (x - 0.5) * (std::log(x) - 1);
  if (logarithm > 0.99999 * m_MathUtil::exparg(0)) return 0;
  const double value = std::exp(logarithm);
  return a < 0 ? (1 / (value * reflection)) / x : value;
}

}  // namespace

double gamma(double a, Line caller) try {
  if (std::isnan(a)) raise(fault::overflow);
  if (std::abs(a) >= 1000) return 0;
  if (std::abs(a) >= 15) return gammaByStirling(a);
  return a >= 1 ? gammaByFactors(a) : gammaByRecurrence(a);
} catch (RuntimeError& error) {
  error.leave("m_Gamma.gamma", caller);
}

double gamln(double a, Line caller) try {
  constexpr std::array c{0.0833333333333333,  -0.00277777777760991, 7.9365066682539E-4,
                         -5.9520293135187E-4, 8.37308034031215E-4,  -0.00165322962780713};
  if (a <= 0.8) {
    const double logarithm = Log(a);
    return gamln1(a) - logarithm;
  }
  if (a <= 2.25) return gamln1((a - 0.5) - 0.5);
  if (a < 10) {
    double t = a;
    double product = 1;
    for (int factors = static_cast<int>(std::nearbyint(a - 1.25)); factors > 0; --factors) {
      t -= 1;
      product *= t;
    }
    return gamln1(t - 1) + std::log(product);
  }
  const double t = (1 / a) * (1 / a);
  return checked((published::halfLogTwoPiLessHalf + polynomial(c, t) / a) +
                 (a - 0.5) * (std::log(a) - 1));
} catch (RuntimeError& error) {
  error.leave("m_Gamma.gamln", caller);
}

double gamln1(double a, Line caller) try {
  if (a < 0.6) {
    constexpr std::array p{0.577215664901533,   0.844203922187225,  -0.168860593646662,
                           -0.780427615533591,  -0.402055799310489, -0.0673562214325671,
                           -0.00271935708322958};
    constexpr std::array q{1.0,
                           2.88743195473681,
                           3.12755088914843,
                           1.56875193295039,
                           0.361951990101499,
                           0.0325038868253937,
                           6.67465618796164E-4};
    return checked(-(a * (polynomial(p, a) / polynomial(q, a))));
  }
  constexpr std::array r{0.422784335098467, 0.848044614534529, 0.565221050691933,
                         0.156513060486551, 0.017050248402265, 4.97958207639485E-4};
  constexpr std::array s{1.0,
                         1.24313399877507,
                         0.548042109832463,
                         0.10155218743983,
                         0.00713309612391,
                         1.16165475989616E-4};
  const double x = (a - 0.5) - 0.5;
  return checked(x * (polynomial(r, x) / polynomial(s, x)));
} catch (RuntimeError& error) {
  error.leave("m_Gamma.gamln1", caller);
}

double gam1(double a, Line caller) try {
  const bool isShifted = a > 0.5;
  const double t = isShifted ? (a - 0.5) - 0.5 : a;
  if (t == 0) return 0;
  if (t > 0) {
    constexpr std::array p{0.577215664901533,  -0.409078193005776, -0.230975380857675,
                           0.0597275330452234, 0.0076696818164949, -0.00514889771323592,
                           5.89597428611429E-4};
    constexpr std::array q{1.0, 0.427569613095214, 0.158451672430138, 0.0261132021441447,
                           0.00423244297896961};
    const double w = polynomial(p, t) / polynomial(q, t);
    return checked(isShifted ? (t / a) * ((w - 0.5) - 0.5) : a * w);
  }
  constexpr std::array r{-0.422784335098468,  -0.771330383816272,  -0.244757765222226,
                         0.118378989872749,   9.30357293360349E-4, -0.0118290993445146,
                         0.00223047661158249, 2.66505979058923E-4, -1.32674909766242E-4};
  constexpr std::array s{1.0, 0.273076135303957, 0.0559398236957378};
  const double w = polynomial(r, t) / polynomial(s, t);
  return checked(isShifted ? t * w / a : a * ((w + 0.5) + 0.5));
} catch (RuntimeError& error) {
  error.leave("m_Gamma.gam1", caller);
}

double rcomp(double a, double x, Line caller) try {
  if (a < 20) {
    const double t = checked(a * Log(x) - x);
    if (a < 1) return checked((a * std::exp(t)) * (1 + gam1(a)));
    return std::exp(t) / gamma(a);
  }
  const double u = x / a;
  if (u == 0) return 0;
  const double t = (1 / a) * (1 / a);
  const double correction = (((0.75 * t - 1) * t + 3.5) * t - 105) / (a * 1260);
  const double logarithm = correction - checked(a * m_MathUtil::rlog(u));
  return published::inverseRootTwoPi * std::sqrt(a) * std::exp(logarithm);
} catch (RuntimeError& error) {
  error.leave("m_Gamma.rcomp", caller);
}

}  // namespace palvex::m_Gamma
