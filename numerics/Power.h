#pragma once

#include <cmath>

namespace palvex {

/// x^a for x >= 0, to the last digit but one. The C library of MinGW multiplies repeatedly for a
/// whole a, which costs a large power its last digits (x^5000 three of them); there the power is
/// computed as a long double.
[[nodiscard]] inline double powerOf(double x, double a) noexcept {
#ifdef __MINGW32__
  return static_cast<double>(std::pow(static_cast<long double>(x), static_cast<long double>(a)));
#else
  return std::pow(x, a);
#endif
}

}  // namespace palvex
