#include "families/m_Lognormal.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "families/m_Normal.h"
#include "runtime/NumericText.h"

namespace palvex::m_Lognormal {

namespace {

constexpr double twoPi = 6.28318530717958;

std::string callRecord(double x, double location, double scale, double minimum, Boolean upper) {
  return "lnCDF: (" + numberText(x) + "," + numberText(location) + "," + numberText(scale) + "," +
         numberText(minimum) + "," + Variant(upper).toText() + ")";
}

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Adds `factor` times the probability of the normal deviate beyond z, when the mean of the deviate
/// is `shift`.
void addTail(PartialMoments& moments, int order, double z, double shift, bool upper,
             double factor) {
  const double tail = factor * m_Normal::NormalCDF(z - shift, upper);
  if (tail == 0) return;
  const double roundedArgument = std::isinf(z) ? 0 : std::abs(z - shift) * (std::abs(z) + shift);
  moments.add(static_cast<std::size_t>(order), tail, 4e-15 + 2e-16 * roundedArgument);
}

}  // namespace

double density(double x, double location, double scale, double minimum, const Limits& limits,
               Line caller) try {
  refuseNaN(x);
  if (!(scale > 0 && x > minimum)) return 0;
  if (limits.cut(x)) return 0;
  const double deviation = Log(x - minimum) - location;
  const double exponent = Divide(deviation * deviation, checked(-2 * (scale * scale)));
  return Divide(Exp(exponent), checked((x - minimum) * scale * std::sqrt(twoPi)));
} catch (RuntimeError& error) {
  error.leave("m_Lognormal.LognormalPDF", caller);
  throw;
}

double stableDensity(double x, double location, double scale, double minimum) noexcept {
  if (!(scale > 0 && x > minimum)) return 0;
  const double logX = std::log(x - minimum);
  const double z = (logX - location) / scale;
  return std::exp(-z * z / 2 - logX - std::log(scale)) / std::sqrt(twoPi);
}

double LognormalCDF(double x, double location, double scale, double minimum, Boolean upper,
                    Line caller) try {
  if (x <= minimum) return upper ? 1 : 0;
  return m_Normal::NormalCDF(Divide(Log(x - minimum) - location, scale), upper);
} catch (RuntimeError& error) {
  error.addToDescription(callRecord(x, location, scale, minimum, upper));
  error.leave("m_Lognormal.LognormalCDF", caller);
  throw;
}

double LognormalINV(double p, double location, double scale, double minimum, Boolean upper,
                    Line caller) try {
  return checked(Exp(m_Normal::NormalINV(p, upper) * scale + location) + minimum);
} catch (RuntimeError& error) {
  error.leave("m_Lognormal.LognormalINV", caller);
  throw;
}

Band band(double location, double scale, double minimum, const Limits& limits, Line caller) try {
  if (scale <= 0) return {};
  return keptBand(
      limits, [&](double limit) { return LognormalCDF(limit, location, scale, minimum, false); });
} catch (RuntimeError& error) {
  error.leave("m_Lognormal.LognormalVAL", caller);
  throw;
}

double value(double p, double location, double scale, double minimum, const Band& band,
             Line caller) try {
  if (scale <= 0) return checked(minimum);
  return LognormalINV(band.probability(p), location, scale, minimum, false);
} catch (RuntimeError& error) {
  error.leave("m_Lognormal.LognormalVAL", caller);
  throw;
}

double standardDeviation(double location, double scale) noexcept {
  // exp(location + s^2/2) sqrt(exp(s^2) - 1), in logarithms: no factor overflows before the
  // product.
  const double square = scale * scale;
  const double logRoot = scale < 1e-8 ? std::log(scale) : std::log(-std::expm1(-square)) / 2;
  return std::exp(location + square + logRoot);
}

std::optional<Moments> moments(double location, double scale, double minimum,
                               const Limits& limits) {
  const double mean = std::exp(location + scale * scale / 2);
  if (!limits.lower && !limits.upper) {
    return Moments{minimum + mean, standardDeviation(location, scale)};
  }
  if (mean == 0 || std::isinf(mean)) return {};
  PartialMoments multiple;  // of the mean above the minimum
  for (const Interval& x : KeptIntervals(limits, minimum, infinity)) {
    const double a = (std::log(x.lower - minimum) - location) / scale;
    const double b = (std::log(x.upper - minimum) - location) / scale;
    for (const int order : {0, 1, 2}) {
      const double shift = order * scale;
      const bool upper = a > shift;  // the smaller tails
      const double factor = (upper ? -1 : 1) * (order == 2 ? std::exp(scale * scale) : 1);
      addTail(multiple, order, b, shift, upper, factor);
      addTail(multiple, order, a, shift, upper, -factor);
    }
  }
  const std::optional<Moments> kept = multiple.moments();
  if (!kept) return {};
  return Moments{minimum + mean * kept->mean, mean * kept->sd};
}

Moments integratedMoments(double location, double scale, double minimum, const Limits& limits) {
  const double median = std::exp(location);
  constexpr double smallest = std::numeric_limits<double>::min();  // should the median underflow
  Mixture kept;
  for (const Interval& x : KeptIntervals(limits, minimum, infinity)) {
    const Anchor anchor = anchorAt(std::max(median, smallest), minimum, x);
    const double y = anchor.fromOrigin;
    const double z = y == median ? 0 : (std::log(y) - location) / scale;
    const ExponentialScale t(y, scale);
    kept.add(integratedPiece(
        anchor.value, {t.position(anchor.lower), t.position(anchor.upper)}, t,
        [z](double u) { return -(z + u / 2) * u; }, -z * z / 2 - std::log(twoPi) / 2));
  }
  return kept.moments();
}

}  // namespace palvex::m_Lognormal
