#pragma once

#include "families/m_Johnson.h"
#include "laws/Moments.h"
#include "laws/StandardNormal.h"
#include "laws/Support.h"
#include "laws/Tails.h"

namespace palvex::laws {

/// The law of a fitted Johnson curve, that of a transformed standard normal deviate Z:
///   SL  Z = lambda (gamma + delta ln(lambda (X - xi))), lambda = 1 or -1, beyond xi
///   SU  Z = gamma + delta arsinh((X - xi)/lambda), on the whole line
///   SB  Z = gamma + delta ln((X - xi)/(xi + lambda - X)), between xi and xi + lambda
/// or the normal law; its density is that of Z times dZ/dX. Mean and standard deviation are about
/// those that the curve was fitted to: the fit is loose.
class Johnson {
 public:
  struct Constants {
    double gamma;
    double delta;
    double lambda;
    double xi;
    m_Johnson::Curve curve;
  };
  explicit Johnson(const Constants& constants) : c_(constants) {}

  /// @param curve  the one that params.typeName stands for
  Johnson(const m_Johnson::JohnsonParams& params, m_Johnson::Curve curve)
      : Johnson({params.gamma, params.delta, params.lambda, params.xi, curve}) {}

  explicit Johnson(const m_Johnson::JohnsonParams& params)
      : Johnson(params, m_Johnson::curveOf(params.typeName)) {}

  [[nodiscard]] Support support() const noexcept;

  /// The density of (x - xi)/lambda for an SU or SB curve: what `density` is before it is divided
  /// by lambda.
  [[nodiscard]] double standardDensity(double x) const noexcept;
  /// The density at x.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its logarithm, also where the density is no double.
  [[nodiscard]] double logDensity(double x) const noexcept;

  [[nodiscard]] Tails tails(double x) const noexcept;
  /// The value with the probability p up to it and q = 1 - p above it, solved in the smaller one.
  [[nodiscard]] double quantile(double p, double q) const noexcept {
    return fromDeviate(normalQuantile(p, q));
  }
  /// The value of a standard normal deviate.
  [[nodiscard]] double fromDeviate(double z) const noexcept;

  struct CurveMoments {
    double mean;
    double stdDev;
    double skewness;
    double kurtosis;
  };

  /// The moments that the curve really has, by quadrature over the normal deviate to a relative
  /// 1e-10. Error 11 for a record without a curve.
  [[nodiscard]] CurveMoments curveMoments() const;

  /// Mean and standard deviation of what the limits keep, renormalised: in closed form (SB by
  /// quadrature over the normal deviate), or nothing where that would lose digits. Error 11 for a
  /// record without a curve.
  [[nodiscard]] std::optional<Moments> moments(const Limits& limits) const;

  /// The same by numerical integration, which holds everywhere.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  /// The normal deviate of x; infinite at and beyond an end.
  [[nodiscard]] double deviate(double x) const noexcept;
  /// ln of the derivative of the deviate by (x - xi)/lambda.
  [[nodiscard]] double logSlope(double x) const noexcept;

  Constants c_;
};

}  // namespace palvex::laws
