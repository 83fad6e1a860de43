#pragma once

#include <string>
#include <vector>

#include "engine/Law.h"
#include "hosts/terminal/Plot.h"
#include "runtime/Limits.h"

/// The chart of a law: where its axis begins and ends, its curves, its marks.
namespace palvex::terminal {

struct Axis {
  double from;
  double to;
};

/// A law that is to be drawn.
struct Subject {
  Law law;        // between the limits
  Law whole;      // without them
  Limits limits;  // the numeric ones
};

/// Where a picture of the law begins and ends: at an end of its values that is near, else where
/// 0.05 % of it lies beyond, but no further than six standard deviations from the mean; with some
/// of what the limits cut away beside it, and a margin.
[[nodiscard]] Axis axisOf(const Subject& subject);

/// The density over an axis: what the limits keep, and dashed what they cut away, in proportion.
[[nodiscard]] Curve densityCurve(const Subject& subject, const Axis& axis);

/// The probability of a value up to x over an axis.
[[nodiscard]] Curve probabilityCurve(const Law& law, const Axis& axis);

/// The height that shows curves best: a pole leaves the panel, and so may what the limits cut away
/// where that is much higher than what they keep.
[[nodiscard]] double heightFor(const std::vector<Curve>& curves, const Axis& axis);

/// Values that the points of a curve are not to miss: the ends, and so many quantiles that each bin
/// of some weight has one.
[[nodiscard]] std::vector<double> landmarks(const Law& law);

}  // namespace palvex::terminal
