#pragma once

#include "families/Truncation.h"

/// The Weibull distribution with `shape` > 0 and `scale` > 0, shifted to start at `minimum`.
///
/// All routines raise error 6 for a NaN argument and the run-time's arithmetic errors where a power
/// or quotient leaves the double range, and add their line to the trace of an error that passes
/// them.
namespace palvex::m_Weibull {

/// The untruncated density at x, 0 up to and at the minimum (unlike the exponential), where the
/// limits cut x away, and for a shape or scale <= 0.
double density(double x, double shape, double scale, double minimum, const Limits& limits,
               Line caller = Line::here());

/// Whether the terms of the untruncated density of a law at x stay in the range of doubles.
bool densityHolds(double x, double shape, double scale, double minimum) noexcept;

/// Probability of a value up to x, computed as 1 - exp(-z^shape), z = (x - minimum)/scale: with the
/// absolute error 1e-16, and 0 where it is smaller than that; 0 for a shape or scale <= 0.
double WeibullCDF(double x, double shape, double scale, double minimum, Line caller = Line::here());

/// The x with probability p below it; the minimum for p <= 0 and for a shape or scale <= 0. At
/// p = 1 the x that probability 1E-300 exceeds; error 5 for p > 1.
double WeibullINV(double p, double shape, double scale, double minimum, Line caller = Line::here());

/// Whether the value at p is the minimum whatever the limits, which then are not consulted. p = 0
/// lies in the band (unlike the exponential).
constexpr bool ignoresLimits(double p) noexcept {
  return p < 0;
}

/// The band of probabilities kept by the limits: first half of WeibullVAL.
Band band(double shape, double scale, double minimum, const Limits& limits,
          Line caller = Line::here());

/// The value at the position p of the kept band: second half of WeibullVAL. The minimum for p < 0
/// and for a shape or scale <= 0.
double value(double p, double shape, double scale, double minimum, const Band& band,
             Line caller = Line::here());

/// `density` with limits as a host holds them: a numeric variant is a limit, anything else is none.
inline double WeibullPDF(double x, double shape, double scale, double minimum, const Variant& ltl,
                         const Variant& utl, Line caller = Line::here()) {
  return density(x, shape, scale, minimum, limitsFrom(ltl, utl), caller);
}

/// The value whose position in the cumulative scale of the truncated distribution is p.
inline double WeibullVAL(double p, double shape, double scale, double minimum,
                         const Variant& ltl = Variant::missing(),
                         const Variant& utl = Variant::missing(), Line caller = Line::here()) {
  if (ignoresLimits(p)) return value(p, shape, scale, minimum, Band{}, caller);
  return value(p, shape, scale, minimum, band(shape, scale, minimum, limitsFrom(ltl, utl), caller),
               caller);
}

}  // namespace palvex::m_Weibull
