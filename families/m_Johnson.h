#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "families/Truncation.h"

/// The Johnson system of distributions, given by four moments.
///
/// A Johnson variate X is a transformed standard normal deviate Z:
///   SL (lognormal)   Z = lambda (gamma + delta ln(lambda (X - xi))), lambda = 1 or -1
///   SU (unbounded)   Z = gamma + delta arsinh((X - xi) / lambda)
///   SB (bounded)     Z = gamma + delta ln((X - xi) / (xi + lambda - X))
/// Beside them stands the normal distribution itself. CalcJohnson fits the curve
/// (m_JohnsonFit.cpp), the other routines evaluate it (m_Johnson.cpp).
///
/// All routines raise the run-time's arithmetic errors, 6 for an argument that is infinite or NaN
/// where no limit value exists; each adds its line to the trace of an error that passes it.
namespace palvex::m_Johnson {

/// A fitted curve. For the normal distribution `lambda` is the mean, `gamma` the standard
/// deviation, and `delta` and `xi` are 0.
struct JohnsonParams {
  double gamma = 0;           ///< shape: a summand of the deviate
  double delta = 0;           ///< shape: a factor of the deviate, > 0
  double lambda = 0;          ///< scale of the variate; 1 or -1 for SL
  double xi = 0;              ///< location of the variate: an end of SL and SB
  std::string typeName;       ///< "SL", "SU", "SB", "Normal", "ST" or "Error"
  std::int16_t typeCode = 0;  ///< 1 SL, 2 SU, 3 SB, 4 normal, 5 ST (never fitted)
  std::string message;        ///< why the fit failed, "" when it did not
};

/// The first six raw moments of a variate in the elements 1 to 6; element 0 is not used.
using RawMoments = std::array<double, 7>;

// ---- fit ----
// I. D. Hill, R. Hill and R. L. Holder, Algorithm AS 99: Fitting Johnson curves by moments, Applied
// Statistics 25 (1976) 180-189. A fit is loose: it stops within 0.01 of the squared skewness (SU),
// and a kurtosis within 0.01 of the lognormal line or of 3 is taken to lie on it.

/// Fits a curve to four moments. Moments that no curve has are reported in `params.message`, with
/// the type name "Error"; the type code then keeps its former value.
/// An SB fit that does not converge leaves all constants 0, and no message when
/// kurtosis > skewness^2 + 2.
/// @param mean      finite
/// @param stdDev    standard deviation, > 0
/// @param skewness  third standardised moment
/// @param kurtosis  fourth standardised moment (3 for the normal law), >= skewness^2 + 1
/// @param params    receives the curve
/// Error 5 or 6 where the SU iteration leaves the real numbers or does not end: moments just above
/// the lognormal line, and absurdly large ones.
void CalcJohnson(double mean, double stdDev, double skewness, double kurtosis,
                 JohnsonParams& params, Line caller = Line::here());

/// Classifies the moments and fits the curve of their type. The arguments are those of CalcJohnson,
/// then the fields of JohnsonParams.
void JNSN(double mean, double stdDev, double skewness, double kurtosis, std::int16_t& typeCode,
          double& gamma, double& delta, double& lambda, double& xi, std::string& message,
          Line caller = Line::here());

/// The SU curve of four moments above the lognormal line. Error 6 after 1000 passes.
void SUFIT(double mean, double stdDev, double skewness, double kurtosis, double& gamma,
           double& delta, double& lambda, double& xi, Line caller = Line::here());

/// The SB curve of four moments below the lognormal line, by at most 50 Newton steps.
/// @param sbFault  whether the fit failed; the constants then stay as they were, and `message` says
///                 why unless the iteration just did not converge
/// Never raises: a run-time error inside counts as such a failure.
void SBFIT(double mean, double stdDev, double skewness, double kurtosis, double& gamma,
           double& delta, double& lambda, double& xi, Boolean& sbFault, std::string& message);

/// The raw moments of 1 / (1 + exp(-(Z - g) / d)), Z standard normal, to a relative 1e-5, by the
/// series of E. T. Goodwin, Proc. Camb. Phil. Soc. 45 (1949) 241-245.
/// @param sbFault  whether it failed: a moment of 0 or a series that does not end; then `message`
///                 says which
/// Adds no line to the trace.
void SBMOM(double g, double d, RawMoments& mu, Boolean& sbFault, std::string& message);

// ---- evaluation ----

/// The curve that a type name stands for, resolved once for many evaluations.
enum class Curve : std::uint8_t { none, SL, SU, SB, normal };
/// The curve of a name as JohnsonParams has it; none for any other.
[[nodiscard]] Curve curveOf(std::string_view typeName) noexcept;

/// Density at x, 0 where the limits cut x away; not rescaled by the kept probability. The densities
/// of SB and SU are those of (X - xi) / lambda, and an SL curve with lambda = -1 has density 0.
/// @param curve  the one that params.typeName stands for
double density(double x, const JohnsonParams& params, Curve curve, const Limits& limits,
               Line caller = Line::here());

/// `density` without limits.
double untruncatedDensity(double x, const JohnsonParams& params, Curve curve,
                          Line caller = Line::here());

/// Whether the density at x can be computed: far below xi the argument of the logarithm in the SU
/// deviate rounds to 0.
bool densityHolds(double x, const JohnsonParams& params, Curve curve) noexcept;

/// Probability of a value up to x; 0 everywhere for the normal type and for an SL curve with
/// lambda = -1.
double cumulative(double x, const JohnsonParams& params, Curve curve, Line caller = Line::here());

/// The variate whose standard normal deviate is the quantile of p. Error 5 for p outside [0, 1].
double JohnsonINV(double p, const JohnsonParams& params, Line caller = Line::here());

/// The band of probabilities kept by the limits: first half of JohnsonVal.
Band band(const JohnsonParams& params, Curve curve, const Limits& limits,
          Line caller = Line::here());

/// The value at the position p of the kept band: second half of JohnsonVal. A p outside [0, 1] is
/// moved to its nearer end.
double value(double p, const JohnsonParams& params, const Band& band, Line caller = Line::here());

/// `density` with limits as a host holds them: a numeric variant is a limit, anything else is none.
inline double JohnsonPDF(double x, const JohnsonParams& params, const Variant& ltl,
                         const Variant& utl, Line caller = Line::here()) {
  return density(x, params, curveOf(params.typeName), limitsFrom(ltl, utl), caller);
}

/// `untruncatedDensity` of a curve as it was fitted.
inline double jPDF(double x, const JohnsonParams& params, Line caller = Line::here()) {
  return untruncatedDensity(x, params, curveOf(params.typeName), caller);
}

/// `cumulative` of a curve as it was fitted.
inline double JohnsonCDF(double x, const JohnsonParams& params, Line caller = Line::here()) {
  return cumulative(x, params, curveOf(params.typeName), caller);
}

/// The value whose position in the cumulative scale of the truncated distribution is p: a random
/// draw when p is a uniform random number of [0, 1].
inline double JohnsonVal(double p, const JohnsonParams& params,
                         const Variant& ltl = Variant::missing(),
                         const Variant& utl = Variant::missing(), Line caller = Line::here()) {
  const Band kept = band(params, curveOf(params.typeName), limitsFrom(ltl, utl), caller);
  return value(p, params, kept, caller);
}

// ---- transformations ----
// I. D. Hill, Algorithm AS 100: Normal-Johnson and Johnson-normal transformations, Applied
// Statistics 25 (1976) 190-192.

/// The standard normal deviate of the variate x; 0 where x is outside the curve's range, for an
/// unknown type code, and for a normal distribution without spread.
double JohnsontoNormal(double x, double delta, double gamma, double lambda, double xi,
                       std::int16_t typeCode, Line caller = Line::here());

/// The variate of the standard normal deviate z; 0 for an unknown type code and for a normal
/// distribution without spread.
double NormaltoJohnson(double z, double delta, double gamma, double lambda, double xi,
                       std::int16_t typeCode, Line caller = Line::here());

/// JohnsontoNormal for the type codes 1 to 3.
/// @param fault   0; 1 for another type code, 2 for an x outside the curve's range
/// @param result  the deviate, 0 with a fault
void SNV(double x, std::int16_t typeCode, double gamma, double delta, double lambda, double xi,
         std::int16_t& fault, double& result, Line caller = Line::here());

/// NormaltoJohnson for the type codes 1 to 3.
/// @param fault   0; 1 for another type code
/// @param result  the variate, 0 with a fault
void AJV(double z, std::int16_t typeCode, double gamma, double delta, double lambda, double xi,
         std::int16_t& fault, double& result, Line caller = Line::here());

}  // namespace palvex::m_Johnson
