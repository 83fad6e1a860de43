#pragma once

#include <optional>

#include "runtime/RuntimeError.h"

namespace palvex {

/// The error that a call raises, if it raises one.
template <class Call>
std::optional<RuntimeError> faultOf(Call&& call) {
  try {
    static_cast<void>(call());
  } catch (const RuntimeError& error) {
    return error;
  }
  return {};
}

/// Its number, 0 for none.
template <class Call>
int faultNumber(Call&& call) {
  const auto fault = faultOf(call);
  return fault ? fault->number() : 0;
}

}  // namespace palvex
