#pragma once

#include <cstdint>

#include "runtime/Limits.h"

/// The complete gamma functions and the gamma distribution.
///
/// An argument outside a stated domain fails in the arithmetic: error 5, 6 or 11, with the routine
/// in the trace.
namespace palvex::m_Gamma {

// The complete gamma functions: A. R. DiDonato, A. H. Morris, Algorithm 654, ACM Trans. Math.
// Softw. 13 (1987) 318-319.

/// The gamma function of a. 0 where it cannot be computed: a = 0, a negative integer, |a| >= 1000,
/// a result beyond the double range. Error 6 for a NaN.
/// Relative error 6e-15 for 0 < a < 15, 3e-16 (1 + |ln gamma(a)|) beyond. For a negative a above
/// -15 it is up to 3e-6: the argument is reduced with the floor, to where the approximation is used
/// outside its interval.
double gamma(double a, Line caller = Line::here());

/// ln gamma(a) for a > 0. Relative error 1.6e-14 on (2.25, 10), where one factor more than needed
/// is split off when the fraction of a - 1.25 exceeds one half; 2.4e-15 elsewhere.
double gamln(double a, Line caller = Line::here());

/// ln gamma(1 + a) for -0.2 <= a <= 1.25. Relative error 2.5e-15, also around its zeros at 0 and 1;
/// 4e-14 down to a = -0.25.
double gamln1(double a, Line caller = Line::here());

/// 1/gamma(1 + a) - 1 for -0.5 <= a <= 1.5. Relative error 2.5e-15, also around its zeros at 0
/// and 1.
double gam1(double a, Line caller = Line::here());

/// exp(-x) x^a / gamma(a) for a > 0, x > 0; 0 for a >= 20 when x/a underflows.
/// Relative error 6e-15 plus 2.3e-16 times a |ln x| + x for a < 20, and times |x - a| + a rlog(x/a)
/// beyond.
double rcomp(double a, double x, Line caller = Line::here());

}  // namespace palvex::m_Gamma
