#pragma once

#include <array>
#include <cstddef>

namespace palvex {

/// c[0] + c[1] x + ... by Horner's rule, from the highest power down.
template <std::size_t n>
[[nodiscard]] constexpr double polynomial(const std::array<double, n>& c, double x) noexcept {
  double sum = c[n - 1];
  for (std::size_t i = n - 1; i-- > 0;) sum = sum * x + c[i];
  return sum;
}

}  // namespace palvex
