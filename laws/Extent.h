#pragma once

#include <cmath>

namespace palvex::laws {

/// The interval from `minimum` to `maximum`, even where its width is beyond the range of doubles:
/// then all is counted in units of 2.
struct Extent {
  Extent(double minimum, double maximum)
      : unit(std::isinf(maximum - minimum) ? 2 : 1),
        scale(1 / unit),
        lower(minimum * scale),
        upper(maximum * scale),
        width(upper - lower) {}

  /// Which part of the width lies below x, and above it.
  [[nodiscard]] double below(double x) const noexcept { return (x * scale - lower) / width; }
  [[nodiscard]] double above(double x) const noexcept { return (upper - x * scale) / width; }

  double unit;
  double scale;  // 1 / unit
  double lower;  // in units, as all below
  double upper;
  double width;
};

}  // namespace palvex::laws
