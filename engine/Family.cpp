#include "engine/Family.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "families/m_Exponential.h"
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
#include "laws/Kept.h"
#include "laws/Lognormal.h"
#include "laws/Normal.h"
#include "laws/Triangular.h"
#include "laws/Uniform.h"
#include "laws/Weibull.h"

namespace palvex {

namespace {

// ---- what a routine is handed of the values ----

/// The first n parameters.
template <std::size_t n>
struct Numbers {
  template <class Routine>
  static decltype(auto) to(const Values& v, Routine&& routine) {
    return [&]<std::size_t... i>(std::index_sequence<i...>)->decltype(auto) {
      return routine(v.p[i]...);
    }
    (std::make_index_sequence<n>());
  }
};

/// The first `shapes` parameters as Shapes, prepared once, and the others up to the n-th.
template <class Shapes, std::size_t shapes, std::size_t n>
struct ShapesAndNumbers {
  template <class Routine>
  static decltype(auto) to(Values& v, Routine&& routine) {
    return [&]<std::size_t... i>(std::index_sequence<i...>)->decltype(auto) {
      return routine(prepared(v), v.p[shapes + i]...);
    }
    (std::make_index_sequence<n - shapes>());
  }

 private:
  static Shapes& prepared(Values& v) {
    if (auto* kept = std::get_if<Shapes>(&v.prepared)) return *kept;
    return Numbers<shapes>::to(
        v, [&](auto... p) -> Shapes& { return v.prepared.template emplace<Shapes>(p...); });
  }
};

struct FittedCurve {
  template <class Routine>
  static decltype(auto) to(const Values& v, Routine&& routine) {
    return routine(v.fitted.johnson, v.fitted.curve);
  }
};

struct BinArrays {
  template <class Routine>
  static decltype(auto) to(const Values& v, Routine&& routine) {
    return routine(v.fitted.histogram);
  }
};

struct CumulativeTable {
  template <class Routine>
  static decltype(auto) to(const Values& v, Routine&& routine) {
    return routine(v.fitted.histogram.table);
  }
};

// ---- the routines of families and laws as cells of a row ----

/// A family's routines, which take what they are handed after x or p.
template <class Handed>
struct Members {
  template <auto routine>
  static double density(Values& v, double x, const Limits& limits, const Variant&, Line line) {
    return Handed::to(v, [&](auto&&... given) { return routine(x, given..., limits, line); });
  }
  template <auto routine>
  static bool holds(Values& v, double x) {
    return Handed::to(v, [&](auto&&... given) { return routine(x, given...); });
  }
  template <auto routine>
  static double cumulative(Values& v, double x, Line line) {
    return Handed::to(v, [&](auto&&... given) { return routine(x, given..., line); });
  }
  template <auto routine>
  static Band band(Values& v, const Limits& limits, Line line) {
    return Handed::to(v, [&](auto&&... given) { return routine(given..., limits, line); });
  }
  template <auto routine>
  static double value(Values& v, const Band& band, double p, Line line) {
    return Handed::to(v, [&](auto&&... given) { return routine(p, given..., band, line); });
  }
};

template <std::size_t n>
using With = Members<Numbers<n>>;
using WithBeta = Members<ShapesAndNumbers<m_Beta::Shapes, 2, 4>>;
using WithGamma = Members<ShapesAndNumbers<m_Gamma::IncompleteGamma, 1, 3>>;
using WithCurve = Members<FittedCurve>;
using WithTable = Members<CumulativeTable>;

/// The law made from the numbers that `Handed` selects.
template <class Law, class Handed>
struct Lawful {
  static Law of(const Values& v) {
    return Handed::to(v, [](const auto&... given) { return Law(given...); });
  }
  static std::shared_ptr<const laws::AnyLaw> between(std::string_view type, const Values& v,
                                                     const Limits& limits) {
    return std::make_shared<const laws::Kept<Law>>(type, of(v), limits);
  }
  static std::function<double(double)> density(const Values& v) {
    return [law = of(v)](double x) {
      // What the family reports may be the density of a standardised variable.
      if constexpr (requires { law.standardDensity(x); }) {
        return law.standardDensity(x);
      } else {
        return law.density(x);
      }
    };
  }
  static Support support(const Values& v) { return of(v).support(); }
  static bool keepsNothing(const Values& v, const Limits& limits) {
    return of(v).keepsNothing(limits);
  }
  static std::optional<laws::Moments> moments(const Values& v, const Limits& limits) {
    return of(v).moments(limits);
  }
  static laws::Moments integratedMoments(const Values& v, const Limits& limits) {
    return of(v).integratedMoments(limits);
  }
};

template <class Law, class Handed>
constexpr LawOfType lawOf{
    .between = Lawful<Law, Handed>::between,
    .density = Lawful<Law, Handed>::density,
    .support = Lawful<Law, Handed>::support,
    .keepsNothing = nullptr,
    .moments = Lawful<Law, Handed>::moments,
    .integratedMoments = Lawful<Law, Handed>::integratedMoments,
};

std::shared_ptr<const laws::AnyLaw> curveBetween(std::string_view type, const Values& v,
                                                 const Limits& limits) {
  const m_Johnson::JohnsonParams& curve = v.fitted.johnson;
  const bool isNormal = v.fitted.curve == m_Johnson::Curve::normal;
  const bool isCurve = curve.delta > 0 && curve.lambda != 0;  // which may have underflowed
  if (!isNormal && !isCurve) throw std::invalid_argument(noCurve);
  return Lawful<laws::Johnson, FittedCurve>::between(type, v, limits);
}

constexpr LawOfType lawOfCurve = [] {
  LawOfType law = lawOf<laws::Johnson, FittedCurve>;
  law.between = curveBetween;
  return law;
}();

constexpr LawOfType lawOfBins = [] {
  LawOfType law = lawOf<laws::Histogram, BinArrays>;
  law.density = nullptr;
  law.keepsNothing = Lawful<laws::Histogram, BinArrays>::keepsNothing;
  return law;
}();

constexpr Ascending none{0, 0};

// ---- guesses: each puts the mean, or the location, at x, with a moderate spread ----

constexpr double gammaOfThreeHalves = 0.886226925452761;  // mean of a Weibull of shape 2, scale 1
constexpr double ln2 = 0.693147180559945309;
constexpr double rootOfTwo = 1.41421356237309505;  // mean of the lognormal guessed for x < 0

constexpr double orElse(double guess, double replacementOfZero) {
  return guess == 0 ? replacementOfZero : guess;
}

constexpr double itself(double x) {
  return x;
}
constexpr double lowerBound(double x) {
  return (x >= 0 ? 0.9 : 1.1) * x;
}
constexpr double upperBound(double x) {
  return (x >= 0 ? 1.1 : 0.9) * x;
}
double spread(double x) {
  return orElse(std::abs(x / 10), 0.1);
}
template <int value>
constexpr double constant(double) {
  return value;
}

// ---- what validation does once each parameter has passed ----

std::string fitJohnson(Values& v, Line line) {
  const auto& [mean, stdDev, skewness, kurtosis] = v.p;
  if (!(kurtosis > 1 + checked(skewness * skewness, line))) {
    return "Impossible combination of skewness and kurtosis.  Kurtosis "
           "must be greater than (1 + Skewness^2).";
  }
  m_Johnson::CalcJohnson(mean, stdDev, skewness, kurtosis, v.fitted.johnson, line);
  v.fitted.curve = m_Johnson::curveOf(v.fitted.johnson.typeName);
  return v.fitted.johnson.message;
}

std::string tabulateHistogram(const Variant& range, const Variant& layout, Values& v, Line line) {
  auto& [density, table] = v.fitted.histogram;
  return m_Histogram::CreateHistogramArrays(range, layout, density, table, line);
}

bool meets(double parameter, Demand demand) {
  if (!std::isfinite(parameter)) return false;
  switch (demand) {
    case Demand::nonNegative:
      return parameter >= 0;
    case Demand::positive:
    case Demand::positiveNoArticle:
      return parameter > 0;
    case Demand::real:
    case Demand::statedReal:
    case Demand::worksheetData:
      break;
  }
  return true;
}

// ---- probabilities as the object asks for them ----

double normalCumulative(double x, double mean, double sd, Line line) {
  return m_Normal::NormalCDF(Divide(x - mean, sd, line), false, line);
}

double lognormalCumulative(double x, double location, double scale, double minimum, Line line) {
  return m_Lognormal::LognormalCDF(x, location, scale, minimum, false, line);
}

double betaCumulative(double x, m_Beta::Shapes& shapes, double minimum, double maximum, Line line) {
  const double u = Divide(checked(x - minimum, line), checked(maximum - minimum, line), line);
  return m_Beta::BetaCDF(u, shapes, false, line).toDouble(line);
}

/// The scale serves as the rate, and a minimum turns the probability into that above x.
double gammaCumulative(double x, const m_Gamma::IncompleteGamma& shape, double scale,
                       double minimum, Line line) {
  return m_Gamma::GammaCDF(x, shape, scale, minimum != 0, line).toDouble(line);
}

}  // namespace

constinit const std::array<Family, 10> families{{
    {
        .name = "Normal",
        .parameters =
            Parameters{{"Mean", Demand::real, itself}, {"Std Dev", Demand::nonNegative, spread}},
        .readsFit = false,
        .ascending = none,
        .fit = nullptr,
        .tabulate = nullptr,
        .density = With<2>::density<m_Normal::density>,
        .densityHolds = nullptr,
        .cumulative = With<2>::cumulative<normalCumulative>,
        .band = With<2>::band<m_Normal::band>,
        .value = With<2>::value<m_Normal::value>,
        .ignoresLimits = nullptr,
        .law = lawOf<laws::Normal, Numbers<2>>,
    },
    {
        .name = "Uniform",
        .parameters = Parameters{{"Minimum", Demand::real, lowerBound},
                                 {"Maximum", Demand::real,
                                  [](double x) { return orElse(upperBound(x), 0.1); }}},
        .readsFit = false,
        .ascending = Ascending{0, 1},
        .fit = nullptr,
        .tabulate = nullptr,
        .density = With<2>::density<m_Uniform::density>,
        .densityHolds = nullptr,
        .cumulative = With<2>::cumulative<m_Uniform::UniformCDF>,
        .band = With<2>::band<m_Uniform::band>,
        .value = With<2>::value<m_Uniform::value>,
        .ignoresLimits = nullptr,
        .law = lawOf<laws::Uniform, Numbers<2>>,
    },
    {
        .name = "Triangular",
        .parameters =
            Parameters{
                {"Minimum", Demand::real, [](double x) { return orElse(lowerBound(x), -0.1); }},
                {"Likely", Demand::real, itself},
                {"Maximum", Demand::real, [](double x) { return orElse(upperBound(x), 0.1); }}},
        .readsFit = false,
        .ascending = Ascending{0, 2},
        .fit = nullptr,
        .tabulate = nullptr,
        .density = With<3>::density<m_Triangular::density>,
        .densityHolds = nullptr,
        .cumulative = With<3>::cumulative<m_Triangular::TriangularCDF>,
        .band = With<3>::band<m_Triangular::band>,
        .value = With<3>::value<m_Triangular::value>,
        .ignoresLimits = nullptr,
        .law = lawOf<laws::Triangular, Numbers<3>>,
    },
    {
        .name = "Lognormal",
        .parameters = Parameters{{"Location", Demand::real,
                                  [](double x) { return x > 0 ? std::log(x) - 0.5 * ln2 : 0; }},
                                 {"Scale", Demand::positive, [](double) { return std::sqrt(ln2); }},
                                 {"Minimum", Demand::real,
                                  [](double x) { return x >= 0 ? 0 : x - rootOfTwo; }}},
        .readsFit = false,
        .ascending = none,
        .fit = [](Values& v, Line) -> std::string {
          return std::isinf(laws::Lognormal(v.p[0], v.p[1], v.p[2]).standardDeviation())
                     ? "Number overflow.  Please choose a smaller value for Location or Scale."
                     : "";
        },
        .tabulate = nullptr,
        .density = With<3>::density<m_Lognormal::density>,
        .densityHolds = nullptr,
        .cumulative = With<3>::cumulative<lognormalCumulative>,
        .band = With<3>::band<m_Lognormal::band>,
        .value = With<3>::value<m_Lognormal::value>,
        .ignoresLimits = nullptr,
        .law = lawOf<laws::Lognormal, Numbers<3>>,
    },
    {
        .name = "Exponential",
        .parameters =
            Parameters{{"Lambda", Demand::positiveNoArticle,
                        [](double x) { return x != 0 ? std::abs(10 / x) : 1; }},
                       {"Minimum", Demand::real, [](double x) { return x - std::abs(x / 10); }}},
        .readsFit = false,
        .ascending = none,
        .fit = nullptr,
        .tabulate = nullptr,
        .density = With<2>::density<m_Exponential::density>,
        .densityHolds = nullptr,
        .cumulative = With<2>::cumulative<m_Exponential::ExponentialCDF>,
        .band = With<2>::band<m_Exponential::band>,
        .value = With<2>::value<m_Exponential::value>,
        .ignoresLimits = [](const Values&, double p) { return m_Exponential::ignoresLimits(p); },
        .law = lawOf<laws::Exponential, Numbers<2>>,
    },
    {
        .name = "Weibull",
        .parameters = Parameters{{"Shape", Demand::positiveNoArticle, constant<2>},
                                 {"Scale", Demand::positiveNoArticle,
                                  [](double x) { return x > 0 ? x / gammaOfThreeHalves : 1; }},
                                 {"Minimum", Demand::statedReal,
                                  [](double x) { return x > 0 ? 0 : x - gammaOfThreeHalves; }}},
        .readsFit = false,
        .ascending = none,
        .fit = nullptr,
        .tabulate = nullptr,
        .density = With<3>::density<m_Weibull::density>,
        .densityHolds = With<3>::holds<m_Weibull::densityHolds>,
        .cumulative = With<3>::cumulative<m_Weibull::WeibullCDF>,
        .band = With<3>::band<m_Weibull::band>,
        .value = With<3>::value<m_Weibull::value>,
        .ignoresLimits = [](const Values&, double p) { return m_Weibull::ignoresLimits(p); },
        .law = lawOf<laws::Weibull, Numbers<3>>,
    },
    {
        .name = "Beta",
        .parameters = Parameters{{"Alpha", Demand::positiveNoArticle, constant<2>},
                                 {"Beta", Demand::positiveNoArticle, constant<2>},
                                 {"Minimum", Demand::real, lowerBound},
                                 {"Maximum", Demand::real,
                                  [](double x) { return orElse(upperBound(x), 1); }}},
        .readsFit = false,
        .ascending = Ascending{2, 3},
        .fit = nullptr,
        .tabulate = nullptr,
        .density = WithBeta::density<m_Beta::density>,
        .densityHolds = WithBeta::holds<m_Beta::densityHolds>,
        .cumulative = WithBeta::cumulative<betaCumulative>,
        .band = WithBeta::band<m_Beta::band>,
        .value = WithBeta::value<m_Beta::value>,
        .ignoresLimits =
            [](const Values& v, double p) {
              return m_Beta::ignoresLimits(p, v.p[0], v.p[1], v.p[2], v.p[3]);
            },
        .law = lawOf<laws::Beta, Numbers<4>>,
    },
    {
        .name = "Gamma",
        .parameters =
            Parameters{{"Shape", Demand::positive, constant<2>},
                       {"Scale", Demand::positive, [](double x) { return x > 0 ? x / 2 : 1; }},
                       {"Minimum", Demand::real, [](double x) { return x >= 0 ? 0 : x - 2; }}},
        .readsFit = false,
        .ascending = none,
        .fit = nullptr,
        .tabulate = nullptr,
        .density = With<3>::density<m_Gamma::density>,
        .densityHolds = With<3>::holds<m_Gamma::densityHolds>,
        .cumulative = WithGamma::cumulative<gammaCumulative>,
        .band = WithGamma::band<m_Gamma::band>,
        .value = WithGamma::value<m_Gamma::value>,
        .ignoresLimits = nullptr,
        .law = lawOf<laws::Gamma, Numbers<3>>,
    },
    {
        .name = "Johnson",
        .parameters = Parameters{{"Mean", Demand::real, itself},
                                 {"Std Dev", Demand::positive, spread},
                                 {"Skewness", Demand::real, constant<0>},
                                 {"Kurtosis", Demand::positive, constant<3>}},
        .readsFit = true,
        .ascending = none,
        .fit = fitJohnson,
        .tabulate = nullptr,
        .density = WithCurve::density<m_Johnson::density>,
        .densityHolds = WithCurve::holds<m_Johnson::densityHolds>,
        .cumulative = WithCurve::cumulative<m_Johnson::cumulative>,
        .band = WithCurve::band<m_Johnson::band>,
        .value = [](Values& v, const Band& band, double p,
                    Line line) { return m_Johnson::value(p, v.fitted.johnson, band, line); },
        .ignoresLimits = nullptr,
        .law = lawOfCurve,
    },
    {
        .name = "Histogram",
        .parameters = Parameters{{"Data Range", Demand::worksheetData, constant<0>},
                                 {"Data Config", Demand::worksheetData, constant<0>}},
        .readsFit = true,
        .ascending = none,
        .fit = nullptr,
        .tabulate = tabulateHistogram,
        .density =
            [](Values& v, double x, const Limits& limits, const Variant& priorX, Line line) {
              return m_Histogram::density(x, v.fitted.histogram.density, limits, priorX, line);
            },
        .densityHolds = nullptr,
        .cumulative = WithTable::cumulative<m_Histogram::HistogramCDF>,
        .band = WithTable::band<m_Histogram::band>,
        .value = WithTable::value<m_Histogram::value>,
        .ignoresLimits = nullptr,
        .law = lawOfBins,
    },
}};

bool Family::meetsDemands(const Values& values) const {
  for (std::size_t i = 0; i < parameters->size(); ++i) {
    if (!meets(values.p[i], (*parameters)[i].demand)) return false;
  }
  return true;
}

bool Family::isLawful(const Values& values) const {
  if (readsFit) return true;  // made by validation
  return meetsDemands(values) &&
         std::is_sorted(&values.p[ascending->first], &values.p[ascending->last] + 1);
}

std::string Family::fitTo(Values& values, Line line) const {
  for (std::size_t i = ascending->first; i < ascending->last; ++i) {
    if (values.p[i + 1] < values.p[i]) {
      return std::string((*parameters)[i + 1].name) + " can not be less than " +
             std::string((*parameters)[i].name) + ".";
    }
  }
  return fit == nullptr ? "" : fit(values, line);
}

const Family* findFamily(std::string_view name) noexcept {
  for (const Family& family : families) {
    if (family.name == name) return &family;
  }
  return nullptr;
}

}  // namespace palvex
