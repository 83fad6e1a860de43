#pragma once

#include "numerics/m_GammaFunctions.h"

namespace palvex::m_Gamma {

/// a rlog(x/a) for a > 0, x > 0, where rlog(u) = u - 1 - ln u; accurate also where the rounding of
/// x/a to a double would cost digits.
double deviance(double a, double x);

}  // namespace palvex::m_Gamma
