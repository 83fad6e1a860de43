#include "families/m_Lognormal.h"

#include <algorithm>
#include <cmath>

#include "families/m_Normal.h"
#include "numerics/PublishedConstants.h"
#include "runtime/NumericText.h"

namespace palvex::m_Lognormal {

namespace {

std::string callRecord(double x, double location, double scale, double minimum, Boolean upper) {
  return "lnCDF: (" + numberText(x) + "," + numberText(location) + "," + numberText(scale) + "," +
         numberText(minimum) + "," + Variant(upper).toText() + ")";
}

}  // namespace

double density(double x, double location, double scale, double minimum, const Limits& limits,
               Line caller) try {
  refuseNaN(x);
  if (!(scale > 0 && x > minimum)) return 0;
  if (limits.cut(x)) return 0;
  const double deviation = Log(x - minimum) - location;
  const double exponent = Divide(deviation * deviation, checked(-2 * (scale * scale)));
  return Divide(Exp(exponent), checked((x - minimum) * scale * std::sqrt(published::twoPi)));
} catch (RuntimeError& error) {
  error.leave("m_Lognormal.LognormalPDF", caller);
}

double LognormalCDF(double x, double location, double scale, double minimum, Boolean upper,
                    Line caller) try {
  if (x <= minimum) return upper ? 1 : 0;
  return m_Normal::NormalCDF(Divide(Log(x - minimum) - location, scale), upper);
} catch (RuntimeError& error) {
  error.addToDescription(callRecord(x, location, scale, minimum, upper));
  error.leave("m_Lognormal.LognormalCDF", caller);
}

double LognormalINV(double p, double location, double scale, double minimum, Boolean upper,
                    Line caller) try {
  return checked(Exp(m_Normal::NormalINV(p, upper) * scale + location) + minimum);
} catch (RuntimeError& error) {
  error.leave("m_Lognormal.LognormalINV", caller);
}

Band band(double location, double scale, double minimum, const Limits& limits, Line caller) try {
  if (scale <= 0) return {};
  return keptBand(
      limits, [&](double limit) { return LognormalCDF(limit, location, scale, minimum, false); });
} catch (RuntimeError& error) {
  error.leave("m_Lognormal.LognormalVAL", caller);
}

double value(double p, double location, double scale, double minimum, const Band& band,
             Line caller) try {
  if (scale <= 0) return checked(minimum);
  return LognormalINV(band.probability(p), location, scale, minimum, false);
} catch (RuntimeError& error) {
  error.leave("m_Lognormal.LognormalVAL", caller);
}

}  // namespace palvex::m_Lognormal
