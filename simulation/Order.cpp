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
std::span<const std::uint32_t> Sorter::order(std::span<const double> values) {
  constexpr int digitBits = 11;
  constexpr std::size_t digits = std::size_t{1} << digitBits;
  constexpr std::array shifts{32, 32 + digitBits, 32 + 2 * digitBits};
  const auto digitOf = [](std::uint64_t item, int shift) { return item >> shift & (digits - 1); };

  sorted_.resize(values.size());  // the key above, the place below
  std::array<std::array<std::uint32_t, digits + 1>, shifts.size()> starts{};
  for (std::size_t i = 0; i < values.size(); ++i) {
    sorted_[i] = upperKey(values[i]) << 32 | i;
    for (std::size_t k = 0; k < shifts.size(); ++k) ++starts[k][digitOf(sorted_[i], shifts[k]) + 1];
  }
  next_.resize(values.size());
  for (std::size_t k = 0; k < shifts.size(); ++k) {
    std::partial_sum(starts[k].begin(), starts[k].end(), starts[k].begin());
    for (const std::uint64_t item : sorted_) next_[starts[k][digitOf(item, shifts[k])]++] = item;
    sorted_.swap(next_);
  }

  order_.resize(values.size());
  for (std::size_t from = 0; from < sorted_.size();) {
    std::size_t to = from;
    for (; to < sorted_.size() && sorted_[to] >> 32 == sorted_[from] >> 32; ++to) {
      order_[to] = static_cast<std::uint32_t>(sorted_[to]);
    }
    if (to - from > 1) {
      std::sort(order_.begin() + static_cast<std::ptrdiff_t>(from),
                order_.begin() + static_cast<std::ptrdiff_t>(to),
                [&](std::uint32_t a, std::uint32_t b) { return values[a] < values[b]; });
    }
    from = to;
  }
  return order_;
}

}  // namespace palvex::simulation
