#pragma once

#include <array>

#include "numerics/m_BetaRatio.h"

namespace palvex::m_Beta {

/// A point of the unit interval and its complement, each to full relative precision.
struct Fraction {
  double x;  ///< in [0, 1]
  double y;  ///< 1 - x

  /// Whether both parts are the same.
  friend bool operator==(const Fraction&, const Fraction&) = default;
};

/// The incomplete beta ratio of two shapes and its inverse, prepared: no call changes it, so that
/// threads may share it.
///
/// The inverse is solved in the smaller tail, in the variable ln(x/y): from a power law, Carter's
/// normal approximation or the bound of a tail, by third-order steps that use the density. It takes
/// two or three evaluations of the ratio as a rule. For K = P/|x f(x)|, the condition number of x
/// in the smaller of p and q, and likewise for y, the relative error of x and of y is at most 1e-13
/// max(1, K) for shapes from 1e-2 to 1e5 and probabilities from 1e-300 on. Results below the
/// smallest normal double are 0.
class InverseBeta {
 public:
  /// @param a, b  > 0, infinity included
  InverseBeta(double a, double b);

  /// The ratio that is inverted.
  [[nodiscard]] const IncompleteBeta& ratio() const noexcept { return ratio_; }

  /// The x with I_x(a, b) = p. NaN for an argument that is NaN or negative. The iteration always
  /// ends.
  /// @param p, q  >= 0, p + q = 1
  [[nodiscard]] Fraction operator()(double p, double q) const noexcept;

 private:
  /// What a starting value near one end of the unit interval needs of the shapes.
  struct Side {
    double a;  // the shape that belongs to this end
    double b;
    double logScale;  // ln(a Beta(a, b))
    // x = u (1 + second u (1 + third u + ..)), a series in u = (a Beta(a, b) p)^(1/a)
    double second;
    double third;
  };
  static Side side(double a, double b, double logBeta);
  static Fraction start(const Side& side, const Side& other, double p, double q) noexcept;

  IncompleteBeta ratio_;
  std::array<Side, 2> sides_;
};

}  // namespace palvex::m_Beta
