#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace palvex::simulation {

/// The places of the values from the smallest to the greatest.
/// @param values  finite, fewer than 2^32
[[nodiscard]] std::vector<std::uint32_t> orderOf(std::span<const double> values);

}  // namespace palvex::simulation
