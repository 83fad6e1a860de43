#include "simulation/Order.h"

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>

namespace palvex::simulation {

namespace {

/// The upper 32 bits of an integer that is in the order of the value.
std::uint64_t upperKey(double value) {
  // + 0.0, so that the two zeros are one value.
  const auto bits = std::bit_cast<std::uint64_t>(value + 0.0);
  constexpr std::uint64_t sign = std::uint64_t{1} << 63;
  return ((bits & sign) != 0 ? ~bits : bits | sign) >> 32;
}

}  // namespace

// A radix sort by the upper halves of the values, eleven bits after eleven bits from the lowest on;
// the few values that agree in these are then sorted by all of their bits. Several times as fast as
// std::sort.
std::vector<std::uint32_t> orderOf(std::span<const double> values) {
  constexpr int digitBits = 11;
  constexpr std::size_t digits = std::size_t{1} << digitBits;
  std::vector<std::uint64_t> sorted(values.size());  // the key above, the place below
  for (std::size_t i = 0; i < values.size(); ++i) sorted[i] = upperKey(values[i]) << 32 | i;
  std::vector<std::uint64_t> next(values.size());
  for (int shift = 32; shift < 64; shift += digitBits) {
    std::array<std::size_t, digits + 1> starts{};
    const auto digitOf = [&](std::uint64_t item) { return item >> shift & (digits - 1); };
    for (const std::uint64_t item : sorted) ++starts[digitOf(item) + 1];
    std::partial_sum(starts.begin(), starts.end(), starts.begin());
    for (const std::uint64_t item : sorted) next[starts[digitOf(item)]++] = item;
    sorted.swap(next);
  }

  std::vector<std::uint32_t> order(values.size());
  for (std::size_t from = 0; from < sorted.size();) {
    std::size_t to = from;
    for (; to < sorted.size() && sorted[to] >> 32 == sorted[from] >> 32; ++to) {
      order[to] = static_cast<std::uint32_t>(sorted[to]);
    }
    if (to - from > 1) {
      std::sort(order.begin() + static_cast<std::ptrdiff_t>(from),
                order.begin() + static_cast<std::ptrdiff_t>(to),
                [&](std::uint32_t a, std::uint32_t b) { return values[a] < values[b]; });
    }
    from = to;
  }
  return order;
}

}  // namespace palvex::simulation
