#pragma once

#include "numerics/m_GammaFunctions.h"

namespace palvex::m_Gamma {

/// a rlog(x/a) for a > 0, x > 0, without the rounding of x/a where it would show.
double deviance(double a, double x);

}  // namespace palvex::m_Gamma
