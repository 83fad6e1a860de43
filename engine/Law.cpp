#include "engine/Law.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "engine/Family.h"
#include "engine/LawTypes.h"
#include "engine/c_Distribution.h"
#include "laws/Beta.h"
#include "laws/Kept.h"
#include "runtime/Cells.h"

namespace palvex {

namespace {

using Numbers = std::array<double, 4>;
using SharedLaw = std::shared_ptr<const laws::AnyLaw>;

/// Throws what ParamsOK says about parameters that it does not let pass.
[[noreturn]] void refuse(std::string_view type, const Numbers& p) {
  c_Distribution distribution;
  distribution.distType(type);
  distribution.param1 = p[0];
  distribution.param2 = p[1];
  distribution.param3 = p[2];
  distribution.param4 = p[3];
  std::string cause;
  distribution.ParamsOK(cause);
  throw std::invalid_argument(cause);
}

/// The law of a type other than Histogram from unchecked parameters.
SharedLaw checkedLaw(std::string_view type, std::span<const double> given, const Limits& limits) {
  const Family* const family = findFamily(type);
  if (family == nullptr || family->tabulate != nullptr) {
    throw std::invalid_argument("Incorrect distribution type.");
  }
  Values values;
  std::copy_n(given.begin(), std::min(given.size(), values.p.size()), values.p.begin());
  if (!family->meetsDemands(values)) refuse(type, values.p);
  try {
    const std::string fault = family->fitTo(values, Line::here());
    if (!fault.empty()) throw std::invalid_argument(fault);
  } catch (const RuntimeError&) {
    throw std::invalid_argument(noCurve);
  }
  return family->law->between(family->name, values, limits);
}

template <std::same_as<double>... Given>
SharedLaw checkedLaw(std::string_view type, Given... numbers) {
  const std::array<double, sizeof...(numbers)> given{numbers...};
  return checkedLaw(type, given, Limits{});
}

// ---- the types set by what people know ----

/// The parameters of the beta law that PERT stands for.
Numbers pertAsBeta(double minimum, double likely, double maximum) {
  static_cast<void>(checkedLaw("Triangular", minimum, likely, maximum));
  const double halfWidth = maximum / 2 - minimum / 2;
  if (halfWidth == 0) return {3, 3, minimum, maximum};
  return {1 + 4 * ((likely / 2 - minimum / 2) / halfWidth),
          1 + 4 * ((maximum / 2 - likely / 2) / halfWidth), minimum, maximum};
}

/// The parameters of the lognormal law with this mean and standard deviation.
Numbers asLognormal(double mean, double sd, double minimum) {
  static_cast<void>(checkedLaw("Johnson", mean, sd, 0.0, 3.0));  // a mean and a positive deviation
  static_cast<void>(checkedLaw("Exponential", 1.0, minimum));
  if (!(mean > minimum)) throw std::invalid_argument("Mean must be greater than Minimum.");
  const double ratio = sd / (mean - minimum);
  const double variance = std::log1p(ratio * ratio);
  return {std::log(mean - minimum) - variance / 2, std::sqrt(variance), minimum};
}

SharedLaw pertLaw(const Numbers& p, const Limits& limits) {
  const auto [alpha, beta, minimum, maximum] = pertAsBeta(p[0], p[1], p[2]);
  return std::make_shared<const laws::Kept<laws::Beta>>(
      "PERT", laws::Beta(alpha, beta, minimum, maximum), limits);
}

SharedLaw lognormalMeanLaw(const Numbers& p, const Limits& limits) {
  const Numbers lognormal = asLognormal(p[0], p[1], p[2]);
  return checkedLaw("Lognormal", std::span(lognormal).first(3), limits)->named("LognormalMean");
}

// ---- worksheet data in memory ----

SharedLaw histogramOf(std::span<const double> values, std::int32_t columns,
                      std::string_view layout) {
  if (values.empty()) throw std::invalid_argument("No data");
  const Family& family = *findFamily("Histogram");
  Values bins;
  try {
    const std::string fault =
        family.tabulate(std::make_shared<Cells>(values, columns), layout, bins, Line::here());
    if (!fault.empty()) throw std::invalid_argument(fault);
  } catch (const RuntimeError&) {
    throw std::invalid_argument("The bins or their densities leave the range of doubles.");
  }
  return family.law->between(family.name, bins, {});
}

/// The moments, infinite where they leave the range of doubles.
laws::Moments moments(const laws::AnyLaw& law) {
  try {
    return law.moments();
  } catch (const RuntimeError&) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    return {law.support().upper == infinity ? infinity : -infinity, infinity};
  }
}

}  // namespace

Law::Law(std::shared_ptr<const laws::AnyLaw> law) : law_(std::move(law)) {}

Law Law::normal(double mean, double sd) {
  return Law(checkedLaw("Normal", mean, sd));
}

Law Law::uniform(double minimum, double maximum) {
  return Law(checkedLaw("Uniform", minimum, maximum));
}

Law Law::triangular(double minimum, double likely, double maximum) {
  return Law(checkedLaw("Triangular", minimum, likely, maximum));
}

Law Law::lognormal(double location, double scale, double minimum) {
  return Law(checkedLaw("Lognormal", location, scale, minimum));
}

Law Law::exponential(double lambda, double minimum) {
  return Law(checkedLaw("Exponential", lambda, minimum));
}

Law Law::weibull(double shape, double scale, double minimum) {
  return Law(checkedLaw("Weibull", shape, scale, minimum));
}

Law Law::beta(double alpha, double beta, double minimum, double maximum) {
  return Law(checkedLaw("Beta", alpha, beta, minimum, maximum));
}

Law Law::gamma(double shape, double scale, double minimum) {
  return Law(checkedLaw("Gamma", shape, scale, minimum));
}

Law Law::johnson(double mean, double sd, double skewness, double kurtosis) {
  return Law(checkedLaw("Johnson", mean, sd, skewness, kurtosis));
}

Law Law::pert(double minimum, double likely, double maximum) {
  return Law(pertLaw({minimum, likely, maximum}, {}));
}

Law Law::lognormalMean(double mean, double sd, double minimum) {
  return Law(lognormalMeanLaw({mean, sd, minimum}, {}));
}

Law Law::histogram(std::span<const double> data) {
  return Law(histogramOf(data, 1, dataConfigurations[0]));
}

Law Law::histogram(std::span<const double> edges, std::span<const double> counts) {
  if (edges.size() != counts.size() + 1)
    throw std::invalid_argument("A histogram has one edge more than counts.");
  std::vector<double> bins;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    bins.insert(bins.end(), {edges[i], edges[i + 1], counts[i]});
  }
  return Law(histogramOf(bins, 3, dataConfigurations[2]));
}

Law Law::between(std::optional<double> lower, std::optional<double> upper) const {
  return Law(law_->between({lower, upper}));
}

std::string_view Law::type() const noexcept {
  return law_->type();
}

Support Law::support() const noexcept {
  return law_->support();
}

double Law::keptProbability() const noexcept {
  return law_->keptProbability();
}

double Law::density(double x) const noexcept {
  return law_->density(x);
}

double Law::logDensity(double x) const noexcept {
  return law_->logDensity(x);
}

double Law::probability(double x) const noexcept {
  return law_->probability(x);
}

double Law::exceedance(double x) const noexcept {
  return law_->exceedance(x);
}

double Law::quantile(double p) const noexcept {
  return law_->quantile(p);
}

double Law::upperQuantile(double q) const noexcept {
  return law_->upperQuantile(q);
}

void Law::quantiles(std::span<const double> p, std::span<double> x) const {
  if (p.size() != x.size())
    throw std::invalid_argument("There must be as many values as probabilities.");
  law_->quantiles(p, x);
}

double Law::mean() const {
  return moments(*law_).mean;
}

double Law::sd() const {
  return moments(*law_).sd;
}

Law makeLaw(const LawType& type, std::span<const double> parameters, const Limits& limits) {
  Numbers p{};
  std::copy_n(parameters.begin(), std::min(parameters.size(), p.size()), p.begin());
  if (type.name == "PERT") return Law(pertLaw(p, limits));
  if (type.name == "LognormalMean") return Law(lognormalMeanLaw(p, limits));
  const auto count = static_cast<std::size_t>(type.parameterCount());
  return Law(checkedLaw(type.name, std::span(p).first(count), limits));
}

Law makeLaw(std::string_view type, std::span<const Variant> parameters, const Variant& ltl,
            const Variant& utl) {
  c_Distribution distribution;
  const auto validate = [&](std::string_view name, std::span<const Variant> given,
                            const Variant& lower, const Variant& upper) {
    if (findFamily(name) == nullptr) throw std::invalid_argument("Incorrect distribution type.");
    distribution.distType(name);
    const std::array members{&distribution.param1, &distribution.param2, &distribution.param3,
                             &distribution.param4};
    for (std::size_t i = 0; i < members.size(); ++i) {
      *members[i] = i < given.size() ? given[i] : Variant{};
    }
    distribution.ltl = lower;
    distribution.utl = upper;
    std::string cause;
    if (!distribution.ParamsOK(cause)) throw std::invalid_argument(cause);
  };
  const auto given = [&](std::size_t i) {
    return i < parameters.size() ? parameters[i] : Variant{};
  };

  if (type == "PERT") {
    validate("Triangular", parameters, ltl, utl);
    return Law(pertLaw(distribution.kept_.p, distribution.staticLimits_));
  }
  if (type == "LognormalMean") {
    // These types make the same demands on a mean and a standard deviation, and on a minimum.
    const std::array moments{given(0), given(1), Variant(0), Variant(3)};
    validate("Johnson", moments, {}, {});
    const auto [mean, sd, skewness, kurtosis] = distribution.kept_.p;
    const std::array minimum{Variant(1), given(2)};
    validate("Exponential", minimum, {}, {});
    const Numbers p = asLognormal(mean, sd, distribution.kept_.p[1]);
    const std::array lognormal{Variant(p[0]), Variant(p[1]), Variant(p[2])};
    validate("Lognormal", lognormal, ltl, utl);
    return Law(distribution.law().law_->named("LognormalMean"));
  }
  try {
    validate(type, parameters, ltl, utl);
  } catch (const RuntimeError& error) {
    const bool isFit = error.source().find("m_Johnson.") != std::string::npos;
    if (isFit) throw std::invalid_argument(noCurve);
    throw;
  }
  return distribution.law();
}

Law c_Distribution::law() const {
  if (!paramsOk_) throw std::logic_error("A law needs parameters that ParamsOK has let pass.");
  const Family* const family = family_;  // reading a cell may set another one
  const Limits limits = currentLimits();
  if (!Dynamic || family->readsFit) {
    return Law(family->law->between(family->name, kept_, limits));
  }
  const std::size_t count = family->parameters->size();
  const Values live = liveValues(count, Line::here());
  return Law(checkedLaw(family->name, std::span(live.p).first(count), limits));
}

}  // namespace palvex
