#pragma once

#include "numerics/m_GammaFunctions.h"

/// The incomplete gamma ratios as the routines of the family share them.
namespace palvex::m_Gamma {

/// P(a, x), Q(a, x) and exp(-x) x^a / gamma(a).
struct Ratio {
  double p;
  double q;
  double density;
};

/// The ratios at x >= 0.
Ratio ratioAt(const Shape& shape, double x);

/// a rlog(x/a) for a > 0, x > 0, without the rounding of x/a where it would show.
double deviance(double a, double x);

}  // namespace palvex::m_Gamma
