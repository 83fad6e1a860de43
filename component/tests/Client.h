#pragma once

// What every client of the component needs: the DLL, objects from it, variants, and the error of a
// failed call. Nothing is registered: the class factory comes straight from the DLL.

#include <gtest/gtest.h>
#include <ocidl.h>
#include <windows.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "component/Owned.h"
#include "component/Text.h"
#include "component/palvex_h.h"

namespace palvex::component::testing {

using Distribution = Ref<_c_Distribution>;

class Library {
 public:
  Library() : module_(LoadLibraryW(L"palvex.dll")) {}
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  ~Library() { FreeLibrary(module_); }

  template <class Function>
  [[nodiscard]] Function* find(const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }
  [[nodiscard]] Ref<IClassFactory> factory() const {
    const auto getClassObject = find<HRESULT WINAPI(REFCLSID, REFIID, void**)>("DllGetClassObject");
    Ref<IClassFactory> factory;
    getClassObject(__uuidof(::c_Distribution), IID_IClassFactory,
                   reinterpret_cast<void**>(factory.receive()));
    return factory;
  }
  [[nodiscard]] Distribution create() const {
    Distribution made;
    factory()->CreateInstance(nullptr, __uuidof(_c_Distribution),
                              reinterpret_cast<void**>(made.receive()));
    return made;
  }
  [[nodiscard]] bool canUnload() const {
    return find<HRESULT WINAPI()>("DllCanUnloadNow")() == S_OK;
  }

 private:
  HMODULE module_;
};

// ---- variants ----

inline OwnedVariant number(double x) {
  OwnedVariant made;
  V_VT(&made.get()) = VT_R8;
  V_R8(&made.get()) = x;
  return made;
}
inline OwnedVariant integer(LONG x) {
  OwnedVariant made;
  V_VT(&made.get()) = VT_I4;
  V_I4(&made.get()) = x;
  return made;
}
inline OwnedVariant text(std::string_view content) {
  OwnedVariant made;
  V_VT(&made.get()) = VT_BSTR;
  V_BSTR(&made.get()) = bstr(content).release();
  return made;
}
inline OwnedVariant truth(bool value) {
  OwnedVariant made;
  V_VT(&made.get()) = VT_BOOL;
  V_BOOL(&made.get()) = value ? VARIANT_TRUE : VARIANT_FALSE;
  return made;
}
inline OwnedVariant object(IDispatch* given) {
  OwnedVariant made;
  V_VT(&made.get()) = VT_DISPATCH;
  V_DISPATCH(&made.get()) = Ref<IDispatch>(given).release();
  return made;
}
inline OwnedVariant errorValue(SCODE code) {
  OwnedVariant made;
  V_VT(&made.get()) = VT_ERROR;
  V_ERROR(&made.get()) = code;
  return made;
}
inline OwnedVariant leftOut() {
  return errorValue(DISP_E_PARAMNOTFOUND);
}

// ---- calls ----

/// The error object that the last failed call left.
struct Failure {
  std::string source;
  std::string description;

  static Failure last() {
    Ref<IErrorInfo> info;
    if (GetErrorInfo(0, info.receive()) != S_OK) return {"no error object", ""};
    Bstr source;
    Bstr description;
    info->GetSource(source.receive());
    info->GetDescription(description.receive());
    return {utf8FromBstr(source.get()), utf8FromBstr(description.get())};
  }
};

constexpr HRESULT runtimeError(int number) {
  return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, number);
}

/// A text result.
template <class Call>
std::string textOf(Call&& call) {
  Bstr result;
  EXPECT_EQ(call(result.receive()), S_OK);
  return utf8FromBstr(result.get());
}

/// The number that a call leaves.
template <class Number, class Call>
Number valueOf(Call&& call) {
  Number result{};
  EXPECT_EQ(call(&result), S_OK);
  return result;
}

/// What ParamsOK says: "" for true.
inline std::string faultOf(const Distribution& object) {
  Bstr cause;
  VARIANT_BOOL valid = VARIANT_FALSE;
  EXPECT_EQ(object->ParamsOK(cause.receive(), &valid), S_OK);
  EXPECT_EQ(valid == VARIANT_TRUE, utf8FromBstr(cause.get()).empty());
  return utf8FromBstr(cause.get());
}

/// Sets the type and the leading parameters.
inline void describe(const Distribution& object, std::string_view type,
                     std::initializer_list<double> parameters) {
  ASSERT_EQ(object->put_distType(bstr(type).get()), S_OK);
  using Put = HRESULT (STDMETHODCALLTYPE _c_Distribution::*)(VARIANT);
  constexpr Put puts[] = {&_c_Distribution::put_param1, &_c_Distribution::put_param2,
                          &_c_Distribution::put_param3, &_c_Distribution::put_param4};
  const Put* put = puts;
  for (const double x : parameters) ASSERT_EQ((object.get()->**put++)(number(x).get()), S_OK);
}

}  // namespace palvex::component::testing
