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
}

double UniformCDF(double x, double minimum, double maximum, Line caller) try {
  refuseNaN(x);
  if (minimum > maximum) std::swap(minimum, maximum);
  if (x <= minimum) return 0;
  if (x >= maximum) return 1;
  return checked((x - minimum) / checked(maximum - minimum));
} catch (RuntimeError& error) {
  error.leave("m_Uniform.UniformCDF", caller);
}

double UniformINV(double p, double minimum, double maximum, Line caller) try {
  if (minimum > maximum) std::swap(minimum, maximum);
  if (p <= 0) return checked(minimum);
  if (p >= 1) return checked(maximum);
  return checked((maximum - minimum) * p + minimum);
} catch (RuntimeError& error) {
  error.leave("m_Uniform.UniformINV", caller);
}

Band band(double minimum, double maximum, const Limits& limits, Line caller) try {
  if (maximum <= minimum) return {};
  return keptBand(limits, [&](double limit) { return UniformCDF(limit, minimum, maximum); });
} catch (RuntimeError& error) {
  error.leave("m_Uniform.UniformVAL", caller);
}

double value(double p, double minimum, double maximum, const Band& band, Line caller) try {
  if (maximum < minimum) return 0;
  if (maximum == minimum) return minimum;
  return UniformINV(band.probability(p), minimum, maximum);
} catch (RuntimeError& error) {
  error.leave("m_Uniform.UniformVAL", caller);
}

}  // namespace palvex::m_Uniform
