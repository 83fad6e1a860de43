#pragma once

/// Complete functions behind the incomplete beta ratio: quotients of gamma functions in forms that
/// neither cancel nor overflow. A. R. DiDonato, A. H. Morris, Algorithm 708, ACM Trans. Math.
/// Softw. 18 (1992) 360-373. All are re-entrant and raise nothing for arguments in their range.
namespace palvex::m_Beta {

/// 1/gamma(a) for 0 < a < 16. Relative error 2e-15.
double inverseGamma(double a);

/// gamma(a + b) / (gamma(b) b^a) for 0 < a <= b, b >= 8. Relative error 5e-16 for a up to 8.
double shiftRatio(double a, double b);

/// del(a) + del(b) - del(a + b) for a, b >= 8, where ln gamma(a) = (a - 1/2) ln a - a + ln(2 pi)/2
/// + del(a). Relative error 7e-16.
double bcorr(double a, double b);

/// The derivative of ln gamma(x) for x > 0. Absolute error 4e-15 from 1/2 on, relative below.
/// W. J. Cody, A. J. Strecok, H. C. Thacher, Chebyshev approximations for the psi function, Math.
/// Comp. 27 (1973) 123-127.
double psi(double x);

}  // namespace palvex::m_Beta
