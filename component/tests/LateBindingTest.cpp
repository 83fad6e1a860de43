// The late-bound client: names, named arguments, calls that do not fit.

#include <optional>

#include "component/tests/Client.h"

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
  EXPECT_EQ(get(L"RandVal", leftOut()).code, DISP_E_PARAMNOTOPTIONAL);
  EXPECT_EQ(get(L"param1", x).code, DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(get(L"ValidDistributions", integer(11)).code, DISP_E_BADINDEX);
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

}  // namespace
}  // namespace palvex::component::testing
