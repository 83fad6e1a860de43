// Every published routine on the lines of tests/data/routines, and on references.

#include <algorithm>
#include <filesystem>
#include <limits>
#include <tuple>

#include "Routines.h"
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
#include "laws/Johnson.h"
#include "numerics/m_MathUtil.h"
#include "numerics/m_RootFinding.h"

namespace palvex::script {
namespace {

using m_Histogram::DensityArray;
using m_Histogram::Table;
using m_Johnson::JohnsonParams;

const std::map<std::string, JohnsonParams> curves{{"su", {0.7, 1.5, 2, 10, "SU", 2, ""}},
                                                  {"sb", {-0.4, 0.8, 5, -1, "SB", 3, ""}},
                                                  {"sl", {1.2, 2, 1, 3, "SL", 1, ""}},
                                                  {"slDown", {1.2, 2, -1, 3, "SL", 1, ""}},
                                                  {"normal", {2, 0, 10, 0, "Normal", 4, ""}}};

/// Lower edge, upper edge and count of each bin.
const std::map<std::string, std::vector<Variant>> bins{
    {"gappy", {4, 5, 0, 0, 1, 2, -3, -1, 0, 2, 4, 4, 5, 6, 2, 7, 8, 0}},
    {"spike", {0, 1, 4, 1, 1.01, 8, 1.01, 2.01, 2, 4, 6, 2}}};

m_Histogram::Arrays histogram(const Variant& given) {
  m_Histogram::Arrays arrays;
  if (given.isEmpty()) return arrays;
  const bool named = given.isText() && given != Variant("point");
  const Variant range = named            ? block(3, bins.at(given.toText()))
                        : given.isText() ? cell(3)
                                         : given;
  const char* layout = given == Variant("point") ? "Raw Data" : "Bins and Counts (3 cols)";
  EXPECT_EQ(m_Histogram::CreateHistogramArrays(range, layout, arrays.density, arrays.table), "");
  return arrays;
}

/// An argument from the values of a line; what is left out there is 0, or missing. A curve is a
/// name from above, or its constants, its type and its code.
template <class Kind>
Kind from(const Values& given, std::size_t& next) {
  if constexpr (std::is_same_v<Kind, Variant>) {
    return next < given.size() ? given[next++] : Variant::missing();
  } else if constexpr (std::is_same_v<Kind, Line>) {
    return Line::here();
  } else {
    if (next == given.size()) return {};
    const Variant& value = given[next++];
    if constexpr (std::is_floating_point_v<Kind>) return value.toDouble();
    if constexpr (std::is_integral_v<Kind>) {
      using Range = std::numeric_limits<Kind>;
      const double number = value.toDouble();
      return static_cast<Kind>(
          std::isnan(number) ? 0 : std::clamp<double>(number, Range::min(), Range::max()));
    }
    if constexpr (std::is_same_v<Kind, Boolean>) return value.toDouble() != 0;
    if constexpr (std::is_same_v<Kind, DensityArray>) return histogram(value).density;
    if constexpr (std::is_same_v<Kind, Table>) return histogram(value).table;
    if constexpr (std::is_same_v<Kind, JohnsonParams>) {
      if (value.isText()) return curves.at(value.toText());
      const auto number = [&] { return from<double>(given, next); };
      JohnsonParams curve{value.toDouble(), number(), number(), number(), "", 0, ""};
      curve.typeName = given.at(next++).toText();
      curve.typeCode = static_cast<std::int16_t>(number());
      return curve;
    }
    return {};
  }
}

template <class Kind>
void append(Values& answer, const Kind& value) {
  if constexpr (std::is_same_v<Kind, JohnsonParams>) {
    answer.insert(answer.end(), {value.gamma, value.delta, value.lambda, value.xi, value.typeName,
                                 value.typeCode, value.message});
  } else if constexpr (std::is_same_v<Kind, laws::Johnson::CurveMoments>) {
    answer.insert(answer.end(), {value.mean, value.stdDev, value.skewness, value.kurtosis});
  } else if constexpr (std::is_same_v<Kind, DensityArray> || std::is_same_v<Kind, Values>) {
    answer.insert(answer.end(), value.begin(), value.end());
  } else if constexpr (std::is_same_v<Kind, Table>) {
    for (const auto& row : value) answer.insert(answer.end(), row.begin(), row.end());
  } else {
    answer.emplace_back(value);
  }
}

template <class Kind>
constexpr bool filled =
    std::is_lvalue_reference_v<Kind> && !std::is_const_v<std::remove_reference_t<Kind>>;

template <class Kind>
void appendFilled(Values& answer, const std::remove_reference_t<Kind>& value) {
  if constexpr (filled<Kind>) append(answer, value);
}

template <class Result, class... Kinds>
Routine routine(Result (*called)(Kinds...)) {
  Routine made;
  made.call = [called](const Values& given) {
    std::size_t next = 0;
    std::tuple<std::remove_cvref_t<Kinds>...> arguments{
        from<std::remove_cvref_t<Kinds>>(given, next)...};
    Values answer;
    std::apply(
        [&](auto&... held) {
          if constexpr (std::is_void_v<Result>)
            called(held...);
          else
            append(answer, called(held...));
          (appendFilled<Kinds>(answer, held), ...);
        },
        arguments);
    return answer;
  };
  ((std::is_same_v<Kinds, Line> ? void() : made.fills.push_back(filled<Kinds>)), ...);
  made.takesNumbers = ((std::is_constructible_v<Variant, std::remove_cvref_t<Kinds>> ||
                        std::is_same_v<Kinds, Line>)&&...);
  return made;
}

}  // namespace

Values call(const std::string& name, const Values& given) {
  return routines().at(name).call(given);
}

const std::map<std::string, Routine>& routines() {
  using namespace m_MathUtil;
  using namespace m_Normal;
  using namespace m_Uniform;
  using namespace m_Triangular;
  using namespace m_Exponential;
  using namespace m_Weibull;
  using namespace m_Lognormal;
  using namespace m_Gamma;
  using namespace m_Beta;
  using namespace m_Johnson;
  using namespace m_Histogram;
  using D = double;
  using V = const Variant&;
  using S = std::int16_t;
  // Routines with several forms are given by the one that takes numbers.
  static const std::map<std::string, Routine> all{
      {"ipmpar", routine(ipmpar)},
      {"spmpar", routine(spmpar)},
      {"exparg", routine(exparg)},
      {"dmin1", routine(dmin1)},
      {"dmax1", routine(dmax1)},
      {"sign", routine(sign)},
      {"fsign", routine(fsign)},
      {"rlog", routine(rlog)},
      {"rlog1", routine(rlog1)},
      {"rexp", routine(+[](V x) { return rexp(x); })},
      {"alnrel", routine(alnrel)},
      {"erf", routine(m_MathUtil::erf)},
      {"erfc1", routine(erfc1)},
      {"qxmon", routine(m_RootFinding::qxmon)},
      {"NormalPDF", routine(NormalPDF)},
      {"NormalCDF", routine(NormalCDF)},
      {"NormalINV", routine(NormalINV)},
      {"NormINV16", routine(NormINV16)},
      {"NormalVAL", routine(NormalVAL)},
      {"UniformPDF", routine(UniformPDF)},
      {"UniformCDF", routine(UniformCDF)},
      {"UniformINV", routine(UniformINV)},
      {"UniformVAL", routine(UniformVAL)},
      {"TriangularPDF", routine(TriangularPDF)},
      {"TriangularCDF", routine(TriangularCDF)},
      {"TriangularINV", routine(TriangularINV)},
      {"TriangularVAL", routine(TriangularVAL)},
      {"ExponentialPDF", routine(ExponentialPDF)},
      {"ExponentialCDF", routine(ExponentialCDF)},
      {"ExponentialINV", routine(ExponentialINV)},
      {"ExponentialVAL", routine(ExponentialVAL)},
      {"WeibullPDF", routine(WeibullPDF)},
      {"WeibullCDF", routine(WeibullCDF)},
      {"WeibullINV", routine(WeibullINV)},
      {"WeibullVAL", routine(WeibullVAL)},
      {"LognormalPDF", routine(LognormalPDF)},
      {"LognormalCDF", routine(LognormalCDF)},
      {"LognormalINV", routine(LognormalINV)},
      {"LognormalVAL", routine(LognormalVAL)},
      {"gamma", routine(m_Gamma::gamma)},
      {"gamln", routine(gamln)},
      {"gamln1", routine(gamln1)},
      {"gam1", routine(gam1)},
      {"rcomp", routine(rcomp)},
      {"gratio", routine(+[](D a, D x, D& p, D& q, S ind) { gratio(a, x, p, q, ind); })},
      {"gaminv",
       routine(+[](D a, D& x, D x0, D p, D q, S& ierr) { gaminv(a, x, x0, p, q, ierr); })},
      {"cumgam", routine(+[](D x, D a, D& p, D& q) { cumgam(x, a, p, q); })},
      {"cdfgam", routine(+[](S which, D& p, D& q, D& x, D& shape, D& scale, S& status, D& bound) {
         cdfgam(which, p, q, x, shape, scale, status, bound);
       })},
      {"statusText", routine(m_Gamma::statusText)},
      {"failureText", routine(failureText)},
      {"GammaPDF", routine(GammaPDF)},
      {"GammaCDF",
       routine(+[](D x, D a, D rate, Boolean upper) { return GammaCDF(x, a, rate, upper); })},
      {"GammaINV",
       routine(+[](D p, D a, D rate, Boolean upper) { return GammaINV(p, a, rate, upper); })},
      {"GammaVAL", routine(GammaVAL)},
      {"StdBetaPDF", routine(+[](D u, D a, D b) { return StdBetaPDF(u, a, b); })},
      {"BetaPDF", routine(BetaPDF)},
      {"bratio", routine(bratio)},
      {"cumbet", routine(cumbet)},
      {"cdfbet", routine(+[](S which, D& p, D& q, D& x, D& y, D& a, D& b, S& status, D& bound) {
         cdfbet(which, p, q, x, y, a, b, status, bound);
       })},
      {"BetaCDF", routine(+[](D x, D a, D b, Boolean upper) { return BetaCDF(x, a, b, upper); })},
      {"PPFBET",
       routine(+[](D p, D a, D b, D tol, S& ier, D& x) { PPFBET(p, a, b, tol, ier, x); })},
      {"BetaINV", routine(+[](D p, D a, D b, Boolean upper) { return BetaINV(p, a, b, upper); })},
      {"BetaVAL", routine(BetaVAL)},
      {"CalcJohnson", routine(CalcJohnson)},
      {"SUFIT", routine(SUFIT)},
      {"SBFIT", routine(SBFIT)},
      {"SBMOM", routine(+[](D gamma, D delta) {
         RawMoments mu{};
         Boolean fault;
         std::string message;
         SBMOM(gamma, delta, mu, fault, message);
         return Values{mu[1], fault, message};
       })},
      {"curveMoments",
       routine(+[](const JohnsonParams& c) { return laws::Johnson(c).curveMoments(); })},
      {"JohnsonPDF", routine(JohnsonPDF)},
      {"jPDF", routine(jPDF)},
      {"JohnsonCDF", routine(JohnsonCDF)},
      {"JohnsonINV", routine(JohnsonINV)},
      {"JohnsonVal", routine(JohnsonVal)},
      {"JohnsontoNormal", routine(JohnsontoNormal)},
      {"NormaltoJohnson", routine(NormaltoJohnson)},
      {"SNV", routine(SNV)},
      {"AJV", routine(AJV)},
      {"CreateHistogramArrays", routine(CreateHistogramArrays)},
      {"HistogramPDF", routine(HistogramPDF)},
      {"HistogramCDF", routine(HistogramCDF)},
      {"HistogramINV", routine(HistogramINV)},
      {"HistogramVAL", routine(HistogramVAL)},
  };
  return all;
}

namespace {

TEST(Routines, AnswerTheRowsOfData) {
  int rows = 0;
  for (const auto& file : std::filesystem::directory_iterator(PALVEX_TEST_DATA "/routines")) {
    forEachLine("routines/" + file.path().filename().string(), [&](Row& row) {
      ++rows;
      const std::string name = row.word();
      const Values given = row.values();
      expectOutcome(row, [&] { return call(name, given); });
    });
  }
  EXPECT_GT(rows, 850);
}

TEST(Routines, AgreeWithHighPrecisionReferences) {
  for (const auto& row : table("closed_forms.csv")) {
    const Values given(row.begin() + 1, row.end() - 2);
    const double expected = (row.end() - 2)->toDouble();
    EXPECT_NEAR(call(row[0].toText(), given)[0].toDouble(), expected, row.back().toDouble())
        << row[0].toText() << shown(row[1]);
  }
  const auto near = [](const char* routine, double x, bool upper, double expected) {
    const double found = call(routine, {x, upper})[0].toDouble();
    const bool subnormal = std::abs(expected) < std::numeric_limits<double>::min();
    EXPECT_TRUE(subnormal || relativeError(found, expected) <= 4e-15) << routine << ' ' << x;
  };
  for (const auto& row : table("normal.csv")) {
    const double x = row[1].toDouble();
    if (row[0] == Variant("cdf")) {
      near("NormalCDF", x, false, row[2].toDouble());
      near("NormalCDF", x, true, row[3].toDouble());
    } else {
      near("NormINV16", x, false, row[2].toDouble());
      EXPECT_EQ(call("NormalINV", {x, true})[0],
                Variant(-call("NormalINV", {x, false})[0].toDouble()));
    }
  }
}

}  // namespace
}  // namespace palvex::script
