#pragma once

#include "runtime/Variant.h"

/// Zeros of a function by reverse communication: the caller never passes the function. Each call
/// answers with an x and status 1; the caller evaluates f there and calls again with fx.
///
/// Status: 0 to start and when finished, 1 for a request, -1 when there is no root (`dinvr`) or no
/// change of sign (`dzror`); `qleft` and `qhi` then tell the side. The settings, the label of the
/// point at which the next call resumes and the working values of `dzror` are kept per thread until
/// they are overwritten; one search at a time per thread. A resume without any start before it
/// raises error 13. Values that overflow raise 6, equal points in a slope 11.
namespace palvex::m_RootFinding {

/// Settings of `dinvr`.
/// @param small, big      bounds of the search
/// @param absstp, relstp  absolute and relative size of the first step
/// @param stpmul          factor of each further step
/// @param abstol, reltol  absolute and relative tolerance, shared with `dstzr`
/// Error 13 for an argument that holds no number.
void dstinv(const Variant& small, const Variant& big, const Variant& absstp, const Variant& relstp,
            const Variant& stpmul, const Variant& abstol, const Variant& reltol,
            Line caller = Line::here());

/// One call of the bounded search after DCDFLIB's routine of that name, from which it departs in
/// three ways: no working value survives between two calls, so the start value is not kept and the
/// search goes out from 0 with steps of 0; the label is shared with `dzror`, which is therefore
/// never resumed from here; and a start outside [small, big] answers status 0 with x unchanged. The
/// requests are f at small, at big and at 0, and from then on repeat themselves unless an end of
/// the bounds or a zero ends the search: the caller bounds its own loop.
/// @param x      in: the start value; out: where f is asked for, or the result
/// @param fx     f at the x of the last request
/// @param qleft  set with status -1: the search ended at `small`
/// @param qhi    set with status -1: f was too high there
void dinvr(std::int16_t& status, double& x, double fx, Boolean& qleft, Boolean& qhi,
           Line caller = Line::here());

/// Settings of `dzror`: the bracket, and the tolerances that it shares with `dinvr`.
void dstzr(double xlo, double xhi, double abstol, double reltol) noexcept;

/// One call of the zero finder on a bracket: bisection, secant and inverse interpolation. J. C. P.
/// Bus and T. J. Dekker, algorithm R, ACM TOMS 1 (1975) 330-345.
/// @param xlo    the best point so far; at the end within `ftol` of the root
/// @param xhi    at the end the other side of the root
/// @param qleft  set with status -1: f is the nearer to zero at the low end
/// @param qhi    set with status -1: f is positive at both ends
void dzror(std::int16_t& status, double& x, double fx, double& xlo, double& xhi, Boolean& qleft,
           Boolean& qhi, Line caller = Line::here());

/// Half of the greater of the absolute tolerance and the relative one at zx.
double ftol(double zx, Line caller = Line::here());

/// Whether zx <= zy <= zz.
bool qxmon(double zx, double zy, double zz) noexcept;

}  // namespace palvex::m_RootFinding
