#include "families/m_Exponential.h"

#include <cmath>

namespace palvex::m_Exponential {

double density(double x, double lambda, double minimum, const Limits& limits, Line caller) try {
  refuseNaN(x);
  if (!(lambda > 0 && x >= minimum)) return 0;
  if (limits.cut(x)) return 0;
  return checked(Exp(-lambda * (x - minimum)) * lambda);
} catch (RuntimeError& error) {
  error.leave("m_Exponential.ExponentialPDF", caller);
}

double ExponentialCDF(double x, double lambda, double minimum, Line caller) try {
  refuseNaN(x);
  if (!(lambda > 0 && x >= minimum)) return 0;
  return 1 - std::exp(checked(-lambda * (x - minimum)));
} catch (RuntimeError& error) {
  error.leave("m_Exponential.ExponentialCDF", caller);
}

double ExponentialINV(double p, double lambda, double minimum, Line caller) try {
  refuseNaN(p);
  if (!(lambda > 0 && p > 0)) return 0;
  const double logTail = Log(1 - p);
  return checked(logTail * checked(-1 / lambda) + minimum);
} catch (RuntimeError& error) {
  error.leave("m_Exponential.ExponentialINV", caller);
}

Band band(double lambda, double minimum, const Limits& limits, Line caller) try {
  if (!(lambda > 0)) return {};
  return keptBand(limits, [&](double limit) { return ExponentialCDF(limit, lambda, minimum); });
} catch (RuntimeError& error) {
  error.leave("m_Exponential.ExponentialVAL", caller);
}

double value(double p, double lambda, double minimum, const Band& band, Line caller) try {
  refuseNaN(p);
  if (!(lambda > 0 && p > 0)) return checked(minimum);
  return ExponentialINV(band.probability(p), lambda, minimum);
} catch (RuntimeError& error) {
  error.leave("m_Exponential.ExponentialVAL", caller);
}

}  // namespace palvex::m_Exponential
