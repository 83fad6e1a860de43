// Mean and standard deviation of truncated Johnson curves against high-precision references.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "Fault.h"
#include "laws/Johnson.h"

namespace palvex::m_Johnson {
namespace {

TEST(JohnsonMoments, AgreeWithHighPrecisionReferences) {
  std::ifstream file(PALVEX_TEST_DATA "/johnson_moments.csv");
  std::map<std::string, int> rows;
  std::map<std::string, int> closed;
  for (std::string row; std::getline(file, row);) {
    std::vector<std::string> fields;
    std::istringstream stream(row);
    for (std::string field; std::getline(stream, field, ',');) fields.push_back(field);
    ASSERT_EQ(fields.size(), 9U) << row;
    const auto number = [&](std::size_t i) { return std::stod(fields[i]); };
    const std::string& name = fields[0];
    const auto code = static_cast<std::int16_t>(name == "SL" ? 1 : name == "SU" ? 2 : 3);
    const JohnsonParams c{number(1), number(2), number(3), number(4), name, code, ""};
    Limits limits;
    if (!fields[5].empty()) limits.lower = number(5);
    if (!fields[6].empty()) limits.upper = number(6);
    const double mean = number(7);
    const double sd = number(8);
    // A limit is a double beside xi: the deviate of one in a far tail is only as good as that.
    const double ulp = 4e-16 * (std::abs(mean) + std::abs(c.xi));
    const auto expectAgreement = [&](const laws::Moments& got, const char* how) {
      EXPECT_NEAR(got.mean, mean, 1e-10 * sd + ulp) << how << ' ' << row;
      EXPECT_NEAR(got.sd, sd, 1e-10 * sd + ulp) << how << ' ' << row;
    };
    expectAgreement(laws::Johnson(c, curveOf(name)).integratedMoments(limits), "integrated");
    if (const auto found = laws::Johnson(c, curveOf(name)).moments(limits)) {
      expectAgreement(*found, "closed form");
      ++closed[name];
    }
    ++rows[name];
  }
  for (const char* name : {"SL", "SU", "SB"}) {
    EXPECT_GE(rows[name], 24) << name;
    EXPECT_GE(closed[name], 20) << name;
  }
}

TEST(JohnsonMoments, BesideTheUpperEndOfABoundedCurve) {
  // A long way from the lower end to a narrow law: the fit gives back what was asked for.
  const struct {
    double mean, sd, skewness, kurtosis;
  } cases[] = {{0, 1, -2.3, 6.31}, {0, 1, 2.3, 6.31}, {393, 0.073, -2.55, 7.67}};
  for (const auto& c : cases) {
    JohnsonParams curve;
    CalcJohnson(c.mean, c.sd, c.skewness, c.kurtosis, curve);
    ASSERT_EQ(curve.typeName, "SB");
    const laws::Moments integrated = laws::Johnson(curve, Curve::SB).integratedMoments({});
    EXPECT_NEAR(integrated.mean, c.mean, 1e-4 * c.sd) << c.skewness;
    EXPECT_NEAR(integrated.sd, c.sd, 1e-4 * c.sd) << c.skewness;
    if (const auto closed = laws::Johnson(curve, Curve::SB).moments({})) {
      EXPECT_NEAR(integrated.mean, closed->mean, 1e-8 * c.sd) << c.skewness;
      EXPECT_NEAR(integrated.sd, closed->sd, 1e-8 * c.sd) << c.skewness;
    }
  }
}

TEST(JohnsonMoments, OfANormalRecordAndOfNone) {
  const JohnsonParams normal{2, 0, 10, 0, "Normal", 4, ""};
  const laws::Moments whole = laws::Johnson(normal, Curve::normal).moments({}).value();
  EXPECT_EQ(whole.mean, 10);
  EXPECT_EQ(whole.sd, 2);
  const laws::Moments half =
      laws::Johnson(normal, Curve::normal).moments({.lower = 10, .upper = {}}).value();
  EXPECT_NEAR(half.mean, 10 + 2 * std::sqrt(2 / M_PI), 1e-14);
  const JohnsonParams failed{0, 0, 0, 0, "SB", 3, ""};
  for (const Curve curve : {Curve::SB, Curve::none}) {
    EXPECT_EQ(faultNumber([&] { return laws::Johnson(failed, curve).moments({}).has_value(); }),
              11);
    EXPECT_EQ(faultNumber([&] { return laws::Johnson(failed, curve).integratedMoments({}).mean; }),
              11);
  }
  // Limits beyond the ends of a bounded curve, and deeper in a tail than doubles reach.
  const JohnsonParams sb{-0.4, 0.8, 5, -1, "SB", 3, ""};
  const JohnsonParams su{0.7, 1.5, 2, 10, "SU", 2, ""};
  const Limits above{.lower = 4, .upper = {}};
  const Limits far{.lower = 1e30, .upper = {}};
  EXPECT_EQ(faultNumber([&] { return laws::Johnson(sb, Curve::SB).integratedMoments(above).mean; }),
            11);
  EXPECT_EQ(faultNumber([&] { return laws::Johnson(su, Curve::SU).integratedMoments(far).mean; }),
            11);
  EXPECT_FALSE(laws::Johnson(sb, Curve::SB).moments(above));
}

}  // namespace
}  // namespace palvex::m_Johnson
