// The late-bound client: every member through IDispatch.

#include <optional>

#include "component/tests/Client.h"
#include "engine/c_Distribution.h"

namespace palvex::component::testing {
namespace {

class LateBinding : public ::testing::Test {
 protected:
  struct Outcome {
    HRESULT code;
    OwnedVariant result;
    EXCEPINFO exception;
    UINT badArgument;
  };

  DISPID identifier(const wchar_t* name) {
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    DISPID id = 0;
    d->GetIDsOfNames(IID_NULL, names, 1, 0x409, &id);
    return id;
  }

  /// The arguments stand in their written order; the last `named` of them have the names given.
  template <class... Given>
  Outcome call(const wchar_t* member, WORD flags, std::vector<DISPID> names, Given&&... given) {
    std::vector<VARIANT> reversed{given...};
    reversed.insert(reversed.begin(), VARIANT{});
    std::reverse(reversed.begin() + 1, reversed.end());
    std::reverse(names.begin(), names.end());
    DISPPARAMS parameters{reversed.data() + 1, names.data(), static_cast<UINT>(sizeof...(given)),
                          static_cast<UINT>(names.size())};
    Outcome outcome{S_OK, {}, {}, 99};
    outcome.code = d->Invoke(identifier(member), IID_NULL, 0x409, flags, &parameters,
                             outcome.result.receive(), &outcome.exception, &outcome.badArgument);
    return outcome;
  }
  template <class... Given>
  Outcome get(const wchar_t* member, const Given&... given) {
    return call(member, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {}, given.get()...);
  }
  template <class... Given>
  HRESULT put(const wchar_t* member, const Given&... given) {
    return call(member, DISPATCH_PROPERTYPUT, {DISPID_PROPERTYPUT}, given.get()...).code;
  }
  template <class... Given>
  double real(const wchar_t* member, const Given&... given) {
    const Outcome outcome = get(member, given...);
    EXPECT_EQ(outcome.code, S_OK);
    EXPECT_EQ(V_VT(&outcome.result.get()), VT_R8);
    return V_R8(&outcome.result.get());
  }
  template <class... Given>
  std::string textual(const wchar_t* member, const Given&... given) {
    const Outcome outcome = get(member, given...);
    EXPECT_EQ(outcome.code, S_OK);
    EXPECT_EQ(V_VT(&outcome.result.get()), VT_BSTR);
    return utf8FromBstr(V_BSTR(&outcome.result.get()));
  }
  /// Calls ParamsOK with a script's variable; returns what the variable holds then.
  std::string fault(OwnedVariant variable) {
    VARIANT reference{};
    V_VT(&reference) = VT_VARIANT | VT_BYREF;
    V_VARIANTREF(&reference) = &variable.get();
    const Outcome outcome = call(L"ParamsOK", DISPATCH_METHOD, {}, reference);
    EXPECT_EQ(outcome.code, S_OK);
    EXPECT_EQ(V_VT(&outcome.result.get()), VT_BOOL);
    EXPECT_EQ(V_VT(&variable.get()), VT_BSTR);
    const std::string said = utf8FromBstr(V_BSTR(&variable.get()));
    EXPECT_EQ(V_BOOL(&outcome.result.get()) == VARIANT_TRUE, said.empty());
    return said;
  }

  Library library;
  Distribution d = library.create();
};

TEST_F(LateBinding, ReachesEveryMember) {
  palvex::c_Distribution engine;
  engine.distType("Johnson");
  engine.param1 = 2;
  engine.param2 = 3;
  engine.param3 = -1;
  engine.param4 = 4;
  engine.ltl = 0;
  engine.utl = 3;
  std::string cause;
  ASSERT_TRUE(engine.ParamsOK(cause));

  EXPECT_EQ(put(L"distType", text("Johnson")), S_OK);
  EXPECT_EQ(put(L"param1", number(2)), S_OK);
  EXPECT_EQ(put(L"param2", text("3")), S_OK);
  EXPECT_EQ(put(L"param3", integer(-1)), S_OK);
  EXPECT_EQ(put(L"param4", number(4)), S_OK);
  EXPECT_EQ(put(L"ltl", number(0)), S_OK);
  EXPECT_EQ(put(L"utl", number(3)), S_OK);
  EXPECT_EQ(put(L"Active", truth(true)), S_OK);
  EXPECT_EQ(put(L"Dynamic", integer(0)), S_OK);
  EXPECT_EQ(put(L"graphMax", text("5")), S_OK);
  EXPECT_EQ(put(L"graphMin", integer(-5)), S_OK);
  EXPECT_EQ(put(L"numberFormat", text("0.0")), S_OK);
  EXPECT_EQ(put(L"ScaleFactor", integer(2)), S_OK);
  EXPECT_EQ(fault(OwnedVariant()), "");

  for (const wchar_t* variable : {L"param1", L"param3", L"param4", L"ltl", L"utl"})
    EXPECT_EQ(get(variable).code, S_OK);
  EXPECT_EQ(textual(L"param2"), "3");
  EXPECT_EQ(V_BOOL(&get(L"Active").result.get()), VARIANT_TRUE);
  EXPECT_EQ(V_BOOL(&get(L"Dynamic").result.get()), VARIANT_FALSE);
  EXPECT_EQ(textual(L"graphMax"), "5");
  EXPECT_EQ(textual(L"graphMin"), "-5");
  EXPECT_EQ(textual(L"numberFormat"), "0.0");
  EXPECT_EQ(textual(L"distType"), "Johnson");
  EXPECT_EQ(real(L"ScaleFactor"), 2);
  EXPECT_EQ(textual(L"NegInfinity"), "-Infinity");
  EXPECT_EQ(textual(L"PosInfinity"), "+Infinity");
  EXPECT_EQ(textual(L"ParamName", integer(4)), "Kurtosis");
  EXPECT_EQ(V_I2(&get(L"NumParams").result.get()), 4);
  EXPECT_EQ(V_VT(&get(L"ValidDistributions").result.get()), VT_ARRAY | VT_VARIANT);
  EXPECT_EQ(textual(L"ValidDistributions", integer(3)), "Triangular");
  EXPECT_EQ(get(L"ValidDistributions", integer(11)).code, DISP_E_BADINDEX);
  EXPECT_EQ(textual(L"DataConfigurations", integer(1)), "Raw Data");

  EXPECT_EQ(V_VT(&get(L"ResizeArrays", integer(11)).result.get()), VT_EMPTY);
  EXPECT_EQ(get(L"CreateGraphData", number(-1), number(4)).code, S_OK);
  engine.ScaleFactor(2);
  engine.ResizeArrays(11);
  engine.CreateGraphData(-1, 4);
  EXPECT_EQ(V_I2(&get(L"NumPoints").result.get()), 11);
  for (LONG i = 1; i <= 11; ++i) {
    const auto point = static_cast<std::int16_t>(i);
    EXPECT_EQ(real(L"GraphX", integer(i)), engine.GraphX(point));
    EXPECT_EQ(real(L"GraphPDF", integer(i)), engine.GraphPDF(point));
    EXPECT_EQ(real(L"GraphOL", integer(i)), engine.GraphOL(point));
  }
  for (const wchar_t* series : {L"GraphX", L"GraphPDF", L"GraphOL"}) {
    EXPECT_EQ(put(series, integer(2), number(0.5)), S_OK);
    EXPECT_EQ(real(series, integer(2)), 0.5);
  }
  EXPECT_EQ(real(L"GuessParamValue", integer(4), number(20)), engine.GuessParamValue(4, 20));
  EXPECT_EQ(real(L"RandVal", number(0.25)), engine.RandVal(0.25));
  EXPECT_EQ(real(L"pdf", number(-0.5)), 0);
  EXPECT_EQ(real(L"pdf", number(-0.5), truth(true)), engine.pdf(-0.5, true));
  EXPECT_EQ(real(L"pdf", number(1), leftOut(), number(0)), engine.pdf(1));
  EXPECT_EQ(real(L"cdf", text("1.5")), engine.cdf(1.5));
  EXPECT_EQ(real(L"mean"), engine.mean());
  EXPECT_EQ(real(L"StDev"), engine.StDev());
  EXPECT_EQ(real(L"StDev", number(1)), engine.StDev(1));
  EXPECT_EQ(real(L"CalcMean"), engine.CalcMean());
  EXPECT_EQ(real(L"CalcStdev", number(1)), engine.CalcStdev(1));
  EXPECT_EQ(real(L"XMin"), engine.XMin());
  EXPECT_EQ(real(L"XMax", leftOut()), engine.XMax());
}

TEST_F(LateBinding, FindsNamesInAnyLetterCase) {
  const DISPID id = identifier(L"RandVal");
  EXPECT_EQ(identifier(L"RANDVAL"), id);
  EXPECT_EQ(identifier(L"randval"), id);
  EXPECT_EQ(identifier(L"RandVal2"), DISPID_UNKNOWN);
  EXPECT_EQ(identifier(L""), DISPID_UNKNOWN);
  LPOLESTR names[] = {const_cast<LPOLESTR>(L"pdf"), const_cast<LPOLESTR>(L"priorX"),
                      const_cast<LPOLESTR>(L"x")};
  DISPID ids[3] = {};
  EXPECT_EQ(d->GetIDsOfNames(IID_NULL, names, 3, 0x409, ids), S_OK);
  EXPECT_EQ(ids[0], identifier(L"PDF"));
  EXPECT_EQ(ids[1], 2);
  EXPECT_EQ(ids[2], 0);
}

TEST_F(LateBinding, TakesNamedArguments) {
  describe(d, "Uniform", {0, 4});
  ASSERT_EQ(put(L"ltl", number(1)), S_OK);
  ASSERT_EQ(fault(OwnedVariant()), "");
  const auto named = call(L"pdf", DISPATCH_METHOD, {1}, number(0.5).get(), truth(true).get());
  EXPECT_EQ(named.code, S_OK);
  EXPECT_EQ(V_R8(&named.result.get()), 0.25);
  const auto swapped = call(L"pdf", DISPATCH_METHOD, {1, 0}, truth(true).get(), number(2).get());
  EXPECT_EQ(V_R8(&swapped.result.get()), 0.25);
  EXPECT_EQ(call(L"pdf", DISPATCH_METHOD, {1}, truth(true).get()).code, DISP_E_PARAMNOTOPTIONAL);
}

TEST_F(LateBinding, RefusesCallsThatDoNotFit) {
  const OwnedVariant x = number(1);
  EXPECT_EQ(get(L"RandVal").code, DISP_E_PARAMNOTOPTIONAL);
  EXPECT_EQ(get(L"RandVal", leftOut()).code, DISP_E_PARAMNOTOPTIONAL);
  EXPECT_EQ(get(L"RandVal", x, x).code, DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(get(L"param1", x).code, DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(put(L"NumPoints", x), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(put(L"RandVal", x), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(get(L"ResizeArrays", integer(40000)).code, DISP_E_OVERFLOW);
  const auto mismatch = get(L"GuessParamValue", integer(1), text("one"));
  EXPECT_EQ(mismatch.code, DISP_E_TYPEMISMATCH);
  EXPECT_EQ(mismatch.badArgument, 0u);  // the last argument comes first
  const OwnedVariant self = object(d.get());
  EXPECT_EQ(call(L"ScaleFactor", DISPATCH_PROPERTYPUTREF, {DISPID_PROPERTYPUT}, self.get()).code,
            DISP_E_MEMBERNOTFOUND);
  DISPPARAMS none{};
  EXPECT_EQ(d->Invoke(0, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
            DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(d->Invoke(37, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
            DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(d->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr),
            E_INVALIDARG);
  VARIANT nowhere{};
  V_VT(&nowhere) = VT_R8 | VT_BYREF;
  EXPECT_EQ(call(L"RandVal", DISPATCH_METHOD, {}, nowhere).code, DISP_E_TYPEMISMATCH);
  // No result wanted.
  EXPECT_EQ(d->Invoke(identifier(L"NumParams"), IID_NULL, 0, DISPATCH_METHOD, &none, nullptr,
                      nullptr, nullptr),
            S_OK);
}

TEST_F(LateBinding, BringsTheTextOfTheFaultIntoAnyVariable) {
  describe(d, "Uniform", {4, 2});
  const std::string expected = "Maximum can not be less than Minimum.";
  EXPECT_EQ(fault(OwnedVariant()), expected);
  EXPECT_EQ(fault(text("earlier")), expected);
  EXPECT_EQ(fault(number(5)), expected);
  Bstr variable = bstr("earlier");
  VARIANT reference{};
  V_VT(&reference) = VT_BSTR | VT_BYREF;
  V_BSTRREF(&reference) = variable.receive();
  EXPECT_EQ(call(L"ParamsOK", DISPATCH_METHOD, {}, reference).code, S_OK);
  EXPECT_EQ(utf8FromBstr(variable.get()), expected);
  const auto byValue = get(L"ParamsOK", text("gone"));
  EXPECT_EQ(byValue.code, S_OK);
  EXPECT_EQ(V_BOOL(&byValue.result.get()), VARIANT_FALSE);
}

TEST_F(LateBinding, TellsErrorsAsExceptions) {
  describe(d, "Normal", {0, 1});
  ASSERT_EQ(fault(OwnedVariant()), "");
  const auto outcome = get(L"RandVal", number(2));
  EXPECT_EQ(outcome.code, DISP_E_EXCEPTION);
  EXPECT_EQ(outcome.exception.scode, runtimeError(5));
  EXPECT_EQ(outcome.exception.wCode, 0);
  const Bstr source(outcome.exception.bstrSource);
  const Bstr description(outcome.exception.bstrDescription);
  EXPECT_NE(utf8FromBstr(source.get()).find("palvex.c_Distribution.RandVal"), std::string::npos);
  EXPECT_EQ(utf8FromBstr(description.get()),
            "Invalid procedure call or argument\r\nRandVal: (2,0,1,0,,)");

  OwnedVariant two = number(2);
  DISPPARAMS parameters{&two.get(), nullptr, 1, 0};
  EXPECT_EQ(d->Invoke(identifier(L"RandVal"), IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr,
                      nullptr, nullptr),
            runtimeError(5));
}

TEST_F(LateBinding, DescribesItsClass) {
  Ref<ITypeInfo> info;
  ASSERT_EQ(d.as<IProvideClassInfo>()->GetClassInfo(info.receive()), S_OK);
  TYPEATTR* attributes = nullptr;
  ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
  EXPECT_EQ(attributes->guid, __uuidof(::c_Distribution));
  EXPECT_EQ(attributes->typekind, TKIND_COCLASS);
  info->ReleaseTypeAttr(attributes);
  UINT count = 0;
  EXPECT_EQ(d->GetTypeInfoCount(&count), S_OK);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(d->GetTypeInfo(1, 0, info.receive()), DISP_E_BADINDEX);
}

}  // namespace
}  // namespace palvex::component::testing
