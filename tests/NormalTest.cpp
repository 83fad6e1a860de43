#include <gtest/gtest.h>

#include "families/m_Normal.h"

namespace palvex::m_Normal {
namespace {

TEST(Normal, WorkedExamples) {
  EXPECT_NEAR(NormalPDF(0, 0, 1, "none", "none"), 0.39894228, 1e-8);
  EXPECT_EQ(NormalPDF(5, 5, 0, "none", "none"), 1);
  EXPECT_EQ(NormalCDF(0, false), 0.5);
  EXPECT_EQ(NormalINV(0, false), -38.5);
  EXPECT_EQ(NormalVAL(0, 0, 1, 0), 0);
}

}  // namespace
}  // namespace palvex::m_Normal
