#include "families/m_Triangular.h"

#include <array>
#include <cmath>

namespace palvex::m_Triangular {

namespace {

bool ordered(double minimum, double likely, double maximum) {
  return minimum <= likely && likely <= maximum;
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
}

double TriangularINV(double p, double minimum, double likely, double maximum, Line caller) try {
  refuseNaN(p);
  if (!ordered(minimum, likely, maximum)) return 0;
  const double width = checked(maximum - minimum);
  const double shareBelowLikely = Divide(likely - minimum, width);
  if (p <= 0) return minimum;
  if (p > 1) return maximum;
  // An index in place of a branch: a processor can not predict which side a random draw falls on,
  // and a mispredicted branch costs more than the whole formula.
  struct Side {
    double end, tail, width, sign;
  };
  const std::array<Side, 2> sides{
      {{maximum, 1 - p, maximum - likely, -1}, {minimum, p, likely - minimum, 1}}};
  const auto& side = sides[p <= shareBelowLikely ? 1 : 0];
  return side.end + side.sign * Sqr(width * side.tail * side.width);
} catch (RuntimeError& error) {
  error.leave("m_Triangular.TriangularINV", caller);
}

Band band(double minimum, double likely, double maximum, const Limits& limits, Line caller) try {
  if (maximum <= minimum) return {};
  return keptBand(limits,
                  [&](double limit) { return TriangularCDF(limit, minimum, likely, maximum); });
} catch (RuntimeError& error) {
  error.leave("m_Triangular.TriangularVAL", caller);
}

double value(double p, double minimum, double likely, double maximum, const Band& band,
             Line caller) try {
  if (maximum < minimum) return 0;
  if (maximum == minimum) return minimum;
  return TriangularINV(band.probability(p), minimum, likely, maximum);
} catch (RuntimeError& error) {
  error.leave("m_Triangular.TriangularVAL", caller);
}

}  // namespace palvex::m_Triangular
