#pragma once

#include "runtime/Arithmetic.h"
#include "runtime/Limits.h"

namespace palvex {

/// The band of probabilities that a distribution keeps between its limits, and the mapping of a
/// uniform probability into it. In a wrapped band (reversed limits) the kept pieces are [0, upper]
/// and [lower, 1], and `split` is the share of the first; it is not finite where there is nothing
/// to share.
struct Band {
  double lower = 0;      ///< probability up to the lower limit
  double upper = 1;      ///< probability up to the upper limit
  bool wrapped = false;  ///< whether two pieces are kept, [0, upper] and [lower, 1]
  bool whole = true;     ///< whether `lower` is 0 and `upper` is 1
  double split = 0;      ///< of a wrapped band the share of [0, upper]

  /// The probability at the position p of the band, p usually in [0, 1].
  /// Error 6 or 11 where the wrapped band, or the piece of it that p falls in, holds nothing.
  [[nodiscard]] double probability(double p, Line line = Line::here()) const {
    if (whole) return p;
    if (!wrapped) return (upper - lower) * p + lower;
    return wrappedProbability(p, line);
  }

 private:
  [[nodiscard]] double wrappedProbability(double p, Line line) const;
};

/// `band`, wrapped where both limits are present and the lower bound exceeds the upper one.
[[nodiscard]] inline Band wrappedWhere(const Limits& limits, Band band) noexcept {
  band.wrapped = limits.lower && limits.upper && band.lower > band.upper;
  band.whole = band.lower == 0 && band.upper == 1;
  // A quotient that is not finite raises an error only in a draw that needs it: some draws do not.
  if (band.wrapped) band.split = band.upper / (1 - band.lower + band.upper);
  return band;
}

/// The band that `limits` keep of a distribution with the given cumulative probability.
template <class Cumulative>
[[nodiscard]] Band keptBand(const Limits& limits, Cumulative&& cumulative) {
  Band band;
  if (limits.lower) band.lower = cumulative(*limits.lower);
  if (limits.upper) band.upper = cumulative(*limits.upper);
  return wrappedWhere(limits, band);
}

}  // namespace palvex
