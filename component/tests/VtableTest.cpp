// The early-bound client: what scripts can not show.

#include <xmmintrin.h>

#include <cmath>

#include "component/tests/Client.h"

namespace palvex::component::testing {
namespace {

class Vtable : public ::testing::Test {
 protected:
  Library library;
  Distribution d = library.create();
};

TEST_F(Vtable, KeepsOddTextsAndTruths) {
  EXPECT_EQ(d->put_Dynamic(1), S_OK);  // any other value than 0 is true
  EXPECT_EQ(valueOf<VARIANT_BOOL>([&](auto* to) { return d->get_Dynamic(to); }), VARIANT_TRUE);
  EXPECT_EQ(d->put_graphMin(nullptr), S_OK);
  EXPECT_EQ(textOf([&](auto* to) { return d->get_graphMin(to); }), "");
  // Half of a surrogate pair cannot be kept.
  const Bstr broken(SysAllocString(L"a\xD800z"));
  EXPECT_EQ(d->put_numberFormat(broken.get()), S_OK);
  EXPECT_EQ(textOf([&](auto* to) { return d->get_numberFormat(to); }), "a\uFFFDz");
}

TEST_F(Vtable, ReportsErrorsWithNumberSourceAndDescription) {
  describe(d, "Normal", {0, 1});
  d->put_Dynamic(VARIANT_TRUE);
  double result = 5;
  EXPECT_EQ(d->RandVal(1.5, &result), runtimeError(5));
  EXPECT_EQ(result, 0);
  const Failure failure = Failure::last();
  EXPECT_EQ(failure.description, "Invalid procedure call or argument\r\nRandVal: (1.5,0,1,0,,)");
  EXPECT_EQ(failure.source.find("palvex\r\nin palvex.m_Normal.NormINV16 at line "), 0u);
  EXPECT_NE(failure.source.find("\r\nin palvex.c_Distribution.RandVal at line "),
            std::string::npos);

  EXPECT_EQ(d->put_param2(number(0).get()), S_OK);
  EXPECT_EQ(d->cdf(2, &result), runtimeError(11));
  EXPECT_EQ(d->cdf(0, &result), runtimeError(6));

  const auto support = d.as<ISupportErrorInfo>();
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(__uuidof(_c_Distribution)), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IDispatch), S_FALSE);
}

TEST_F(Vtable, RefusesNullPointersForResults) {
  EXPECT_EQ(d->RandVal(0.5, nullptr), E_POINTER);
  EXPECT_EQ(d->get_param1(nullptr), E_POINTER);
  EXPECT_EQ(d->get_distType(nullptr), E_POINTER);
  EXPECT_EQ(d->get_ValidDistributions(nullptr), E_POINTER);
  Bstr cause;
  VARIANT_BOOL valid = VARIANT_FALSE;
  EXPECT_EQ(d->ParamsOK(nullptr, &valid), E_POINTER);
  EXPECT_EQ(d->ParamsOK(cause.receive(), nullptr), E_POINTER);
  EXPECT_EQ(d->GetTypeInfo(0, 0, nullptr), E_POINTER);
}

// ---- variants of every kind ----

/// The number that the engine reads from a parameter: the draw of a normal distribution without
/// spread, whose mean it is.
double readAs(const Distribution& d, const VARIANT& given) {
  describe(d, "Normal", {0, 0});
  EXPECT_EQ(d->put_Dynamic(VARIANT_TRUE), S_OK);
  EXPECT_EQ(d->put_param1(given), S_OK);
  return valueOf<double>([&](auto* to) { return d->RandVal(0.5, to); });
}

OwnedVariant changed(double x, VARTYPE type) {
  OwnedVariant made;
  OwnedVariant from = number(x);
  EXPECT_EQ(VariantChangeType(made.receive(), &from.get(), 0, type), S_OK);
  return made;
}

TEST_F(Vtable, TakesNumbersOfEveryKindAndGivesThemBack) {
  for (const VARTYPE type : {VT_I1, VT_I2, VT_I4, VT_I8, VT_INT, VT_UI1, VT_UI2, VT_UI4, VT_UI8,
                             VT_UINT, VT_R4, VT_R8, VT_CY, VT_DATE, VT_DECIMAL, VT_BSTR}) {
    OwnedVariant given = changed(42, static_cast<VARTYPE>(type));
    EXPECT_EQ(readAs(d, given.get()), 42) << "kind " << type;
    OwnedVariant back;
    EXPECT_EQ(d->get_param1(back.receive()), S_OK);
    EXPECT_EQ(V_VT(&back.get()), type);

    VARIANT reference{};
    V_VT(&reference) = static_cast<VARTYPE>(type | VT_BYREF);
    V_BYREF(&reference) =
        type == VT_DECIMAL ? static_cast<void*>(&given.get()) : &V_R8(&given.get());
    EXPECT_EQ(readAs(d, reference), 42) << "reference to kind " << type;
  }
  EXPECT_EQ(readAs(d, truth(true).get()), -1);
  EXPECT_EQ(readAs(d, truth(false).get()), 0);
  OwnedVariant inner = number(7.5);
  VARIANT reference{};
  V_VT(&reference) = VT_VARIANT | VT_BYREF;
  V_VARIANTREF(&reference) = &inner.get();
  EXPECT_EQ(readAs(d, reference), 7.5);
  inner.get() = number(8).release();  // a copy was kept, not the reference
  EXPECT_EQ(valueOf<double>([&](auto* to) { return d->RandVal(0.5, to); }), 7.5);
}

TEST_F(Vtable, JudgesWhatIsNoNumber) {
  const auto fault = [&](const OwnedVariant& given) {
    describe(d, "Normal", {0, 1});
    EXPECT_EQ(d->put_param1(given.get()), S_OK);
    return faultOf(d);
  };
  OwnedVariant null;
  V_VT(&null.get()) = VT_NULL;
  EXPECT_EQ(fault(OwnedVariant()), "");
  EXPECT_EQ(fault(null), "Non-numeric value for Mean.");
  EXPECT_EQ(fault(leftOut()), "Non-numeric value for Mean.");
  EXPECT_EQ(fault(errorValue(runtimeError(2042))), "Non-numeric value for Mean.");
  EXPECT_EQ(fault(text("abc")), "Non-numeric value for Mean.");
  EXPECT_EQ(fault(text(std::string("5\0abc", 5))), "Non-numeric value for Mean.");
  EXPECT_EQ(fault(object(nullptr)), "Non-numeric value for Mean.");
  EXPECT_EQ(fault(object(d.get())), "Non-numeric value for Mean.");
  EXPECT_EQ(d->put_param1(OwnedVariant().get()), S_OK);  // the object held itself
}

TEST_F(Vtable, RefusesWhatHasNoCounterpart) {
  EXPECT_EQ(d->put_param1(number(3).get()), S_OK);
  VARIANT odd{};
  V_VT(&odd) = VT_VARIANT | VT_BYREF;
  V_VARIANTREF(&odd) = nullptr;
  EXPECT_EQ(d->put_param1(odd), runtimeError(13));
  V_VT(&odd) = VT_R8 | VT_BYREF;
  EXPECT_EQ(d->put_param1(odd), runtimeError(13));
  V_VT(&odd) = VT_FILETIME;
  EXPECT_NE(d->put_param1(odd), S_OK);
  V_VT(&odd) = VT_ARRAY | VT_R8;
  SAFEARRAYBOUND three[] = {{1, 0}, {1, 0}, {1, 0}};
  V_ARRAY(&odd) = SafeArrayCreate(VT_R8, 3, three);
  EXPECT_EQ(d->put_param1(odd), runtimeError(13));
  VariantClear(&odd);
  OwnedVariant kept;
  EXPECT_EQ(d->get_param1(kept.receive()), S_OK);
  EXPECT_EQ(V_R8(&kept.get()), 3);
}

// ---- floating-point settings ----

TEST_F(Vtable, ComputesAlikeUnderAnyFloatingPointSettingsAndRestoresThem) {
  describe(d, "Lognormal", {1, 0.7, 0});
  ASSERT_EQ(faultOf(d), "");
  const auto draw = [&] { return valueOf<double>([&](auto* to) { return d->RandVal(0.3, to); }); };
  const double expected = draw();

  std::uint16_t found = 0;
  asm volatile("fnstcw %0" : "=m"(found));
  const unsigned sse = _mm_getcsr();
  // 53 bits; 24 bits rounding up; division by zero and invalid operations trap.
  for (const std::uint16_t word :
       {std::uint16_t{0x027F}, std::uint16_t{0x087F}, std::uint16_t{0x0272}}) {
    for (const unsigned settings : {0x1F80u, 0xFFC0u, 0x1D00u}) {
      double result = 0;
      double failed = 0;
      asm volatile("fldcw %0" : : "m"(word));
      _mm_setcsr(settings);
      const HRESULT outcome = d->RandVal(0.3, &result);
      const HRESULT failure = d->RandVal(1.5, &failed);
      std::uint16_t left = 0;
      asm volatile("fnstcw %0" : "=m"(left));
      const unsigned leftSse = _mm_getcsr();
      asm volatile("fnclex; fldcw %0" : : "m"(found));
      _mm_setcsr(sse);
      EXPECT_EQ(outcome, S_OK);
      EXPECT_EQ(failure, runtimeError(5));
      EXPECT_EQ(result, expected);
      EXPECT_EQ(left, word);
      EXPECT_EQ(leftSse & ~0x3Fu, settings & ~0x3Fu);
    }
  }
}

}  // namespace
}  // namespace palvex::component::testing
