#include "engine/Family.h"

#include <cmath>

#include "families/m_Beta.h"
#include "families/m_Exponential.h"
#include "families/m_Gamma.h"
#include "families/m_Histogram.h"
#include "families/m_Johnson.h"
#include "families/m_Lognormal.h"
#include "families/m_Normal.h"
#include "families/m_Triangular.h"
#include "families/m_Uniform.h"
#include "families/m_Weibull.h"
#include "laws/Beta.h"
#include "laws/Exponential.h"
#include "laws/Gamma.h"
#include "laws/Histogram.h"
#include "laws/Johnson.h"
#include "laws/Lognormal.h"
#include "laws/Normal.h"
#include "laws/Triangular.h"
#include "laws/Uniform.h"
#include "laws/Weibull.h"

namespace palvex {

namespace {

/// Calls `evaluate` with a Prepared made of these arguments, which is kept where there is a place
/// for it.
template <class Prepared, class Evaluation, class... Arguments>
auto with(const Values& v, Evaluation&& evaluate, Arguments... arguments) {
  if (v.prepared == nullptr) {
    Prepared prepared(arguments...);
    return evaluate(prepared);
  }
  if (auto* kept = std::get_if<Prepared>(v.prepared)) return evaluate(*kept);
  return evaluate(v.prepared->emplace<Prepared>(arguments...));
}

/// The same with what the first parameter of a gamma law gives, or the first two of a beta law.
template <class Evaluation>
auto withShape(const Values& v, Evaluation&& evaluate) {
  return with<m_Gamma::IncompleteGamma>(v, evaluate, v.p[0]);
}
template <class Evaluation>
auto withShapes(const Values& v, Evaluation&& evaluate) {
  return with<m_Beta::Shapes>(v, evaluate, v.p[0], v.p[1]);
}

const Family normal{
    .name = "Normal",
    .demands = {Demand::real, Demand::nonNegative},
    .parametersRead = 2,
    .fit = nullptr,
    .density = [](const Values& v, double x, const Limits& limits, const Variant&,
                  Line line) { return m_Normal::density(x, v.p[0], v.p[1], limits, line); },
    .stableDensity = [](const Values& v,
                        double x) { return laws::Normal(v.p[0], v.p[1]).density(x); },
    .cumulative =
        [](const Values& v, double x, Line line) {
          return m_Normal::NormalCDF(Divide(x - v.p[0], v.p[1], line), false, line);
        },
    .band = [](const Values& v, const Limits& limits,
               Line line) { return m_Normal::band(v.p[0], v.p[1], limits, line); },
    .value = [](const Values& v, const Band& band, double p,
                Line line) { return m_Normal::value(p, v.p[0], v.p[1], band, line); },
    .ignoresLimits = nullptr,
    .support = [](const Values& v) { return laws::Normal(v.p[0], v.p[1]).support(); },
    .moments = [](const Values& v,
                  const Limits& limits) { return laws::Normal(v.p[0], v.p[1]).moments(limits); },
    .integratedMoments =
        [](const Values& v, const Limits& limits) {
          return laws::Normal(v.p[0], v.p[1]).integratedMoments(limits);
        },
};

const Family uniform{
    .name = "Uniform",
    .demands = {Demand::real, Demand::real},
    .parametersRead = 2,
    .fit = [](const std::array<double, 4>& p, Fitted&, Line) -> std::string {
      return p[0] > p[1] ? "Maximum can not be less than Minimum." : "";
    },
    .density = [](const Values& v, double x, const Limits& limits, const Variant&,
                  Line line) { return m_Uniform::density(x, v.p[0], v.p[1], limits, line); },
    .stableDensity = [](const Values& v,
                        double x) { return laws::Uniform(v.p[0], v.p[1]).density(x); },
    .cumulative = [](const Values& v, double x,
                     Line line) { return m_Uniform::UniformCDF(x, v.p[0], v.p[1], line); },
    .band = [](const Values& v, const Limits& limits,
               Line line) { return m_Uniform::band(v.p[0], v.p[1], limits, line); },
    .value = [](const Values& v, const Band& band, double p,
                Line line) { return m_Uniform::value(p, v.p[0], v.p[1], band, line); },
    .ignoresLimits = nullptr,
    .support = [](const Values& v) { return laws::Uniform(v.p[0], v.p[1]).support(); },
    .moments = [](const Values& v, const Limits& limits) -> std::optional<laws::Moments> {
      return laws::Uniform(v.p[0], v.p[1]).moments(limits);
    },
    .integratedMoments =
        [](const Values& v, const Limits& limits) {
          return laws::Uniform(v.p[0], v.p[1]).integratedMoments(limits);
        },
};

const Family triangular{
    .name = "Triangular",
    .demands = {Demand::real, Demand::real, Demand::real},
    .parametersRead = 3,
    .fit = [](const std::array<double, 4>& p, Fitted&, Line) -> std::string {
      if (p[0] > p[1]) return "Likely can not be less than Minimum.";
      return p[1] > p[2] ? "Maximum can not be less than Likely." : "";
    },
    .density =
        [](const Values& v, double x, const Limits& limits, const Variant&, Line line) {
          return m_Triangular::density(x, v.p[0], v.p[1], v.p[2], limits, line);
        },
    .stableDensity = [](const Values& v,
                        double x) { return laws::Triangular(v.p[0], v.p[1], v.p[2]).density(x); },
    .cumulative =
        [](const Values& v, double x, Line line) {
          return m_Triangular::TriangularCDF(x, v.p[0], v.p[1], v.p[2], line);
        },
    .band = [](const Values& v, const Limits& limits,
               Line line) { return m_Triangular::band(v.p[0], v.p[1], v.p[2], limits, line); },
    .value = [](const Values& v, const Band& band, double p,
                Line line) { return m_Triangular::value(p, v.p[0], v.p[1], v.p[2], band, line); },
    .ignoresLimits = nullptr,
    .support = [](const Values& v) { return laws::Triangular(v.p[0], v.p[1], v.p[2]).support(); },
    .moments = [](const Values& v, const Limits& limits) -> std::optional<laws::Moments> {
      return laws::Triangular(v.p[0], v.p[1], v.p[2]).moments(limits);
    },
    .integratedMoments =
        [](const Values& v, const Limits& limits) {
          return laws::Triangular(v.p[0], v.p[1], v.p[2]).integratedMoments(limits);
        },
};

const Family lognormal{
    .name = "Lognormal",
    .demands = {Demand::real, Demand::positive, Demand::real},
    .parametersRead = 3,
    .fit = [](const std::array<double, 4>& p, Fitted&, Line) -> std::string {
      return std::isinf(laws::Lognormal(p[0], p[1], p[2]).standardDeviation())
                 ? "Number overflow.  Please choose a smaller value for Location or Scale."
                 : "";
    },
    .density =
        [](const Values& v, double x, const Limits& limits, const Variant&, Line line) {
          return m_Lognormal::density(x, v.p[0], v.p[1], v.p[2], limits, line);
        },
    .stableDensity = [](const Values& v,
                        double x) { return laws::Lognormal(v.p[0], v.p[1], v.p[2]).density(x); },
    .cumulative =
        [](const Values& v, double x, Line line) {
          return m_Lognormal::LognormalCDF(x, v.p[0], v.p[1], v.p[2], false, line);
        },
    .band = [](const Values& v, const Limits& limits,
               Line line) { return m_Lognormal::band(v.p[0], v.p[1], v.p[2], limits, line); },
    .value = [](const Values& v, const Band& band, double p,
                Line line) { return m_Lognormal::value(p, v.p[0], v.p[1], v.p[2], band, line); },
    .ignoresLimits = nullptr,
    .support = [](const Values& v) { return laws::Lognormal(v.p[0], v.p[1], v.p[2]).support(); },
    .moments =
        [](const Values& v, const Limits& limits) {
          return laws::Lognormal(v.p[0], v.p[1], v.p[2]).moments(limits);
        },
    .integratedMoments =
        [](const Values& v, const Limits& limits) {
          return laws::Lognormal(v.p[0], v.p[1], v.p[2]).integratedMoments(limits);
        },
};

const Family exponential{
    .name = "Exponential",
    .demands = {Demand::positiveNoArticle, Demand::real},
    .parametersRead = 2,
    .fit = nullptr,
    .density = [](const Values& v, double x, const Limits& limits, const Variant&,
                  Line line) { return m_Exponential::density(x, v.p[0], v.p[1], limits, line); },
    .stableDensity = [](const Values& v,
                        double x) { return laws::Exponential(v.p[0], v.p[1]).density(x); },
    .cumulative = [](const Values& v, double x,
                     Line line) { return m_Exponential::ExponentialCDF(x, v.p[0], v.p[1], line); },
    .band = [](const Values& v, const Limits& limits,
               Line line) { return m_Exponential::band(v.p[0], v.p[1], limits, line); },
    .value = [](const Values& v, const Band& band, double p,
                Line line) { return m_Exponential::value(p, v.p[0], v.p[1], band, line); },
    .ignoresLimits = [](const Values&, double p) { return m_Exponential::ignoresLimits(p); },
    .support = [](const Values& v) { return laws::Exponential(v.p[0], v.p[1]).support(); },
    .moments = [](const Values& v, const Limits& limits) -> std::optional<laws::Moments> {
      return laws::Exponential(v.p[0], v.p[1]).moments(limits);
    },
    .integratedMoments =
        [](const Values& v, const Limits& limits) {
          return laws::Exponential(v.p[0], v.p[1]).integratedMoments(limits);
        },
};

const Family weibull{
    .name = "Weibull",
    .demands = {Demand::positiveNoArticle, Demand::positiveNoArticle, Demand::statedReal},
    .parametersRead = 3,
    .fit = nullptr,
    .density =
        [](const Values& v, double x, const Limits& limits, const Variant&, Line line) {
          return m_Weibull::density(x, v.p[0], v.p[1], v.p[2], limits, line);
        },
    .stableDensity = [](const Values& v,
                        double x) { return laws::Weibull(v.p[0], v.p[1], v.p[2]).density(x); },
    .densityHolds = [](const Values& v,
                       double x) { return m_Weibull::densityHolds(x, v.p[0], v.p[1], v.p[2]); },
    .cumulative = [](const Values& v, double x,
                     Line line) { return m_Weibull::WeibullCDF(x, v.p[0], v.p[1], v.p[2], line); },
    .band = [](const Values& v, const Limits& limits,
               Line line) { return m_Weibull::band(v.p[0], v.p[1], v.p[2], limits, line); },
    .value = [](const Values& v, const Band& band, double p,
                Line line) { return m_Weibull::value(p, v.p[0], v.p[1], v.p[2], band, line); },
    .ignoresLimits = [](const Values&, double p) { return m_Weibull::ignoresLimits(p); },
    .support = [](const Values& v) { return laws::Weibull(v.p[0], v.p[1], v.p[2]).support(); },
    .moments =
        [](const Values& v, const Limits& limits) {
          return laws::Weibull(v.p[0], v.p[1], v.p[2]).moments(limits);
        },
    .integratedMoments =
        [](const Values& v, const Limits& limits) {
          return laws::Weibull(v.p[0], v.p[1], v.p[2]).integratedMoments(limits);
        },
};

const Family gamma{
    .name = "Gamma",
    .demands = {Demand::positive, Demand::positive, Demand::real},
    .parametersRead = 3,
    .fit = nullptr,
    .density = [](const Values& v, double x, const Limits& limits, const Variant&,
                  Line line) { return m_Gamma::density(x, v.p[0], v.p[1], v.p[2], limits, line); },
    .stableDensity =
        [](const Values& v, double x) {
          return laws::Gamma(v.p[0], v.p[1], v.p[2]).standardDensity(x);
        },
    .densityHolds = [](const Values& v,
                       double x) { return m_Gamma::densityHolds(x, v.p[0], v.p[1], v.p[2]); },
    // The scale serves as the rate, and a minimum turns the probability into that above x.
    .cumulative =
        [](const Values& v, double x, Line line) {
          return withShape(v, [&](const m_Gamma::IncompleteGamma& shape) {
            return m_Gamma::GammaCDF(x, shape, v.p[1], v.p[2] != 0, line).toDouble(line);
          });
        },
    .band =
        [](const Values& v, const Limits& limits, Line line) {
          return withShape(v, [&](const m_Gamma::IncompleteGamma& shape) {
            return m_Gamma::band(shape, v.p[1], v.p[2], limits, line);
          });
        },
    .value =
        [](const Values& v, const Band& band, double p, Line line) {
          return withShape(v, [&](const m_Gamma::IncompleteGamma& shape) {
            return m_Gamma::value(p, shape, v.p[1], v.p[2], band, line);
          });
        },
    .ignoresLimits = nullptr,
    .support = [](const Values& v) { return laws::Gamma(v.p[0], v.p[1], v.p[2]).support(); },
    .moments =
        [](const Values& v, const Limits& limits) {
          return laws::Gamma(v.p[0], v.p[1], v.p[2]).moments(limits);
        },
    .integratedMoments =
        [](const Values& v, const Limits& limits) {
          return laws::Gamma(v.p[0], v.p[1], v.p[2]).integratedMoments(limits);
        },
};

std::string fitJohnson(const std::array<double, 4>& p, Fitted& fitted, Line line) {
  const auto& [mean, stdDev, skewness, kurtosis] = p;
  if (!(kurtosis > 1 + checked(skewness * skewness, line))) {
    return "Impossible combination of skewness and kurtosis.  Kurtosis "
           "must be greater than (1 + Skewness^2).";
  }
  m_Johnson::CalcJohnson(mean, stdDev, skewness, kurtosis, fitted.johnson, line);
  fitted.curve = m_Johnson::curveOf(fitted.johnson.typeName);
  return fitted.johnson.message;
}

const Family johnson{
    .name = "Johnson",
    .demands = {Demand::real, Demand::positive, Demand::real, Demand::positive},
    .parametersRead = 0,
    .fit = fitJohnson,
    .density =
        [](const Values& v, double x, const Limits& limits, const Variant&, Line line) {
          return m_Johnson::density(x, v.fitted.johnson, v.fitted.curve, limits, line);
        },
    .stableDensity =
        [](const Values& v, double x) {
          return laws::Johnson(v.fitted.johnson, v.fitted.curve).standardDensity(x);
        },
    .densityHolds =
        [](const Values& v, double x) {
          return m_Johnson::densityHolds(x, v.fitted.johnson, v.fitted.curve);
        },
    .cumulative =
        [](const Values& v, double x, Line line) {
          return m_Johnson::cumulative(x, v.fitted.johnson, v.fitted.curve, line);
        },
    .band =
        [](const Values& v, const Limits& limits, Line line) {
          return m_Johnson::band(v.fitted.johnson, v.fitted.curve, limits, line);
        },
    .value = [](const Values& v, const Band& band, double p,
                Line line) { return m_Johnson::value(p, v.fitted.johnson, band, line); },
    .ignoresLimits = nullptr,
    .support =
        [](const Values& v) { return laws::Johnson(v.fitted.johnson, v.fitted.curve).support(); },
    .moments = [](const Values& v, const Limits& limits) -> std::optional<laws::Moments> {
      return laws::Johnson(v.fitted.johnson, v.fitted.curve).moments(limits);
    },
    .integratedMoments =
        [](const Values& v, const Limits& limits) {
          return laws::Johnson(v.fitted.johnson, v.fitted.curve).integratedMoments(limits);
        },
};

const Family histogram{
    .name = "Histogram",
    .demands = {},
    .parametersRead = 0,
    .fit = nullptr,
    .tabulate =
        [](const Variant& range, const Variant& layout, Fitted& fitted, Line line) {
          auto& [density, table] = fitted.histogram;
          return m_Histogram::CreateHistogramArrays(range, layout, density, table, line);
        },
    .density =
        [](const Values& v, double x, const Limits& limits, const Variant& priorX, Line line) {
          return m_Histogram::density(x, v.fitted.histogram.density, limits, priorX, line);
        },
    .cumulative =
        [](const Values& v, double x, Line line) {
          return m_Histogram::HistogramCDF(x, v.fitted.histogram.table, line);
        },
    .band = [](const Values& v, const Limits& limits,
               Line line) { return m_Histogram::band(v.fitted.histogram.table, limits, line); },
    .value = [](const Values& v, const Band& band, double p,
                Line line) { return m_Histogram::value(p, v.fitted.histogram.table, band, line); },
    .ignoresLimits = nullptr,
    .support = [](const Values& v) { return laws::Histogram(v.fitted.histogram).support(); },
    .keepsNothing =
        [](const Values& v, const Limits& limits) {
          return laws::Histogram(v.fitted.histogram).keepsNothing(limits);
        },
    .moments = [](const Values& v, const Limits& limits) -> std::optional<laws::Moments> {
      return laws::Histogram(v.fitted.histogram).moments(limits);
    },
    .integratedMoments =
        [](const Values& v, const Limits& limits) {
          return laws::Histogram(v.fitted.histogram).integratedMoments(limits);
        },
};

const Family beta{
    .name = "Beta",
    .demands = {Demand::positiveNoArticle, Demand::positiveNoArticle, Demand::real, Demand::real},
    .parametersRead = 4,
    .fit = [](const std::array<double, 4>& p, Fitted&, Line) -> std::string {
      return p[2] > p[3] ? "Maximum can not be less than Minimum." : "";
    },
    .density =
        [](const Values& v, double x, const Limits& limits, const Variant&, Line line) {
          return withShapes(v, [&](m_Beta::Shapes& shapes) {
            return m_Beta::density(x, shapes, v.p[2], v.p[3], limits, line);
          });
        },
    .stableDensity =
        [](const Values& v, double x) {
          return laws::Beta(v.p[0], v.p[1], v.p[2], v.p[3]).standardDensity(x);
        },
    .densityHolds =
        [](const Values& v, double x) {
          return withShapes(v, [&](m_Beta::Shapes& shapes) {
            return m_Beta::densityHolds(x, shapes, v.p[2], v.p[3]);
          });
        },
    .cumulative =
        [](const Values& v, double x, Line line) {
          const double z = Divide(checked(x - v.p[2], line), checked(v.p[3] - v.p[2], line), line);
          return withShapes(v, [&](m_Beta::Shapes& shapes) {
            return m_Beta::BetaCDF(z, shapes, false, line).toDouble(line);
          });
        },
    .band =
        [](const Values& v, const Limits& limits, Line line) {
          return withShapes(v, [&](m_Beta::Shapes& shapes) {
            return m_Beta::band(shapes, v.p[2], v.p[3], limits, line);
          });
        },
    .value =
        [](const Values& v, const Band& band, double p, Line line) {
          return withShapes(v, [&](m_Beta::Shapes& shapes) {
            return m_Beta::value(p, shapes, v.p[2], v.p[3], band, line);
          });
        },
    .ignoresLimits =
        [](const Values& v, double p) {
          return m_Beta::ignoresLimits(p, v.p[0], v.p[1], v.p[2], v.p[3]);
        },
    .support = [](const Values& v) { return laws::Beta(v.p[0], v.p[1], v.p[2], v.p[3]).support(); },
    .moments =
        [](const Values& v, const Limits& limits) {
          return laws::Beta(v.p[0], v.p[1], v.p[2], v.p[3]).moments(limits);
        },
    .integratedMoments =
        [](const Values& v, const Limits& limits) {
          return laws::Beta(v.p[0], v.p[1], v.p[2], v.p[3]).integratedMoments(limits);
        },
};

constexpr std::array families{&normal,  &uniform, &triangular, &lognormal, &exponential,
                              &weibull, &gamma,   &beta,       &johnson,   &histogram};

}  // namespace

const Family* findFamily(std::string_view name) noexcept {
  for (const Family* family : families) {
    if (family->name == name) return family;
  }
  return nullptr;
}

}  // namespace palvex
