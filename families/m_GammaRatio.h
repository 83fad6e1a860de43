#pragma once

#include <array>

#include "families/m_Gamma.h"

/// The incomplete gamma ratios as the routines of the family share them.
namespace palvex::m_Gamma {

/// A finite shape > 0 with what the ratios at any x derive from it.
struct Shape {
  explicit Shape(double a);

  double a;
  /// 1/gamma(1 + a) - 1 for a < 1.
  double gam1 = 0;
  /// exp(-x) x^a / gamma(a) is `factor` exp(-x) x^a for a < 30, `factor` exp(-a rlog(x/a)) beyond.
  double factor = 0;
  /// Temme's expansion in powers of sqrt(2 rlog(x/a)), for a >= 30.
  std::array<double, 14> temme{};
};

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
