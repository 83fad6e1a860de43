#pragma once

#include <cstdint>

#include "runtime/RuntimeError.h"
#include "runtime/Variant.h"

/// Machine constants and elementary functions that keep their relative accuracy where the plain
/// formula cancels, in the form that the incomplete gamma and beta ratios use (DCDFLIB).
///
/// An argument outside the domain of a routine fails in its arithmetic: error 5 for the logarithm
/// of a value <= 0, error 6 for a result that overflows and for an argument without a limit value.
/// Each routine that can fail adds its line to the trace. All are re-entrant.
namespace palvex::m_MathUtil {

/// Integer machine parameters of IEEE double arithmetic.
/// @param i  1: integer base, 2: digits of the largest integer, 3: the largest integer, 4: floating
///           base, 5-7: single precision digits, smallest and largest exponent, 8-10: the same in
///           double precision. Any other index raises error 9.
std::int32_t ipmpar(std::int32_t i, Line caller = Line::here());

/// Double-precision machine constants.
/// @param i  <= 1: relative precision 2^-52; 2: smallest normal number; >= 3: largest number
double spmpar(std::int16_t i);

/// The largest (l = 0) or the most negative (any other l) argument for which exp neither overflows
/// nor underflows, just inside the true range: 709.7756150662599 and -708.3893345680835.
double exparg(std::int32_t l);

/// The smaller value; b on a tie, a when one is NaN.
inline double dmin1(double a, double b) noexcept {
  return a >= b ? b : a;
}

/// The larger value; b on a tie and when one is NaN.
inline double dmax1(double a, double b) noexcept {
  return a > b ? a : b;
}

/// |a| when b >= 0 (-0.0 included), -|a| otherwise, also for a NaN b.
inline double sign(double a, double b) noexcept {
  const double magnitude = a < 0 ? -a : a;
  return b >= 0 ? magnitude : -magnitude;
}

/// The same rule as `sign`.
inline double fsign(double a, double b) noexcept {
  return sign(a, b);
}

/// x - 1 - ln x for x > 0. Relative error 1.3e-15, also around the double zero at 1.
double rlog(double x, Line caller = Line::here());

/// x - ln(1 + x) for x > -1. Relative error 1.4e-15, also around the double zero at 0.
double rlog1(double x, Line caller = Line::here());

/// exp(x) - 1. Relative error 5e-16; error 6 above 709.78.
double rexp(double x, Line caller = Line::here());

/// The same for a variant that holds a number; error 13 for any other content.
double rexp(const Variant& x, Line caller = Line::here());

/// ln(1 + a) for a > -1. Relative error 5e-16 for |a| <= 0.375; beyond, that of the logarithm of
/// the rounded sum 1 + a.
double alnrel(double a, Line caller = Line::here());

/// The error function. Relative error 1.2e-15; exactly +-1 from |x| = 5.8 on.
/// W. J. Cody, Rational Chebyshev approximations for the error function, Math. Comp. 23 (1969).
double erf(double x, Line caller = Line::here());

/// erfc(x) when ind = 0, exp(x^2) erfc(x) otherwise. Relative error 2.4e-15, of the unscaled value
/// 1.2e-16 (1 + x^2) beyond |x| = 4; exactly 0 (unscaled) from x = 26.6 on. The scaled value
/// overflows below x = -26.6: error 6.
double erfc1(std::int16_t ind, double x, Line caller = Line::here());

}  // namespace palvex::m_MathUtil
