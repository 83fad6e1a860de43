#include "families/m_Uniform.h"

#include <cmath>
#include <utility>

namespace palvex::m_Uniform {

double density(double x, double minimum, double maximum, const Limits& limits, Line caller) try {
  refuseNaN(x);
  if (maximum < minimum || x < minimum || x > maximum) return 0;
  if (maximum == minimum) return 1;
  if (limits.cut(x)) return 0;
  return checked(1 / checked(maximum - minimum));
} catch (RuntimeError& error) {
  error.leave("m_Uniform.UniformPDF", caller);
  throw;
}

double stableDensity(double x, double minimum, double maximum) noexcept {
  if (!(minimum <= x && x <= maximum)) return 0;
  return maximum == minimum ? 1 : 0.5 / (maximum / 2 - minimum / 2);
}

double UniformCDF(double x, double minimum, double maximum, Line caller) try {
  refuseNaN(x);
  if (minimum > maximum) std::swap(minimum, maximum);
  if (x <= minimum) return 0;
  if (x >= maximum) return 1;
  return checked((x - minimum) / checked(maximum - minimum));
} catch (RuntimeError& error) {
  error.leave("m_Uniform.UniformCDF", caller);
  throw;
}

double UniformINV(double p, double minimum, double maximum, Line caller) try {
  if (minimum > maximum) std::swap(minimum, maximum);
  if (p <= 0) return checked(minimum);
  if (p >= 1) return checked(maximum);
  return checked((maximum - minimum) * p + minimum);
} catch (RuntimeError& error) {
  error.leave("m_Uniform.UniformINV", caller);
  throw;
}

Band band(double minimum, double maximum, const Limits& limits, Line caller) try {
  if (maximum <= minimum) return {};
  return keptBand(limits, [&](double limit) { return UniformCDF(limit, minimum, maximum); });
} catch (RuntimeError& error) {
  error.leave("m_Uniform.UniformVAL", caller);
  throw;
}

double value(double p, double minimum, double maximum, const Band& band, Line caller) try {
  if (maximum < minimum) return 0;
  if (maximum == minimum) return minimum;
  return UniformINV(band.probability(p), minimum, maximum);
} catch (RuntimeError& error) {
  error.leave("m_Uniform.UniformVAL", caller);
  throw;
}

Moments moments(double minimum, double maximum, const Limits& limits) {
  Mixture kept;
  for (const auto& [lower, upper] : KeptIntervals(limits, minimum, maximum)) {
    const double width = upper - lower;
    kept.add({std::log(width / (maximum - minimum)), {lower + width / 2, width / std::sqrt(12.0)}});
  }
  return kept.moments();
}

Moments integratedMoments(double minimum, double maximum, const Limits& limits) {
  Mixture kept;
  for (const auto& [lower, upper] : KeptIntervals(limits, minimum, maximum)) {
    kept.add(integratedPiece(
        lower, {0, upper - lower}, LinearScale(1), [](double) { return 0; },
        -std::log(maximum - minimum)));
  }
  return kept.moments();
}

}  // namespace palvex::m_Uniform
