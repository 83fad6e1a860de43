// Mean and standard deviation of what the limits keep.

#include "engine/c_Distribution.h"
#include "runtime/Arithmetic.h"

namespace palvex {

double c_Distribution::mean() const try {
  return keptMoments(Method::closedForm).mean;
} catch (RuntimeError& error) {
  error.leave("c_Distribution.mean");
}

double c_Distribution::StDev(const Variant& xMean) const try {
  if (family_ == nullptr) return 0;
  const laws::Moments kept = keptMoments(Method::closedForm);
  return xMean.isMissing() ? kept.sd : checked(kept.deviationFrom(xMean.toDouble()));
} catch (RuntimeError& error) {
  error.leave("c_Distribution.StDev");
}

double c_Distribution::CalcMean() const {
  return keptMoments(Method::integration).mean;
}

double c_Distribution::CalcStdev(double mean) const {
  if (family_ == nullptr) return 0;
  return checked(keptMoments(Method::integration).deviationFrom(mean));
}

laws::Moments c_Distribution::keptMoments(Method method, Line caller) const try {
  const Family* const family = family_;  // reading a cell may set another one
  if (family == nullptr) return {0, 0};
  const Limits limits = currentLimits();
  return with(*this, *family,
              [&](const Values& values) { return momentsOf(*family, values, limits, method); });
} catch (RuntimeError& error) {
  error.leave(caller);
}

laws::Moments c_Distribution::momentsOf(const Family& family, const Values& values,
                                        const Limits& limits, Method method, Line caller) try {
  if (!family.isLawful(values)) raise(fault::invalidCall);  // live values are not validated
  const Support support = family.law->support(values);
  if (support.lower == support.upper) {
    if (limits.cut(support.lower)) raise(fault::divisionByZero);
    return {support.lower, 0};
  }
  std::optional<laws::Moments> kept;
  if (method == Method::closedForm) kept = family.law->moments(values, limits);
  if (!kept) kept = family.law->integratedMoments(values, limits);
  return {checked(kept->mean), checked(kept->sd)};
} catch (RuntimeError& error) {
  error.leave(caller);
}

}  // namespace palvex
