#include "simulation/Sensitivity.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace palvex::simulation {

namespace {

constexpr double undefined = std::numeric_limits<double>::quiet_NaN();

}  // namespace

std::vector<double> ranksOf(std::span<const double> values, Sorter& sorter) {
  const std::span<const std::uint32_t> order = sorter.order(values);
  std::vector<double> ranks(values.size());
  for (std::size_t from = 0; from < order.size();) {
    std::size_t to = from;
    while (to < order.size() && values[order[to]] == values[order[from]]) ++to;
    const double rank = static_cast<double>(from + 1 + to) / 2;
    for (; from < to; ++from) ranks[order[from]] = rank;
  }
  return ranks;
}

double correlation(std::span<const double> a, std::span<const double> b) {
  const auto n = static_cast<double>(a.size());
  const double meanA = std::accumulate(a.begin(), a.end(), 0.0) / n;
  const double meanB = std::accumulate(b.begin(), b.end(), 0.0) / n;
  double squaresA = 0;
  double squaresB = 0;
  double products = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    squaresA += (a[i] - meanA) * (a[i] - meanA);
    squaresB += (b[i] - meanB) * (b[i] - meanB);
    products += (a[i] - meanA) * (b[i] - meanB);
  }
  if (!(squaresA > 0 && squaresB > 0)) return undefined;
  return std::clamp(products / std::sqrt(squaresA * squaresB), -1.0, 1.0);
}

double Conditional::varianceShare(std::size_t shares, const Moments& result) const {
  if (!(result.smallest < result.greatest)) return undefined;
  const std::size_t cells = counts.size() / shares;
  double between = 0;
  for (std::size_t from = 0; from < counts.size(); from += cells) {
    double trials = 0;
    for (std::size_t i = from; i < from + cells; ++i) trials += static_cast<double>(counts[i]);
    if (trials == 0) continue;
    const double distance = mean(from, from + cells) - result.mean;
    between += trials * distance * distance;
  }
  return between / result.squares;
}

double Conditional::mean(std::size_t from, std::size_t to) const {
  double trials = 0;
  double sum = 0;
  for (std::size_t i = from; i < to; ++i) {
    trials += static_cast<double>(counts[i]);
    sum += sums[i];
  }
  return trials > 0 ? sum / trials : undefined;
}

}  // namespace palvex::simulation
