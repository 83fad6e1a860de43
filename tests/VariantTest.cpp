#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "runtime/Object.h"
#include "runtime/Variant.h"

namespace palvex {
namespace {

int faultOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const RuntimeError& error) {
    return error.number();
  }
  return 0;
}

TEST(Variant, TellsItsKind) {
  EXPECT_TRUE(Variant{}.isEmpty());
  EXPECT_TRUE(Variant::missing().isMissing());
  EXPECT_TRUE(Variant("2.5").isText());
  EXPECT_TRUE(Variant::error(2042).isError());
  EXPECT_TRUE(Variant(std::make_shared<Object>()).isObject());
  EXPECT_TRUE(Variant::array(3).isArray());

  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const Variant& v : {Variant(2), Variant(true), Variant("2.5"), Variant(-0.0)}) {
    EXPECT_TRUE(v.isNumeric());
  }
  for (const Variant& v :
       {Variant{}, Variant::missing(), Variant("abc"), Variant(nan), Variant(infinity),
        Variant::error(2042), Variant::array(1), Variant(std::make_shared<Object>())}) {
    EXPECT_FALSE(v.isNumeric());
  }
}

TEST(Variant, ConvertsOrRaisesTypeMismatch) {
  EXPECT_EQ(Variant(true).toDouble(), -1);
  EXPECT_EQ(Variant{}.toDouble(), 0);
  EXPECT_EQ(Variant("1,234.5").toDouble(), 1234.5);
  EXPECT_EQ(Variant(false).toText(), "False");
  EXPECT_EQ(Variant(1e20).toText(), "1E+20");
  EXPECT_EQ(faultOf([] { static_cast<void>(Variant("abc").toDouble()); }), fault::typeMismatch);
  EXPECT_EQ(faultOf([] { static_cast<void>(Variant::error(2042).toText()); }), fault::typeMismatch);
  EXPECT_EQ(faultOf([] { static_cast<void>(Variant(2).toObject()); }), fault::typeMismatch);
  EXPECT_EQ(faultOf([] { static_cast<void>(Variant::missing().toDouble()); }), fault::typeMismatch);
}

}  // namespace
}  // namespace palvex
