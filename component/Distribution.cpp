#include "component/Distribution.h"

#include <cstdint>
#include <utility>

#include "component/Boundary.h"
#include "component/Conversion.h"
#include "component/Dispatch.h"
#include "component/Text.h"

namespace palvex::component {

namespace {

// An answer of the engine in the form of the interface.
void give(double& to, double answer) {
  to = answer;
}
void give(short& to, std::int16_t answer) {
  to = answer;
}
void give(VARIANT_BOOL& to, bool answer) {
  to = answer ? VARIANT_TRUE : VARIANT_FALSE;
}
void give(BSTR& to, const std::string& answer) {
  to = bstr(answer).release();
}
void give(VARIANT& to, const Variant& answer) {
  to = toAutomation(answer).release();
}

template <class Result, class Question>
HRESULT answer(Result* result, Question&& question) noexcept {
  if (result == nullptr) return E_POINTER;
  *result = {};
  return guarded([&] { give(*result, question()); });
}

/// Hands the caller an interface with a reference of its own; null and a failure code where there
/// is none.
template <class Interface, class Source>
HRESULT handOut(Interface** result, Source&& source) noexcept {
  if (result == nullptr) return E_POINTER;
  *result = nullptr;
  return guarded([&] { *result = source().release(); });
}

bool truth(VARIANT_BOOL value) noexcept {
  return value != VARIANT_FALSE;
}

}  // namespace

// ---- the object ----

STDMETHODIMP Distribution::QueryInterface(REFIID iid, void** object) {
  if (object == nullptr) return E_POINTER;
  *object = nullptr;
  if (iid == IID_IUnknown || iid == IID_IDispatch || iid == __uuidof(_c_Distribution)) {
    *object = static_cast<_c_Distribution*>(this);
  } else if (iid == IID_ISupportErrorInfo) {
    *object = static_cast<ISupportErrorInfo*>(this);
  } else if (iid == IID_IProvideClassInfo) {
    *object = static_cast<IProvideClassInfo*>(this);
  } else {
    return E_NOINTERFACE;
  }
  AddRef();
  return S_OK;
}

STDMETHODIMP_(ULONG) Distribution::AddRef() {
  return ++references_;
}

STDMETHODIMP_(ULONG) Distribution::Release() {
  const ULONG left = --references_;
  if (left == 0) {
    ++references_;  // what is released below may release this object, once more
    delete this;
  }
  return left;
}

STDMETHODIMP Distribution::GetTypeInfoCount(UINT* count) {
  if (count == nullptr) return E_POINTER;
  *count = 1;
  return S_OK;
}

STDMETHODIMP Distribution::GetTypeInfo(UINT index, LCID, ITypeInfo** info) {
  if (index != 0) return DISP_E_BADINDEX;
  return handOut(info, [] { return typeInfo(__uuidof(_c_Distribution)); });
}

STDMETHODIMP Distribution::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
  return findIdentifiers(names, count, ids);
}

STDMETHODIMP Distribution::Invoke(DISPID member, REFIID, LCID locale, WORD flags,
                                  DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                  UINT* badArgument) {
  return invoke(*this, {member, locale, flags, parameters, result, exception, badArgument});
}

STDMETHODIMP Distribution::InterfaceSupportsErrorInfo(REFIID iid) {
  return iid == __uuidof(_c_Distribution) ? S_OK : S_FALSE;
}

STDMETHODIMP Distribution::GetClassInfo(ITypeInfo** info) {
  return handOut(info, [] { return typeInfo(__uuidof(::c_Distribution)); });
}

// ---- the public variables ----

HRESULT Distribution::read(const OwnedVariant& given, VARIANT* result) noexcept {
  if (result == nullptr) return E_POINTER;
  VariantInit(result);
  return guarded([&] { *result = copyOf(given.get()).release(); });
}

HRESULT Distribution::assign(Variant& variable, OwnedVariant& given,
                             const VARIANT& value) noexcept {
  return guarded([&] {
    OwnedVariant copy = copyOf(value);
    Variant converted = fromAutomation(copy.get());
    // The former content is released last: an object that is released may call back.
    std::swap(variable, converted);
    std::swap(given, copy);
  });
}

STDMETHODIMP Distribution::get_param1(VARIANT* result) {
  return read(param1_, result);
}
STDMETHODIMP Distribution::put_param1(VARIANT value) {
  return assign(engine_.param1, param1_, value);
}
STDMETHODIMP Distribution::putref_param1(VARIANT value) {
  return assign(engine_.param1, param1_, value);
}

STDMETHODIMP Distribution::get_param2(VARIANT* result) {
  return read(param2_, result);
}
STDMETHODIMP Distribution::put_param2(VARIANT value) {
  return assign(engine_.param2, param2_, value);
}
STDMETHODIMP Distribution::putref_param2(VARIANT value) {
  return assign(engine_.param2, param2_, value);
}

STDMETHODIMP Distribution::get_param3(VARIANT* result) {
  return read(param3_, result);
}
STDMETHODIMP Distribution::put_param3(VARIANT value) {
  return assign(engine_.param3, param3_, value);
}
STDMETHODIMP Distribution::putref_param3(VARIANT value) {
  return assign(engine_.param3, param3_, value);
}

STDMETHODIMP Distribution::get_param4(VARIANT* result) {
  return read(param4_, result);
}
STDMETHODIMP Distribution::put_param4(VARIANT value) {
  return assign(engine_.param4, param4_, value);
}
STDMETHODIMP Distribution::putref_param4(VARIANT value) {
  return assign(engine_.param4, param4_, value);
}

STDMETHODIMP Distribution::get_ltl(VARIANT* result) {
  return read(ltl_, result);
}
STDMETHODIMP Distribution::put_ltl(VARIANT value) {
  return assign(engine_.ltl, ltl_, value);
}
STDMETHODIMP Distribution::putref_ltl(VARIANT value) {
  return assign(engine_.ltl, ltl_, value);
}

STDMETHODIMP Distribution::get_utl(VARIANT* result) {
  return read(utl_, result);
}
STDMETHODIMP Distribution::put_utl(VARIANT value) {
  return assign(engine_.utl, utl_, value);
}
STDMETHODIMP Distribution::putref_utl(VARIANT value) {
  return assign(engine_.utl, utl_, value);
}

STDMETHODIMP Distribution::get_Active(VARIANT_BOOL* result) {
  return answer(result, [&] { return engine_.Active; });
}
STDMETHODIMP Distribution::put_Active(VARIANT_BOOL value) {
  engine_.Active = truth(value);
  return S_OK;
}

STDMETHODIMP Distribution::get_Dynamic(VARIANT_BOOL* result) {
  return answer(result, [&] { return engine_.Dynamic; });
}
STDMETHODIMP Distribution::put_Dynamic(VARIANT_BOOL value) {
  engine_.Dynamic = truth(value);
  return S_OK;
}

STDMETHODIMP Distribution::get_graphMax(BSTR* result) {
  return answer(result, [&] { return engine_.graphMax; });
}
STDMETHODIMP Distribution::put_graphMax(BSTR value) {
  return guarded([&] { engine_.graphMax = utf8FromBstr(value); });
}

STDMETHODIMP Distribution::get_graphMin(BSTR* result) {
  return answer(result, [&] { return engine_.graphMin; });
}
STDMETHODIMP Distribution::put_graphMin(BSTR value) {
  return guarded([&] { engine_.graphMin = utf8FromBstr(value); });
}

STDMETHODIMP Distribution::get_numberFormat(BSTR* result) {
  return answer(result, [&] { return engine_.numberFormat; });
}
STDMETHODIMP Distribution::put_numberFormat(BSTR value) {
  return guarded([&] { engine_.numberFormat = utf8FromBstr(value); });
}

// ---- the other members ----

STDMETHODIMP Distribution::get_ValidDistributions(VARIANT* result) {
  return answer(result, [&] { return engine_.ValidDistributions(); });
}
STDMETHODIMP Distribution::get_DataConfigurations(VARIANT* result) {
  return answer(result, [&] { return engine_.DataConfigurations(); });
}
STDMETHODIMP Distribution::get_ScaleFactor(double* result) {
  return answer(result, [&] { return engine_.ScaleFactor(); });
}
STDMETHODIMP Distribution::put_ScaleFactor(double value) {
  return guarded([&] { engine_.ScaleFactor(value); });
}
STDMETHODIMP Distribution::get_distType(BSTR* result) {
  return answer(result, [&] { return engine_.distType(); });
}
STDMETHODIMP Distribution::put_distType(BSTR value) {
  return guarded([&] { engine_.distType(utf8FromBstr(value)); });
}

STDMETHODIMP Distribution::get_GraphX(short i, double* result) {
  return answer(result, [&] { return engine_.GraphX(i); });
}
STDMETHODIMP Distribution::put_GraphX(short i, double value) {
  return guarded([&] { engine_.GraphX(i, value); });
}
STDMETHODIMP Distribution::get_GraphPDF(short i, double* result) {
  return answer(result, [&] { return engine_.GraphPDF(i); });
}
STDMETHODIMP Distribution::put_GraphPDF(short i, double value) {
  return guarded([&] { engine_.GraphPDF(i, value); });
}
STDMETHODIMP Distribution::get_GraphOL(short i, double* result) {
  return answer(result, [&] { return engine_.GraphOL(i); });
}
STDMETHODIMP Distribution::put_GraphOL(short i, double value) {
  return guarded([&] { engine_.GraphOL(i, value); });
}
STDMETHODIMP Distribution::ResizeArrays(short size, VARIANT* result) {
  return answer(result, [&] { return engine_.ResizeArrays(size); });
}
STDMETHODIMP Distribution::get_NumPoints(short* result) {
  return answer(result, [&] { return engine_.NumPoints(); });
}
STDMETHODIMP Distribution::CreateGraphData(double graphXmin, double graphXmax,
                                           VARIANT_BOOL noTruncation) {
  return guarded([&] { engine_.CreateGraphData(graphXmin, graphXmax, truth(noTruncation)); });
}

STDMETHODIMP Distribution::GuessParamValue(short paramIndex, double cellValue, double* result) {
  return answer(result, [&] { return engine_.GuessParamValue(paramIndex, cellValue); });
}
STDMETHODIMP Distribution::RandVal(double rndP, double* result) {
  return answer(result, [&] { return engine_.RandVal(rndP); });
}
STDMETHODIMP Distribution::pdf(double x, VARIANT_BOOL noTruncation, VARIANT priorX,
                               double* result) {
  return answer(result,
                [&] { return engine_.pdf(x, truth(noTruncation), fromAutomation(priorX)); });
}
STDMETHODIMP Distribution::cdf(double x, double* result) {
  return answer(result, [&] { return engine_.cdf(x); });
}

STDMETHODIMP Distribution::CalcMean(double* result) {
  return answer(result, [&] { return engine_.CalcMean(); });
}
STDMETHODIMP Distribution::CalcStdev(double mean, double* result) {
  return answer(result, [&] { return engine_.CalcStdev(mean); });
}
STDMETHODIMP Distribution::get_mean(double* result) {
  return answer(result, [&] { return engine_.mean(); });
}
STDMETHODIMP Distribution::get_StDev(VARIANT xMean, double* result) {
  return answer(result, [&] { return engine_.StDev(fromAutomation(xMean)); });
}
STDMETHODIMP Distribution::get_XMin(VARIANT numSD, double* result) {
  return answer(result, [&] {
    const Variant spread = fromAutomation(numSD);
    return spread.isMissing() ? engine_.XMin() : engine_.XMin(spread.toDouble());
  });
}
STDMETHODIMP Distribution::get_XMax(VARIANT numSD, double* result) {
  return answer(result, [&] {
    const Variant spread = fromAutomation(numSD);
    return spread.isMissing() ? engine_.XMax() : engine_.XMax(spread.toDouble());
  });
}

STDMETHODIMP Distribution::ParamsOK(BSTR* errCause, VARIANT_BOOL* result) {
  if (errCause == nullptr) return E_POINTER;
  return answer(result, [&] {
    SysFreeString(std::exchange(*errCause, nullptr));  // no text, also when the check itself fails
    std::string fault;
    const bool valid = engine_.ParamsOK(fault);
    Bstr text = bstr(fault);
    SysFreeString(std::exchange(*errCause, text.release()));
    return valid;
  });
}
STDMETHODIMP Distribution::get_NegInfinity(BSTR* result) {
  return answer(result, [&] { return engine_.NegInfinity(); });
}
STDMETHODIMP Distribution::get_PosInfinity(BSTR* result) {
  return answer(result, [&] { return engine_.PosInfinity(); });
}
STDMETHODIMP Distribution::ParamName(long paramNumber, BSTR* result) {
  return answer(result, [&] { return engine_.ParamName(paramNumber); });
}
STDMETHODIMP Distribution::NumParams(short* result) {
  return answer(result, [&] { return engine_.NumParams(); });
}

}  // namespace palvex::component
