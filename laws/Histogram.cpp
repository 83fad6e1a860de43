#include "laws/Histogram.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "runtime/RuntimeError.h"

namespace palvex::laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

m_Histogram::Arrays withTable(const m_Histogram::DensityArray& bins) {
  m_Histogram::Arrays arrays{bins, {}};
  double running = 0;
  for (std::size_t i = 0; i < bins.size(); i += 3) {
    running += bins[i + 2] * (bins[i + 1] - bins[i]);
    arrays.table.push_back({bins[i], bins[i + 1], running});
  }
  return arrays;
}

}  // namespace

Histogram::Histogram(const m_Histogram::DensityArray& bins) : Histogram(withTable(bins)) {}

Histogram::Histogram(const m_Histogram::Arrays& arrays) {
  std::vector<Bin> bins;
  bins.reserve(arrays.table.size());
  for (std::size_t i = 0; i < arrays.table.size(); ++i) {
    const auto& [lower, upper, upToUpper] = arrays.table[i];
    const double density = arrays.density[3 * i + 2];
    const double probability = lower == upper ? 1 : density * (upper - lower);
    bins.push_back({lower, upper, density, probability, upToUpper, 0});
  }
  double running = 0;
  for (std::size_t i = bins.size(); i-- > 0;) {
    bins[i].aboveUpper = running;
    running += bins[i].probability;
  }
  shared_ = std::make_shared<const std::vector<Bin>>(std::move(bins));
  bins_ = *shared_;
}

Support Histogram::support() const {
  if (bins_.empty()) raise(fault::subscript);
  const auto [lower, upper] = valuesIn({-infinity, infinity});
  return {lower, upper};
}

Interval Histogram::valuesIn(const Interval& interval) const noexcept {
  Interval values = interval;
  const auto first = std::find_if(bins_.begin(), bins_.end(), [&](const Bin& bin) {
    return bin.density > 0 && bin.upper > interval.lower;
  });
  if (first != bins_.end()) values.lower = std::max(interval.lower, first->lower);
  const auto last = std::find_if(bins_.rbegin(), bins_.rend(), [&](const Bin& bin) {
    return bin.density > 0 && bin.lower < interval.upper;
  });
  if (last != bins_.rend()) values.upper = std::min(interval.upper, last->upper);
  return values;
}

bool Histogram::keepsNothing(const Limits& limits) const noexcept {
  if (limits.reversed()) return false;
  const double from = limits.lower.value_or(-infinity);
  const double to = limits.upper.value_or(infinity);
  return std::none_of(bins_.begin(), bins_.end(), [&](const Bin& bin) {
    const bool reaches = &bin == &bins_.back() ? bin.upper >= from : bin.upper > from;
    return reaches && bin.lower <= to && bin.density > 0;
  });
}

double Histogram::density(double x) const noexcept {
  const auto next = std::upper_bound(bins_.begin(), bins_.end(), x,
                                     [](double at, const Bin& bin) { return at < bin.lower; });
  if (next == bins_.begin()) return 0;
  const Bin& bin = *(next - 1);
  return x < bin.upper || (x == bin.upper && next == bins_.end()) ? bin.density : 0;
}

double Histogram::logDensity(double x) const noexcept {
  return std::log(density(x));
}

Tails Histogram::tails(double x) const noexcept {
  const auto next = std::upper_bound(bins_.begin(), bins_.end(), x,
                                     [](double at, const Bin& bin) { return at < bin.lower; });
  if (next == bins_.begin()) return {0, 1};
  const Bin& bin = *(next - 1);
  if (x >= bin.upper) return {bin.upToUpper, bin.aboveUpper};
  const double width = bin.upper - bin.lower;
  const double before = upToLower(static_cast<std::size_t>(&bin - bins_.data()));
  return {std::min(bin.upToUpper, before + bin.probability * ((x - bin.lower) / width)),
          bin.aboveUpper + bin.probability * ((bin.upper - x) / width)};
}

double Histogram::quantile(double p, double q) const noexcept {
  const bool isLower = p < q;
  const auto found = std::partition_point(bins_.begin(), bins_.end() - 1, [&](const Bin& bin) {
    return isLower ? bin.upToUpper < p : bin.aboveUpper > q;
  });
  const Bin& bin = *found;
  const double width = bin.upper - bin.lower;
  if (!(bin.probability > 0) || width == 0) return bin.upper;
  if (!isLower) return bin.upper - width * ((q - bin.aboveUpper) / bin.probability);
  const double before = upToLower(static_cast<std::size_t>(found - bins_.begin()));
  return bin.lower + width * ((p - before) / bin.probability);
}

Moments Histogram::moments(const Limits& limits) const {
  Mixture kept;
  for (const Bin& bin : bins_) {
    for (const auto& [lower, upper] : KeptIntervals(limits, bin.lower, bin.upper)) {
      const double width = upper - lower;
      kept.add({std::log(bin.probability) + std::log(width / (bin.upper - bin.lower)),
                {lower, width / 2},
                width / std::sqrt(12.0)});
    }
  }
  return kept.moments();
}

Moments Histogram::integratedMoments(const Limits& limits) const {
  Mixture kept;
  for (const Bin& bin : bins_) {
    for (const auto& [lower, upper] : KeptIntervals(limits, bin.lower, bin.upper)) {
      const double width = upper - lower;
      kept.add(integratedPiece(
          {lower, 0}, {0, 1}, LinearScale(width), [](double) { return 0; },
          std::log(bin.probability) + std::log(width / (bin.upper - bin.lower))));
    }
  }
  return kept.moments();
}

}  // namespace palvex::laws
