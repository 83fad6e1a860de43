// Numeric texts by the user's regional settings: run under one locale with a decimal point, then
// under one with a decimal comma.

#include <cstdlib>
#include <optional>

#include "component/tests/HostRange.h"

namespace palvex::component::testing {
namespace {

using Regional = WithWorksheet;

/// What a text is as a parameter; nothing when it is no number.
std::optional<double> valueOfText(const Distribution& d, std::string_view content) {
  describe(d, "Normal", {0, 0});
  d->put_param1(text(content).get());
  if (!faultOf(d).empty()) return {};
  return valueOf<double>([&](auto* to) { return d->RandVal(0.5, to); });
}

TEST_F(Regional, TextsAreReadAsTheUserWritesNumbers) {
  wchar_t mark[4] = {};
  GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, mark, 4);
  const bool comma = std::wstring(mark) == L",";
  std::printf("decimal mark: %ls\n", mark);
  const char* expected = std::getenv("PALVEX_EXPECTED_MARK");
  ASSERT_TRUE(expected == nullptr || utf8(mark) == expected);

  Library library;
  const Distribution d = library.create();
  using Value = std::optional<double>;
  EXPECT_EQ(valueOfText(d, comma ? "2,5" : "2.5"), Value(2.5));
  EXPECT_EQ(valueOfText(d, comma ? "1.234,5" : "1,234.5"), Value(1234.5));
  EXPECT_EQ(valueOfText(d, " 7 "), Value(7));
  EXPECT_EQ(valueOfText(d, "1e5"), Value(1e5));
  EXPECT_EQ(valueOfText(d, "(3)"), Value(-3));
  EXPECT_EQ(valueOfText(d, "abc"), Value());
  EXPECT_EQ(valueOfText(d, "1e400"), Value());
  EXPECT_EQ(valueOfText(d, ""), Value());

  const auto range = HostRange::of(cell(comma ? "0,25" : "0.25"));
  d->put_param1(object(range.get()).get());
  ASSERT_EQ(faultOf(d), "");
  EXPECT_EQ(valueOf<double>([&](auto* to) { return d->RandVal(0.5, to); }), 0.25);
}

}  // namespace
}  // namespace palvex::component::testing
