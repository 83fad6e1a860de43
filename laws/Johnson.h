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
  /// The constants of a curve; for the normal law `lambda` is the mean and `gamma` the standard
  /// deviation.
  struct Constants {
    double gamma;            ///< shape: a summand of the deviate
    double delta;            ///< shape: a factor of the deviate
    double lambda;           ///< scale of X; 1 or -1 for SL
    double xi;               ///< location of X
    m_Johnson::Curve curve;  ///< which of the forms above
  };
  /// Of a curve known by its constants.
  explicit Johnson(const Constants& constants) : c_(constants) {}

  /// @param curve  the one that params.typeName stands for
  Johnson(const m_Johnson::JohnsonParams& params, m_Johnson::Curve curve)
      : Johnson({params.gamma, params.delta, params.lambda, params.xi, curve}) {}

  /// Of a curve known by the name of its type.
  explicit Johnson(const m_Johnson::JohnsonParams& params)
      : Johnson(params, m_Johnson::curveOf(params.typeName)) {}

  /// The range stated above, without its ends.
  [[nodiscard]] Support support() const noexcept;

  /// The density of (x - xi)/lambda for an SU or SB curve: what `density` is before it is divided
  /// by lambda.
  [[nodiscard]] double standardDensity(double x) const noexcept;
  /// The density at x.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its natural logarithm, also where the density itself overflows or underflows.
  [[nodiscard]] double logDensity(double x) const noexcept;

  /// The probabilities up to x and above it, each with its own relative accuracy.
  [[nodiscard]] Tails tails(double x) const noexcept;
  /// The quantile: the value with the probability p up to it and q = 1 - p above it, worked out
  /// from the smaller of the two.
  [[nodiscard]] double quantile(double p, double q) const noexcept {
    return fromDeviate(normalQuantile(p, q));
  }
  /// The value of a standard normal deviate.
  [[nodiscard]] double fromDeviate(double z) const noexcept;

  /// Mean, spread and standardised third and fourth moment.
  struct CurveMoments {
    double mean;      ///< E X
    double stdDev;    ///< the square root of the variance
    double skewness;  ///< third standardised moment
    double kurtosis;  ///< fourth one, 3 for the normal law
  };

  /// The moments that the curve really has, by quadrature over the normal deviate to a relative
  /// 1e-10. Error 11 for constants without a curve.
  [[nodiscard]] CurveMoments curveMoments() const;

  /// Mean and standard deviation of what the limits keep, renormalised: in closed form (SB by
  /// quadrature over the normal deviate), or nothing where that would lose digits. Error 11 for
  /// constants without a curve.
  [[nodiscard]] std::optional<Moments> moments(const Limits& limits) const;

  /// The same by numerical integration, accurate for any limits. Errors: see Moments.h.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  /// The normal deviate of x; infinite at and beyond an end.
  [[nodiscard]] double deviate(double x) const noexcept;
  /// ln of the derivative of the deviate by (x - xi)/lambda.
  [[nodiscard]] double logSlope(double x) const noexcept;

  Constants c_;
};

}  // namespace palvex::laws
