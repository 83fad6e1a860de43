#pragma once

#include "families/m_Gamma.h"

/// The incomplete gamma ratios on a prepared shape, as the routines of the family share them.
namespace palvex::m_Gamma {

/// P(a, x), Q(a, x) and, where it was needed on the way, exp(-x) x^a / gamma(a).
struct Ratio {
  static constexpr double unknown = -1;
  double p;
  double q;
  double density;
};

/// The ratios at x >= 0; the shape finite.
Ratio ratioAt(const Shape& shape, double x);

/// a rlog(x/a) for a > 0, x > 0, without the rounding of x/a where it would show.
double deviance(double a, double x);

/// exp(-x) x^a / gamma(a) for x > 0.
double densityAt(const Shape& shape, double x);

}  // namespace palvex::m_Gamma
