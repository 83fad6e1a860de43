#pragma once

#include "families/Truncation.h"

/// The triangular distribution: a density that rises linearly from `minimum` to `likely` and falls
/// to `maximum`.
///
/// All routines raise error 6 for a NaN argument and the run-time's arithmetic errors where a
/// difference or product of the parameters leaves the double range, and add their line to the trace
/// of an error that passes them. Parameters that are not in the order minimum <= likely <= maximum
/// give 0.
namespace palvex::m_Triangular {

/// The untruncated density at x, 0 outside the bounds and where the limits cut x away. The peak
/// belongs to the falling side, except where likely = maximum. Equal bounds are a point mass:
/// density 1 there, whatever the limits.
double density(double x, double minimum, double likely, double maximum, const Limits& limits,
               Line caller = Line::here());

/// Probability of a value up to x, in [0, 1].
double TriangularCDF(double x, double minimum, double likely, double maximum,
                     Line caller = Line::here());

/// The x with probability p below it; the minimum for p <= 0, the maximum for p >= 1. Error 6 when
/// all three parameters are equal, whatever p.
double TriangularINV(double p, double minimum, double likely, double maximum,
                     Line caller = Line::here());

/// The band of probabilities kept by the limits: first half of TriangularVAL.
Band band(double minimum, double likely, double maximum, const Limits& limits,
          Line caller = Line::here());

/// The value at the position p of the kept band: second half of TriangularVAL. The one value of
/// equal bounds.
double value(double p, double minimum, double likely, double maximum, const Band& band,
             Line caller = Line::here());

/// `density` with limits as a host holds them: a numeric variant is a limit, anything else is none.
inline double TriangularPDF(double x, double minimum, double likely, double maximum,
                            const Variant& ltl, const Variant& utl, Line caller = Line::here()) {
  return density(x, minimum, likely, maximum, limitsFrom(ltl, utl), caller);
}

/// The value whose position in the cumulative scale of the truncated distribution is p.
inline double TriangularVAL(double p, double minimum, double likely, double maximum,
                            const Variant& ltl = Variant::missing(),
                            const Variant& utl = Variant::missing(), Line caller = Line::here()) {
  return value(p, minimum, likely, maximum,
               band(minimum, likely, maximum, limitsFrom(ltl, utl), caller), caller);
}

}  // namespace palvex::m_Triangular
