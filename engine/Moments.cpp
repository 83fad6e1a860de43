// Mean and standard deviation of what the limits keep.

#include "engine/c_Distribution.h"
#include "runtime/Arithmetic.h"

namespace palvex {

namespace {

bool meets(double parameter, Demand demand) {
  switch (demand) {
    case Demand::nonNegative:
      return parameter >= 0;
    case Demand::positive:
    case Demand::positiveNoArticle:
      return parameter > 0;
    case Demand::real:
    case Demand::statedReal:
      break;
  }
  return true;
}

}  // namespace

double c_Distribution::mean() try {
  return keptMoments(Method::closedForm).mean;
} catch (RuntimeError& error) {
  error.leave("c_Distribution.mean");
}

double c_Distribution::StDev(const Variant& xMean) try {
  if (family_ == nullptr) return 0;
  const laws::Moments kept = keptMoments(Method::closedForm);
  return xMean.isMissing() ? kept.sd : checked(kept.deviationFrom(xMean.toDouble()));
} catch (RuntimeError& error) {
  error.leave("c_Distribution.StDev");
}

double c_Distribution::CalcMean() {
  return keptMoments(Method::integration).mean;
}

double c_Distribution::CalcStdev(double mean) {
  if (family_ == nullptr) return 0;
  return checked(keptMoments(Method::integration).deviationFrom(mean));
}

laws::Moments c_Distribution::keptMoments(Method method, Line caller) const try {
  const Family* const family = family_;  // a cell that answers may set another one
  if (family == nullptr) return {0, 0};
  const Limits limits = currentLimits();
  const Parameters p = currentParameters(family->parametersRead);
  return momentsOf(*family, {p, fitted_}, limits, method);
} catch (RuntimeError& error) {
  error.leave(caller);
}

laws::Moments c_Distribution::momentsOf(const Family& family, const Values& values,
                                        const Limits& limits, Method method, Line caller) try {
  // Live parameters have not been validated.
  for (std::size_t i = 0; i < family.parametersRead; ++i) {
    if (!meets(values.p[i], family.demands[i])) raise(fault::invalidCall);
  }
  const Support support = family.support(values);
  if (support.lower > support.upper) raise(fault::invalidCall);
  if (support.lower == support.upper) {
    if (limits.cut(support.lower)) raise(fault::divisionByZero);
    return {support.lower, 0};
  }
  std::optional<laws::Moments> kept;
  if (method == Method::closedForm) kept = family.moments(values, limits);
  if (!kept) kept = family.integratedMoments(values, limits);
  return {checked(kept->mean), checked(kept->sd)};
} catch (RuntimeError& error) {
  error.leave(caller);
}

}  // namespace palvex
