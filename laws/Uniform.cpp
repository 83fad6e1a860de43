#include "laws/Uniform.h"

#include <cmath>
#include <limits>

namespace palvex::laws {

Support Uniform::support() const noexcept {
  return {minimum_, maximum_};
}

double Uniform::density(double x) const noexcept {
  if (!(minimum_ <= x && x <= maximum_)) return 0;
  return maximum_ == minimum_ ? 1 : 0.5 / (maximum_ / 2 - minimum_ / 2);
}

double Uniform::logDensity(double x) const noexcept {
  if (!(minimum_ <= x && x <= maximum_)) return -std::numeric_limits<double>::infinity();
  return extent_.width == 0 ? 0 : -std::log(extent_.width) - std::log(extent_.unit);
}

Moments Uniform::moments(const Limits& limits) const {
  const double whole = maximum_ - minimum_;
  if (std::isinf(whole)) return doubled(half().moments(halved(limits)));
  Mixture kept;
  for (const auto& [lower, upper] : KeptIntervals(limits, minimum_, maximum_)) {
    const double width = upper - lower;
    kept.add({std::log(width / whole), {lower, width / 2}, width / std::sqrt(12.0)});
  }
  return kept.moments();
}

Moments Uniform::integratedMoments(const Limits& limits) const {
  const double whole = maximum_ - minimum_;
  if (std::isinf(whole)) {
    return doubled(half().integratedMoments(halved(limits)));
  }
  Mixture kept;
  for (const auto& [lower, upper] : KeptIntervals(limits, minimum_, maximum_)) {
    const double width = upper - lower;
    kept.add(integratedPiece(
        {lower, 0}, {0, 1}, LinearScale(width), [](double) { return 0; }, std::log(width / whole)));
  }
  return kept.moments();
}

}  // namespace palvex::laws
