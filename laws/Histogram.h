#pragma once

#include <vector>

#include "laws/Moments.h"
#include "laws/Support.h"

namespace palvex::laws {

/// The law of bins in increasing order with a constant density in each and density 0 in the gaps
/// between them: its mean is the sum of the bins' middles, each times its bin's probability. One
/// bin without width is a point mass.
class Histogram {
 public:
  /// @param bins  lower edge, upper edge and density of each bin in turn
  explicit Histogram(std::vector<double> bins) : bins_(std::move(bins)) {}

  /// The outer edges of the outermost bins that hold anything. Error 9 when there are no bins.
  [[nodiscard]] Support support() const;

  /// Whether the limits keep nothing but gaps and empty bins.
  [[nodiscard]] bool keepsNothing(const Limits& limits) const;

  /// Mean and standard deviation of what the limits keep, bin by bin in closed form. Error 11 when
  /// they keep no probability.
  [[nodiscard]] Moments moments(const Limits& limits) const;

  /// The same by numerical integration.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  std::vector<double> bins_;
};

}  // namespace palvex::laws
