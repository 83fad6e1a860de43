#include "families/m_Weibull.h"

#include <cmath>
#include <limits>

#include "families/m_Gamma.h"

namespace palvex::m_Weibull {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

}  // namespace

double density(double x, double shape, double scale, double minimum, const Limits& limits,
               Line caller) try {
  refuseNaN(x);
  if (!(shape > 0 && scale > 0 && x > minimum)) return 0;
  if (limits.cut(x)) return 0;
  const double z = (x - minimum) / scale;
  return checked(Power(z, shape - 1) * (shape / scale) * Exp(-Power(z, shape)));
} catch (RuntimeError& error) {
  error.leave("m_Weibull.WeibullPDF", caller);
  throw;
}

bool densityHolds(double x, double shape, double scale, double minimum) noexcept {
  if (!(shape > 0 && scale > 0 && x > minimum)) return true;
  const double z = (x - minimum) / scale;
  return std::isfinite(std::pow(z, shape)) &&
         std::isfinite(std::pow(z, shape - 1) * (shape / scale));
}

double stableDensity(double x, double shape, double scale, double minimum) noexcept {
  if (!(shape > 0 && scale > 0 && x >= minimum)) return 0;
  if (shape == 1) return std::exp(-(x - minimum) / scale) / scale;
  const double logZ = std::log(x - minimum) - std::log(scale);
  const double fall = std::exp(shape * logZ);
  if (std::isinf(fall)) return 0;
  return std::exp((shape - 1) * logZ + std::log(shape) - std::log(scale) - fall);
}

double WeibullCDF(double x, double shape, double scale, double minimum, Line caller) try {
  refuseNaN(x);
  if (!(shape > 0 && scale > 0 && x >= minimum)) return 0;
  return 1 - std::exp(-Power((x - minimum) / scale, shape));
} catch (RuntimeError& error) {
  error.leave("m_Weibull.WeibullCDF", caller);
  throw;
}

double WeibullINV(double p, double shape, double scale, double minimum, Line caller) try {
  constexpr double smallestTail = 1E-300;  // takes the place of the 0 that p = 1 leaves above it
  refuseNaN(p);
  if (!(shape > 0 && scale > 0 && p > 0)) return checked(minimum);
  const double logTail = Log(p == 1 ? smallestTail : 1 - p);
  return checked(Power(-logTail, 1 / shape) * scale + minimum);
} catch (RuntimeError& error) {
  error.leave("m_Weibull.WeibullINV", caller);
  throw;
}

Band band(double shape, double scale, double minimum, const Limits& limits, Line caller) try {
  if (!(shape > 0 && scale > 0)) return {};
  return keptBand(limits, [&](double limit) { return WeibullCDF(limit, shape, scale, minimum); });
} catch (RuntimeError& error) {
  error.leave("m_Weibull.WeibullVAL", caller);
  throw;
}

double value(double p, double shape, double scale, double minimum, const Band& band,
             Line caller) try {
  refuseNaN(p);
  if (!(shape > 0 && scale > 0 && p >= 0)) return checked(minimum);
  return WeibullINV(band.probability(p), shape, scale, minimum);
} catch (RuntimeError& error) {
  error.leave("m_Weibull.WeibullVAL", caller);
  throw;
}

std::optional<Moments> moments(double shape, double scale, double minimum, const Limits& limits) {
  constexpr double largestArgument = 170;  // of a gamma function within the double range
  if (1 + 2 / shape > largestArgument) return {};
  PartialMoments standardized;
  for (const Interval& x : KeptIntervals(limits, minimum, infinity)) {
    const double lower = std::pow((x.lower - minimum) / scale, shape);
    const double upper = std::pow((x.upper - minimum) / scale, shape);
    for (const int order : {0, 1, 2}) {
      const double argument = 1 + order / shape;
      m_Gamma::addRatio(standardized, order, m_Gamma::gamma(argument), argument, lower, upper);
    }
  }
  const std::optional<Moments> kept = standardized.moments();
  if (!kept) return {};
  return Moments{minimum + scale * kept->mean, scale * kept->sd};
}

Moments integratedMoments(double shape, double scale, double minimum, const Limits& limits) {
  Mixture kept;
  for (const Interval& x : KeptIntervals(limits, minimum, infinity)) {
    const Anchor anchor = anchorAt(scale, minimum, x);
    const double y = anchor.fromOrigin;
    const double logPower = shape * logRatio(y, scale, y - scale);
    const double power = std::exp(logPower);
    // t runs over the logarithm of ((x - minimum)/scale)^shape.
    const ExponentialScale t(y, 1 / shape);
    kept.add(integratedPiece(
        anchor.value, {t.position(anchor.lower), t.position(anchor.upper)}, t,
        [power](double u) { return (1 - power) * u - power * expm1LessT(u); }, logPower - power));
  }
  return kept.moments();
}

}  // namespace palvex::m_Weibull
