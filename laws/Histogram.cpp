#include "laws/Histogram.h"

#include <cmath>
#include <limits>

#include "runtime/RuntimeError.h"

namespace palvex::laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

}  // namespace

Support Histogram::support() const {
  if (bins_.size() < 3) raise(fault::subscript);
  std::size_t first = 0;
  std::size_t last = bins_.size() / 3 - 1;
  while (first < last && bins_[3 * first + 2] == 0) ++first;
  while (last > first && bins_[3 * last + 2] == 0) --last;
  return {bins_[3 * first], bins_[3 * last + 1]};
}

bool Histogram::keepsNothing(const Limits& limits) const {
  if (limits.reversed()) return false;
  const double from = limits.lower.value_or(-infinity);
  const double to = limits.upper.value_or(infinity);
  for (std::size_t i = 0; i < bins_.size(); i += 3) {
    const bool isLast = i + 3 == bins_.size();
    const double upper = bins_[i + 1];
    const bool reaches = isLast ? upper >= from : upper > from;
    if (reaches && bins_[i] <= to && bins_[i + 2] > 0) return false;
  }
  return true;
}

Moments Histogram::moments(const Limits& limits) const {
  Mixture kept;
  for (std::size_t i = 0; i < bins_.size(); i += 3) {
    for (const auto& [lower, upper] : KeptIntervals(limits, bins_[i], bins_[i + 1])) {
      const double width = upper - lower;
      kept.add({std::log(width * bins_[i + 2]), {lower + width / 2, width / std::sqrt(12.0)}});
    }
  }
  return kept.moments();
}

Moments Histogram::integratedMoments(const Limits& limits) const {
  Mixture kept;
  for (std::size_t i = 0; i < bins_.size(); i += 3) {
    for (const auto& [lower, upper] : KeptIntervals(limits, bins_[i], bins_[i + 1])) {
      kept.add(integratedPiece(
          lower, {0, upper - lower}, LinearScale(1), [](double) { return 0; },
          std::log(bins_[i + 2])));
    }
  }
  return kept.moments();
}

}  // namespace palvex::laws
