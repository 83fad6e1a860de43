#pragma once

#include <optional>
#include <sstream>
#include <string>

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

/// The routines in an error's trace, "module.routine" separated by blanks, the innermost first.
inline std::string routinesOf(const RuntimeError& error) {
  std::string routines;
  std::istringstream source(error.source());
  for (std::string word; source >> word;) {
    if (!word.starts_with("palvex.")) continue;
    if (!routines.empty()) routines += ' ';
    routines += word.substr(7);
  }
  return routines;
}

}  // namespace palvex
