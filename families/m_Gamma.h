#pragma once

#include <cstdint>
#include <string_view>

#include "families/Truncation.h"
#include "numerics/m_GammaFunctions.h"

/// The gamma distribution.
///
/// An argument outside a stated domain fails in the arithmetic: error 5, 6 or 11, with the routine
/// in the trace.
namespace palvex::m_Gamma {

/// P(a, x) into `cum` and Q(a, x) into `ccum`; 0 and 1 for x <= 0. Error 6 for a NaN.
void cumgam(double x, const IncompleteGamma& a, double& cum, double& ccum,
            Line caller = Line::here());
/// The same for a plain shape, for a single evaluation.
inline void cumgam(double x, double a, double& cum, double& ccum, Line caller = Line::here()) {
  cumgam(x, IncompleteGamma(a), cum, ccum, caller);
}

/// One of the quantities of p = P(shape, x scale), q = 1 - p from the others (DCDFLIB); `scale`
/// multiplies x.
///
/// @param which   the one computed: 1 p and q, 2 x, 3 shape, 4 scale
/// @param status  0, or why there is no result: -1 which outside 1..4, -2 p outside [0, 1],
///                -3 q outside (0, 1], -4 x < 0, -5 shape <= 0, -6 scale <= 0, 3 p + q is not 1
///                (the arguments that are computed are not looked at), 1 and 2 the result is below
///                or above the bounds of the search, 10 the ratios or their inverse failed
/// @param bound   the bound that the argument or the result violates, else 0
///
/// The shape is searched with m_RootFinding::dinvr, which does not keep its bracket: with p > q the
/// search ends at its lower bound (status 1), with p <= q it does not end.
void cdfgam(std::int16_t which, double& p, double& q, double& x, double& shape, double& scale,
            std::int16_t& status, double& bound, Line caller = Line::here());

/// `cdfgam` with which = 1 for a prepared shape: answers the status.
std::int16_t cdfgam(double x, const IncompleteGamma& shape, double scale, double& p, double& q,
                    Line caller = Line::here());

/// What GammaCDF answers with for a status of cdfgam: a text, or empty.
Variant statusText(std::int16_t status);

/// How GammaINV describes a failure of gaminv, or "".
std::string_view failureText(std::int16_t ierr);

// The gamma distribution. Densities and values take a shape > 0, a scale > 0 that divides
// x - location, and a location; GammaCDF and GammaINV take a rate > 0 that multiplies x.

/// The density of the standardised value z = (x - location)/scale, not divided by the scale and not
/// rescaled by the kept probability; 0 up to the location, where the limits cut x away, and for a
/// shape or scale <= 0. Error 5 where z^(shape - 1) exp(-z) underflows, 6 where a factor overflows.
double density(double x, double shape, double scale, double location, const Limits& limits,
               Line caller = Line::here());

/// Whether the terms of the untruncated density of a law at x stay in the range of doubles.
bool densityHolds(double x, double shape, double scale, double location) noexcept;

/// The probability below x, or above x when `upper` is true, with the accuracy of `gratio`; or a
/// text that says which argument is out of range: "upper_limit ..." for x < 0, "deg_freedom ..."
/// for a shape <= 0. Empty for a rate <= 0. Error 6 for a NaN and when x rate overflows.
Variant GammaCDF(double x, const IncompleteGamma& shape, double rate, Boolean upper,
                 Line caller = Line::here());
/// The same for a plain shape, for a single evaluation.
inline Variant GammaCDF(double x, double shape, double rate, Boolean upper,
                        Line caller = Line::here()) {
  return GammaCDF(x, IncompleteGamma(shape), rate, upper, caller);
}

/// The x below which (above which, when `upper` is true) lies the probability p, with the accuracy
/// of `gaminv`; the largest double over the rate where nothing is above x. Error 13, described,
/// where `gaminv` fails; 5 for p outside [0, 1]; 11 for a rate of 0.
double GammaINV(double p, const IncompleteGamma& shape, double rate, Boolean upper,
                Line caller = Line::here());
/// The same for a plain shape, for a single evaluation.
inline double GammaINV(double p, double shape, double rate, Boolean upper,
                       Line caller = Line::here()) {
  return GammaINV(p, IncompleteGamma(shape), rate, upper, caller);
}

/// The band of probabilities kept by the limits: first half of GammaVAL. Error 13 for a limit below
/// the location, whose probability is a text.
Band band(const IncompleteGamma& shape, double scale, double location, const Limits& limits,
          Line caller = Line::here());

/// The value at the position p of the kept band: second half of GammaVAL. The location for a shape
/// or scale <= 0.
double value(double p, const IncompleteGamma& shape, double scale, double location,
             const Band& band, Line caller = Line::here());

/// `density` with limits as a host holds them: a numeric variant is a limit, anything else is none.
inline double GammaPDF(double x, double shape, double scale, double location, const Variant& ltl,
                       const Variant& utl, Line caller = Line::here()) {
  return density(x, shape, scale, location, limitsFrom(ltl, utl), caller);
}

/// The value whose position in the cumulative scale of the truncated distribution is p.
inline double GammaVAL(double p, double shape, double scale, double location,
                       const Variant& ltl = Variant::missing(),
                       const Variant& utl = Variant::missing(), Line caller = Line::here()) {
  const IncompleteGamma prepared(shape);
  return value(p, prepared, scale, location,
               band(prepared, scale, location, limitsFrom(ltl, utl), caller), caller);
}

}  // namespace palvex::m_Gamma
