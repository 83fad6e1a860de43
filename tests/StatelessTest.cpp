// The object keeps bands, prepared shapes and fitted curves between calls. Whatever it kept, each
// result must have the bits of the routines that keep nothing, and each error their number, their
// description and their routines in the same order.

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <string>

#include "FakeRange.h"
#include "Fault.h"
#include "engine/c_Distribution.h"
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

namespace palvex {
namespace {

struct Given {
  std::array<double, 4> p;
  Variant ltl, utl;
  m_Johnson::JohnsonParams curve;
  m_Histogram::Arrays data;
};

struct Routines {
  const char* type;
  double (*pdf)(double x, const Given&);
  double (*cdf)(double x, const Given&);
  double (*draw)(double p, const Given&);
};

using G = const Given&;
const Routines families[]{
    {"Normal", [](double x, G g) { return m_Normal::NormalPDF(x, g.p[0], g.p[1], g.ltl, g.utl); },
     [](double x, G g) { return m_Normal::NormalCDF(Divide(x - g.p[0], g.p[1]), false); },
     [](double p, G g) { return m_Normal::NormalVAL(p, g.p[0], g.p[1], g.ltl, g.utl); }},
    {"Uniform",
     [](double x, G g) { return m_Uniform::UniformPDF(x, g.p[0], g.p[1], g.ltl, g.utl); },
     [](double x, G g) { return m_Uniform::UniformCDF(x, g.p[0], g.p[1]); },
     [](double p, G g) { return m_Uniform::UniformVAL(p, g.p[0], g.p[1], g.ltl, g.utl); }},
    {"Triangular",
     [](double x, G g) {
       return m_Triangular::TriangularPDF(x, g.p[0], g.p[1], g.p[2], g.ltl, g.utl);
     },
     [](double x, G g) { return m_Triangular::TriangularCDF(x, g.p[0], g.p[1], g.p[2]); },
     [](double p, G g) {
       return m_Triangular::TriangularVAL(p, g.p[0], g.p[1], g.p[2], g.ltl, g.utl);
     }},
    {"Exponential",
     [](double x, G g) { return m_Exponential::ExponentialPDF(x, g.p[0], g.p[1], g.ltl, g.utl); },
     [](double x, G g) { return m_Exponential::ExponentialCDF(x, g.p[0], g.p[1]); },
     [](double p, G g) { return m_Exponential::ExponentialVAL(p, g.p[0], g.p[1], g.ltl, g.utl); }},
    {"Weibull",
     [](double x, G g) { return m_Weibull::WeibullPDF(x, g.p[0], g.p[1], g.p[2], g.ltl, g.utl); },
     [](double x, G g) { return m_Weibull::WeibullCDF(x, g.p[0], g.p[1], g.p[2]); },
     [](double p, G g) { return m_Weibull::WeibullVAL(p, g.p[0], g.p[1], g.p[2], g.ltl, g.utl); }},
    {"Lognormal",
     [](double x, G g) {
       return m_Lognormal::LognormalPDF(x, g.p[0], g.p[1], g.p[2], g.ltl, g.utl);
     },
     [](double x, G g) { return m_Lognormal::LognormalCDF(x, g.p[0], g.p[1], g.p[2], false); },
     [](double p, G g) {
       return m_Lognormal::LognormalVAL(p, g.p[0], g.p[1], g.p[2], g.ltl, g.utl);
     }},
    {"Gamma",
     [](double x, G g) { return m_Gamma::GammaPDF(x, g.p[0], g.p[1], g.p[2], g.ltl, g.utl); },
     [](double x, G g) { return m_Gamma::GammaCDF(x, g.p[0], g.p[1], g.p[2] != 0).toDouble(); },
     [](double p, G g) { return m_Gamma::GammaVAL(p, g.p[0], g.p[1], g.p[2], g.ltl, g.utl); }},
    {"Beta",
     [](double x, G g) { return m_Beta::BetaPDF(x, g.p[0], g.p[1], g.p[2], g.p[3], g.ltl, g.utl); },
     [](double x, G g) {
       const double z = Divide(checked(x - g.p[2]), checked(g.p[3] - g.p[2]));
       return m_Beta::BetaCDF(z, g.p[0], g.p[1], false).toDouble();
     },
     [](double p, G g) {
       return m_Beta::BetaVAL(p, g.p[0], g.p[1], g.p[2], g.p[3], g.ltl, g.utl);
     }},
    {"Johnson", [](double x, G g) { return m_Johnson::JohnsonPDF(x, g.curve, g.ltl, g.utl); },
     [](double x, G g) { return m_Johnson::JohnsonCDF(x, g.curve); },
     [](double p, G g) { return m_Johnson::JohnsonVal(p, g.curve, g.ltl, g.utl); }},
    {"Histogram",
     [](double x, G g) { return m_Histogram::HistogramPDF(x, g.data.density, g.ltl, g.utl); },
     [](double x, G g) { return m_Histogram::HistogramCDF(x, g.data.table); },
     [](double p, G g) { return m_Histogram::HistogramVAL(p, g.data.table, g.ltl, g.utl); }},
};

/// A result to the bit, or an error: number, description, routines. `member` is left out of both.
template <class Call>
std::string outcome(const Call& call, const std::string& member = "") {
  try {
    return "bits " + std::to_string(std::bit_cast<std::uint64_t>(double{call()}));
  } catch (const RuntimeError& error) {
    std::string description = error.description();
    if (!member.empty()) description.resize(description.rfind("\r\n" + member + ": ("));
    std::string text = std::to_string(error.number()) + ' ' + description;
    const std::string& source = error.source();
    for (std::size_t at = 0; (at = source.find("\r\nin palvex.", at)) != std::string::npos; ++at) {
      const std::string routine = source.substr(at, source.find(" at line ", at) - at);
      if (member.empty() || routine != "\r\nin palvex.c_Distribution." + member) text += routine;
    }
    return text;
  }
}

class Chance {
 public:
  double uniform(double from, double to) {
    return std::uniform_real_distribution(from, to)(generator_);
  }
  bool oneIn(int n) { return generator_() % static_cast<unsigned>(n) == 0; }

  /// Mostly small, sometimes whole, seldom at an end of the double range.
  double number(bool positive) {
    double size = uniform(0, 8);
    if (oneIn(4)) size = std::round(size);
    if (oneIn(6)) size = std::pow(10, uniform(-9, 9));
    if (oneIn(40)) size = std::pow(10, uniform(-308, 308));
    return positive || oneIn(2) ? size : -size;
  }
  double probability() {
    constexpr double inf = std::numeric_limits<double>::infinity();
    constexpr double odd[]{0, -0.0, 1, 0.5, -0.1, 1.1, 5e-324, 1e-300, 1e300, inf, -inf, NAN};
    if (oneIn(8)) return odd[generator_() % std::size(odd)];
    return oneIn(8) ? std::pow(10, uniform(-20, 0)) : uniform(0, 1);
  }

 private:
  std::mt19937_64 generator_{20};
};

/// Parameters that pass their checks more often than not.
std::array<double, 4> parametersOf(const std::string& type, Chance& chance) {
  std::array<double, 4> p{};
  if (type == "Johnson") {
    p[0] = chance.number(false);
    p[1] = chance.number(true);
    p[2] = chance.oneIn(3) ? 0 : chance.uniform(-2, 2);
    p[3] = chance.oneIn(4) && p[2] == 0 ? 3 : 1 + p[2] * p[2] + chance.uniform(0.1, 6);
    return p;
  }
  const bool shapes = type != "Normal" && type != "Uniform" && type != "Triangular";
  p[0] = chance.number(shapes && type != "Lognormal");
  p[1] = chance.number(shapes || type == "Normal");
  p[2] = chance.oneIn(2) ? 0 : chance.number(false);
  p[3] = p[2] + chance.number(true);
  if (type == "Uniform") p[1] = p[0] + p[1] * p[1];
  if (type == "Triangular") p = {p[2], p[2] + chance.number(true), p[3] + 8};
  if (type == "Exponential") p[1] = p[2];
  return p;
}

TEST(Stateless, TheObjectAddsSpeedAndNothingElse) {
  Chance chance;
  std::map<std::string, int> accepted;
  std::map<char, int> kinds;  // first character of an outcome: b, or the digit of an error
  const Variant data = block(3, {0, 1, 4, 1, 3, 2, 3, 4, 0, 5, 5.5, 7});
  for (const Routines& family : families) {
    const std::string type = family.type;
    c_Distribution d;
    d.distType(type);
    for (int round = 0; round < 400; ++round) {
      Given given{parametersOf(type, chance), {}, {}, {}, {}};
      const auto limit = [&]() -> Variant {
        if (chance.oneIn(3)) return {};
        return chance.oneIn(2) ? given.p[0] + chance.number(false) : chance.number(false);
      };
      given.ltl = limit();
      given.utl = limit();
      d.param1 = type == "Histogram" ? data : Variant(given.p[0]);
      d.param2 = type == "Histogram" ? Variant("Bins and Counts (3 cols)") : Variant(given.p[1]);
      d.param3 = given.p[2];
      d.param4 = given.p[3];
      d.ltl = given.ltl;
      d.utl = given.utl;
      d.Dynamic = false;
      std::string cause;
      if (outcome([&] { return d.ParamsOK(cause) ? 1.0 : 0.0; }) != outcome([] { return 1.0; }))
        continue;
      ++accepted[type];
      if (type == "Johnson") {
        m_Johnson::CalcJohnson(given.p[0], given.p[1], given.p[2], given.p[3], given.curve);
      }
      if (type == "Histogram") {
        m_Histogram::CreateHistogramArrays(data, d.param2, given.data.density, given.data.table);
      }
      for (int call = 0; call < 40; ++call) {
        d.Dynamic = chance.oneIn(5);
        const double p = chance.probability();
        const double x = chance.oneIn(2) ? given.p[0] + chance.number(false) : p;
        const std::string draw = outcome([&] { return family.draw(p, given); });
        ASSERT_EQ(outcome([&] { return d.RandVal(p); }, "RandVal"), draw) << type << ' ' << p;
        ASSERT_EQ(outcome([&] { return d.pdf(x); }, "pdf"),
                  outcome([&] { return family.pdf(x, given); }))
            << type << ' ' << x;
        ASSERT_EQ(outcome([&] { return d.cdf(x); }, "cdf"),
                  outcome([&] { return family.cdf(x, given); }))
            << type << ' ' << x;
        ++kinds[draw.front()];
      }
    }
    EXPECT_GT(accepted[type], 100) << type;
  }
  EXPECT_GT(kinds['b'], 20'000);  // results, and enough of the errors 5, 6, 11 and 13
  EXPECT_GT(kinds['5'], 500);
  EXPECT_GT(kinds['6'], 500);
  EXPECT_GT(kinds['1'], 100);
}

}  // namespace
}  // namespace palvex
