#pragma once

#include "families/Truncation.h"

/// The shifted lognormal distribution: minimum + exp(location + scale Z), Z standard normal, so
/// that `location` and `scale` > 0 are the mean and the standard deviation of the logarithm.
///
/// All routines raise error 6 for a NaN argument and the run-time's arithmetic errors, and add
/// their line to the trace of an error that passes them.
namespace palvex::m_Lognormal {

/// The untruncated density at x, 0 up to and at the minimum, where the limits cut x away, and for a
/// scale <= 0.
double density(double x, double location, double scale, double minimum, const Limits& limits,
               Line caller = Line::here());

/// Probability of a value below x, or above x when `upper` is true. A scale of 0 is a division by
/// zero above the minimum. An error's description gains the arguments: "lnCDF: (2,0,0,1,False)".
double LognormalCDF(double x, double location, double scale, double minimum, Boolean upper,
                    Line caller = Line::here());

/// The x below which (above which, when `upper` is true) the probability is p. p = 0 and p = 1 give
/// the values of the fixed normal deviates -38.5 and 8.3; error 5 for p outside [0, 1], 6 for a
/// result beyond the double range.
double LognormalINV(double p, double location, double scale, double minimum, Boolean upper,
                    Line caller = Line::here());

/// The band of probabilities kept by the limits: first half of LognormalVAL.
Band band(double location, double scale, double minimum, const Limits& limits,
          Line caller = Line::here());

/// The value at the position p of the kept band: second half of LognormalVAL. The minimum for a
/// scale <= 0.
double value(double p, double location, double scale, double minimum, const Band& band,
             Line caller = Line::here());

/// `density` with limits as a host holds them: a numeric variant is a limit, anything else is none.
inline double LognormalPDF(double x, double location, double scale, double minimum,
                           const Variant& ltl, const Variant& utl, Line caller = Line::here()) {
  return density(x, location, scale, minimum, limitsFrom(ltl, utl), caller);
}

/// The value whose position in the cumulative scale of the truncated distribution is p.
inline double LognormalVAL(double p, double location, double scale, double minimum,
                           const Variant& ltl = Variant::missing(),
                           const Variant& utl = Variant::missing(), Line caller = Line::here()) {
  return value(p, location, scale, minimum,
               band(location, scale, minimum, limitsFrom(ltl, utl), caller), caller);
}

}  // namespace palvex::m_Lognormal
