#pragma once

#include <memory>
#include <span>
#include <vector>

#include "families/m_Histogram.h"
#include "laws/Moments.h"
#include "laws/Support.h"
#include "laws/Tails.h"

namespace palvex::laws {

/// The law of bins in increasing order with a constant density in each and density 0 in the gaps
/// between them: its mean is the sum of the bins' middles, each times its bin's probability. One
/// bin without width is a point mass.
class Histogram {
 public:
  /// From the arrays that m_Histogram made of worksheet data.
  explicit Histogram(const m_Histogram::Arrays& arrays);
  /// @param bins  lower edge, upper edge and density of each bin in turn
  explicit Histogram(const m_Histogram::DensityArray& bins);

  /// The outer edges of the outermost bins that hold anything. Error 9 when there are no bins.
  [[nodiscard]] Support support() const;

  /// Whether the limits keep nothing but gaps and empty bins.
  [[nodiscard]] bool keepsNothing(const Limits& limits) const noexcept;

  /// The smallest and the greatest value in an interval that holds at least one.
  [[nodiscard]] Interval valuesIn(const Interval& interval) const noexcept;

  /// The density at x. A bin's left edge belongs to it, its right edge does not, except the last.
  [[nodiscard]] double density(double x) const noexcept;
  /// Its logarithm; -infinity in a gap.
  [[nodiscard]] double logDensity(double x) const noexcept;

  /// The probabilities up to x and above it, each with its own relative accuracy.
  [[nodiscard]] Tails tails(double x) const noexcept;
  /// The least value with at least the probability p up to it, and so at most q = 1 - p above it;
  /// solved in the smaller one.
  [[nodiscard]] double quantile(double p, double q) const noexcept;

  /// Mean and standard deviation of what the limits keep, bin by bin in closed form. Error 11 when
  /// they keep no probability.
  [[nodiscard]] Moments moments(const Limits& limits) const;

  /// The same by numerical integration.
  [[nodiscard]] Moments integratedMoments(const Limits& limits) const;

 private:
  struct Bin {
    double lower;
    double upper;
    double density;
    double probability;
    double upToUpper;   // probability of values up to the upper edge
    double aboveUpper;  // and beyond it
  };
  [[nodiscard]] double upToLower(std::size_t i) const {
    return i == 0 ? 0 : bins_[i - 1].upToUpper;
  }

  std::shared_ptr<const std::vector<Bin>> shared_;  // so that a copy costs nothing
  std::span<const Bin> bins_;
};

}  // namespace palvex::laws
