#pragma once

// A worksheet range as the component sees it: members by late binding. It counts its calls and can
// fail at the n-th; all ranges of the process are counted, so that a lost reference shows.

#include <functional>
#include <utility>
#include <vector>

#include "component/tests/Client.h"

namespace palvex::component::testing {

class FakeRange : public IDispatch {
 public:
  static inline int alive = 0;
  static inline int calls = 0;   // of Invoke, by all ranges
  static inline int failAt = 0;  // the call that fails; 0: none
  static inline std::function<void()> atCall = [] {};

  /// A range of cells, column by column; one value makes a cell.
  static Ref<FakeRange> cell(OwnedVariant value) {
    return cells(1, 1, [&](int, int) { return std::move(value); });
  }
  template <class Content>
  static Ref<FakeRange> cells(int rows, int columns, Content&& content) {
    auto made = Ref<FakeRange>::adopt(new FakeRange);
    made->rows_ = rows;
    made->columns_ = columns;
    for (int column = 1; column <= columns; ++column) {
      for (int row = 1; row <= rows; ++row) made->values_.push_back(content(row, column));
    }
    return made;
  }
  void set(OwnedVariant value) { values_[0] = std::move(value); }

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
  [[nodiscard]] ULONG references() const { return references_; }

  STDMETHODIMP GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
    const wchar_t* known[] = {L"Application", L"Address", L"Value", L"Count", L"Cells"};
    for (DISPID i = 0; i < 5; ++i) {
      if (_wcsicmp(names[0], known[i]) == 0) return ids[0] = i + 1, S_OK;
    }
    return DISP_E_UNKNOWNNAME;
  }
  STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* given, VARIANT* result,
                      EXCEPINFO* exception, UINT*) override {
    ++calls;
    atCall();
    EXPECT_TRUE(flags & DISPATCH_PROPERTYGET);
    if (calls == failAt) {
      exception->scode = runtimeError(1004);
      exception->bstrSource = bstr("Worksheet").release();
      exception->bstrDescription = bstr("The range is gone \u00fc").release();
      return DISP_E_EXCEPTION;
    }
    switch (member) {
      case 1:
        *result = object(this).release();
        return S_OK;
      case 2:
        *result = text("$A$1").release();
        return S_OK;
      case 3:
        return value(result);
      case 4:
        *result = integer(rows_ * columns_).release();
        return S_OK;
      default:
        EXPECT_EQ(given->cArgs, 1u);
        EXPECT_EQ(V_VT(given->rgvarg), VT_I4);
        const auto i = static_cast<std::size_t>(V_I4(given->rgvarg) - 1);
        *result = object(cell(copy(values_.at(i))).get()).release();
        return S_OK;
    }
  }

 private:
  FakeRange() { ++alive; }
  virtual ~FakeRange() { --alive; }

  static OwnedVariant copy(const OwnedVariant& value) {
    OwnedVariant made;
    VariantCopy(made.receive(), const_cast<VARIANT*>(&value.get()));
    return made;
  }
  HRESULT value(VARIANT* result) {
    if (values_.size() == 1) return VariantCopy(result, &values_[0].get());
    SAFEARRAYBOUND bounds[] = {{static_cast<ULONG>(rows_), 1}, {static_cast<ULONG>(columns_), 1}};
    V_ARRAY(result) = SafeArrayCreate(VT_VARIANT, 2, bounds);
    V_VT(result) = VT_ARRAY | VT_VARIANT;
    std::size_t i = 0;
    for (LONG column = 1; column <= columns_; ++column) {
      for (LONG row = 1; row <= rows_; ++row) {
        LONG place[] = {row, column};
        SafeArrayPutElement(V_ARRAY(result), place, &values_[i++].get());
      }
    }
    return S_OK;
  }

  ULONG references_ = 1;
  int rows_ = 0;
  int columns_ = 0;
  std::vector<OwnedVariant> values_;
};

/// Counts and failures start anew with each test, and no range may be left at its end.
class WithWorksheet : public ::testing::Test {
 protected:
  WithWorksheet() { restart(); }
  ~WithWorksheet() override { EXPECT_EQ(FakeRange::alive, 0); }  // after the clients are gone

  static void restart(int failAt = 0) {
    FakeRange::calls = 0;
    FakeRange::failAt = failAt;
    FakeRange::atCall = [] {};
  }
};

}  // namespace palvex::component::testing
