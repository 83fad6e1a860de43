#pragma once

#include "families/Truncation.h"

/// The exponential distribution with rate `lambda` > 0, shifted to start at `minimum`.
///
/// All routines raise error 6 for a NaN argument and where the exponent lambda (x - minimum) or a
/// result leaves the double range, and add their line to the trace of an error that passes them.
namespace palvex::m_Exponential {

/// The untruncated density at x, 0 below the minimum (the minimum itself counts), where the limits
/// cut x away, and for a rate <= 0.
double density(double x, double lambda, double minimum, const Limits& limits,
               Line caller = Line::here());

/// Probability of a value up to x, computed as 1 - exp(-lambda (x - minimum)): with the absolute
/// error 1e-16, and 0 where it is smaller than that; 0 for a rate <= 0.
double ExponentialCDF(double x, double lambda, double minimum, Line caller = Line::here());

/// The x with probability p below it, computed from ln(1 - p). 0 (not the minimum) for p <= 0 and
/// for a rate <= 0; error 5 for p >= 1.
double ExponentialINV(double p, double lambda, double minimum, Line caller = Line::here());

/// Whether the value at p is the minimum whatever the limits, which then are not consulted.
constexpr bool ignoresLimits(double p) noexcept {
  return p <= 0;
}

/// The band of probabilities kept by the limits: first half of ExponentialVAL.
Band band(double lambda, double minimum, const Limits& limits, Line caller = Line::here());

/// The value at the position p of the kept band: second half of ExponentialVAL. The minimum for
/// p <= 0 and for a rate <= 0; error 5 where the band ends at 1 and p >= 1.
double value(double p, double lambda, double minimum, const Band& band, Line caller = Line::here());

/// `density` with limits as a host holds them: a numeric variant is a limit, anything else is none.
inline double ExponentialPDF(double x, double lambda, double minimum, const Variant& ltl,
                             const Variant& utl, Line caller = Line::here()) {
  return density(x, lambda, minimum, limitsFrom(ltl, utl), caller);
}

/// The value whose position in the cumulative scale of the truncated distribution is p.
inline double ExponentialVAL(double p, double lambda, double minimum,
                             const Variant& ltl = Variant::missing(),
                             const Variant& utl = Variant::missing(), Line caller = Line::here()) {
  if (ignoresLimits(p)) return value(p, lambda, minimum, Band{}, caller);
  return value(p, lambda, minimum, band(lambda, minimum, limitsFrom(ltl, utl), caller), caller);
}

}  // namespace palvex::m_Exponential
