#include "families/m_Weibull.h"

#include <cmath>

#include "families/m_Gamma.h"

namespace palvex::m_Weibull {

double density(double x, double shape, double scale, double minimum, const Limits& limits,
               Line caller) try {
  refuseNaN(x);
  if (!(shape > 0 && scale > 0 && x > minimum)) return 0;
  if (limits.cut(x)) return 0;
  const double z = (x - minimum) / scale;
  return checked(Power(z, shape - 1) * (shape / scale) * Exp(-Power(z, shape)));
} catch (RuntimeError& error) {
  error.leave("m_Weibull.WeibullPDF", caller);
}

bool densityHolds(double x, double shape, double scale, double minimum) noexcept {
  if (x <= minimum) return true;
  const double z = (x - minimum) / scale;
  return std::isfinite(std::pow(z, shape)) &&
         std::isfinite(std::pow(z, shape - 1) * (shape / scale));
}

double WeibullCDF(double x, double shape, double scale, double minimum, Line caller) try {
  refuseNaN(x);
  if (!(shape > 0 && scale > 0 && x >= minimum)) return 0;
  return 1 - std::exp(-Power((x - minimum) / scale, shape));
} catch (RuntimeError& error) {
  error.leave("m_Weibull.WeibullCDF", caller);
}

double WeibullINV(double p, double shape, double scale, double minimum, Line caller) try {
  constexpr double smallestTail = 1E-300;  // takes the place of the 0 that p = 1 leaves above it
  refuseNaN(p);
  if (!(shape > 0 && scale > 0 && p > 0)) return checked(minimum);
  const double logTail = Log(p == 1 ? smallestTail : 1 - p);
  return checked(Power(-logTail, 1 / shape) * scale + minimum);
} catch (RuntimeError& error) {
  error.leave("m_Weibull.WeibullINV", caller);
}

Band band(double shape, double scale, double minimum, const Limits& limits, Line caller) try {
  if (!(shape > 0 && scale > 0)) return {};
  return keptBand(limits, [&](double limit) { return WeibullCDF(limit, shape, scale, minimum); });
} catch (RuntimeError& error) {
  error.leave("m_Weibull.WeibullVAL", caller);
}

double value(double p, double shape, double scale, double minimum, const Band& band,
             Line caller) try {
  refuseNaN(p);
  if (!(shape > 0 && scale > 0 && p >= 0)) return checked(minimum);
  return WeibullINV(band.probability(p), shape, scale, minimum);
} catch (RuntimeError& error) {
  error.leave("m_Weibull.WeibullVAL", caller);
}

}  // namespace palvex::m_Weibull
