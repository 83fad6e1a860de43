#pragma once

#include <optional>

#include "runtime/Variant.h"

namespace palvex {

/// The truncation limits of a distribution. A lower limit above the upper one ("reversed") keeps
/// the two outer pieces and cuts out what lies between.
struct Limits {
  std::optional<double> lower;  ///< none: unlimited below
  std::optional<double> upper;  ///< none: unlimited above

  /// Both present, the lower one greater.
  [[nodiscard]] bool reversed() const noexcept { return lower && upper && *lower > *upper; }

  /// Whether the limits cut x away. A limit itself is kept, and equal limits cut nothing.
  [[nodiscard]] bool cut(double x) const noexcept {
    if (lower && upper) {
      if (*lower > *upper) return *upper < x && x < *lower;
      return *lower < *upper && (x > *upper || x < *lower);
    }
    return (lower && x < *lower) || (upper && x > *upper);
  }
};

/// A limit takes part when its variant is numeric; any other content ("none", empty, an infinity
/// text) means no limit on that side.
[[nodiscard]] inline Limits limitsFrom(const Variant& ltl, const Variant& utl) {
  Limits limits;
  if (ltl.isNumeric()) limits.lower = ltl.toDouble();
  if (utl.isNumeric()) limits.upper = utl.toDouble();
  return limits;
}

}  // namespace palvex
