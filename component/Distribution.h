#pragma once

#include <ocidl.h>

#include <array>
#include <atomic>

#include "component/Module.h"
#include "component/Owned.h"
#include "component/palvex_h.h"
#include "engine/c_Distribution.h"

namespace palvex::component {

/// The engine's distribution as an automation object. Every member converts its arguments, asks the
/// engine, and converts the answer; nothing is decided here.
class Distribution final : public _c_Distribution,
                           public ISupportErrorInfo,
                           public IProvideClassInfo {
 public:
  // IUnknown
  STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
  STDMETHODIMP_(ULONG) AddRef() override;
  STDMETHODIMP_(ULONG) Release() override;

  // IDispatch
  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
  STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                             DISPID* ids) override;
  STDMETHODIMP Invoke(DISPID member, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                      VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override;

  // ISupportErrorInfo
  STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override;

  // IProvideClassInfo
  STDMETHODIMP GetClassInfo(ITypeInfo** info) override;

  // _c_Distribution: the public variables
  STDMETHODIMP get_param1(VARIANT* result) override;
  STDMETHODIMP put_param1(VARIANT value) override;
  STDMETHODIMP putref_param1(VARIANT value) override;
  STDMETHODIMP get_param2(VARIANT* result) override;
  STDMETHODIMP put_param2(VARIANT value) override;
  STDMETHODIMP putref_param2(VARIANT value) override;
  STDMETHODIMP get_param3(VARIANT* result) override;
  STDMETHODIMP put_param3(VARIANT value) override;
  STDMETHODIMP putref_param3(VARIANT value) override;
  STDMETHODIMP get_param4(VARIANT* result) override;
  STDMETHODIMP put_param4(VARIANT value) override;
  STDMETHODIMP putref_param4(VARIANT value) override;
  STDMETHODIMP get_ltl(VARIANT* result) override;
  STDMETHODIMP put_ltl(VARIANT value) override;
  STDMETHODIMP putref_ltl(VARIANT value) override;
  STDMETHODIMP get_utl(VARIANT* result) override;
  STDMETHODIMP put_utl(VARIANT value) override;
  STDMETHODIMP putref_utl(VARIANT value) override;
  STDMETHODIMP get_Active(VARIANT_BOOL* result) override;
  STDMETHODIMP put_Active(VARIANT_BOOL value) override;
  STDMETHODIMP get_Dynamic(VARIANT_BOOL* result) override;
  STDMETHODIMP put_Dynamic(VARIANT_BOOL value) override;
  STDMETHODIMP get_graphMax(BSTR* result) override;
  STDMETHODIMP put_graphMax(BSTR value) override;
  STDMETHODIMP get_graphMin(BSTR* result) override;
  STDMETHODIMP put_graphMin(BSTR value) override;
  STDMETHODIMP get_numberFormat(BSTR* result) override;
  STDMETHODIMP put_numberFormat(BSTR value) override;

  // _c_Distribution: the other members
  STDMETHODIMP get_ValidDistributions(VARIANT* result) override;
  STDMETHODIMP get_DataConfigurations(VARIANT* result) override;
  STDMETHODIMP get_ScaleFactor(double* result) override;
  STDMETHODIMP put_ScaleFactor(double value) override;
  STDMETHODIMP get_distType(BSTR* result) override;
  STDMETHODIMP put_distType(BSTR value) override;
  STDMETHODIMP get_GraphX(short i, double* result) override;
  STDMETHODIMP put_GraphX(short i, double value) override;
  STDMETHODIMP get_GraphPDF(short i, double* result) override;
  STDMETHODIMP put_GraphPDF(short i, double value) override;
  STDMETHODIMP get_GraphOL(short i, double* result) override;
  STDMETHODIMP put_GraphOL(short i, double value) override;
  STDMETHODIMP ResizeArrays(short size, VARIANT* result) override;
  STDMETHODIMP get_NumPoints(short* result) override;
  STDMETHODIMP GuessParamValue(short paramIndex, double cellValue, double* result) override;
  STDMETHODIMP RandVal(double rndP, double* result) override;
  STDMETHODIMP CalcMean(double* result) override;
  STDMETHODIMP CalcStdev(double mean, double* result) override;
  STDMETHODIMP get_mean(double* result) override;
  STDMETHODIMP get_StDev(VARIANT xMean, double* result) override;
  STDMETHODIMP get_XMin(VARIANT numSD, double* result) override;
  STDMETHODIMP get_XMax(VARIANT numSD, double* result) override;
  STDMETHODIMP pdf(double x, VARIANT_BOOL noTruncation, VARIANT priorX, double* result) override;
  STDMETHODIMP cdf(double x, double* result) override;
  STDMETHODIMP CreateGraphData(double graphXmin, double graphXmax,
                               VARIANT_BOOL noTruncation) override;
  STDMETHODIMP ParamsOK(BSTR* errCause, VARIANT_BOOL* result) override;
  STDMETHODIMP get_NegInfinity(BSTR* result) override;
  STDMETHODIMP get_PosInfinity(BSTR* result) override;
  STDMETHODIMP ParamName(long paramNumber, BSTR* result) override;
  STDMETHODIMP NumParams(short* result) override;

 private:
  ~Distribution() = default;  // by the last Release

  /// The public variables of variants: the engine has its own form of what the host gave, and the
  /// host reads back exactly what it gave.
  static HRESULT read(const OwnedVariant& given, VARIANT* result) noexcept;
  static HRESULT assign(Variant& variable, OwnedVariant& given, const VARIANT& value) noexcept;

  Lock lock_;
  std::atomic<ULONG> references_ = 1;
  c_Distribution engine_;
  OwnedVariant param1_, param2_, param3_, param4_, ltl_, utl_;
};

}  // namespace palvex::component
