#pragma once

// The published routines by name, called with the values of a line of text.

#include <functional>
#include <map>
#include <string>

#include "Script.h"

namespace palvex::script {

/// A routine: the values of its arguments in their order, those that it fills included; answers
/// with its result, if it has one, and what the filled arguments hold then.
struct Routine {
  std::function<Values(const Values&)> call;
  std::vector<bool> fills;    // of each argument, whether the routine fills it
  bool takesNumbers = false;  // or what a number converts to, and nothing else
};

/// All of them, by name.
const std::map<std::string, Routine>& routines();

Values call(const std::string& name, const Values& given);

}  // namespace palvex::script
