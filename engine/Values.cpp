// How parameters and limits become values: live from the host's variants, or from the caches.

#include "engine/c_Distribution.h"

namespace palvex {

Boolean c_Distribution::IsRange(const Variant& v) noexcept {
  if (!v.isObject()) return false;  // the usual case, decided without the cost of an exception
  try {
    const std::shared_ptr<Object> object = v.toObject();
    static_cast<void>(object->get("Application").toObject());
    static_cast<void>(object->get("Address").toText());
    static_cast<void>(object->get("Value"));
    return true;
  } catch (...) {
    return false;  // whatever goes wrong: this is no range
  }
}

double c_Distribution::liveParameter(const Variant& parameter) {
  if (parameter.isNumeric()) return parameter.toDouble();
  if (IsRange(parameter)) {
    const Variant cell = parameter.toObject()->get("Value");
    if (cell.isNumeric()) return cell.toDouble();
  }
  return 0;
}

Variant c_Distribution::liveLimit(const Variant& limit) {
  return IsRange(limit) ? limit.toObject()->get("Value") : limit;
}

c_Distribution::Parameters c_Distribution::currentParameters(std::size_t count) const {
  if (!Dynamic) return staticParams_;
  Parameters values{};
  for (std::size_t i = 0; i < count; ++i) values[i] = liveParameter(*parameters()[i]);
  return values;
}

void c_Distribution::SetStaticParams(Line caller) try {
  dropPrepared();
  if (distType() == "Histogram") return;  // its parameters are a data range and a layout
  for (std::size_t i = 0; i < staticParams_.size(); ++i) {
    staticParams_[i] = 0;
    staticParams_[i] = liveParameter(*parameters()[i]);
  }
} catch (RuntimeError& error) {
  error.leave("c_Distribution.SetStaticParams", caller);
  throw;
}

void c_Distribution::SetStaticLimits() {
  band_.reset();
  staticLtl_ = liveLimit(ltl);
  staticLimits_ = limitsFrom(staticLtl_, staticUtl_);  // should reading the other limit fail
  staticUtl_ = liveLimit(utl);
  staticLimits_ = limitsFrom(staticLtl_, staticUtl_);
}

}  // namespace palvex
