#pragma once

#include "families/Truncation.h"

/// The normal distribution.
///
/// All routines raise error 6 for an argument that is infinite or NaN where no limit value exists,
/// and the run-time's arithmetic errors; each adds its line to the trace of an error that passes
/// it.
namespace palvex::m_Normal {

/// The untruncated density at x, or 0 where the limits cut x away. It is not rescaled by the kept
/// probability. A standard deviation <= 0 is a point mass: density 1 at the mean, 0 elsewhere.
/// @param sd  standard deviation, > 0 for a true density
double density(double x, double mean, double sd, const Limits& limits, Line caller = Line::here());

/// Probability of the standard normal below x, or above x when `upper` is true; each tail with its
/// own relative accuracy (4e-15). Exactly 0 or 1 from |x| = 40 on. W. J. Cody, Rational Chebyshev
/// approximations for the error function, Math. Comp. 23 (1969), in the form of the ANORM program.
double NormalCDF(double x, Boolean upper, Line caller = Line::here());

/// The x below which (above which, when `upper` is true) the standard normal has probability p.
/// p = 0 and p = 1 have the fixed answers -38.5 and 8.3 (lower tail), beyond which the
/// double-precision probability no longer changes. Error 5 for p outside [0, 1].
double NormalINV(double p, Boolean upper, Line caller = Line::here());

/// Standard normal quantile of the lower tail, 0 < p < 1, relative error 4e-15; error 5 for any
/// other p. M. J. Wichura, Algorithm AS 241 (PPND16), Applied Statistics 37 (1988) 477-484.
double NormINV16(double p, Line caller = Line::here());

/// The band of probabilities kept by the limits: first half of NormalVAL.
Band band(double mean, double sd, const Limits& limits, Line caller = Line::here());

/// The value at the position p of the kept band: second half of NormalVAL. The mean when sd = 0.
double value(double p, double mean, double sd, const Band& band, Line caller = Line::here());

/// `density` with limits as a host holds them: a numeric variant is a limit, anything else is none.
inline double NormalPDF(double x, double mean, double sd, const Variant& ltl, const Variant& utl,
                        Line caller = Line::here()) {
  return density(x, mean, sd, limitsFrom(ltl, utl), caller);
}

/// The value whose position in the cumulative scale of the truncated distribution is p: a random
/// draw when p is a uniform random number of [0, 1].
inline double NormalVAL(double p, double mean, double sd, const Variant& ltl = Variant::missing(),
                        const Variant& utl = Variant::missing(), Line caller = Line::here()) {
  return value(p, mean, sd, band(mean, sd, limitsFrom(ltl, utl), caller), caller);
}

}  // namespace palvex::m_Normal
