#include "component/Boundary.h"

#include <exception>
#include <new>

#include "component/Owned.h"
#include "component/Text.h"
#include "component/palvex_h.h"

namespace palvex::component {

namespace {

constexpr std::int32_t internalError = 51;

HRESULT codeOf(std::int32_t number) noexcept {
  if (number < 0) return number;  // a failure code that a host's object raised
  return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, number & 0xFFFF);
}

/// Leaves source and description in the thread's error object. When memory is short, only the
/// number is returned.
HRESULT publish(const RuntimeError& error) noexcept {
  SetErrorInfo(0, nullptr);
  try {
    Ref<ICreateErrorInfo> info;
    if (SUCCEEDED(CreateErrorInfo(info.receive()))) {
      info->SetGUID(__uuidof(_c_Distribution));
      info->SetSource(bstr(error.source()).get());
      info->SetDescription(bstr(error.description()).get());
      if (const auto finished = info.as<IErrorInfo>()) SetErrorInfo(0, finished.get());
    }
  } catch (...) {
    SetErrorInfo(0, nullptr);
  }
  return codeOf(error.number());
}

}  // namespace

std::int32_t errorNumber(HRESULT code) noexcept {
  if (HRESULT_FACILITY(code) == FACILITY_CONTROL) return HRESULT_CODE(code);
  switch (code) {
    case E_INVALIDARG:
      return fault::invalidCall;
    case DISP_E_OVERFLOW:
      return fault::overflow;
    case E_OUTOFMEMORY:
      return fault::outOfMemory;
    case DISP_E_BADINDEX:
      return fault::subscript;
    case DISP_E_DIVBYZERO:
      return fault::divisionByZero;
    case DISP_E_TYPEMISMATCH:
    case DISP_E_BADVARTYPE:
      return fault::typeMismatch;
    case DISP_E_MEMBERNOTFOUND:
    case DISP_E_UNKNOWNNAME:
      return fault::unknownMember;
    case DISP_E_PARAMNOTOPTIONAL:
      return 449;
    case DISP_E_BADPARAMCOUNT:
      return 450;
    default:
      return code;
  }
}

void require(HRESULT code, Line line) {
  if (code == E_OUTOFMEMORY) throw std::bad_alloc();
  if (FAILED(code)) raise(errorNumber(code), line);
}

HRESULT currentFailure() noexcept {
  try {
    try {
      throw;
    } catch (const Refused& refusal) {
      SetErrorInfo(0, nullptr);
      return refusal.code;
    } catch (const RuntimeError& error) {
      return publish(error);
    } catch (const std::bad_alloc&) {
      return publish(RuntimeError(fault::outOfMemory));
    } catch (const std::exception& failure) {
      return publish(RuntimeError(internalError, failure.what()));
    } catch (...) {
      return publish(RuntimeError(internalError, "Internal error"));
    }
  } catch (...) {  // no memory to describe the failure
    SetErrorInfo(0, nullptr);
    return codeOf(fault::outOfMemory);
  }
}

}  // namespace palvex::component
