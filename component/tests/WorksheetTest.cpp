// A client that plays a worksheet: parameters and limits are ranges, read by late binding.

#include "component/tests/FakeRange.h"

namespace palvex::component::testing {
namespace {

class Worksheet : public WithWorksheet {
 protected:
  Library library;
  Distribution d = library.create();
};

TEST_F(Worksheet, FollowsItsCells) {
  const auto mean = FakeRange::cell(number(10));
  const auto limit = FakeRange::cell(text("-Infinity"));
  d->put_distType(bstr("Normal").get());
  d->putref_param1(object(mean.get()).get());
  d->put_param2(number(2).get());
  d->put_ltl(object(limit.get()).get());
  ASSERT_EQ(faultOf(d), "");
  EXPECT_EQ(valueOf<double>([&](auto* to) { return d->RandVal(0.5, to); }), 10);

  mean->set(number(20));
  restart();
  EXPECT_EQ(valueOf<double>([&](auto* to) { return d->RandVal(0.5, to); }), 10);
  EXPECT_EQ(FakeRange::calls, 0);  // the cached value
  d->put_Dynamic(VARIANT_TRUE);
  EXPECT_EQ(valueOf<double>([&](auto* to) { return d->RandVal(0.5, to); }), 20);
  EXPECT_GT(FakeRange::calls, 0);
  limit->set(number(20));
  EXPECT_EQ(valueOf<double>([&](auto* to) { return d->RandVal(0, to); }), 20);

  OwnedVariant back;
  EXPECT_EQ(d->get_param1(back.receive()), S_OK);
  EXPECT_EQ(V_VT(&back.get()), VT_DISPATCH);
  EXPECT_EQ(V_DISPATCH(&back.get()), static_cast<IDispatch*>(mean.get()));
}

TEST_F(Worksheet, NamesTheCellAtFault) {
  const auto cell = FakeRange::cell(OwnedVariant());
  describe(d, "Normal", {0});
  d->put_param2(object(cell.get()).get());
  const auto fault = [&](OwnedVariant value) {
    cell->set(std::move(value));
    return faultOf(d);
  };
  EXPECT_EQ(fault(number(3)), "");
  EXPECT_EQ(fault(text("2.5")), "");
  EXPECT_EQ(fault(number(-2)),
            "Negative value in cell referenced for Std Dev.  Must be a non-negative real number.");
  EXPECT_EQ(
      fault(text("abc")),
      "Non-numeric value in cell referenced for Std Dev.  Must be a non-negative real number.");
  EXPECT_EQ(fault(errorValue(runtimeError(2007))),
            "Error in cell value for Std Dev.  Must be a non-negative real number.");
  d->put_param2(object(FakeRange::cells(2, 1, [](int, int) { return number(1); }).get()).get());
  EXPECT_EQ(faultOf(d),
            "More than one cell selected for Std Dev.  Must be a non-negative real number.");
}

TEST_F(Worksheet, BuildsAHistogramFromARangeOfCells) {
  d->put_distType(bstr("Histogram").get());
  const double table[3][3] = {{0, 1, 1}, {1, 2, 2}, {2, 4, 1}};
  const auto range = FakeRange::cells(3, 3, [&](int row, int column) {
    return row == 2 && column == 3 ? text("2") : number(table[row - 1][column - 1]);
  });
  d->putref_param1(object(range.get()).get());
  d->put_param2(text("Bins and Counts (3 cols)").get());
  ASSERT_EQ(faultOf(d), "");
  EXPECT_EQ(valueOf<double>([&](auto* to) { return d->cdf(1, to); }), 0.25);
  EXPECT_EQ(valueOf<double>([&](auto* to) { return d->cdf(3, to); }), 0.875);
  EXPECT_EQ(valueOf<double>([&](auto* to) { return d->RandVal(0.5, to); }), 1.5);
}

TEST_F(Worksheet, PassesTheHostsErrorOnWhicheverCallFails) {
  const auto mean = FakeRange::cell(number(10));
  const auto spread = FakeRange::cell(number(2));
  d->put_distType(bstr("Normal").get());
  d->put_param1(object(mean.get()).get());
  d->put_param2(object(spread.get()).get());
  restart();
  ASSERT_EQ(faultOf(d), "");
  const int calls = FakeRange::calls;
  ASSERT_GT(calls, 10);

  int raised = 0;
  for (int n = 1; n <= calls; ++n) {
    restart(n);
    BSTR cause = SysAllocString(L"what an earlier check said");
    VARIANT_BOOL valid = VARIANT_TRUE;
    const HRESULT outcome = d->ParamsOK(&cause, &valid);
    EXPECT_EQ(SysStringLen(cause), 0u);
    SysFreeString(cause);
    if (outcome == S_OK)
      continue;  // the read only asked whether this is a range, or its cell sound
    ++raised;
    EXPECT_EQ(outcome, runtimeError(1004)) << "call " << n;
    const Failure failure = Failure::last();
    EXPECT_EQ(failure.description, "The range is gone \u00fc");
    EXPECT_EQ(failure.source.find("Worksheet\r\nin palvex.c_Distribution."), 0u) << failure.source;
  }
  EXPECT_GT(raised, 0);
  restart();
  EXPECT_EQ(faultOf(d), "");
}

TEST_F(Worksheet, MayChangeAParameterWhileItIsRead) {
  d->put_distType(bstr("Normal").get());
  d->put_param1(object(FakeRange::cell(number(10)).get()).get());
  d->put_param2(number(0).get());
  d->put_Dynamic(VARIANT_TRUE);
  FakeRange::atCall = [&] { d->put_param1(number(5).get()); };
  double result = 0;
  const HRESULT outcome = d->RandVal(0.5, &result);
  EXPECT_TRUE(outcome == S_OK || outcome == runtimeError(13));  // the object is gone midway
  EXPECT_EQ(faultOf(d), "");
}

TEST_F(Worksheet, LetsGoOfItsRanges) {
  const auto range = FakeRange::cell(number(1));
  d->put_param1(object(range.get()).get());
  d->put_utl(object(range.get()).get());
  EXPECT_GT(range->references(), 1u);
  d->put_param1(number(1).get());
  d = Distribution();
  EXPECT_EQ(range->references(), 1u);
}

}  // namespace
}  // namespace palvex::component::testing
