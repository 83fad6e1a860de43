#pragma once

// A worksheet range of tests/FakeRange.h as the component sees it: members by late binding. It
// counts its calls and can fail at the n-th; all ranges of the process are counted, so that a lost
// reference shows.

#include <functional>
#include <memory>

#include "component/tests/Client.h"
#include "tests/FakeRange.h"

namespace palvex::component::testing {

OwnedVariant given(const Variant& value);
Variant taken(const VARIANT& value);

class HostRange : public IDispatch {
 public:
  static inline int alive = 0;
  static inline int calls = 0;   // of Invoke, by all ranges
  static inline int failAt = 0;  // the call that fails; 0: none
  static inline std::function<void()> atCall = [] {};

  static Ref<HostRange> of(std::shared_ptr<Object> range) {
    return Ref<HostRange>::adopt(new HostRange(std::move(range)));
  }
  [[nodiscard]] const std::shared_ptr<Object>& range() const { return range_; }
  [[nodiscard]] ULONG references() const { return references_; }

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_IDispatch) return E_NOINTERFACE;
    *object = this;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  STDMETHODIMP GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
    for (DISPID i = 0; i < 5; ++i) {
      if (sameMember(utf8(names[0]), members[i])) return ids[0] = i + 1, S_OK;
    }
    return DISP_E_UNKNOWNNAME;
  }
  STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                      VARIANT* result, EXCEPINFO* exception, UINT*) override {
    ++calls;
    atCall();
    EXPECT_TRUE(flags & DISPATCH_PROPERTYGET);
    try {
      if (calls == failAt) throw RuntimeError(1004, "The range is gone \u00fc", "Worksheet");
      std::vector<Variant> arguments;
      for (UINT i = parameters->cArgs; i-- > 0;) arguments.push_back(taken(parameters->rgvarg[i]));
      *result = given(range_->get(members[member - 1], arguments)).release();
      return S_OK;
    } catch (const RuntimeError& error) {
      exception->scode = runtimeError(error.number());
      exception->bstrSource = bstr(error.source()).release();
      exception->bstrDescription = bstr(error.description()).release();
      return DISP_E_EXCEPTION;
    }
  }

 private:
  static constexpr const char* members[] = {"Application", "Address", "Value", "count", "Cells"};

  explicit HostRange(std::shared_ptr<Object> range) : range_(std::move(range)) { ++alive; }
  virtual ~HostRange() { --alive; }

  ULONG references_ = 1;
  std::shared_ptr<Object> range_;
};

// ---- what C++ and automation hand each other ----

inline OwnedVariant given(const Variant& value) {
  if (value.isMissing()) return leftOut();
  if (value.isEmpty()) return {};
  if (value.isError()) return errorValue(runtimeError(value.errorCode()));
  if (value.isText()) return text(value.toText());
  if (value.isObject()) return object(HostRange::of(value.toObject()).get());
  if (!value.isArray()) {
    const bool boolean = value == Variant(true) || value == Variant(false);
    return boolean ? truth(value.toDouble() != 0) : number(value.toDouble());
  }
  // The tests have blocks of cells only, and arrays that are no number.
  OwnedVariant made;
  const auto columns = [&]() -> LONG {
    try {
      return value.upperBound(2);
    } catch (const RuntimeError&) {
      return 0;
    }
  }();
  SAFEARRAYBOUND bounds[] = {{static_cast<ULONG>(value.upperBound()), 1},
                             {static_cast<ULONG>(columns), 1}};
  V_ARRAY(&made.get()) = SafeArrayCreate(VT_VARIANT, columns > 0 ? 2 : 1, bounds);
  V_VT(&made.get()) = VT_ARRAY | VT_VARIANT;
  for (LONG column = 1; column <= columns; ++column) {
    for (LONG row = 1; row <= value.upperBound(); ++row) {
      LONG place[] = {row, column};
      SafeArrayPutElement(V_ARRAY(&made.get()), place, &given(value.at(row, column)).get());
    }
  }
  return made;
}

inline Variant taken(const VARIANT& value) {
  switch (V_VT(&value)) {
    case VT_EMPTY:
      return {};
    case VT_BOOL:
      return V_BOOL(&value) != VARIANT_FALSE;
    case VT_BSTR:
      return utf8FromBstr(V_BSTR(&value));
    case VT_DISPATCH:
      return static_cast<HostRange*>(V_DISPATCH(&value))->range();  // the tests hand out no other
    default: {
      OwnedVariant real;
      EXPECT_EQ(VariantChangeType(real.receive(), const_cast<VARIANT*>(&value), 0, VT_R8), S_OK)
          << "kind " << V_VT(&value);
      return V_R8(&real.get());
    }
  }
}

/// Counts and failures start anew with each test, and no range may be left at its end.
class WithWorksheet : public ::testing::Test {
 protected:
  WithWorksheet() { restart(); }
  ~WithWorksheet() override { EXPECT_EQ(HostRange::alive, 0); }  // after the clients are gone

  static void restart(int failAt = 0) {
    HostRange::calls = 0;
    HostRange::failAt = failAt;
    HostRange::atCall = [] {};
  }
};

}  // namespace palvex::component::testing
