#pragma once

#include <cstdint>
#include <optional>

#include "families/Truncation.h"
#include "numerics/m_BetaRatio.h"

/// The beta distribution on [minimum, maximum], worked with on the unit interval of
/// u = (x - minimum)/(maximum - minimum).
///
/// All routines raise the run-time's arithmetic errors, 6 among them for an argument that is
/// infinite or NaN where no limit value exists; each adds its line to the trace of an error that
/// passes it. Faults that a routine reports by a status or a text are not raised.
namespace palvex::m_Beta {

/// The two shapes of a beta law with what is worked out from them alone, once, when an evaluation
/// first needs it. The forms that take two plain shapes give the same results bit for bit.
struct Shapes {
  /// Takes any shapes; each routine below says what it does with shapes that are not positive.
  Shapes(double firstShape, double secondShape)
      : alpha(firstShape), beta(secondShape), ratio(firstShape, secondShape) {}

  double alpha;                         ///< > 0
  double beta;                          ///< > 0
  IncompleteBeta ratio;                 ///< the cumulative probability, prepared
  std::optional<double> densityFactor;  ///< 1/Beta(alpha, beta), infinite where it overflows
};

// ---- density ----

/// Density at u of the standard beta law on [0, 1]. At an end where it is infinite: error 5; where
/// a power overflows: 6.
double StdBetaPDF(double u, Shapes& shapes, Line caller = Line::here());
/// The same for plain shapes, for a single evaluation.
inline double StdBetaPDF(double u, double alpha, double beta, Line caller = Line::here()) {
  Shapes shapes(alpha, beta);
  return StdBetaPDF(u, shapes, caller);
}

/// The untruncated density at x, 0 outside [minimum, maximum], where the limits cut x away, and
/// unless both shapes are positive and maximum > minimum. It is that of u, not divided by
/// maximum - minimum, and not rescaled by the kept probability.
double density(double x, Shapes& shapes, double minimum, double maximum, const Limits& limits,
               Line caller = Line::here());

/// Whether the terms of the untruncated density of a law at x stay in the range of doubles.
bool densityHolds(double x, Shapes& shapes, double minimum, double maximum);

/// `density` with limits as a host holds them: a numeric variant is a limit, anything else is none.
inline double BetaPDF(double x, double alpha, double beta, double minimum, double maximum,
                      const Variant& ltl, const Variant& utl, Line caller = Line::here()) {
  Shapes shapes(alpha, beta);
  return density(x, shapes, minimum, maximum, limitsFrom(ltl, utl), caller);
}

// ---- cumulative probability ----

/// The incomplete beta ratio w = I_x(a, b) and its complement w1, each with its own relative
/// accuracy (see IncompleteBeta). Never raises.
/// @param y     1 - x
/// @param ierr  0, or with w = w1 = 0: 1 for a negative or NaN shape, 2 for a = b = 0, 3 for x
///              and 4 for y outside [0, 1] or NaN, 5 for x + y other than 1, 6 for x = a = 0, 7
///              for y = b = 0
void bratio(double a, double b, double x, double y, double& w, double& w1, std::int16_t& ierr);

/// Both tails of the standard beta law at x: (0, 1) for x <= 0, (1, 0) for y <= 0, else `bratio`
/// with its `ierr` ignored.
void cumbet(double x, double y, double a, double b, double& cum, double& ccum);

/// Works out one pair of the beta law from the others (DCDFLIB): p and q (`which` = 1), x and y
/// (2), a (3) or b (4), to a relative 1e-8. The searches for a shape are those
/// of m_RootFinding::dinvr: they end only at a bound or at 0, and for which = 3 with 0 < p <= q,
/// and which = 4 with p > q > 0, not at all.
/// @param p, q    lower and upper tail, p + q = 1
/// @param x, y    x + y = 1
/// @param status  0; -1 to -7: which, p, q, x, y, a, b is out of range; 1, 2: no root above, below
///                the search's bound; 3: p + q other than 1; 4: x + y other than 1
/// @param bound   with a status other than 0 the bound that was violated
void cdfbet(std::int16_t which, double& p, double& q, double& x, double& y, double& a, double& b,
            std::int16_t& status, double& bound, Line caller = Line::here());

/// `cdfbet` with which = 1 for prepared shapes and y = 1 - x: the tails, unless the status is
/// negative.
std::int16_t cdfbet(double x, double y, IncompleteBeta& ratio, Tails& tails) noexcept;

/// Probability of the standard beta law below x, or above x when `upper` is true.
/// - alpha = 1: 1 - (1 - x)^beta, and for the upper tail 1 less that, as it is written.
/// - else beta = 1: the lower tail with a minus sign, -(x^alpha); the upper one 1 + x^alpha.
/// - else both tails to full relative accuracy.
/// @returns a number, or the text of the fault: x outside [0, 1], a shape <= 0 or NaN
Variant BetaCDF(double x, Shapes& shapes, Boolean upper, Line caller = Line::here());
/// The same for plain shapes, for a single evaluation.
inline Variant BetaCDF(double x, double alpha, double beta, Boolean upper,
                       Line caller = Line::here()) {
  Shapes shapes(alpha, beta);
  return BetaCDF(x, shapes, upper, caller);
}

// ---- inverse ----

/// The x of [0, 1] where BetaCDF (lower tail) is p, by R. P. Brent's root finder (Algorithms for
/// Minimization Without Derivatives, 1973, zeroin), to within tol.
/// @param ier  0; 3: p outside [0, 1]; 4: a shape <= 0; 5: tol < 1e-8; 7: not
///             ended after 100 iterations, x is the best point so far
/// @param x    the solution; stays as it was with ier = 3, 4 and 5
void PPFBET(double p, Shapes& shapes, double tol, std::int16_t& ier, double& x,
            Line caller = Line::here());
/// The same for plain shapes, for a single evaluation.
inline void PPFBET(double p, double alpha, double beta, double tol, std::int16_t& ier, double& x,
                   Line caller = Line::here()) {
  Shapes shapes(alpha, beta);
  PPFBET(p, shapes, tol, ier, x, caller);
}

/// The u below which (above which, when `upper` is true) the standard beta law has probability p:
/// in closed form when a shape is 1, else by PPFBET with the tolerance 1e-8.
/// @returns a number, or the text of PPFBET's fault
Variant BetaINV(double p, Shapes& shapes, Boolean upper, Line caller = Line::here());
/// The same for plain shapes, for a single evaluation.
inline Variant BetaINV(double p, double alpha, double beta, Boolean upper,
                       Line caller = Line::here()) {
  Shapes shapes(alpha, beta);
  return BetaINV(p, shapes, upper, caller);
}

// ---- value ----

/// Whether the value is the minimum whatever the limits: p <= 0, a shape <= 0, or no width.
[[nodiscard]] inline bool ignoresLimits(double p, double alpha, double beta, double minimum,
                                        double maximum) noexcept {
  return !(p > 0 && alpha > 0 && beta > 0 && maximum > minimum);
}

/// The band of probabilities kept by the limits: first half of BetaVAL. A limit outside
/// [minimum, maximum] cuts nothing.
Band band(Shapes& shapes, double minimum, double maximum, const Limits& limits,
          Line caller = Line::here());

/// The value at the position p of the kept band: second half of BetaVAL. Error 13 when BetaINV
/// answers with a text.
double value(double p, Shapes& shapes, double minimum, double maximum, const Band& band,
             Line caller = Line::here());

/// The value whose position in the cumulative scale of the truncated distribution is p: a random
/// draw when p is a uniform random number of [0, 1].
inline double BetaVAL(double p, double alpha, double beta, double minimum, double maximum,
                      const Variant& ltl = Variant::missing(),
                      const Variant& utl = Variant::missing(), Line caller = Line::here()) {
  Shapes shapes(alpha, beta);
  if (ignoresLimits(p, alpha, beta, minimum, maximum)) {
    return value(p, shapes, minimum, maximum, Band{}, caller);
  }
  const Band kept = band(shapes, minimum, maximum, limitsFrom(ltl, utl), caller);
  return value(p, shapes, minimum, maximum, kept, caller);
}

}  // namespace palvex::m_Beta
