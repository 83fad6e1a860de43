#pragma once

#include <windows.h>

#include "component/FloatingPoint.h"
#include "runtime/RuntimeError.h"

// The boundary between C++ and automation. Failures travel as exceptions inside and as an HRESULT
// with an error object outside; they change form here and nowhere else.

namespace palvex::component {

/// A failure of the automation layer itself, returned as this code without an error object.
struct Refused {
  HRESULT code;
};

/// The run-time error number of a failure code: 0x800A0000 + number is that number, well-known
/// automation failures become the number that a run-time has for them, any other code stays as it
/// is.
[[nodiscard]] std::int32_t errorNumber(HRESULT code) noexcept;

/// Raises the run-time error of a failure code, for a lack of memory std::bad_alloc; does nothing
/// for success.
void require(HRESULT code, Line line = Line::here());

/// To be called in a catch block: the HRESULT of the exception in flight. A RuntimeError leaves its
/// source and description in the thread's error object.
[[nodiscard]] HRESULT currentFailure() noexcept;

/// Runs an action that was called from outside: under the engine's floating-point settings, and so
/// that no exception leaves.
template <class Action>
HRESULT guarded(Action&& action) noexcept {
  const StandardArithmetic arithmetic;
  try {
    action();
    return S_OK;
  } catch (...) {
    return currentFailure();
  }
}

}  // namespace palvex::component
