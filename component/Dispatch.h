#pragma once

#include "component/palvex_h.h"

// Late binding: members by their names, arguments as variants. It goes through a constant table of
// the members and ends in the same methods as early binding.

namespace palvex::component {

/// One call of IDispatch::Invoke.
struct LateCall {
  DISPID member;
  LCID locale;
  WORD flags;
  DISPPARAMS* parameters;
  VARIANT* result;       // null when the caller wants none
  EXCEPINFO* exception;  // null when the caller wants only the code
  UINT* badArgument;     // null when the caller does not ask
};

/// IDispatch::GetIDsOfNames: a member, letter case ignored, and the names of its arguments.
HRESULT findIdentifiers(LPOLESTR* names, UINT count, DISPID* ids) noexcept;

/// IDispatch::Invoke.
HRESULT invoke(_c_Distribution& object, const LateCall& call) noexcept;

}  // namespace palvex::component
