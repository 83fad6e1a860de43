#include "families/m_Exponential.h"

#include <cmath>
#include <limits>

namespace palvex::m_Exponential {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Below this width the moments' terms cancel, and five terms of their series are exact to 1e-13.
constexpr double narrow = 0.25;

/// Mean of the unit exponential below `width`.
double meanBelow(double width) {
  if (width < narrow) {
    const double square = width * width;
    return width / 2 -
           square * (1 / 12. -
                     square * (1 / 720. - square * (1 / 30240. -
                                                    square * (1 / 1209600. - square / 47900160))));
  }
  return std::isinf(width) ? 1 : 1 - width / std::expm1(width);
}

/// Variance of the unit exponential below `width`.
double varianceBelow(double width) {
  if (width < narrow) {
    const double square = width * width;
    return square *
           (1 / 12. -
            square * (1 / 240. - square * (1 / 6048. - square * (1 / 172800. - square / 5322240))));
  }
  const double ratio = width > 1400 ? 0 : width / 2 / std::sinh(width / 2);
  return (1 - ratio) * (1 + ratio);
}

}  // namespace

double density(double x, double lambda, double minimum, const Limits& limits, Line caller) try {
  refuseNaN(x);
  if (!(lambda > 0 && x >= minimum)) return 0;
  if (limits.cut(x)) return 0;
  return checked(Exp(-lambda * (x - minimum)) * lambda);
} catch (RuntimeError& error) {
  error.leave("m_Exponential.ExponentialPDF", caller);
  throw;
}

double stableDensity(double x, double lambda, double minimum) noexcept {
  return lambda > 0 && x >= minimum ? std::exp(-lambda * (x - minimum)) * lambda : 0;
}

double ExponentialCDF(double x, double lambda, double minimum, Line caller) try {
  refuseNaN(x);
  if (!(lambda > 0 && x >= minimum)) return 0;
  return 1 - std::exp(checked(-lambda * (x - minimum)));
} catch (RuntimeError& error) {
  error.leave("m_Exponential.ExponentialCDF", caller);
  throw;
}

double ExponentialINV(double p, double lambda, double minimum, Line caller) try {
  refuseNaN(p);
  if (!(lambda > 0 && p > 0)) return 0;
  const double logTail = Log(1 - p);
  return checked(logTail * checked(-1 / lambda) + minimum);
} catch (RuntimeError& error) {
  error.leave("m_Exponential.ExponentialINV", caller);
  throw;
}

Band band(double lambda, double minimum, const Limits& limits, Line caller) try {
  if (!(lambda > 0)) return {};
  return keptBand(limits, [&](double limit) { return ExponentialCDF(limit, lambda, minimum); });
} catch (RuntimeError& error) {
  error.leave("m_Exponential.ExponentialVAL", caller);
  throw;
}

double value(double p, double lambda, double minimum, const Band& band, Line caller) try {
  refuseNaN(p);
  if (!(lambda > 0 && p > 0)) return checked(minimum);
  return ExponentialINV(band.probability(p), lambda, minimum);
} catch (RuntimeError& error) {
  error.leave("m_Exponential.ExponentialVAL", caller);
  throw;
}

Moments moments(double lambda, double minimum, const Limits& limits) {
  Mixture kept;
  for (const auto& [lower, upper] : KeptIntervals(limits, minimum, infinity)) {
    const double width = lambda * (upper - lower);
    kept.add({-lambda * (lower - minimum) + std::log(-std::expm1(-width)),
              {lower + meanBelow(width) / lambda, std::sqrt(varianceBelow(width)) / lambda}});
  }
  return kept.moments();
}

Moments integratedMoments(double lambda, double minimum, const Limits& limits) {
  Mixture kept;
  for (const auto& [lower, upper] : KeptIntervals(limits, minimum, infinity)) {
    kept.add(integratedPiece(
        lower, {0, lambda * (upper - lower)}, LinearScale(1 / lambda), [](double t) { return -t; },
        -lambda * (lower - minimum)));
  }
  return kept.moments();
}

}  // namespace palvex::m_Exponential
