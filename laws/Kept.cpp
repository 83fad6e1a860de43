#include "laws/Kept.h"

namespace palvex::laws {

Limits takingPart(Limits limits) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const auto& [lower, upper] = limits;
  if (lower && std::isnan(*lower)) throw std::invalid_argument("Improper value for LTL.");
  if (upper && std::isnan(*upper)) throw std::invalid_argument("Improper value for UTL.");
  if (lower && lower == upper)
    throw std::invalid_argument("LTL value can not be equal to UTL value.");
  if (lower == -infinity) limits.lower.reset();
  if (upper == infinity) limits.upper.reset();
  return limits;
}

bool excludesAll(const Limits& limits, const Support& support) noexcept {
  const auto isBelow = [&](double limit) {
    return support.lowerIncluded ? limit < support.lower : limit <= support.lower;
  };
  const auto isAbove = [&](double limit) {
    return support.upperIncluded ? limit > support.upper : limit >= support.upper;
  };
  const bool lowerAbove = limits.lower && isAbove(*limits.lower);
  const bool upperBelow = limits.upper && isBelow(*limits.upper);
  return limits.reversed() ? lowerAbove && upperBelow : lowerAbove || upperBelow;
}

}  // namespace palvex::laws
