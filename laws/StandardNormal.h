#pragma once

#include <array>
#include <cmath>
#include <limits>

#include "laws/Tails.h"
#include "numerics/Polynomial.h"

/// The standard normal law.
namespace palvex::laws {

/// 1/sqrt(2 pi)
inline constexpr double inverseRootTwoPi = 0.398942280401432677940;
/// ln sqrt(2 pi)
inline constexpr double logRootTwoPi = 0.918938533204672741780;

/// The probabilities below and above the deviate z. Relative error 2e-16 max(1, K), K = z^2 in the
/// smaller tail.
inline Tails normalTails(double z) noexcept {
  constexpr double inverseRootTwo = 0.707106781186547524401;
  const double small = 0.5 * std::erfc(std::abs(z) * inverseRootTwo);
  return z < 0 ? fromLower(small) : fromUpper(small);
}

/// p - 1/2, from the smaller of p and q = 1 - p.
[[gnu::always_inline]] constexpr double centredProbability(double p, double q) noexcept {
  return p < q ? p - 0.5 : 0.5 - q;
}

/// Whether p = 1/2 + centred is so central that AS 241 needs no logarithm.
constexpr bool isCentral(double centred) noexcept {
  return centred >= -0.425 && centred <= 0.425;
}

/// The deviate z of p = 1/2 + centred, for a central p. M. J. Wichura, Algorithm AS 241 (PPND16),
/// Applied Statistics 37 (1988) 477-484.
[[gnu::always_inline]] constexpr double centralDeviate(double centred) noexcept {
  constexpr std::array a{3.3871328727963666080, 133.14166789178437745, 1971.5909503065514427,
                         13731.693765509461125, 45921.953931549871457, 67265.770927008700853,
                         33430.575583588128105, 2509.0809287301226727};
  constexpr std::array b{1.0,
                         42.313330701600911252,
                         687.18700749205790830,
                         5394.1960214247511077,
                         21213.794301586595867,
                         39307.895800092710610,
                         28729.085735721942674,
                         5226.4952788528545610};
  const double r = 0.180625 - centred * centred;
  return centred * polynomial(a, r) / polynomial(b, r);
}

/// How far from 0 lies the deviate beyond which there is the probability exp(-r^2), for r <= 5
/// (AS 241).
[[gnu::always_inline]] constexpr double nearTailDeviate(double r) noexcept {
  constexpr std::array c{1.42343711074968357734,   4.63033784615654529590,
                         5.76949722146069140550,   3.64784832476320460504,
                         1.27045825245236838258,   0.241780725177450611770,
                         0.0227238449892691845833, 0.000774545014278341407640};
  constexpr std::array d{1.0,
                         2.05319162663775882187,
                         1.67638483018380384940,
                         0.689767334985100004550,
                         0.148103976427480074590,
                         0.0151986665636164571966,
                         0.000547593808499534494600,
                         1.05075007164441684324e-9};
  return polynomial(c, r - 1.6) / polynomial(d, r - 1.6);
}

/// The same for r > 5.
inline double farTailDeviate(double r) noexcept {
  constexpr std::array e{6.65790464350110377720,    5.46378491116411436990,
                         1.78482653991729133580,    0.296560571828504891230,
                         0.0265321895265761230930,  0.00124266094738807843860,
                         2.71155556874348757815e-5, 2.01033439929228813265e-7};
  constexpr std::array f{1.0,
                         0.599832206555887937690,
                         0.136929880922735805310,
                         0.0148753612908506148525,
                         0.000786869131145613259100,
                         1.84631831751005468180e-5,
                         1.42151175831644588870e-7,
                         2.04426310338993978564e-15};
  if (std::isinf(r)) return r;
  return polynomial(e, r - 5) / polynomial(f, r - 5);
}

/// How far from 0 lies the deviate beyond which there is the probability `tail` < 0.075.
inline double tailDeviate(double tail) noexcept {
  const double r = std::sqrt(-std::log(tail));
  return r <= 5 ? nearTailDeviate(r) : farTailDeviate(r);
}

/// The deviate with the probability p below and q = 1 - p above it; relative error 1e-15.
inline double normalQuantile(double p, double q) noexcept {
  const double centred = centredProbability(p, q);
  if (isCentral(centred)) return centralDeviate(centred);
  return p < q ? -tailDeviate(p) : tailDeviate(q);
}

}  // namespace palvex::laws
