#pragma once

#include <array>
#include <cmath>

#include "numerics/Polynomial.h"

namespace palvex::bench {

/// The normal quantile of Algorithm AS 241 (M. J. Wichura, Applied Statistics 37 (1988) 477-484)
/// without a check or a trap: the yardstick. Coefficients and order of operations are those of
/// m_Normal, so that both give the same bits.
inline double bareNormalQuantile(double p) {
  constexpr std::array a{3.38713287279637, 133.141667891784, 1971.59095030655, 13731.6937655095,
                         45921.9539315499, 67265.7709270087, 33430.5755835881, 2509.08092873012};
  constexpr std::array b{1.0,
                         42.3133307016009,
                         687.187007492058,
                         5394.19602142475,
                         21213.7943015866,
                         39307.8958000927,
                         28729.0857357219,
                         5226.49527885285};
  constexpr std::array c{1.42343711074968,   4.63033784615655,    5.76949722146069,
                         3.6478483247632,    1.27045825245237,    0.241780725177451,
                         0.0227238449892692, 0.000774545014278341};
  constexpr std::array d{1.0,
                         2.05319162663776,
                         1.6763848301838,
                         0.6897673349851,
                         0.14810397642748,
                         0.0151986665636165,
                         0.000547593808499535,
                         1.05075007164442E-9};
  constexpr std::array e{6.6579046435011,     5.46378491116411,   1.78482653991729,
                         0.296560571828505,   0.0265321895265761, 0.00124266094738808,
                         2.71155556874349E-5, 2.01033439929229E-7};
  constexpr std::array f{1.0,
                         0.599832206555888,
                         0.136929880922736,
                         0.0148753612908506,
                         0.000786869131145613,
                         1.84631831751005E-5,
                         1.42151175831645E-7,
                         2.04426310338994E-15};

  const double q = p - 0.5;
  if (std::abs(q) <= 0.425) {
    const double r = 0.180625 - q * q;
    return q * polynomial(a, r) / polynomial(b, r);
  }
  const double tail = q < 0 ? p : 1 - p;
  const double s = std::sqrt(-std::log(tail));
  const double deviate = s <= 5 ? polynomial(c, s - 1.6) / polynomial(d, s - 1.6)
                                : polynomial(e, s - 5) / polynomial(f, s - 5);
  return q < 0 ? -deviate : deviate;
}

}  // namespace palvex::bench
