#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "simulation/Order.h"
#include "simulation/Statistics.h"

namespace palvex::simulation {

/// Ranks from 1; equal values share the mean of their ranks.
[[nodiscard]] std::vector<double> ranksOf(std::span<const double> values, Sorter& sorter);

/// Pearson's correlation; NaN without spread.
[[nodiscard]] double correlation(std::span<const double> a, std::span<const double> b);

/// What a result does over the distribution of one input, which is cut into equally probable cells.
struct Conditional {
  std::span<const std::uint64_t> counts;  ///< trials in each cell
  std::span<const double> sums;           ///< sum of the result in each cell

  /// The variance of the result's means in `shares` equal shares of the input, over the result's.
  [[nodiscard]] double varianceShare(std::size_t shares, const Moments& result) const;
  /// The result's mean in the cells from, ..., to - 1; NaN without trials.
  [[nodiscard]] double mean(std::size_t from, std::size_t to) const;
};

}  // namespace palvex::simulation
