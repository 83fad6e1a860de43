#pragma once

#include <cmath>

namespace palvex::laws {

/// The interval from `minimum` to `maximum`, even where its width is beyond the range of doubles:
/// then all is counted in units of 2.
struct Extent {
  /// @param minimum,maximum  finite, minimum <= maximum
  Extent(double minimum, double maximum)
      : unit(std::isinf(maximum - minimum) ? 2 : 1),
        scale(1 / unit),
        lower(minimum * scale),
        upper(maximum * scale),
        width(upper - lower) {}

  /// Which part of the width lies below x.
  [[nodiscard]] double below(double x) const noexcept { return (x * scale - lower) / width; }
  /// Which part of the width lies above x.
  [[nodiscard]] double above(double x) const noexcept { return (upper - x * scale) / width; }

  double unit;   ///< 1, or 2 for a width beyond the range of doubles
  double scale;  ///< 1 / unit
  double lower;  ///< the minimum in units
  double upper;  ///< the maximum in units
  double width;  ///< upper - lower
};

}  // namespace palvex::laws
