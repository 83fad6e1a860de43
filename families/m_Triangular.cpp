#include "families/m_Triangular.h"

#include <array>
#include <cmath>

namespace palvex::m_Triangular {

namespace {

bool ordered(double minimum, double likely, double maximum) {
  return minimum <= likely && likely <= maximum;
}

/// The piece of an interval where the density runs linearly between its values at the ends, given
/// in units of the peak of a triangle over `width`.
Piece linearPiece(const Interval& x, double atLower, double atUpper, double width) {
  const double length = x.upper - x.lower;
  const double share = atUpper / (atLower + atUpper);
  return {
      std::log(length / width * (atLower + atUpper)),
      {x.lower + length * (1 + share) / 3, length * std::sqrt((1 + 2 * share * (1 - share)) / 18)}};
}

}  // namespace

double density(double x, double minimum, double likely, double maximum, const Limits& limits,
               Line caller) try {
  refuseNaN(x);
  if (!ordered(minimum, likely, maximum) || x < minimum || x > maximum) return 0;
  if (maximum == minimum) return 1;
  if (limits.cut(x)) return 0;
  const double width = maximum - minimum;
  return x >= likely && likely != maximum
             ? Divide(2 * (maximum - x), checked(width * (maximum - likely)))
             : Divide(2 * (x - minimum), checked((likely - minimum) * width));
} catch (RuntimeError& error) {
  error.leave("m_Triangular.TriangularPDF", caller);
  throw;
}

double stableDensity(double x, double minimum, double likely, double maximum) noexcept {
  if (!ordered(minimum, likely, maximum) || !(minimum <= x && x <= maximum)) return 0;
  if (maximum == minimum) return 1;
  const double height = 1 / (maximum / 2 - minimum / 2);
  return x >= likely && likely != maximum
             ? height * ((maximum / 2 - x / 2) / (maximum / 2 - likely / 2))
             : height * ((x / 2 - minimum / 2) / (likely / 2 - minimum / 2));
}

double TriangularCDF(double x, double minimum, double likely, double maximum, Line caller) try {
  refuseNaN(x);
  if (!ordered(minimum, likely, maximum)) return 0;
  const double width = maximum - minimum;
  if (x <= minimum) return 0;
  if (x <= likely) {
    return Divide((x - minimum) * (x - minimum), checked((likely - minimum) * width));
  }
  if (x > maximum) return 1;
  return 1 - Divide((maximum - x) * (maximum - x), checked(width * (maximum - likely)));
} catch (RuntimeError& error) {
  error.leave("m_Triangular.TriangularCDF", caller);
  throw;
}

double TriangularINV(double p, double minimum, double likely, double maximum, Line caller) try {
  refuseNaN(p);
  if (!ordered(minimum, likely, maximum)) return 0;
  const double width = checked(maximum - minimum);
  const double shareBelowLikely = Divide(likely - minimum, width);
  if (p <= 0) return minimum;
  if (p > 1) return maximum;
  // An index in place of a branch: which side a draw falls on is not to be predicted.
  struct Side {
    double end, tail, width, sign;
  };
  const std::array<Side, 2> sides{
      {{maximum, 1 - p, maximum - likely, -1}, {minimum, p, likely - minimum, 1}}};
  const auto& side = sides[p <= shareBelowLikely ? 1 : 0];
  return side.end + side.sign * Sqr(width * side.tail * side.width);
} catch (RuntimeError& error) {
  error.leave("m_Triangular.TriangularINV", caller);
  throw;
}

Band band(double minimum, double likely, double maximum, const Limits& limits, Line caller) try {
  if (maximum <= minimum) return {};
  return keptBand(limits,
                  [&](double limit) { return TriangularCDF(limit, minimum, likely, maximum); });
} catch (RuntimeError& error) {
  error.leave("m_Triangular.TriangularVAL", caller);
  throw;
}

double value(double p, double minimum, double likely, double maximum, const Band& band,
             Line caller) try {
  if (maximum < minimum) return 0;
  if (maximum == minimum) return minimum;
  return TriangularINV(band.probability(p), minimum, likely, maximum);
} catch (RuntimeError& error) {
  error.leave("m_Triangular.TriangularVAL", caller);
  throw;
}

Moments moments(double minimum, double likely, double maximum, const Limits& limits) {
  if (!ordered(minimum, likely, maximum)) raise(fault::invalidCall);
  Mixture kept;
  for (const auto& [lower, upper] : KeptIntervals(limits, minimum, likely)) {
    kept.add(linearPiece({lower, upper}, (lower - minimum) / (likely - minimum),
                         (upper - minimum) / (likely - minimum), maximum - minimum));
  }
  for (const auto& [lower, upper] : KeptIntervals(limits, likely, maximum)) {
    kept.add(linearPiece({lower, upper}, (maximum - lower) / (maximum - likely),
                         (maximum - upper) / (maximum - likely), maximum - minimum));
  }
  return kept.moments();
}

Moments integratedMoments(double minimum, double likely, double maximum, const Limits& limits) {
  if (!ordered(minimum, likely, maximum)) raise(fault::invalidCall);
  // t runs from the interval's end next to the peak, in units of the distance to the outer end of
  // the side.
  const double width = maximum - minimum;
  Mixture kept;
  for (const auto& [lower, upper] : KeptIntervals(limits, minimum, likely)) {
    const double outward = upper - minimum;
    kept.add(integratedPiece(
        upper, {(lower - upper) / outward, 0}, LinearScale(outward),
        [](double t) { return std::log1p(t); },
        2 * std::log(outward) - std::log(likely - minimum) - std::log(width)));
  }
  for (const auto& [lower, upper] : KeptIntervals(limits, likely, maximum)) {
    const double outward = maximum - lower;
    kept.add(integratedPiece(
        lower, {0, (upper - lower) / outward}, LinearScale(outward),
        [](double t) { return std::log1p(-t); },
        2 * std::log(outward) - std::log(maximum - likely) - std::log(width)));
  }
  return kept.moments();
}

}  // namespace palvex::m_Triangular
