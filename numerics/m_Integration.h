#pragma once

#include <functional>
#include <span>

/// Numerical integration.
namespace palvex::m_Integration {

/// The integral of f from the first to the last of `breaks`, to 1e-12 of the integral of |f|.
///
/// Adaptive Gauss-Kronrod quadrature (7 and 15 points): the piece with the largest error is halved
/// until the sum of the errors is small enough. Method and error estimate: R. Piessens, E. de
/// Doncker-Kapenga, C. W. Uberhuber, D. K. Kahaner, QUADPACK, Springer 1983.
/// @param f       finite between the breaks; it is never evaluated at the breaks themselves
/// @param breaks  at least two, finite and increasing; f may be less smooth there
/// @throws RuntimeError 6 where f is not finite, or so rough that 2000 pieces do not settle it
double integrate(const std::function<double(double)>& f, std::span<const double> breaks);

}  // namespace palvex::m_Integration
