#pragma once

#include "families/Truncation.h"

/// The uniform distribution from `minimum` to `maximum`.
///
/// All routines raise error 6 for a NaN and for a width beyond the double range, and add their line
/// to the trace of an error that passes them. `UniformCDF` and `UniformINV` take the two bounds in
/// either order; `UniformPDF` and `UniformVAL` do not.
namespace palvex::m_Uniform {

/// The untruncated density at x, 0 outside the bounds, with bounds in the wrong order, and where
/// the limits cut x away. Equal bounds are a point mass: density 1 there, whatever the limits.
double density(double x, double minimum, double maximum, const Limits& limits,
               Line caller = Line::here());

/// Probability of a value up to x, in [0, 1].
double UniformCDF(double x, double minimum, double maximum, Line caller = Line::here());

/// The x with probability p below it; the lower bound for p <= 0, the upper one for p >= 1.
double UniformINV(double p, double minimum, double maximum, Line caller = Line::here());

/// The band of probabilities kept by the limits: first half of UniformVAL.
Band band(double minimum, double maximum, const Limits& limits, Line caller = Line::here());

/// The value at the position p of the kept band: second half of UniformVAL. The one value of equal
/// bounds, 0 with bounds in the wrong order.
double value(double p, double minimum, double maximum, const Band& band,
             Line caller = Line::here());

/// `density` with limits as a host holds them: a numeric variant is a limit, anything else is none.
inline double UniformPDF(double x, double minimum, double maximum, const Variant& ltl,
                         const Variant& utl, Line caller = Line::here()) {
  return density(x, minimum, maximum, limitsFrom(ltl, utl), caller);
}

/// The value whose position in the cumulative scale of the truncated distribution is p.
inline double UniformVAL(double p, double minimum, double maximum,
                         const Variant& ltl = Variant::missing(),
                         const Variant& utl = Variant::missing(), Line caller = Line::here()) {
  return value(p, minimum, maximum, band(minimum, maximum, limitsFrom(ltl, utl), caller), caller);
}

}  // namespace palvex::m_Uniform
