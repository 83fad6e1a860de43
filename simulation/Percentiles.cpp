#include "simulation/Percentiles.h"

#include <algorithm>
#include <cmath>

#include "engine/Law.h"
#include "simulation/Order.h"

namespace palvex::simulation {

namespace {

constexpr std::size_t cellCount = 400;
constexpr std::size_t leastCapacity = 65'536;

/// The smallest rank in [1, n] of which `holds` is true, n + 1 if there is none; what holds of a
/// rank holds of all greater ones. Quick where `guess`, in [1, n], is near.
template <class Condition>
std::uint64_t firstRank(std::uint64_t n, std::uint64_t guess, Condition holds) {
  std::uint64_t low = 1;
  std::uint64_t high = n + 1;
  // Steps that double, away from the guess until the rank lies behind.
  if (holds(guess)) {
    high = guess;
    for (std::uint64_t step = 1; step < high && low == 1; step *= 2) {
      if (holds(high - step)) {
        high -= step;
      } else {
        low = high - step + 1;
      }
    }
  } else {
    low = guess + 1;
    for (std::uint64_t step = 1; low + step <= n && high == n + 1; step *= 2) {
      if (holds(low + step)) {
        high = low + step;
      } else {
        low += step + 1;
      }
    }
  }
  while (low < high) {
    const std::uint64_t middle = low + (high - low) / 2;
    if (holds(middle)) {
      high = middle;
    } else {
      low = middle + 1;
    }
  }
  return low;
}

/// The value with this rank; puts the values into another order.
double ranked(std::span<double> values, std::uint64_t rank) {
  const auto place = values.begin() + static_cast<std::ptrdiff_t>(rank - 1);
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

}  // namespace

std::uint64_t percentileRank(double percent, std::uint64_t n) {
  const double position = percent * static_cast<double>(n) / 100;
  // A percent such as 99.9 is not exact in binary: what lies this near to a whole number is one.
  const double whole = std::round(position);
  const bool isWhole = std::abs(position - whole) <= 4 * 0x1p-52 * position;
  const auto rank = static_cast<std::uint64_t>(isWhole ? whole : std::ceil(position));
  return std::clamp<std::uint64_t>(rank, 1, n);
}

std::pair<std::uint64_t, std::uint64_t> intervalRanks(double percent, std::uint64_t n) {
  if (percent <= 0) return {1, 1};
  if (percent >= 100) return {n, n};
  constexpr double tail = 0.025;
  const double p = percent / 100;
  // P(B >= k) is the probability up to p of the beta law with the shapes k and n - k + 1, the law
  // of the k-th smallest of n uniform numbers.
  const auto orderStatistic = [n](std::uint64_t k) {
    return Law::beta(static_cast<double>(k), static_cast<double>(n - k + 1));
  };
  const auto trials = static_cast<double>(n);
  const double spread = 1.96 * std::sqrt(trials * p * (1 - p));
  const auto nearby = [&](double rank) {
    return static_cast<std::uint64_t>(std::clamp(std::round(rank), 1.0, trials));
  };
  const std::uint64_t pastLow = firstRank(n, nearby(trials * p - spread), [&](std::uint64_t k) {
    return orderStatistic(k).exceedance(p) > tail;
  });
  const std::uint64_t high = firstRank(n, nearby(trials * p + spread + 1), [&](std::uint64_t k) {
    return orderStatistic(k).probability(p) <= tail;
  });
  return {std::max<std::uint64_t>(pastLow - 1, 1), std::min(high, n)};
}

void Window::add(double value, std::uint64_t times) {
  const auto& [low, high] = interval_;
  if (value < low) {
    below_ += times;
  } else if (value == low) {
    atLow_ += times;
  } else if (value < high) {
    inside_.insert(inside_.end(), times, value);
  } else if (value == high) {
    atHigh_ += times;
  }
}

void Window::add(std::span<const double> values) {
  for (const double x : values) add(x, 1);
}

void Window::narrow(const Interval& interval) {
  Window narrower(interval);
  narrower.below_ = below_;
  narrower.add(interval_.low, atLow_);
  for (const double x : inside_) narrower.add(x, 1);
  narrower.add(interval_.high, atHigh_);
  *this = std::move(narrower);
}

std::optional<double> Window::value(std::uint64_t rank) {
  if (rank <= below_) return {};
  rank -= below_;
  if (rank <= atLow_) return interval_.low;
  rank -= atLow_;
  if (rank <= inside_.size()) return ranked(inside_, rank);
  rank -= inside_.size();
  if (rank <= atHigh_) return interval_.high;
  return {};
}

std::size_t Cells::placeOf(double value) const {
  const double distance = value - low;
  const double place = distance == 0 ? 1 : 1 + distance / width;
  return static_cast<std::size_t>(std::clamp(place, 0.0, static_cast<double>(count + 1)));
}

Percentiles::Percentiles(std::vector<double> percents, double reach)
    : percents_(std::move(percents)), reach_(reach) {}

void Digest::add(std::span<const double> some) {
  count += some.size();
  if (wanted.empty()) {
    values.insert(values.end(), some.begin(), some.end());
    return;
  }
  for (const double x : some) {
    const std::size_t place = cells.placeOf(x);
    ++counts[place];
    if (wanted[place]) values.push_back(x);
  }
}

void Percentiles::add(Digest part) {
  if (windows_.empty()) {
    count_ += part.count;
    pilot_.insert(pilot_.end(), part.values.begin(), part.values.end());
    if (count_ >= pilotSize) endPilot();
    return;
  }
  if (part.wanted.empty()) {
    Digest late = blank_;  // the part was made before there were windows
    late.add(part.values);
    part = std::move(late);
  }
  count_ += part.count;
  for (std::size_t i = 0; i < counts_.size(); ++i) counts_[i] += part.counts[i];
  for (std::size_t i = 0; i < windows_.size(); ++i) {
    // Whatever lies in another cell than a window's is below or above it.
    const std::size_t first = cells_.placeOf(windows_[i].interval().low);
    for (std::size_t place = 0; place < first; ++place) {
      if (!part.wanted[place]) windows_[i].addBelow(part.counts[place]);
    }
    windows_[i].add(part.values);
    if (windows_[i].kept() > capacities_[i]) narrow(i);
  }
}

std::span<const double> Percentiles::sortedPilot() {
  if (sorted_.size() != pilot_.size()) {
    sorted_.clear();
    sorted_.reserve(pilot_.size());
    Sorter sorter;
    for (const std::uint32_t place : sorter.order(pilot_)) sorted_.push_back(pilot_[place]);
  }
  return sorted_;
}

Cells Percentiles::bulkOfPilot() {
  const std::span<const double> sorted = sortedPilot();
  const std::size_t tail = sorted.size() / 1000;
  Cells bulk;
  bulk.low = sorted[tail];
  // A little wider, so that the greatest value of the bulk lies inside.
  const double high = sorted[sorted.size() - 1 - tail];
  const double range = high - bulk.low;  // possibly beyond the doubles
  const double share =
      std::isfinite(range) ? range / cellCount : high / cellCount - bulk.low / cellCount;
  bulk.width = share * (1 + 0x1p-30);
  bulk.count = bulk.width > 0 ? cellCount : 1;
  return bulk;
}

void Percentiles::endPilot() {
  cells_ = bulkOfPilot();
  const std::span<const double> sorted = sortedPilot();
  counts_.resize(cells_.count + 2);
  for (const double x : sorted) ++counts_[cells_.placeOf(x)];
  for (const double percent : percents_) {
    Window& window = windows_.emplace_back(
        predicted(percent, {}, [&](std::uint64_t rank) { return sorted[rank - 1]; }));
    window.add(sorted);
    capacities_.push_back(std::max(leastCapacity, 4 * window.kept()));
  }
  pilot_ = {};
  sorted_ = {};
  renewBlank();
}

void Percentiles::narrow(std::size_t index) {
  Window& window = windows_[index];
  const Interval old = window.interval();
  window.narrow(
      predicted(percents_[index], old, [&](std::uint64_t rank) { return window.value(rank); }));
  capacities_[index] = std::max(capacities_[index], 4 * window.kept());
  renewBlank();
}

template <class ValueOf>
Interval Percentiles::predicted(double percent, Interval interval, ValueOf valueOf) const {
  const auto n = static_cast<double>(count_);
  const double p = percent / 100;
  const double margin = reach_ * (std::sqrt(n * p * (1 - p)) + 4);
  const double low = std::floor(n * p - margin);
  const double high = std::ceil(n * p + margin);
  const auto set = [&](double& end, double rank) {
    if (rank < 1 || rank > n) return;
    if (const std::optional<double> value = valueOf(static_cast<std::uint64_t>(rank))) end = *value;
  };
  set(interval.low, low);
  set(interval.high, high);
  return interval;
}

void Percentiles::renewBlank() {
  blank_.cells = cells_;
  blank_.counts.assign(counts_.size(), 0);
  blank_.wanted.assign(counts_.size(), false);
  for (const Window& window : windows_) {
    const auto& [low, high] = window.interval();
    for (std::size_t i = cells_.placeOf(low); i <= cells_.placeOf(high); ++i) {
      blank_.wanted[i] = true;
    }
  }
}

std::optional<double> Percentiles::value(std::size_t index, std::uint64_t rank) {
  if (!windows_.empty()) return windows_[index].value(rank);
  return sortedPilot()[rank - 1];
}

std::optional<Percentiles::Estimate> Percentiles::estimate(std::size_t index) {
  const double percent = percents_[index];
  const auto [lowRank, highRank] = intervalRanks(percent, count_);
  const auto middle = value(index, percentileRank(percent, count_));
  const auto low = value(index, lowRank);
  const auto high = value(index, highRank);
  if (!middle || !low || !high) return {};
  return Estimate{*middle, *low, *high};
}

Histogram Percentiles::histogram() {
  if (count_ == 0) return {};
  Cells cells = cells_;
  std::vector<std::uint64_t> counts = counts_;
  if (windows_.empty()) {
    cells = bulkOfPilot();
    counts.resize(cells.count + 2);
    for (const double x : pilot_) ++counts[cells.placeOf(x)];
  }
  return {cells.low,
          cells.width,
          counts.front(),
          counts.back(),
          {counts.begin() + 1, counts.end() - 1}};
}

}  // namespace palvex::simulation
