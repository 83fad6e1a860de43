// A client that plays a worksheet: parameters and limits are ranges, read by late binding.

#include "component/tests/HostRange.h"

namespace palvex::component::testing {
namespace {

class Worksheet : public WithWorksheet {
 protected:
  Library library;
  Distribution d = library.create();
};

TEST_F(Worksheet, PassesTheHostsErrorOnWhicheverCallFails) {
  const auto mean = HostRange::of(cell(10));
  const auto spread = HostRange::of(cell(2));
  d->put_distType(bstr("Normal").get());
  d->put_param1(object(mean.get()).get());
  d->put_param2(object(spread.get()).get());
  restart();
  ASSERT_EQ(faultOf(d), "");
  const int calls = HostRange::calls;
  ASSERT_GT(calls, 10);

  int raised = 0;
  for (int n = 1; n <= calls; ++n) {
    restart(n);
    BSTR cause = SysAllocString(L"what an earlier check said");
    VARIANT_BOOL valid = VARIANT_TRUE;
    const HRESULT outcome = d->ParamsOK(&cause, &valid);
    const Bstr owned(cause);
    if (outcome == S_OK)
      continue;  // the read only asked whether this is a range, or its cell sound
    ++raised;
    EXPECT_EQ(outcome, runtimeError(1004)) << "call " << n;
    EXPECT_EQ(utf8FromBstr(cause), "") << "call " << n;
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
  d->put_param1(object(HostRange::of(cell(10)).get()).get());
  d->put_param2(number(0).get());
  d->put_Dynamic(VARIANT_TRUE);
  HostRange::atCall = [&] { d->put_param1(number(5).get()); };
  double result = 0;
  const HRESULT outcome = d->RandVal(0.5, &result);
  EXPECT_TRUE(outcome == S_OK || outcome == runtimeError(13));  // the object is gone midway
  EXPECT_EQ(faultOf(d), "");
}

TEST_F(Worksheet, LetsGoOfItsRanges) {
  const auto range = HostRange::of(cell(1));
  d->put_param1(object(range.get()).get());
  d->put_utl(object(range.get()).get());
  d->putref_param2(object(range.get()).get());
  EXPECT_GT(range->references(), 1u);
  {
    OwnedVariant back;
    EXPECT_EQ(d->get_param2(back.receive()), S_OK);
    EXPECT_EQ(V_DISPATCH(&back.get()), static_cast<IDispatch*>(range.get()));
  }
  d->put_param2(number(1).get());
  d->put_param1(number(1).get());
  d = Distribution();
  EXPECT_EQ(range->references(), 1u);
}

}  // namespace
}  // namespace palvex::component::testing
