// Densities, probabilities and quantiles beside the object: palvex's routine below it, the bare
// formula, Boost.Math in double precision, R's standalone library and GSL. All untruncated.

#include <gsl/gsl_cdf.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_randist.h>

#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/exponential.hpp>
#include <boost/math/distributions/gamma.hpp>
#include <boost/math/distributions/lognormal.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/triangular.hpp>
#include <boost/math/distributions/uniform.hpp>
#include <boost/math/distributions/weibull.hpp>
#include <cmath>

#include "bench/BareNormal.h"
#include "bench/Cases.h"
#include "families/m_Beta.h"
#include "families/m_Exponential.h"
#include "families/m_Gamma.h"
#include "families/m_Johnson.h"
#include "families/m_Lognormal.h"
#include "families/m_Normal.h"
#include "families/m_Triangular.h"
#include "families/m_Uniform.h"
#include "families/m_Weibull.h"

#define MATHLIB_STANDALONE
#include <Rmath.h>

namespace palvex::bench {

namespace {

using P = const Parameters&;
namespace math = boost::math;
using Policy = math::policies::policy<math::policies::promote_double<false>>;

/// Registers what `who` does for all cases of a type: density, probability and quantile at x or p
/// with the case's parameters; a null pointer where there is no such function.
template <class Density, class Probability, class Quantile>
void add(const char* type, const char* who, Density density, Probability probability,
         Quantile quantile) {
  for (const Case& one : cases()) {
    if (one.type != type) continue;
    const auto time = [&](const std::string& what, auto function, bool atProbabilities) {
      if constexpr (!std::is_null_pointer_v<decltype(function)>) {
        benchmark::RegisterBenchmark(
            (what + "/" + one.name + "/" + who).c_str(), [=, &one](benchmark::State& state) {
              const Parameters p = one.parameters;
              const Points& points = atProbabilities ? probabilities() : one.arguments();
              timeOver(state, points, [&](double at) { return function(at, p); });
            });
      }
    };
    if (one.density) time("pdf", density, false);
    time("cdf", probability, false);
    time("draw", quantile, true);
  }
}

/// A distribution of Boost.Math, made at each call as its users do: it only holds the parameters.
template <class Make>
void addBoost(const char* type, Make make) {
  add(
      type, "Boost", [=](double x, P v) { return math::pdf(make(v), x); },
      [=](double x, P v) { return math::cdf(make(v), x); },
      [=](double p, P v) { return math::quantile(make(v), p); });
}

void addRoutines() {
  const char* const who = "routine";
  add(
      "Normal", who, [](double x, P v) { return m_Normal::density(x, v[0], v[1], {}); },
      [](double x, P v) { return m_Normal::NormalCDF((x - v[0]) / v[1], false); },
      [](double p, P v) { return m_Normal::value(p, v[0], v[1], {}); });
  add(
      "Uniform", who, [](double x, P v) { return m_Uniform::density(x, v[0], v[1], {}); },
      [](double x, P v) { return m_Uniform::UniformCDF(x, v[0], v[1]); },
      [](double p, P v) { return m_Uniform::value(p, v[0], v[1], {}); });
  add(
      "Triangular", who,
      [](double x, P v) { return m_Triangular::density(x, v[0], v[1], v[2], {}); },
      [](double x, P v) { return m_Triangular::TriangularCDF(x, v[0], v[1], v[2]); },
      [](double p, P v) { return m_Triangular::value(p, v[0], v[1], v[2], {}); });
  add(
      "Exponential", who, [](double x, P v) { return m_Exponential::density(x, v[0], v[1], {}); },
      [](double x, P v) { return m_Exponential::ExponentialCDF(x, v[0], v[1]); },
      [](double p, P v) { return m_Exponential::value(p, v[0], v[1], {}); });
  add(
      "Weibull", who, [](double x, P v) { return m_Weibull::density(x, v[0], v[1], v[2], {}); },
      [](double x, P v) { return m_Weibull::WeibullCDF(x, v[0], v[1], v[2]); },
      [](double p, P v) { return m_Weibull::value(p, v[0], v[1], v[2], {}); });
  add(
      "Lognormal", who, [](double x, P v) { return m_Lognormal::density(x, v[0], v[1], v[2], {}); },
      [](double x, P v) { return m_Lognormal::LognormalCDF(x, v[0], v[1], v[2], false); },
      [](double p, P v) { return m_Lognormal::value(p, v[0], v[1], v[2], {}); });
  add(
      "Gamma", who, [](double x, P v) { return m_Gamma::density(x, v[0], v[1], v[2], {}); },
      [](double x, P v) { return m_Gamma::GammaCDF(x, v[0], v[1], false).toDouble(); },
      [](double p, P v) { return m_Gamma::GammaVAL(p, v[0], v[1], v[2]); });
  add(
      "Beta", who, [](double x, P v) { return m_Beta::BetaPDF(x, v[0], v[1], v[2], v[3], {}, {}); },
      [](double x, P v) { return m_Beta::BetaCDF(x, v[0], v[1], false).toDouble(); },
      [](double p, P v) { return m_Beta::BetaVAL(p, v[0], v[1], v[2], v[3]); });
}

void addBareFormulas() {
  constexpr double rootTwoPi = 2.5066282746310002;
  const char* const who = "formula";
  add(
      "Normal", who,
      [](double x, P v) {
        const double z = (x - v[0]) / v[1];
        return std::exp(-z * z / 2) / (rootTwoPi * v[1]);
      },
      [](double x, P v) { return std::erfc((v[0] - x) / (v[1] * std::sqrt(2.0))) / 2; },
      [](double p, P v) { return bareNormalQuantile(p) * v[1] + v[0]; });
  add(
      "Uniform", who, [](double x, P v) { return x < v[0] || x > v[1] ? 0 : 1 / (v[1] - v[0]); },
      [](double x, P v) { return (x - v[0]) / (v[1] - v[0]); },
      [](double p, P v) { return (v[1] - v[0]) * p + v[0]; });
  add(
      "Triangular", who,
      [](double x, P v) {
        return x < v[1] ? 2 * (x - v[0]) / ((v[2] - v[0]) * (v[1] - v[0]))
                        : 2 * (v[2] - x) / ((v[2] - v[0]) * (v[2] - v[1]));
      },
      [](double x, P v) {
        return x < v[1] ? (x - v[0]) * (x - v[0]) / ((v[2] - v[0]) * (v[1] - v[0]))
                        : 1 - (v[2] - x) * (v[2] - x) / ((v[2] - v[0]) * (v[2] - v[1]));
      },
      [](double p, P v) {
        const double width = v[2] - v[0];
        return p * width <= v[1] - v[0] ? v[0] + std::sqrt(width * p * (v[1] - v[0]))
                                        : v[2] - std::sqrt(width * (1 - p) * (v[2] - v[1]));
      });
  add(
      "Exponential", who, [](double x, P v) { return v[0] * std::exp(-v[0] * (x - v[1])); },
      [](double x, P v) { return -std::expm1(-v[0] * (x - v[1])); },
      [](double p, P v) { return v[1] - std::log1p(-p) / v[0]; });
  add(
      "Weibull", who,
      [](double x, P v) {
        const double z = (x - v[2]) / v[1];
        return v[0] / v[1] * std::pow(z, v[0] - 1) * std::exp(-std::pow(z, v[0]));
      },
      [](double x, P v) { return -std::expm1(-std::pow((x - v[2]) / v[1], v[0])); },
      [](double p, P v) { return v[2] + v[1] * std::pow(-std::log1p(-p), 1 / v[0]); });
  add(
      "Lognormal", who,
      [](double x, P v) {
        const double z = (std::log(x - v[2]) - v[0]) / v[1];
        return std::exp(-z * z / 2) / (rootTwoPi * v[1] * (x - v[2]));
      },
      [](double x, P v) {
        return std::erfc((v[0] - std::log(x - v[2])) / (v[1] * std::sqrt(2.0))) / 2;
      },
      [](double p, P v) { return std::exp(bareNormalQuantile(p) * v[1] + v[0]) + v[2]; });
}

void addBoostMath() {
  addBoost("Normal", [](P v) { return math::normal_distribution<double, Policy>(v[0], v[1]); });
  addBoost("Uniform", [](P v) { return math::uniform_distribution<double, Policy>(v[0], v[1]); });
  addBoost("Triangular",
           [](P v) { return math::triangular_distribution<double, Policy>(v[0], v[1], v[2]); });
  addBoost("Lognormal",
           [](P v) { return math::lognormal_distribution<double, Policy>(v[0], v[1]); });
  addBoost("Gamma", [](P v) { return math::gamma_distribution<double, Policy>(v[0], v[1]); });
  addBoost("Beta", [](P v) { return math::beta_distribution<double, Policy>(v[0], v[1]); });
  // These two start at 0: the minimum is added here.
  const auto exponential = [](P v) { return math::exponential_distribution<double, Policy>(v[0]); };
  add(
      "Exponential", "Boost", [=](double x, P v) { return math::pdf(exponential(v), x - v[1]); },
      [=](double x, P v) { return math::cdf(exponential(v), x - v[1]); },
      [=](double p, P v) { return math::quantile(exponential(v), p) + v[1]; });
  const auto weibull = [](P v) { return math::weibull_distribution<double, Policy>(v[0], v[1]); };
  add(
      "Weibull", "Boost", [=](double x, P v) { return math::pdf(weibull(v), x - v[2]); },
      [=](double x, P v) { return math::cdf(weibull(v), x - v[2]); },
      [=](double p, P v) { return math::quantile(weibull(v), p) + v[2]; });
}

void addR() {
  const char* const who = "R";
  add(
      "Normal", who, [](double x, P v) { return dnorm4(x, v[0], v[1], 0); },
      [](double x, P v) { return pnorm5(x, v[0], v[1], 1, 0); },
      [](double p, P v) { return qnorm5(p, v[0], v[1], 1, 0); });
  add(
      "Uniform", who, [](double x, P v) { return dunif(x, v[0], v[1], 0); },
      [](double x, P v) { return punif(x, v[0], v[1], 1, 0); },
      [](double p, P v) { return qunif(p, v[0], v[1], 1, 0); });
  add(
      "Exponential", who, [](double x, P v) { return dexp(x - v[1], 1 / v[0], 0); },
      [](double x, P v) { return pexp(x - v[1], 1 / v[0], 1, 0); },
      [](double p, P v) { return qexp(p, 1 / v[0], 1, 0) + v[1]; });
  add(
      "Weibull", who, [](double x, P v) { return dweibull(x - v[2], v[0], v[1], 0); },
      [](double x, P v) { return pweibull(x - v[2], v[0], v[1], 1, 0); },
      [](double p, P v) { return qweibull(p, v[0], v[1], 1, 0) + v[2]; });
  add(
      "Lognormal", who, [](double x, P v) { return dlnorm(x, v[0], v[1], 0); },
      [](double x, P v) { return plnorm(x, v[0], v[1], 1, 0); },
      [](double p, P v) { return qlnorm(p, v[0], v[1], 1, 0); });
  add(
      "Gamma", who, [](double x, P v) { return dgamma(x, v[0], v[1], 0); },
      [](double x, P v) { return pgamma(x, v[0], v[1], 1, 0); },
      [](double p, P v) { return qgamma(p, v[0], v[1], 1, 0); });
  add(
      "Beta", who, [](double x, P v) { return dbeta(x, v[0], v[1], 0); },
      [](double x, P v) { return pbeta(x, v[0], v[1], 1, 0); },
      [](double p, P v) { return qbeta(p, v[0], v[1], 1, 0); });
}

void addGSL() {
  const char* const who = "GSL";
  add(
      "Normal", who, [](double x, P v) { return gsl_ran_gaussian_pdf(x - v[0], v[1]); },
      [](double x, P v) { return gsl_cdf_gaussian_P(x - v[0], v[1]); },
      [](double p, P v) { return gsl_cdf_gaussian_Pinv(p, v[1]) + v[0]; });
  add(
      "Uniform", who, [](double x, P v) { return gsl_ran_flat_pdf(x, v[0], v[1]); },
      [](double x, P v) { return gsl_cdf_flat_P(x, v[0], v[1]); },
      [](double p, P v) { return gsl_cdf_flat_Pinv(p, v[0], v[1]); });
  add(
      "Exponential", who, [](double x, P v) { return gsl_ran_exponential_pdf(x - v[1], 1 / v[0]); },
      [](double x, P v) { return gsl_cdf_exponential_P(x - v[1], 1 / v[0]); },
      [](double p, P v) { return gsl_cdf_exponential_Pinv(p, 1 / v[0]) + v[1]; });
  add(
      "Weibull", who, [](double x, P v) { return gsl_ran_weibull_pdf(x - v[2], v[1], v[0]); },
      [](double x, P v) { return gsl_cdf_weibull_P(x - v[2], v[1], v[0]); },
      [](double p, P v) { return gsl_cdf_weibull_Pinv(p, v[1], v[0]) + v[2]; });
  add(
      "Lognormal", who, [](double x, P v) { return gsl_ran_lognormal_pdf(x, v[0], v[1]); },
      [](double x, P v) { return gsl_cdf_lognormal_P(x, v[0], v[1]); },
      [](double p, P v) { return gsl_cdf_lognormal_Pinv(p, v[0], v[1]); });
  add(
      "Gamma", who, [](double x, P v) { return gsl_ran_gamma_pdf(x, v[0], v[1]); },
      [](double x, P v) { return gsl_cdf_gamma_P(x, v[0], v[1]); },
      [](double p, P v) { return gsl_cdf_gamma_Pinv(p, v[0], v[1]); });
  add(
      "Beta", who, [](double x, P v) { return gsl_ran_beta_pdf(x, v[0], v[1]); },
      [](double x, P v) { return gsl_cdf_beta_P(x, v[0], v[1]); },
      [](double p, P v) { return gsl_cdf_beta_Pinv(p, v[0], v[1]); });
}

const bool registered = [] {
  gsl_set_error_handler_off();  // by default it ends the process where an inverse fails to converge
  addRoutines();
  addBareFormulas();
  addBoostMath();
  addR();
  addGSL();
  return true;
}();

}  // namespace

}  // namespace palvex::bench
