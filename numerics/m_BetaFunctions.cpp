#include "numerics/m_BetaFunctions.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "numerics/Polynomial.h"
#include "numerics/m_GammaFunctions.h"
#include "numerics/m_MathUtil.h"

namespace palvex::m_Beta {

namespace {

constexpr std::array stirling{0.833333333333333e-1,  -0.277777777760991e-2, 0.793650666825390e-3,
                              -0.595202931351870e-3, 0.837308034031215e-3,  -0.165322962780713e-2};

/// del(b) - del(s) for the greater summand b of a sum s = a + b, from x = b/s and its complement c.
double stirlingDifference(double b, double x, double c) {
  // (1 - x^m)/(1 - x) for m = 1, 3, .., 11
  std::array<double, stirling.size()> coefficients{};
  double geometric = 1;
  for (std::size_t i = 0; i < stirling.size(); ++i) {
    coefficients[i] = stirling[i] * geometric;
    geometric = 1 + (x + x * x * geometric);
  }
  return polynomial(coefficients, 1 / (b * b)) * (c / b);
}

}  // namespace

double inverseGamma(double a) {
  double product = 1;
  while (a > 1.5) {
    a -= 1;
    product *= a;
  }
  return a * (1 + m_Gamma::gam1(a)) / product;
}

double shiftRatio(double a, double b) {
  const double h = a / b;
  const double w = stirlingDifference(b, 1 / (1 + h), h / (1 + h));
  // (b + a - 1/2) ln(1 + h) - a without the part of both that cancels
  const double logarithm = (a - 0.5) * m_MathUtil::alnrel(h) - b * m_MathUtil::rlog1(h);
  return std::exp(logarithm - w);
}

double bcorr(double a, double b) {
  const auto [low, high] = std::minmax(a, b);
  const double h = low / high;
  const double w = stirlingDifference(high, 1 / (1 + h), h / (1 + h));
  return polynomial(stirling, 1 / (low * low)) / low + w;
}

double psi(double x) {
  constexpr double zero = 1.461632144968362341262659542325721325;
  constexpr std::array p{0.130560269827897e4, 0.413810161269013e4, 0.363351846806499e4,
                         0.118645200713425e4, 0.142441585084029e3, 0.477762828042627e1,
                         0.895385022981970e-2};
  constexpr std::array q{0.691091682714533e-5,
                         0.190831076596300e4,
                         0.364127349079381e4,
                         0.221000799247830e4,
                         0.520752771467162e3,
                         0.448452573429826e2,
                         1.0};
  constexpr std::array p2{0.0, -0.648157123766197, -0.448616543918019e1, -0.701677227766759e1,
                          -0.212940445131011e1};
  constexpr std::array q2{0.777788548522962e1, 0.546117738103215e2, 0.892920700481861e2,
                          0.322703493791143e2, 1.0};
  if (x < 0.5) return psi(x + 1) - 1 / x;
  if (x <= 3) return (x - zero) * (polynomial(p, x) / polynomial(q, x));
  const double w = 1 / (x * x);
  return std::log(x) + (polynomial(p2, w) / polynomial(q2, w) - 0.5 / x);
}

}  // namespace palvex::m_Beta
