#pragma once

namespace palvex::laws {

/// The probabilities up to a value and above it, each with its own relative accuracy.
struct Tails {
  double lower;  ///< P(X <= x)
  double upper;  ///< P(X > x)
};

/// Both tails from the lower one, to be at most about 1/2.
constexpr Tails fromLower(double p) noexcept {
  return {p, 1 - p};
}

/// Both tails from the upper one, to be at most about 1/2.
constexpr Tails fromUpper(double q) noexcept {
  return {1 - q, q};
}

}  // namespace palvex::laws
