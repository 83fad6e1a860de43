#include <gtest/gtest.h>

#include "engine/c_Distribution.h"

namespace palvex {
namespace {

TEST(Distribution, NormalFromCheckToDraw) {
  c_Distribution d;
  d.distType("Normal");
  d.param1 = 10;
  d.param2 = "2";
  std::string cause = "?";
  ASSERT_TRUE(d.ParamsOK(cause));
  EXPECT_EQ(cause, "");
  EXPECT_EQ(d.cdf(10), 0.5);
  EXPECT_EQ(d.RandVal(0.5), 10);
}

}  // namespace
}  // namespace palvex
