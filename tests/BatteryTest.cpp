// What holds for every type: one battery over laws of all ten, then over random ones of each.

#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <random>

#include "Allocation.h"
#include "Routines.h"
#include "engine/c_Distribution.h"
#include "families/m_Histogram.h"
#include "families/m_Johnson.h"
#include "laws/Beta.h"
#include "laws/Gamma.h"
#include "laws/Johnson.h"
#include "laws/Lognormal.h"
#include "laws/Normal.h"
#include "laws/Weibull.h"

namespace palvex::script {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct Law {
  std::string type;
  Values parameters;
  double unit = 1;          // of the variable whose density is reported, see below
  double accuracy = 1e-13;  // of a quantile, in probability
};

std::string name(const Law& law) {
  std::string text = law.type;
  for (const Variant& parameter : law.parameters) text += ' ' + shown(parameter);
  return text;
}

/// Sets type, parameters and limits, and validates; the sentence about a fault.
std::string set(c_Distribution& d, const Law& law, const Variant& ltl = {},
                const Variant& utl = {}) {
  d.distType(law.type);
  Variant* const members[] = {&d.param1, &d.param2, &d.param3, &d.param4};
  for (std::size_t i = 0; i < 4; ++i)
    *members[i] = i < law.parameters.size() ? law.parameters[i] : Variant{};
  d.ltl = ltl;
  d.utl = utl;
  std::string cause;
  d.ParamsOK(cause);
  return cause;
}

Limits limitsOf(const c_Distribution& d) {
  return limitsFrom(d.ltl, d.utl);
}

// The reported density is a true one, except for types whose density is that of a standardised
// variable: (X - minimum) / scale for Gamma, (X - minimum) / (maximum - minimum) for Beta,
// (X - xi) / lambda for Johnson's SB and SU. The probability of a gamma law takes the scale for a
// rate, so that only one without a minimum and with the scale 1 has its own.
std::vector<Law> examples() {
  std::vector<Law> all{
      {"Normal", {1, 2}},
      {"Uniform", {-2, 7}},
      {"Triangular", {-1, 4, 6}},
      {"Lognormal", {1, 0.5, -2}},
      {"Exponential", {0.4, 3}},
      {"Weibull", {2.5, 3, 1}},
      {"Gamma", {0.3, 1, 0}},
      {"Gamma", {2.5, 1, 0}},
      {"Gamma", {100, 1, 0}},
      {"Beta", {2, 3, 10, 14}, 4, 2e-8},
      {"Histogram", {block(3, {0, 1, 2, 2, 3, 1, 3, 5, 4}), "Bins and Counts (3 cols)"}},
  };
  for (const auto& [skewness, kurtosis] :
       {std::pair{-1.2, 8.0}, {0.9, 3.4}, {1.5, 7.250325109425869}}) {
    m_Johnson::JohnsonParams c;
    CalcJohnson(10, 2, skewness, kurtosis, c);
    all.push_back(
        {"Johnson", {10, 2, skewness, kurtosis}, c.typeName == "SL" ? 1 : c.lambda, 1e-12});
  }
  return all;
}

/// The area below a series by the trapezoidal rule.
double area(const c_Distribution& d, double (c_Distribution::*series)(std::int16_t) const) {
  double sum = 0;
  for (std::int16_t i = 2; i <= d.NumPoints(); ++i) {
    const auto before = static_cast<std::int16_t>(i - 1);
    sum += (d.GraphX(i) - d.GraphX(before)) * ((d.*series)(i) + (d.*series)(before)) / 2;
  }
  return sum;
}

TEST(Battery, QuantileProbabilityAndDensityBelongTogether) {
  for (const Law& law : examples()) {
    SCOPED_TRACE(name(law));
    c_Distribution d;
    ASSERT_EQ(set(d, law), "");
    for (int i = 1; i < 1000; ++i) {
      const double x = d.RandVal(i / 1000.0);
      EXPECT_NEAR(d.cdf(x), i / 1000.0, law.accuracy);
      if (i % 20 != 7) continue;
      const double h = 1e-3 * (d.RandVal((i + 5) / 1000.0) - d.RandVal((i - 5) / 1000.0));
      const double slope = (d.cdf(x + h) - d.cdf(x - h)) / (2 * h) * law.unit;
      EXPECT_NEAR(d.pdf(x), slope, 1e-5 * slope) << x;
    }
    // Outside the support: nothing, also where the end is one of the plot range for any spread.
    for (const double direction : {-1.0, 1.0}) {
      const auto end = [&](double spread) {
        return direction < 0 ? d.XMin(spread) : d.XMax(spread);
      };
      if (end(10) != end(11)) continue;
      for (const double away : {1e-9, 0.5, 1e6}) {
        EXPECT_EQ(d.pdf(end(10) + direction * away), 0);
        EXPECT_EQ(d.pdf(end(10) + direction * away, true), 0);
      }
    }
  }
}

TEST(Battery, DensityDrawsAndAreasKeepToTheLimits) {
  for (const Law& law : examples()) {
    SCOPED_TRACE(name(law));
    c_Distribution whole;
    ASSERT_EQ(set(whole, law), "");
    const double a = whole.RandVal(0.2);
    const double b = whole.RandVal(0.7);
    const double slack = 1e-12 * (std::abs(a) + std::abs(b)) + law.accuracy;
    const struct {
      Variant ltl, utl;
      double kept;
      double (*probability)(double p);  // of the draw at p
    } cases[] = {
        {{}, {}, 1, [](double p) { return p; }},
        {a, {}, 0.8, [](double p) { return 0.2 + 0.8 * p; }},
        {"none", b, 0.7, [](double p) { return 0.7 * p; }},
        {a, b, 0.5, [](double p) { return 0.2 + 0.5 * p; }},
        {b, a, 0.5, [](double p) { return p <= 0.4 ? p * 0.5 : 0.7 + (p - 0.4) * 0.5; }},
    };
    for (const auto& c : cases) {
      c_Distribution d;
      ASSERT_EQ(set(d, law, c.ltl == Variant("none") ? Variant{} : c.ltl, c.utl), "");
      const Limits limits = limitsOf(d);
      constexpr int n = 20'000;
      double sum = 0;
      for (int i = 0; i < n; ++i) {
        const double p = (i + 0.5) / n;
        const double x = d.RandVal(p);
        sum += x;
        if (i % 20 != 0) continue;
        EXPECT_TRUE(!limits.cut(x) || !limits.cut(x + slack) || !limits.cut(x - slack)) << x;
        EXPECT_NEAR(d.cdf(x), c.probability(p), law.accuracy) << p;
        const double y = whole.RandVal(p);
        EXPECT_EQ(d.pdf(y), limits.cut(y) ? 0 : whole.pdf(y)) << y;
        EXPECT_EQ(d.pdf(y, true), whole.pdf(y)) << y;
      }
      EXPECT_NEAR(sum / n, d.mean(), 5e-4 * d.StDev());
      const bool pole = law.parameters[0] == Variant(0.3);
      if (pole) continue;
      d.ResizeArrays(20001);
      d.CreateGraphData(whole.XMin(14), whole.XMax(14));
      EXPECT_NEAR(area(d, &c_Distribution::GraphOL), law.unit, 2e-3 * law.unit);
      EXPECT_NEAR(area(d, &c_Distribution::GraphPDF), c.kept * law.unit, 2e-3 * law.unit);
    }
  }
}

// While Dynamic is false, evaluations allocate nothing and ask the host nothing.
TEST(Battery, NoAllocationAndNoCallOfTheHost) {
  for (const Law& law : examples()) {
    c_Distribution whole;
    ASSERT_EQ(set(whole, law), "");
    const double low = whole.RandVal(0.2);
    const double high = whole.RandVal(0.7);
    const double from = whole.RandVal(0.1);
    const double to = whole.RandVal(0.9);
    const struct {
      const char* what;
      Variant lower, upper;
    } limits[] = {{"none", {}, {}},
                  {"lower", low, {}},
                  {"both", low, high},
                  {"reversed", high, low},
                  {"numeric text", Variant(low).toText(), Variant(high).toText()},
                  {"infinity", "-Infinity", high}};
    for (const auto& [what, lower, upper] : limits) {
      const auto first = law.type == "Histogram" ? nullptr : cell(law.parameters[0]);
      const auto upperCell = cell(upper);
      Law inCells = law;
      if (first) inCells.parameters[0] = first;
      c_Distribution d;
      ASSERT_EQ(set(d, inCells, lower, upperCell), "") << name(law) << what;
      const int reads = (first ? first->reads : 0) + upperCell->reads;
      const std::size_t allocated = allocation::made;
      double sum = 0;
      const int n = law.type == "Normal" ? 1'000'000 : 10'000;
      for (int i = 0; i < n; ++i) {
        const double p = (i + 0.5) / n;
        const double x = from + (to - from) * p;
        sum += d.pdf(x) + d.cdf(x) + d.RandVal(p);
      }
      EXPECT_EQ(allocation::made - allocated, 0u) << name(law) << ", limits: " << what;
      EXPECT_EQ((first ? first->reads : 0) + upperCell->reads, reads) << name(law) << what;
      EXPECT_TRUE(std::isfinite(sum)) << name(law) << ", limits: " << what;
    }
  }
}

// ---- random laws ----

class Chance {
 public:
  double uniform(double from, double to) {
    return std::uniform_real_distribution(from, to)(generator_);
  }
  double magnitude(double low, double high) { return std::pow(10, uniform(low, high)); }
  bool oneIn(int n) { return generator_() % static_cast<unsigned>(n) == 0; }
  /// A probability in (0, 1), often close to an end.
  double probability() {
    const double small = magnitude(-14, 0);
    return oneIn(2) ? uniform(0.001, 0.999) : oneIn(2) ? small : 1 - small;
  }

 private:
  std::mt19937_64 generator_{20260714};
};

const char* const types[] = {"Normal",  "Uniform", "Triangular", "Lognormal", "Exponential",
                             "Weibull", "Beta",    "Gamma",      "Johnson",   "Histogram"};

Law randomLaw(const std::string& type, Chance& r) {
  const double a = r.uniform(-10, 10);
  const double width = r.magnitude(-3, 3);
  if (type == "Normal") return {type, {a, width}};
  if (type == "Uniform") return {type, {a, a + width}};
  if (type == "Triangular") return {type, {a, a + width * r.uniform(0, 1), a + width}};
  if (type == "Lognormal") return {type, {r.uniform(-5, 5), r.magnitude(-3, 0.6), a}};
  if (type == "Exponential") return {type, {width, a}};
  if (type == "Weibull") return {type, {r.magnitude(-0.7, 2), width, a}};
  if (type == "Gamma") return {type, {r.magnitude(-1.5, 3), width, a}};
  if (type == "Beta") return {type, {r.magnitude(-1.5, 2), r.magnitude(-1.5, 2), a, a + width}};
  if (type == "Johnson") {
    // Every third curve on the lognormal line, the others well above and below it.
    const double skewness = r.uniform(0.1, 2) * (r.oneIn(2) ? 1 : -1);
    const double square = skewness * skewness;
    const double w = 2 * std::cosh(std::acosh(1 + square / 2) / 3) - 1;
    const double line = w * w * (3 + w * (2 + w)) - 3;
    const double kinds[] = {line, line + r.uniform(0.3, 30),
                            square + 1 + r.uniform(0.1, 0.8) * (line - square - 1)};
    return {type, {a, width, skewness, kinds[static_cast<std::size_t>(r.uniform(0, 3))]}};
  }
  Values cells;
  double edge = r.uniform(-5, 5);
  for (int i = 0; i < 20; ++i) {  // bins with gaps
    const double lower = edge + (r.oneIn(2) ? 0 : r.magnitude(-3, 0));
    edge = lower + r.magnitude(-3, 0);
    cells.insert(cells.end(), {lower, edge, r.uniform(0, 1)});
  }
  return {type, {block(3, cells), "Bins and Counts (3 cols)"}};
}

/// What a call gives, unless it raises an error.
template <class Call>
std::optional<double> valueOf(Call&& call) {
  std::optional<double> value;
  static_cast<void>(faultOf([&] { return *(value = call()); }));
  return value;
}

/// A random law with random limits of every kind that pass the validation; no law in vain.
bool randomise(c_Distribution& d, const std::string& type, Chance& r) {
  const Law law = randomLaw(type, r);
  const auto passes = [&] { return set(d, law, d.ltl, d.utl).empty(); };
  d.ltl = d.utl = {};
  if (faultNumber(passes) != 0 || !passes()) return false;
  const auto draw = [&] { return d.RandVal(r.probability()); };
  const auto x = valueOf(draw);
  const bool narrow = r.oneIn(3) && x;
  const auto y = narrow ? std::optional(*x + d.StDev() * r.magnitude(-6, 0)) : valueOf(draw);
  if (!x || !y) return false;
  if (!r.oneIn(3)) d.ltl = *x;
  if (!r.oneIn(3)) d.utl = *y;
  return passes();
}

void expectAgreement(const laws::Moments& a, const laws::Moments& b, const std::string& what) {
  EXPECT_NEAR(a.mean, b.mean, 1e-10 * b.sd + 4e-16 * std::abs(b.mean)) << what;
  EXPECT_NEAR(a.sd, b.sd, 1e-10 * b.sd) << what;
}

std::string describe(const c_Distribution& d) {
  return d.distType() + ' ' + shown(d.param1) + ' ' + shown(d.param2) + ' ' + shown(d.param3) +
         ' ' + shown(d.param4) + " in [" + shown(d.ltl) + ", " + shown(d.utl) + ']';
}

TEST(RandomLaws, ClosedFormAndIntegrationAgreeAndPlotsBeginBelowTheirEnd) {
  for (const std::string type : types) {
    Chance random;
    int compared = 0;
    for (int i = 0; i < 1500 && compared < 600; ++i) {
      c_Distribution d;
      if (!randomise(d, type, random)) continue;
      const auto mean = valueOf([&] { return d.mean(); });
      if (!mean) {
        // A limit at the very end of the support: both say that nothing is kept.
        EXPECT_EQ(faultNumber([&] { return d.mean(); }), fault::divisionByZero) << describe(d);
        EXPECT_EQ(faultNumber([&] { return d.CalcMean(); }), fault::divisionByZero) << describe(d);
        continue;
      }
      const double integrated = d.CalcMean();
      expectAgreement({*mean, d.StDev()}, {integrated, d.CalcStdev(integrated)}, describe(d));
      const double from = d.XMin();
      const double to = d.XMax();
      EXPECT_TRUE(std::isfinite(from) && std::isfinite(to) && from < to) << describe(d);
      ++compared;
    }
    EXPECT_GE(compared, 500) << type;
  }
}

// ---- moments ----

TEST(Moments, AgreeWithHighPrecisionReferences) {
  std::map<std::string, int> rows;
  for (const auto& row : table("moments.csv")) {
    ASSERT_EQ(row.size(), 9U);
    Law law{row[0].toText(), {row[1], row[2], row[3], row[4]}};
    if (law.type == "Histogram") {
      std::string bins = row[1].toText();
      std::replace(bins.begin(), bins.end(), ':', ' ');
      law.parameters = {Row("{3: " + bins + " }").value(), "Bins and Counts (3 cols)"};
    }
    c_Distribution d;
    ASSERT_EQ(set(d, law, row[5], row[6]), "");
    const laws::Moments reference{row[7].toDouble(), row[8].toDouble()};
    expectAgreement({d.mean(), d.StDev()}, reference, describe(d));
    const double integrated = d.CalcMean();
    expectAgreement({integrated, d.CalcStdev(integrated)}, reference, describe(d));
    ++rows[law.type];
  }
  EXPECT_EQ(rows.size(), 9U);
  for (const auto& [type, count] : rows) EXPECT_GE(count, 20) << type;
}

TEST(Moments, OfJohnsonCurvesAgreeWithHighPrecisionReferences) {
  std::map<std::string, int> rows;
  std::map<std::string, int> closed;
  for (const auto& row : table("johnson_moments.csv")) {
    ASSERT_EQ(row.size(), 9U);
    const auto number = [&](std::size_t i) { return row[i].toDouble(); };
    const std::string type = row[0].toText();
    const laws::Johnson law({number(1), number(2), number(3), number(4), type, 0, ""});
    const Limits limits = limitsFrom(row[5], row[6]);
    const double mean = number(7);
    const double sd = number(8);
    // A limit is a double beside xi: the deviate of one in a far tail is only as good as that.
    const double ulp = 4e-16 * (std::abs(mean) + std::abs(number(4)));
    const auto expectNear = [&](const laws::Moments& got) {
      EXPECT_NEAR(got.mean, mean, 1e-10 * sd + ulp) << type << ' ' << number(1);
      EXPECT_NEAR(got.sd, sd, 1e-10 * sd + ulp) << type << ' ' << number(1);
    };
    expectNear(law.integratedMoments(limits));
    if (const auto found = law.moments(limits)) {
      expectNear(*found);
      ++closed[type];
    }
    ++rows[type];
  }
  for (const char* type : {"SL", "SU", "SB"}) {
    EXPECT_GE(rows[type], 24) << type;
    EXPECT_GE(closed[type], 20) << type;
  }
}

TEST(Moments, OfJohnsonCurvesInOddPlaces) {
  // A long way from the lower end to a narrow law: the fit gives back what was asked for.
  const double cases[][4] = {{0, 1, -2.3, 6.31}, {0, 1, 2.3, 6.31}, {393, 0.073, -2.55, 7.67}};
  for (const auto& [mean, sd, skewness, kurtosis] : cases) {
    m_Johnson::JohnsonParams curve;
    CalcJohnson(mean, sd, skewness, kurtosis, curve);
    ASSERT_EQ(curve.typeName, "SB");
    const laws::Moments integrated = laws::Johnson(curve).integratedMoments({});
    EXPECT_NEAR(integrated.mean, mean, 1e-4 * sd) << skewness;
    EXPECT_NEAR(integrated.sd, sd, 1e-4 * sd) << skewness;
  }
  const laws::Johnson sb({-0.4, 0.8, 5, -1, "SB", 3, ""});
  const laws::Johnson su({0.7, 1.5, 2, 10, "SU", 2, ""});
  const laws::Johnson normal({2, 0, 10, 0, "Normal", 4, ""});
  const Limits far{.lower = 1e30, .upper = {}};
  const Limits above{.lower = 4, .upper = {}};
  EXPECT_NEAR(normal.moments({.lower = 10, .upper = {}}).value().mean, 10 + 2 * std::sqrt(2 / M_PI),
              1e-14);
  for (const auto& law :
       {laws::Johnson({0, 0, 0, 0, "SB", 3, ""}), laws::Johnson(m_Johnson::JohnsonParams{})}) {
    EXPECT_EQ(faultNumber([&] { return law.moments({}).has_value(); }), 11);
    EXPECT_EQ(faultNumber([&] { return law.integratedMoments({}).mean; }), 11);
  }
  EXPECT_EQ(faultNumber([&] { return sb.integratedMoments(above).mean; }), 11);
  EXPECT_EQ(faultNumber([&] { return su.integratedMoments(far).mean; }), 11);
  EXPECT_FALSE(sb.moments(above));
}

TEST(Moments, ClosedFormsAnswerNothingWhereTheyWouldCancel) {
  EXPECT_TRUE(laws::Normal(0, 1).moments({1, 2}));
  EXPECT_TRUE(laws::Gamma(2, 1, 0).moments({0.1, 8}));
  EXPECT_TRUE(laws::Beta(2, 3, 0, 1).moments({0.2, 0.6}));
  EXPECT_TRUE(laws::Lognormal(0, 0.5, 0).moments({1, 2}));
  EXPECT_TRUE(laws::Weibull(2, 1, 0).moments({0.2, 2}));
  EXPECT_FALSE(laws::Normal(0, 1).moments({30, {}}));
  EXPECT_FALSE(laws::Normal(0, 1).moments({1, 1.0001}));
  EXPECT_FALSE(laws::Gamma(2, 1, 0).moments({480, {}}));
  EXPECT_FALSE(laws::Beta(2, 3, 0, 1).moments({0.9999999, {}}));
  EXPECT_FALSE(laws::Lognormal(0, 1e-6, 0).moments({1.000001, {}}));
  EXPECT_FALSE(laws::Weibull(2000, 1, 0).moments({}));
  // exp(s^2) alone overflows from s = 26.7 on; the location makes up for it.
  const auto spread = [](double location, double scale) {
    return laws::Lognormal(location, scale, 0).standardDeviation();
  };
  EXPECT_NEAR(spread(1, 0.5) / (std::exp(1.125) * std::sqrt(std::expm1(0.25))), 1, 1e-15);
  EXPECT_NEAR(spread(-900, 30), 1, 1e-12);
  EXPECT_NEAR(spread(1000, 1e-200) / std::exp(1000 - 200 * std::log(10)), 1, 1e-12);
  EXPECT_EQ(spread(0, 27), infinity);
  EXPECT_EQ(spread(709.1, 1), infinity);
}

// The stable density of a curve is the literal one, standardised or not, wherever that has a value.
TEST(JohnsonDensity, StableAndLiteralAgree) {
  const m_Johnson::JohnsonParams curves[] = {{0.7, 1.5, 2, 10, "SU", 2, ""},
                                             {-0.4, 0.8, 5, -1, "SB", 3, ""},
                                             {1.2, 2, 1, 3, "SL", 1, ""},
                                             {2, 0, 10, 0, "Normal", 4, ""}};
  for (const auto& c : curves) {
    for (double x = -20; x < 40; x += 0.37) {
      const double literal = jPDF(x, c) / (c.typeName == "SU" || c.typeName == "SB" ? c.lambda : 1);
      EXPECT_NEAR(laws::Johnson(c).density(x), literal, 1e-12 * literal) << c.typeName << ' ' << x;
    }
  }
}

TEST(GraphData, HoldsWhereTheFormulaOverflows) {
  for (const Law& law : {Law{"Beta", {1e5, 1e5, 0, 1}},
                         {"Gamma", {1e6, 1, 0}},
                         {"Weibull", {400, 1, 0}},
                         {"Johnson", {0, 1, 0, 6}}}) {
    c_Distribution d;
    ASSERT_EQ(set(d, law), "") << name(law);
    d.ResizeArrays(32766);
    const bool wide = law.type == "Weibull" || law.type == "Johnson";
    d.CreateGraphData(wide ? -1e9 : d.XMin(), wide ? 1e9 : d.XMax());
    if (wide) {
      // Far beyond the double range of the formula: finite, and symmetric for the symmetric curve.
      for (std::int16_t i = 1; i <= d.NumPoints(); ++i)
        EXPECT_TRUE(std::isfinite(d.GraphPDF(i)) && d.GraphPDF(i) >= 0);
      EXPECT_NEAR(d.GraphPDF(1), d.GraphPDF(32766), 1e-9 * d.GraphPDF(1));
    } else {
      EXPECT_NEAR(area(d, &c_Distribution::GraphPDF), 1, 1e-3) << name(law);
    }
  }
}

}  // namespace
}  // namespace palvex::script
