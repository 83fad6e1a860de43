// The scripts of tests/data/object through the DLL: late bound, and through the vtable as the type
// library describes it.

#include "component/tests/HostRange.h"
#include "tests/Object.h"

namespace palvex::component::testing {
namespace {

/// Members called by IDispatch::Invoke, or by that of the type information, which goes through the
/// vtable.
class Client : public script::Target {
 public:
  Client(const Library& library, bool early) : d_(library.create()), early_(early) {
    Ref<ITypeInfo> dispatch;
    EXPECT_EQ(d_->GetTypeInfo(0, 0, dispatch.receive()), S_OK);
    // The dual interface has two faces; the one with the vtable hangs on the dispatch one.
    HREFTYPE face = 0;
    EXPECT_EQ(dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &face), S_OK);
    EXPECT_EQ(dispatch->GetRefTypeInfo(face, vtable_.receive()), S_OK);
  }

  script::Values call(const std::string& member, const script::Values& arguments) override {
    if (member == "ParamsOK") return {paramsOK()};
    if (early_ && (member == "ValidDistributions" || member == "DataConfigurations")) {
      OwnedVariant list = invoke(member, DISPATCH_PROPERTYGET, {});
      LONG i = static_cast<LONG>(arguments.at(0).toDouble());
      OwnedVariant item;
      EXPECT_EQ(SafeArrayGetElement(V_ARRAY(&list.get()), &i, item.receive()), S_OK);
      return {taken(item.get())};
    }
    return {taken(invoke(member, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments).get())};
  }
  void put(const std::string& member, const script::Values& arguments) override {
    invoke(member, DISPATCH_PROPERTYPUT, arguments);
  }

 private:
  OwnedVariant invoke(const std::string& member, WORD flags, const script::Values& arguments) {
    std::vector<OwnedVariant> owned;
    std::vector<VARIANT> reversed;
    for (const Variant& argument : arguments) owned.push_back(given(argument));
    for (std::size_t i = owned.size(); i-- > 0;) reversed.push_back(owned[i].get());
    return invoke(member, flags, reversed);
  }
  OwnedVariant invoke(const std::string& member, WORD flags, std::vector<VARIANT>& reversed) {
    DISPID assigned = DISPID_PROPERTYPUT;
    const bool put = flags == DISPATCH_PROPERTYPUT;
    DISPPARAMS parameters{reversed.data(), put ? &assigned : nullptr,
                          static_cast<UINT>(reversed.size()), put ? 1u : 0u};
    const std::wstring wide(member.begin(), member.end());
    LPOLESTR name = const_cast<LPOLESTR>(wide.c_str());
    DISPID id = 0;
    DISPID described = 0;
    EXPECT_EQ(d_->GetIDsOfNames(IID_NULL, &name, 1, 0, &id), S_OK) << member;
    EXPECT_EQ(vtable_->GetIDsOfNames(&name, 1, &described), S_OK) << member;
    EXPECT_EQ(id, described) << member << ": identifiers of the object and of the type library";
    OwnedVariant result;
    EXCEPINFO exception{};
    UINT bad = 0;
    const HRESULT outcome =
        early_
            ? vtable_->Invoke(d_.get(), id, flags, &parameters, result.receive(), &exception, &bad)
            : d_->Invoke(id, IID_NULL, 0, flags, &parameters, result.receive(), &exception, &bad);
    const Bstr source(exception.bstrSource);
    const Bstr description(exception.bstrDescription);
    if (outcome == DISP_E_EXCEPTION)
      throw RuntimeError(exception.scode & 0xFFFF, utf8FromBstr(description.get()),
                         utf8FromBstr(source.get()));
    if (outcome == DISP_E_TYPEMISMATCH) throw RuntimeError(13);
    EXPECT_EQ(outcome, S_OK) << member << ' ' << std::hex << outcome;
    return result;
  }
  std::string paramsOK() {
    BSTR cause = bstr("before").release();
    std::vector<VARIANT> reference(1);
    V_VT(&reference[0]) = VT_BSTR | VT_BYREF;
    V_BSTRREF(&reference[0]) = &cause;
    const OwnedVariant valid = invoke("ParamsOK", DISPATCH_METHOD, reference);
    const Bstr owned(cause);
    const std::string sentence = utf8FromBstr(cause);
    EXPECT_EQ(V_BOOL(&valid.get()) == VARIANT_TRUE, sentence.empty());
    return sentence;
  }

  Distribution d_;
  bool early_;
  Ref<ITypeInfo> vtable_;
};

class Script : public WithWorksheet {};

TEST_F(Script, AnswersLateAndEarlyBoundAsInCpp) {
  const Library library;
  for (const char* file : {"members", "values", "validation", "graphs", "moments"}) {
    for (const bool early : {false, true}) {
      SCOPED_TRACE(early ? "through the vtable" : "late bound");
      script::runScript(std::string("object/") + file + ".txt",
                        [&] { return std::make_unique<Client>(library, early); });
    }
  }
}

}  // namespace
}  // namespace palvex::component::testing
