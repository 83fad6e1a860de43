#pragma once

/// Constants of the published routines, to the digits with which they were entered there. They are
/// not those of the header `<numbers>`, because further digits would change the last bits of the
/// routines' results.
namespace palvex::published {

inline constexpr double pi = 3.1415926535898;                      ///< pi to 14 digits
inline constexpr double twoPi = 6.28318530717958;                  ///< 2 pi
inline constexpr double ln2 = 0.69314718055995;                    ///< ln 2
inline constexpr double inverseRootPi = 0.564189583547756;         ///< 1/sqrt(pi)
inline constexpr double inverseRootTwoPi = 0.398942280401433;      ///< 1/sqrt(2 pi)
inline constexpr double halfLogTwoPiLessHalf = 0.418938533204673;  ///< (ln(2 pi) - 1)/2
/// 1/sqrt(pi) in the moments of Johnson's SB curve.
inline constexpr double inverseRootPiToTenDigits = 0.5641895835;

}  // namespace palvex::published
