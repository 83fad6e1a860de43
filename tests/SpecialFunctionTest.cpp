// The special functions: references of high precision, identities, and the searches request by
// request.

#include <array>
#include <cmath>
#include <fstream>
#include <functional>
#include <limits>
#include <numbers>
#include <random>
#include <sstream>
#include <thread>

#include "Routines.h"
#include "families/m_Beta.h"
#include "numerics/m_BetaInverse.h"
#include "numerics/m_GammaFunctions.h"
#include "numerics/m_Integration.h"
#include "numerics/m_MathUtil.h"
#include "numerics/m_RootFinding.h"

namespace palvex::script {
namespace {

double number(const char* routine, const Values& given, std::size_t answer = 0) {
  return call(routine, given).at(answer).toDouble();
}

/// A published formula in double arithmetic against data/formulas: `ulps` roundings of the formula
/// itself, times `amplification` where an exponential magnifies them, and `trueError` more from the
/// formula to the true function.
struct Formula {
  const char* name;
  const char* routine;
  double ulps;
  double trueError;
  double (*amplification)(double a, double x) = [](double, double) { return 0.0; };
};

TEST(SpecialFunctions, AgreeWithThePublishedFormulas) {
  const auto square = [](double a, double) { return a * a; };
  const Formula formulas[] = {
      {"rlog", "rlog", 4, 1.3e-15},
      {"rlog1", "rlog1", 6, 1e-15},
      {"rexp", "rexp", 2, 3e-16},
      {"alnrel", "alnrel", 3, 3e-16},
      {"erf", "erf", 3, 1e-15},
      {"erfc0", "erfc1", 4, 1.2e-15, square},
      {"erfc1", "erfc1", 4, 1.2e-15, square},
      {"gamma", "gamma", 6, 3e-6,
       [](double a, double) { return std::abs(a) < 15 ? 0 : std::lgamma(std::abs(a)); }},
      {"gamln", "gamln", 4, 1.6e-14},
      {"gamln1", "gamln1", 4, 2.2e-15},
      {"gam1", "gam1", 8, 2.2e-15},
      {"rcomp", "rcomp", 7, 6e-15,
       [](double a, double x) {
         return a < 20 ? a * std::abs(std::log(x)) + x + (a < 15 ? 0 : std::lgamma(a))
                       : x - a - a * std::log(x / a) + std::abs(x - a);
       }},
  };
  for (const Formula& formula : formulas) {
    const auto rows = table(std::string("formulas/") + formula.name + ".csv");
    EXPECT_GE(rows.size(), 2000U);
    for (const auto& row : rows) {
      Values given(row.begin(), row.end() - 2);
      const double a = given[0].toDouble();
      const double tolerance =
          formula.ulps * 2.3e-16 * (1 + formula.amplification(a, given.back().toDouble()));
      if (formula.routine == std::string("erfc1"))
        given.insert(given.begin(), formula.name[4] - '0');
      const double value = number(formula.routine, given);
      const double expected = (row.end() - 2)->toDouble();
      const double away = row.back().toDouble();
      EXPECT_LE(relativeError(value, expected), tolerance) << formula.name << ' ' << a;
      EXPECT_LE(std::abs(value / expected - (1 + away)), tolerance + formula.trueError)
          << formula.name << ' ' << a;
      // The true error of gamma is as large as that only for negative arguments.
      EXPECT_TRUE(formula.routine != std::string("gamma") || a < 0 || std::abs(away) <= 6e-15) << a;
    }
  }
}

TEST(SpecialFunctions, ATieOfZerosGivesTheSecond) {
  for (auto* rule : {&m_MathUtil::dmin1, &m_MathUtil::dmax1}) {
    EXPECT_TRUE(std::signbit(rule(0.0, -0.0)));
    EXPECT_FALSE(std::signbit(rule(-0.0, 0.0)));
  }
}

TEST(SpecialFunctions, GammaRatioAndItsInverseAgreeWithReferences) {
  const auto ratios = table("gratio.csv");
  EXPECT_GE(ratios.size(), 3900U);
  for (const auto& row : ratios) {
    for (const std::size_t tail : {0U, 1U}) {
      const double tolerance = row[4 + tail].toDouble() <= 100 ? 2e-14 : 5e-13;
      EXPECT_LE(relativeError(number("gratio", {row[0], row[1], 0, 0, 0}, tail),
                              row[2 + tail].toDouble()),
                tolerance)
          << shown(row[0]) << ' ' << shown(row[1]);
    }
  }
  const auto quantiles = table("gaminv.csv");
  EXPECT_GE(quantiles.size(), 3900U);
  for (const auto& row : quantiles) {
    const Values found = call("gaminv", {row[0], 0, -1, row[1], row[2], 0});
    EXPECT_TRUE(found[1].toDouble() >= 0 && found[1].toDouble() <= 4)
        << shown(row[0]) << ' ' << shown(row[1]);
    const m_Gamma::IncompleteGamma shape(row[0].toDouble());
    for (const double x :
         {found[0].toDouble(), shape.quantile(row[1].toDouble(), row[2].toDouble())}) {
      EXPECT_LE(relativeError(x, row[3].toDouble()), 3e-15 * (1 + row[4].toDouble()))
          << shown(row[0]) << ' ' << shown(row[1]) << ' ' << shown(row[2]);
    }
  }
}

// Outside of their domain they have no value; at its ends the mass is in one point.
TEST(SpecialFunctions, InversesAtTheEndsOfTheirDomain) {
  constexpr double inf = std::numeric_limits<double>::infinity();
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    double a, b, p, q, x;
  } betas[] = {{inf, 2, 0.3, 0.7, 1},  {2, inf, 0.3, 0.7, 0},  {inf, inf, 0.3, 0.7, 0.5},
               {2, 3, -0.1, 1.1, nan}, {2, 3, 1.1, -0.1, nan}, {2, 3, nan, 0.5, nan},
               {0, 3, 0.3, 0.7, nan},  {2, -1, 0.3, 0.7, nan}};
  for (const auto& [a, b, p, q, x] : betas) {
    const m_Beta::Fraction found = m_Beta::InverseBeta(a, b)(p, q);
    EXPECT_TRUE(std::isnan(x) ? std::isnan(found.x) && std::isnan(found.y)
                              : found.x == x && found.y == 1 - x)
        << a << ' ' << b << ' ' << p;
  }
  const struct {
    double a, p, q, x;
  } gammas[] = {{inf, 0.3, 0.7, inf}, {2, -0.1, 1.1, nan}, {2, 1.1, -0.1, nan},
                {-1, 0.3, 0.7, nan},  {2, nan, 0.7, nan},  {2, 0, 1, 0}};
  for (const auto& [a, p, q, x] : gammas) {
    const double found = m_Gamma::IncompleteGamma(a).quantile(p, q);
    EXPECT_TRUE(std::isnan(x) ? std::isnan(found) : found == x) << a << ' ' << p;
  }
}

using Tails = std::array<double, 2>;
Tails betaRatio(double a, double b, double x, double y) {
  const Values found = call("bratio", {a, b, x, y, 0, 0, -1});
  EXPECT_EQ(found[2], Variant(0)) << a << ' ' << b << ' ' << x << ' ' << y;
  return {found[0].toDouble(), found[1].toDouble()};
}

TEST(SpecialFunctions, BetaRatioAgreesWithReferences) {
  std::ifstream data(PALVEX_TEST_DATA "/beta_ratio.txt");
  int points = 0;
  for (std::string line; std::getline(data, line); ++points) {
    std::istringstream fields(line);
    double a = 0, b = 0, u = 0;
    std::string side;
    Tails tail{}, conditioning{};
    fields >> a >> b >> u >> side >> tail[0] >> tail[1] >> conditioning[0] >> conditioning[1];
    ASSERT_TRUE(fields) << line;
    const Tails found = side == "x" ? betaRatio(a, b, u, 1 - u) : betaRatio(a, b, 1 - u, u);
    for (const std::size_t i : {0u, 1u}) {
      const double k = conditioning[i];
      double allowed = k <= 100 ? 2e-14 : 1e-12 + 4e-16 * k;
      if (tail[i] < 1e-300) allowed = 1e-8;
      EXPECT_NEAR(found[i] / tail[i], 1, allowed) << i << ' ' << line;
    }
    const double k = conditioning[tail[0] < tail[1] ? 0 : 1];
    if (std::min(tail[0], tail[1]) < 1e-300 || k < 1e-10) continue;
    const m_Beta::Fraction at = m_Beta::InverseBeta(a, b)(tail[0], tail[1]);
    EXPECT_NEAR((side == "x" ? at.x : at.y) / u, 1, 1e-13 * std::max(1.0, 1 / k)) << line;
  }
  EXPECT_GT(points, 3200);
}

TEST(SpecialFunctions, BetaRatioHoldsItsIdentities) {
  std::mt19937_64 random(708);
  const auto uniform = [&](double low, double high) {
    return std::uniform_real_distribution(low, high)(random);
  };
  const auto magnitude = [&](double low, double high) { return std::pow(10, uniform(low, high)); };
  for (int i = 0; i < 2000; ++i) {
    const double a = magnitude(-3, 2.5);
    const double b = magnitude(-3, 2.5);
    const double x = i % 2 == 0 ? uniform(0, 1) : magnitude(-9, 0);
    const double y = 1 - x;
    SCOPED_TRACE(testing::Message() << a << ' ' << b << ' ' << x);
    const auto [lower, upper] = betaRatio(a, b, x, y);
    EXPECT_NEAR(lower + upper, 1, 3e-16);
    if (lower < 1e-290) continue;
    EXPECT_NEAR(lower, betaRatio(b, a, y, x)[1], 1e-14 * lower);
    const double power = std::exp(a * std::log(x) + b * std::log1p(-x) + std::lgamma(a + b) -
                                  std::lgamma(a) - std::lgamma(b));
    const double allowed = 1e-12 * (lower + power / a);
    EXPECT_NEAR(lower, betaRatio(a + 1, b, x, y)[0] + power / a, allowed);
    EXPECT_NEAR(lower, betaRatio(a, b + 1, x, y)[0] - power / b, allowed + 1e-12 * power / b);
    // What is prepared for a pair of shapes gives the same bits as two fresh ones.
    m_Beta::Shapes shapes(a, b);
    const m_Beta::InverseBeta inverse(a, b);
    for (const double kept : {x, 0.3, x}) {
      if (a == 1 || b == 1) continue;
      EXPECT_EQ(m_Beta::BetaCDF(kept, shapes, false), m_Beta::BetaCDF(kept, a, b, false));
      EXPECT_EQ(inverse.ratio()(kept, 1 - kept).lower, betaRatio(a, b, kept, 1 - kept)[0]);
    }
  }
  // At any probabilities the inverse gives two parts that rise.
  const double shapes[]{5e-324, 1e-300, 1e-100, 1e-17, 1e-15, 1e-8,  0.1,    0.5,
                        1,      1.5,    7.99,   15,    39.5,  101,   1e4,    1e8,
                        1e15,   1e17,   1e50,   1e100, 1e154, 1e300, 1.7e308};
  for (const double a : shapes) {
    for (const double b : shapes) {
      const m_Beta::InverseBeta inverse(a, b);
      m_Beta::Fraction previous{0, 1};
      for (const double p : {0.0, 5e-324, 1e-300, 1e-30, 1e-16, 1e-3, 0.1, 0.4, 0.5, 0.9, 1.0}) {
        const m_Beta::Fraction at = inverse(p, 1 - p);
        SCOPED_TRACE(testing::Message() << a << ' ' << b << ' ' << p);
        EXPECT_NEAR(at.x + at.y, 1, 2.3e-16);
        EXPECT_GE(at.x, previous.x * (1 - 1e-15));
        previous = at;
      }
    }
  }
}

TEST(Integration, KnownIntegrals) {
  const struct {
    const char* what;
    double (*f)(double);
    std::vector<double> breaks;
    double integral;
  } cases[] = {
      {"polynomial", [](double x) { return 5 * x * x * x * x; }, {0, 2}, 32},
      {"reaching backwards", [](double x) { return x; }, {-3, 1}, -4},
      {"bell",
       [](double x) { return std::exp(-x * x); },
       {-10, 0, 10},
       std::sqrt(std::numbers::pi)},
      {"narrow peak",
       [](double x) { return 1e-4 / (x * x + 1e-8); },
       {-1, 0.3, 1},
       2 * std::atan(1e4)},
      {"waves", [](double x) { return std::cos(100 * x); }, {0, 0.1}, std::sin(10.0) / 100},
      {"kink", [](double x) { return std::abs(x - 0.3); }, {0, 1}, 0.29},
      {"root at the end", [](double x) { return std::sqrt(x); }, {0, 1}, 2.0 / 3},
      {"singular end", [](double x) { return 1 / std::sqrt(x); }, {0, 1}, 2},
      {"step", [](double x) { return x < 0.3 ? 0.0 : 1.0; }, {0, 1}, 0.7},
      {"nothing", [](double) { return 0.0; }, {0, 1}, 0},
      {"minute", [](double x) { return 1e-300 * x; }, {0, 1}, 5e-301},
      {"a pole", [](double x) { return 1 / (x - 0.3); }, {0, 1}, HUGE_VAL},
      {"no number", [](double x) { return std::log(x); }, {-1, 1}, HUGE_VAL},
      {"without an end", [](double) { return 1.0; }, {0, HUGE_VAL}, HUGE_VAL},
  };
  for (const auto& c : cases) {
    double found = HUGE_VAL;
    const int fault = faultNumber([&] { return found = m_Integration::integrate(c.f, c.breaks); });
    EXPECT_EQ(fault, c.integral == HUGE_VAL ? 6 : 0) << c.what;
    if (fault == 0) {
      EXPECT_NEAR(found, c.integral, 1e-12 * std::abs(c.integral)) << c.what;
    }
  }
}

// ---- searches ----

using Function = std::function<double(double)>;
const std::map<std::string, Function> functions{
    {"rising", [](double x) { return x - 2; }},
    {"falling", [](double x) { return 2 - x; }},
    {"identity", [](double x) { return x; }},
    {"below-at-0", [](double x) { return x == 0 ? -1 : 1; }},
    {"above-at-0", [](double x) { return x == 0 ? 1 : -1; }},
    {"minus-1-2", [](double x) { return x == 0 ? -1 : -2; }},
    {"minus-2-1", [](double x) { return x == 0 ? -2 : -1; }},
    {"plus-1-2", [](double x) { return x == 0 ? 1 : 2; }},
    {"plus-2-1", [](double x) { return x == 0 ? 2 : 1; }},
    {"huge", [](double x) { return x > 1.7e308 ? 1 : -1; }},
    {"nan", [](double) { return std::nan(""); }},
    {"infinite", [](double x) { return x == 0 ? -HUGE_VAL : 1; }},
    {"linear", [](double x) { return 3 * x - 2; }},
    {"cosine", [](double x) { return std::cos(x); }},
    {"flat", [](double x) { return std::pow(x, 5) + 1e-9; }},
    {"steep", [](double x) { return std::exp(20 * x) - 1000; }},
    {"step", [](double x) { return x < 0.3 ? -1.0 : 1.0; }},
    {"vanishing", [](double x) { return std::pow(x, 5); }},
    {"complement", [](double x) { return 1 - x; }},
    {"logarithm", [](double x) { return std::log(x) + 50; }},
};

/// Status, both flags, the result (of dzror both ends of the bracket), then what f was asked for.
Values search(const std::string& routine, const Function& f, const Values& given) {
  const bool bounded = routine == "dinvr";
  std::int16_t status = 0;
  double x = given.at(2).toDouble();
  double fx = 0;
  double low = 0;
  double high = 0;
  Boolean qleft, qhi;
  if (bounded)
    m_RootFinding::dstinv(given[0], given[1], 0.5, 0.5, 5, 1e-50, 1e-8);
  else
    m_RootFinding::dstzr(given[0].toDouble(), given[1].toDouble(), 1e-50, x);
  Values requests;
  const std::size_t patience = bounded ? 8 : 1000;
  for (;;) {
    if (bounded)
      m_RootFinding::dinvr(status, x, fx, qleft, qhi);
    else
      m_RootFinding::dzror(status, x, fx, low, high, qleft, qhi);
    if (status != 1) break;
    requests.emplace_back(x);
    if (requests.size() == patience) break;
    fx = f(x);
  }
  Values answer{status, qleft, qhi};
  if (bounded)
    answer.emplace_back(x);
  else
    answer.insert(answer.end(), {low, high});
  answer.insert(answer.end(), requests.begin(), requests.end());
  return answer;
}

TEST(RootFinding, AsksForWhatThePublicationAsks) {
  forEachLine("searches.txt", [](Row& row) {
    const std::string routine = row.word();
    const Function& f = functions.at(row.word());
    const Values given = row.values();
    std::size_t answers = 0;
    Row counted = row;
    while (counted.skip("->") || !counted.empty()) answers += counted.word()[0] == '~' ? 0 : 1;
    expectOutcome(row, [&] {
      const Values found = search(routine, f, given);
      EXPECT_EQ(found.size(), answers);
      return found;
    });
  });
  m_RootFinding::dstzr(0, 1, 1e-50, 1e-8);
  EXPECT_EQ(m_RootFinding::ftol(-4), 2e-8);
  EXPECT_EQ(m_RootFinding::ftol(0), 0.5e-50);
}

TEST(RootFinding, LabelIsShared) {
  search("dinvr", functions.at("below-at-0"), {1e-100, 1e100, 5});
  std::int16_t status = 1;
  double x = 7;
  double xlo = 8;
  double xhi = 9;
  Boolean qleft, qhi;
  m_RootFinding::dzror(status, x, 1, xlo, xhi, qleft, qhi);  // the bounded search left its point 6
  EXPECT_EQ((std::array{double(status), x, xlo, xhi}), (std::array{1.0, 7.0, 8.0, 9.0}));

  m_RootFinding::dstinv(-5, 5, 0.5, 0.5, 5, 1e-50, 1e-8);
  m_RootFinding::dstzr(1, 2, 1e-50, 1e-8);
  status = 0;
  m_RootFinding::dzror(status, x, 0, xlo, xhi, qleft, qhi);  // leaves point 1
  EXPECT_EQ(x, 1);
  m_RootFinding::dinvr(status, x, 0, qleft, qhi);
  EXPECT_EQ(x, 5);  // point 1 of the bounded search: f at big

  m_RootFinding::dinvr(status, x, -1, qleft, qhi);  // point 2
  m_RootFinding::dinvr(status, x, -1, qleft, qhi);  // point 3, downwards
  m_RootFinding::dinvr(status, x, 1, qleft, qhi);   // point 5, bracket
  status = 2;
  m_RootFinding::dinvr(status, x, 1, qleft,
                       qhi);  // point 6 with another status than 1 ends the search
  EXPECT_EQ((std::array{double(status), x}), (std::array{0.0, 0.0}));

  // A resume without a start; the label is the thread's.
  std::thread([&] {
    status = 1;
    const auto fault = faultOf([&] { return m_RootFinding::dinvr(status, x, 0, qleft, qhi), 0; });
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->number(), 13);
    EXPECT_EQ(routinesOf(*fault), "m_RootFinding.dinvr");
    EXPECT_EQ(
        faultNumber([&] { return m_RootFinding::dzror(status, x, 0, xlo, xhi, qleft, qhi), 0; }),
        13);
    EXPECT_EQ(faultNumber([&] { return m_RootFinding::dstinv("none", 1, 1, 1, 1, 1, 1), 0; }), 13);
  }).join();
}

}  // namespace
}  // namespace palvex::script
