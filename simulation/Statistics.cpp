#include "simulation/Statistics.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace palvex::simulation {

namespace {

constexpr double undefined = std::numeric_limits<double>::quiet_NaN();

// Sums run in eight lanes (value i into lane i mod 8), which processors add at once; the order is
// the same everywhere.
constexpr std::size_t lanes = 8;
using Lanes = std::array<double, lanes>;

double total(const Lanes& sums) {
  return ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
}

/// Calls visit(lane, value) for each value in its order.
template <class Visit>
void forEach(std::span<const double> values, Visit visit) {
  const std::size_t whole = values.size() / lanes * lanes;
  for (std::size_t i = 0; i < whole; i += lanes) {
    for (std::size_t lane = 0; lane < lanes; ++lane) visit(lane, values[i + lane]);
  }
  for (std::size_t i = whole; i < values.size(); ++i) visit(i - whole, values[i]);
}

}  // namespace

Moments Moments::of(std::span<const double> values) {
  Moments moments;
  if (values.empty()) return moments;
  moments.count = static_cast<double>(values.size());

  Lanes sums{};
  Lanes smallest;
  Lanes greatest;
  smallest.fill(moments.smallest);
  greatest.fill(moments.greatest);
  forEach(values, [&](std::size_t lane, double x) {
    sums[lane] += x;
    smallest[lane] = x < smallest[lane] ? x : smallest[lane];
    greatest[lane] = x > greatest[lane] ? x : greatest[lane];
  });
  moments.smallest = *std::min_element(smallest.begin(), smallest.end());
  moments.greatest = *std::max_element(greatest.begin(), greatest.end());
  moments.mean = total(sums) / moments.count;

  Lanes squares{};
  Lanes cubes{};
  Lanes fourths{};
  forEach(values, [&, mean = moments.mean](std::size_t lane, double x) {
    const double distance = x - mean;
    const double square = distance * distance;
    squares[lane] += square;
    cubes[lane] += square * distance;
    fourths[lane] += square * square;
  });
  moments.squares = total(squares);
  moments.cubes = total(cubes);
  moments.fourths = total(fourths);
  return moments;
}

void Moments::add(const Moments& later) {
  if (later.count == 0) return;
  if (count == 0) {
    *this = later;
    return;
  }
  const double n = count + later.count;
  const double before = count / n;
  const double after = later.count / n;
  const double d = later.mean - mean;
  const double d2 = d * d;
  fourths += later.fourths +
             d2 * d2 * count * after * (before * before - before * after + after * after) +
             6 * d2 * (before * before * later.squares + after * after * squares) +
             4 * d * (before * later.cubes - after * cubes);
  cubes += later.cubes + d2 * d * count * after * (before - after) +
           3 * d * (before * later.squares - after * squares);
  squares += later.squares + d2 * count * after;
  mean += d * after;
  count = n;
  smallest = std::min(smallest, later.smallest);
  greatest = std::max(greatest, later.greatest);
}

double Moments::sd() const {
  if (count < 2) return undefined;
  return spread() ? std::sqrt(squares / (count - 1)) : 0;
}

double Moments::standardError() const {
  return sd() / std::sqrt(count);
}

double Moments::skewness() const {
  if (!spread()) return undefined;
  const double variance = squares / count;
  return cubes / count / (variance * std::sqrt(variance));
}

double Moments::kurtosis() const {
  if (!spread()) return undefined;
  const double variance = squares / count;
  return fourths / count / (variance * variance) - 3;
}

}  // namespace palvex::simulation
