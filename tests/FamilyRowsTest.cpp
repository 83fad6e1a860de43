// What the distribution object makes of each type: which routine, which arguments, which checks.

#include <gtest/gtest.h>

#include "Fault.h"
#include "engine/c_Distribution.h"
#include "families/m_Exponential.h"
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
  using namespace m_Uniform;
  using namespace m_Triangular;
  using namespace m_Exponential;
  using namespace m_Weibull;
  using namespace m_Lognormal;
  const Variant l = 2.5;
  const Variant u = 4;
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

TEST(FamilyRows, FirstFaultInOneSentence) {
  const struct {
    const char* type;
    std::array<Variant, 4> parameters;
    Variant ltl, utl;
    const char* cause;
  } cases[] = {
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
      {"Weibull", {0, 1, 1}, {}, {}, "Value of zero for Shape.  Must be positive real number."},
      {"Weibull", {1, -1, 1}, {}, {}, "Negative value for Scale.  Must be positive real number."},
      {"Weibull", {1, 1, "x"}, {}, {}, "Non-numeric value for Minimum.  Must be a real number."},
      {"Weibull", {1, 1, 2}, {}, 2, ""},
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
  };
  for (const auto& c : cases) {
    c_Distribution d;
    d.distType(c.type);
    setParameters(d, c.parameters);
    d.ltl = c.ltl;
    d.utl = c.utl;
    std::string cause = "?";
    EXPECT_EQ(d.ParamsOK(cause), *c.cause == '\0') << c.type;
    EXPECT_EQ(cause, c.cause) << c.type;
  }
}

TEST(FamilyRows, ADrawBeforeAnyLimitIsConsulted) {
  // This limit's probability overflows, but the draw at the low end is the minimum all the same.
  const struct {
    const char* type;
    std::array<Variant, 4> parameters;
    double p, value;
  } cases[] = {{"Exponential", {1e10, 3}, 0, 3}, {"Weibull", {400, 1, 3}, -0.1, 3}};
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
