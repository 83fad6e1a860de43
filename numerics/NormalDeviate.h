#pragma once

#include <array>
#include <cmath>

#include "numerics/Polynomial.h"

namespace palvex {

/// The normal deviate with the probability p below it, for 0 < p <= 1/2, to a relative 1e-7: for
/// the starts of iterations. M. J. Wichura, Algorithm AS 241, Applied Statistics 37 (1988) 477-484
/// (PPND7).
[[nodiscard]] inline double roughNormalDeviate(double p) noexcept {
  constexpr std::array a{3.3871327179, 50.434271938, 159.29113202, 59.109374720};
  constexpr std::array b{1.0, 17.895169469, 78.757757664, 67.187563600};
  constexpr std::array c{1.4234372777, 2.7568153900, 1.3067284816, 0.17023821103};
  constexpr std::array d{1.0, 0.73700164250, 0.12021132975};
  constexpr std::array e{6.6579051150, 3.0812263860, 0.42868294337, 0.017337203997};
  constexpr std::array f{1.0, 0.24197894225, 0.012258202635};
  const double centred = p - 0.5;
  if (centred >= -0.425) {
    const double r = 0.180625 - centred * centred;
    return centred * polynomial(a, r) / polynomial(b, r);
  }
  const double r = std::sqrt(-std::log(p));
  return r <= 5 ? -polynomial(c, r - 1.6) / polynomial(d, r - 1.6)
                : -polynomial(e, r - 5) / polynomial(f, r - 5);
}

}  // namespace palvex
