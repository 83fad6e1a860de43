// What the distribution object makes of each type: which routine, which arguments, which checks.

#include <gtest/gtest.h>

#include <cmath>

#include "FakeRange.h"
#include "Fault.h"
#include "engine/c_Distribution.h"
#include "families/m_Beta.h"
#include "families/m_Exponential.h"
#include "families/m_Gamma.h"
#include "families/m_Johnson.h"
#include "families/m_Lognormal.h"
#include "families/m_Triangular.h"
#include "families/m_Uniform.h"
#include "families/m_Weibull.h"

namespace palvex {
namespace {

void setParameters(c_Distribution& d, const std::array<Variant, 4>& parameters) {
  d.param1 = parameters[0];
  d.param2 = parameters[1];
  d.param3 = parameters[2];
  d.param4 = parameters[3];
}

TEST(FamilyRows, HandTheParametersToTheirFamily) {
  using namespace m_Beta;
  using namespace m_Uniform;
  using namespace m_Triangular;
  using namespace m_Exponential;
  using namespace m_Weibull;
  using namespace m_Lognormal;
  using namespace m_Johnson;
  const Variant l = 2.5;
  const Variant u = 4;
  JohnsonParams su;
  CalcJohnson(3, 1, 0.5, 5, su);
  const struct {
    const char* type;
    std::array<Variant, 4> parameters;
    double pdf, outline, cdf, value;  // pdf and cdf at 3, outline at 2, value at 0.3
  } cases[] = {
      {"Uniform",
       {1, 5},
       UniformPDF(3, 1, 5, l, u),
       0.25,
       UniformCDF(3, 1, 5),
       UniformVAL(0.3, 1, 5, l, u)},
      {"Triangular",
       {1, 4.5, 5},
       TriangularPDF(3, 1, 4.5, 5, l, u),
       TriangularPDF(2, 1, 4.5, 5, "", ""),
       TriangularCDF(3, 1, 4.5, 5),
       TriangularVAL(0.3, 1, 4.5, 5, l, u)},
      {"Exponential",
       {0.7, 1},
       ExponentialPDF(3, 0.7, 1, l, u),
       ExponentialPDF(2, 0.7, 1, "", ""),
       ExponentialCDF(3, 0.7, 1),
       ExponentialVAL(0.3, 0.7, 1, l, u)},
      {"Weibull",
       {1.5, 2, 1},
       WeibullPDF(3, 1.5, 2, 1, l, u),
       WeibullPDF(2, 1.5, 2, 1, "", ""),
       WeibullCDF(3, 1.5, 2, 1),
       WeibullVAL(0.3, 1.5, 2, 1, l, u)},
      {"Lognormal",
       {0.5, 2, 1},
       LognormalPDF(3, 0.5, 2, 1, l, u),
       LognormalPDF(2, 0.5, 2, 1, "", ""),
       LognormalCDF(3, 0.5, 2, 1, false),
       LognormalVAL(0.3, 0.5, 2, 1, l, u)},
      {"Gamma",
       {1.5, 2, 0},
       m_Gamma::GammaPDF(3, 1.5, 2, 0, l, u),
       m_Gamma::GammaPDF(2, 1.5, 2, 0, "", ""),
       m_Gamma::GammaCDF(3, 1.5, 2, false).toDouble(),
       m_Gamma::GammaVAL(0.3, 1.5, 2, 0, l, u)},
      {"Gamma",  // with a minimum: the probability above the unshifted x
       {1.5, 2, 1},
       m_Gamma::GammaPDF(3, 1.5, 2, 1, l, u),
       m_Gamma::GammaPDF(2, 1.5, 2, 1, "", ""),
       m_Gamma::GammaCDF(3, 1.5, 2, true).toDouble(),
       m_Gamma::GammaVAL(0.3, 1.5, 2, 1, l, u)},
      {"Johnson",
       {3, 1, 0.5, 5},
       JohnsonPDF(3, su, l, u),
       jPDF(2, su),
       JohnsonCDF(3, su),
       JohnsonVal(0.3, su, l, u)},
      {"Beta",
       {2.2, 3.3, 1, 6},
       BetaPDF(3, 2.2, 3.3, 1, 6, l, u),
       BetaPDF(2, 2.2, 3.3, 1, 6, "", ""),
       BetaCDF(0.4, 2.2, 3.3, false).toDouble(),
       BetaVAL(0.3, 2.2, 3.3, 1, 6, l, u)},
  };
  for (const auto& c : cases) {
    for (bool dynamic : {false, true}) {
      c_Distribution d;
      d.distType(c.type);
      setParameters(d, c.parameters);
      d.ltl = l;
      d.utl = u;
      d.Dynamic = dynamic;
      std::string cause;
      ASSERT_TRUE(d.ParamsOK(cause)) << c.type << ' ' << cause;
      EXPECT_EQ(d.pdf(3), c.pdf) << c.type;
      EXPECT_EQ(d.pdf(2), 0) << c.type;
      EXPECT_EQ(d.pdf(2, true), c.outline) << c.type;
      EXPECT_EQ(d.cdf(3), c.cdf) << c.type;
      EXPECT_EQ(d.RandVal(0.3), c.value) << c.type;
    }
  }
}

TEST(FamilyRows, EveryParameterIsJudgedInItsOwnWords) {
  const std::string real = ".";
  const std::string nonNegative = ".  Must be a non-negative real number.";
  const std::string aPositive = ".  Must be a positive real number.";
  const std::string positive = ".  Must be positive real number.";
  const struct {
    const char* type;
    std::vector<std::pair<std::string, std::string>> parameters;  // name and suffix
  } cases[] = {
      {"Normal", {{"Mean", real}, {"Std Dev", nonNegative}}},
      {"Lognormal", {{"Location", real}, {"Scale", aPositive}, {"Minimum", real}}},
      {"Uniform", {{"Minimum", real}, {"Maximum", real}}},
      {"Triangular", {{"Minimum", real}, {"Likely", real}, {"Maximum", real}}},
      {"Exponential", {{"Lambda", positive}, {"Minimum", real}}},
      {"Weibull",
       {{"Shape", positive}, {"Scale", positive}, {"Minimum", ".  Must be a real number."}}},
      {"Gamma", {{"Shape", aPositive}, {"Scale", aPositive}, {"Minimum", real}}},
      {"Beta", {{"Alpha", positive}, {"Beta", positive}, {"Minimum", real}, {"Maximum", real}}},
      {"Johnson",
       {{"Mean", real}, {"Std Dev", aPositive}, {"Skewness", real}, {"Kurtosis", aPositive}}},
  };
  const auto twoCells = std::make_shared<FakeRange>(std::vector<Variant>{1, 2});
  for (const auto& [type, parameters] : cases) {
    for (std::size_t i = 0; i < parameters.size(); ++i) {
      const auto& [name, suffix] = parameters[i];
      const bool refusesNegative = suffix != real && suffix != ".  Must be a real number.";
      const bool refusesZero = suffix == aPositive || suffix == positive;
      const struct {
        Variant bad;
        bool refused;
        std::string prefix;
      } inputs[] = {
          {-1, refusesNegative, "Negative value for "},
          {cell(-1), refusesNegative, "Negative value in cell referenced for "},
          {"-0.5", refusesNegative, "Negative value for "},
          {0, refusesZero, "Value of zero for "},
          {{}, refusesZero, "Value of zero for "},
          {cell("0"), refusesZero, "Value of zero in cell referenced for "},
          {"abc", true, "Non-numeric value for "},
          {"-Infinity", true, "Non-numeric value for "},
          {cell("+Infinity"), true, "Non-numeric value in cell referenced for "},
          {twoCells, true, "More than one cell selected for "},
          {cell(Variant::error(2042)), true, "Error in cell value for "},
      };
      for (const auto& [bad, refused, prefix] : inputs) {
        std::array<Variant, 4> given{1, 1, 1, 3};
        const auto later = cell("unread");
        given[i] = bad;
        for (std::size_t j = i + 1; j < given.size(); ++j) given[j] = later;
        c_Distribution d;
        d.distType(type);
        setParameters(d, given);
        d.ltl = later;
        std::string cause;
        EXPECT_FALSE(d.ParamsOK(cause));
        if (refused) {
          EXPECT_EQ(cause, prefix + name + suffix) << type;
          EXPECT_EQ(later->reads, 0) << type << ": the first fault ends the checks";
        } else {
          EXPECT_EQ(cause.find(name + suffix), std::string::npos) << type << ' ' << cause;
        }
      }
    }
  }
}

TEST(FamilyRows, FirstFaultInOneSentence) {
  const char* const impossible =
      "Impossible combination of skewness and kurtosis.  Kurtosis must be greater than (1 + "
      "Skewness^2).";
  const struct {
    const char* type;
    std::array<Variant, 4> parameters;
    Variant ltl, utl;
    const char* cause;
  } cases[] = {
      {"", {1, 1}, {}, {}, "Incorrect distribution type."},
      {"Uniform", {4, 4}, "", "", "Improper value for LTL."},
      {"Uniform", {4, 4}, {}, {}, ""},
      {"Uniform", {4, 3}, {}, {}, "Maximum can not be less than Minimum."},
      {"Uniform", {"4", "12"}, {}, {}, ""},  // by value, not as text
      {"Uniform", {"x", 3}, {}, {}, "Non-numeric value for Minimum."},
      {"Uniform", {-1, {}}, {}, {}, ""},  // an empty parameter is 0
      {"Uniform", {1, {}}, {}, {}, "Maximum can not be less than Minimum."},
      {"Uniform", {4, 5}, 5, {}, ""},
      {"Uniform",
       {4, 5},
       5.1,
       {},
       "Truncation limits exclude all distribution values.  Please adjust."},
      {"Triangular", {0, -1, 5}, {}, {}, "Likely can not be less than Minimum."},
      {"Triangular", {0, 6, 5}, {}, {}, "Maximum can not be less than Likely."},
      {"Triangular", {0, -1, -5}, {}, {}, "Likely can not be less than Minimum."},
      {"Triangular", {2, 2, 2}, {}, {}, ""},
      {"Triangular",
       {0, 1, 5},
       7,
       -1,
       "Truncation limits exclude all distribution values.  Please adjust."},
      {"Exponential", {0, 1}, {}, {}, "Value of zero for Lambda.  Must be positive real number."},
      {"Exponential", {-1, 1}, {}, {}, "Negative value for Lambda.  Must be positive real number."},
      {"Exponential", {1, "x"}, {}, {}, "Non-numeric value for Minimum."},
      {"Exponential", {1, 2}, {}, 2, ""},  // the minimum counts as a value
      {"Exponential",
       {1, 2},
       {},
       1.9,
       "Truncation limits exclude all distribution values.  Please adjust."},
      {"Beta", {0, 1, 0, 1}, {}, {}, "Value of zero for Alpha.  Must be positive real number."},
      {"Beta", {1, -1, 0, 1}, {}, {}, "Negative value for Beta.  Must be positive real number."},
      {"Beta", {1, 1, 0, "x"}, {}, {}, "Non-numeric value for Maximum."},
      {"Beta", {1, 1, 2, 1}, {}, {}, "Maximum can not be less than Minimum."},
      {"Beta", {1, 1, 2, 2}, {}, {}, ""},
      {"Beta", {2, 2, 2, 3}, {}, 2, ""},
      {"Beta",
       {2, 2, 2, 3},
       3.1,
       {},
       "Truncation limits exclude all distribution values.  Please adjust."},
      {"Weibull", {0, 1, 1}, {}, {}, "Value of zero for Shape.  Must be positive real number."},
      {"Weibull", {1, -1, 1}, {}, {}, "Negative value for Scale.  Must be positive real number."},
      {"Weibull", {1, 1, "x"}, {}, {}, "Non-numeric value for Minimum.  Must be a real number."},
      {"Weibull", {1, 1, 2}, {}, 2, ""},
      {"Gamma", {0, 1, 1}, {}, {}, "Value of zero for Shape.  Must be a positive real number."},
      {"Gamma", {1, -1, 1}, {}, {}, "Negative value for Scale.  Must be a positive real number."},
      {"Gamma", {1, 1, "x"}, {}, {}, "Non-numeric value for Minimum."},
      {"Gamma", {1, 1, 2}, {}, 2, ""},
      {"Gamma",
       {1, 1, 2},
       {},
       1.9,
       "Truncation limits exclude all distribution values.  Please adjust."},
      {"Lognormal", {0, 0, 1}, {}, {}, "Value of zero for Scale.  Must be a positive real number."},
      {"Lognormal", {"x", 1, 1}, {}, {}, "Non-numeric value for Location."},
      {"Lognormal", {0, 1, "x"}, {}, {}, "Non-numeric value for Minimum."},
      {"Lognormal", {0, 26, 0}, {}, {}, ""},
      {"Lognormal",
       {0, 27, 0},
       {},
       {},
       "Number overflow.  Please choose a smaller value for Location or Scale."},
      {"Lognormal",
       {710, 1, 0},
       {},
       {},
       "Number overflow.  Please choose a smaller value for Location or Scale."},
      {"Lognormal", {-900, 30, 0}, {}, {}, ""},
      {"Lognormal",
       {0, 1, 2},
       {},
       2,  // the minimum is no value
       "Truncation limits exclude all distribution values.  Please adjust."},
      {"Johnson", {0, 1, 1, 2}, {}, {}, impossible},
      {"Johnson", {0, 1, -2, "4.9"}, {}, {}, impossible},
      {"Johnson",
       {0, 1, -4.3047412415545576, 19.775041796654605},
       {},
       {},
       "Failure in fitting SB."},
      {"Johnson", {0, 1.7e308, 0.5, 2.8}, {}, {}, "Unexpected error in sbfit"},
      {"Johnson", {0, 1, -4.8645197967964453, 32.417248473287515}, {}, {}, "exceeded iteration"},
      {"Johnson",
       {0, 1, 5.0836526691650814, 28.510989396660989},
       {},
       {},
       "Zero coefficient in a()"},
      {"Johnson", {0, 1, 2.084, 11.55}, 1e9, {}, ""},  // no curve, and no word about it
      {"Johnson", {0, 1, 0, 3}, -1e9, 5, ""},
      {"Johnson", {0, 1, 0, 9}, 1e9, {}, ""},
  };
  for (const auto& c : cases) {
    c_Distribution d;
    if (*c.type != '\0') d.distType(c.type);
    setParameters(d, c.parameters);
    d.ltl = c.ltl;
    d.utl = c.utl;
    std::string cause = "?";
    EXPECT_EQ(d.ParamsOK(cause), *c.cause == '\0') << c.type;
    EXPECT_EQ(cause, c.cause) << c.type;
  }
}

TEST(FamilyRows, FittedCurvesEndWhereTheyHaveNoValue) {
  // The ends of the fitted curve, cut exactly there and one double inside.
  const auto cause = [](const std::array<Variant, 4>& moments, const Variant& lower,
                        const Variant& upper) {
    c_Distribution d;
    d.distType("Johnson");
    setParameters(d, moments);
    d.ltl = lower;
    d.utl = upper;
    std::string text;
    d.ParamsOK(text);
    return text;
  };
  const std::string nothing = "Truncation limits exclude all distribution values.  Please adjust.";
  m_Johnson::JohnsonParams c;
  CalcJohnson(5, 2, 0.5, 2.5, c);
  ASSERT_EQ(c.typeName, "SB");
  const double top = c.xi + c.lambda;
  EXPECT_EQ(cause({5, 2, 0.5, 2.5}, top, {}), nothing);
  EXPECT_EQ(cause({5, 2, 0.5, 2.5}, std::nextafter(top, 0), {}), "");
  EXPECT_EQ(cause({5, 2, 0.5, 2.5}, {}, c.xi), nothing);
  EXPECT_EQ(cause({5, 2, 0.5, 2.5}, {}, std::nextafter(c.xi, 9)), "");
  EXPECT_EQ(cause({5, 2, 0.5, 2.5}, top, c.xi), nothing);  // reversed: both pieces are empty
  EXPECT_EQ(cause({5, 2, 0.5, 2.5}, top, c.xi + 0.1), "");
  const double line = 8.898357624544985;  // kurtosis of the lognormal curve of skewness 1.75
  for (const double side : {1.0, -1.0}) {
    const std::array<Variant, 4> moments{0, 2, side * 1.75, line};
    CalcJohnson(0, 2, side * 1.75, line, c);
    ASSERT_EQ(c.typeName, "SL");
    const Variant end = c.xi;
    const Variant inside = std::nextafter(c.xi, side * 100);
    EXPECT_EQ(side > 0 ? cause(moments, {}, end) : cause(moments, end, {}), nothing);
    EXPECT_EQ(side > 0 ? cause(moments, {}, inside) : cause(moments, inside, {}), "");
    EXPECT_EQ(side > 0 ? cause(moments, end, {}) : cause(moments, {}, end), "");
  }
}

TEST(FamilyRows, AFaultOfTheFitIsRaisedWithItsTrace) {
  c_Distribution d;
  d.distType("Johnson");
  setParameters(d, {0, 1, 0.4, 3.2959});  // just above the lognormal line: no SU fit
  std::string cause = "before";
  const auto fault = faultOf([&] { return d.ParamsOK(cause); });
  ASSERT_TRUE(fault);
  EXPECT_EQ(fault->number(), 5);
  EXPECT_EQ(cause, "");
  std::size_t at = 0;
  for (const char* routine :
       {"m_Johnson.SUFIT", "m_Johnson.JNSN", "m_Johnson.CalcJohnson", "c_Distribution.ParamsOK"}) {
    at = fault->source().find(std::string("\r\nin palvex.") + routine + " at line ", at);
    ASSERT_NE(at, std::string::npos) << routine << fault->source();
  }
  setParameters(d, {0, 1, 1e200, 3});
  EXPECT_EQ(faultNumber([&] { return d.ParamsOK(cause); }), 6);
}

TEST(FamilyRows, ACurveIsThatOfTheLastFit) {
  c_Distribution d;
  d.distType("Johnson");
  d.Dynamic = true;
  EXPECT_EQ(d.pdf(1), 0);
  EXPECT_EQ(d.cdf(1), 0);
  EXPECT_EQ(d.RandVal(0.5), 0);
  setParameters(d, {5, 2, 0, 3});
  std::string cause;
  ASSERT_TRUE(d.ParamsOK(cause));
  d.param1 = 9;  // live parameters do not reach a curve without a new fit
  EXPECT_EQ(d.RandVal(0.5), 5);
  EXPECT_EQ(d.cdf(5), 0);  // a normal record has no probabilities
  d.utl = 4;
  EXPECT_EQ(d.pdf(4.5), 0);  // live limits do
  setParameters(d, {0, 1, 2.084, 11.55});
  ASSERT_TRUE(d.ParamsOK(cause));
  d.utl = {};
  EXPECT_EQ(d.pdf(0), 0);
  EXPECT_EQ(faultNumber([&] { return d.RandVal(0.3); }), 11);
  EXPECT_EQ(faultNumber([&] { return d.RandVal(0.5); }), 6);
}

TEST(FamilyRows, CachesAreRefreshedStepByStep) {
  c_Distribution d;
  d.distType("Uniform");
  setParameters(d, {0, 10});
  std::string cause;
  ASSERT_TRUE(d.ParamsOK(cause));
  setParameters(d, {20, 10});
  EXPECT_FALSE(d.ParamsOK(cause));  // refreshed before they are compared
  EXPECT_EQ(d.cdf(11), m_Uniform::UniformCDF(11, 20, 10));
  setParameters(d, {0, 10});
  d.ltl = 3;
  d.utl = 3;
  EXPECT_FALSE(d.ParamsOK(cause));
  EXPECT_EQ(d.RandVal(0), 3);  // limits, too
  d.utl = 4;
  ASSERT_TRUE(d.ParamsOK(cause));
  d.ltl = 6;
  d.utl = "7%";
  EXPECT_FALSE(d.ParamsOK(cause));
  EXPECT_EQ(d.RandVal(0), 3);  // but not before both have passed
}

TEST(FamilyRows, ADrawBeforeAnyLimitIsConsulted) {
  // This limit's probability overflows, but the draw at the low end is the minimum all the same.
  const struct {
    const char* type;
    std::array<Variant, 4> parameters;
    double p, value;
  } cases[] = {{"Exponential", {1e10, 3}, 0, 3},
               {"Weibull", {400, 1, 3}, -0.1, 3},
               {"Beta", {2, 3, -1e308, 1e308}, 0, -1e308}};
  for (const auto& c : cases) {
    for (bool dynamic : {false, true}) {
      c_Distribution d;
      d.distType(c.type);
      setParameters(d, c.parameters);
      d.utl = 1e300;
      std::string cause;
      ASSERT_TRUE(d.ParamsOK(cause));
      d.Dynamic = dynamic;
      EXPECT_EQ(d.RandVal(c.p), c.value) << c.type;
      EXPECT_EQ(faultNumber([&] { return d.RandVal(0.5); }), fault::overflow) << c.type;
    }
  }
}

}  // namespace
}  // namespace palvex
