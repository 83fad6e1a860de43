#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace palvex::simulation {

/// Sorts columns one after the other, in the same memory.
class Sorter {
 public:
  /// The places of the values from the smallest to the greatest, until it is called again.
  /// @param values  finite, fewer than 2^32
  [[nodiscard]] std::span<const std::uint32_t> order(std::span<const double> values);

 private:
  std::vector<std::uint64_t> sorted_;
  std::vector<std::uint64_t> next_;
  std::vector<std::uint32_t> order_;
};

}  // namespace palvex::simulation
