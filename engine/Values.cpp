// How parameters and limits become values: live from the host's variants, or from the caches.

#include "engine/c_Distribution.h"

namespace palvex {

Boolean c_Distribution::IsRange(const Variant& v) {
  if (!v.isObject()) return false;  // the usual case, decided without the cost of an exception
  try {
    const std::shared_ptr<Object> object = v.toObject();
    static_cast<void>(object->get("Application").toObject());
    static_cast<void>(object->get("Address").toText());
    static_cast<void>(object->get("Value"));
    return true;
  } catch (const RuntimeError&) {
    return false;  // whatever goes wrong with the object: it is no range
  }
}

double c_Distribution::liveParameter(const Variant& parameter, Line caller) {
  if (parameter.isNumeric()) return parameter.toDouble();
  // A copy: the host may change the original while it answers.
  const Variant held = parameter;  // NOLINT(performance-unnecessary-copy-initialization)
  if (IsRange(held)) {
    const Variant cell = held.toObject(caller)->get("Value", {}, caller);
    if (cell.isNumeric()) return cell.toDouble();
  }
  return 0;
}

Variant c_Distribution::liveLimit(const Variant& limit, Line caller) {
  if (!limit.isObject()) return limit;
  const Variant held = limit;  // NOLINT(performance-unnecessary-copy-initialization): as above
  return IsRange(held) ? held.toObject(caller)->get("Value", {}, caller) : held;
}

Values c_Distribution::liveValues(std::size_t count, Line caller) const {
  Values values;
  for (std::size_t i = 0; i < count; ++i) values.p[i] = liveParameter(*parameters()[i], caller);
  return values;
}

void c_Distribution::setStaticParam(std::size_t i, double value) {
  kept_.p[i] = value;
  dropPrepared();
}

void c_Distribution::SetStaticParams(const Family& family, Line caller) try {
  dropPrepared();
  if (family.tabulate != nullptr) return;  // its parameters are a data range and a layout
  for (std::size_t i = 0; i < kept_.p.size(); ++i) {
    setStaticParam(i, 0);
    setStaticParam(i, liveParameter(*parameters()[i]));
  }
} catch (RuntimeError& error) {
  error.leave("c_Distribution.SetStaticParams", caller);
}

Limits c_Distribution::liveLimits(Line caller) const {
  const Variant lower = liveLimit(ltl, caller);
  return limitsFrom(lower, liveLimit(utl, caller));
}

void c_Distribution::SetStaticLimits(Line caller) {
  const auto set = [&](Variant& staticLimit, const Variant& limit) {
    staticLimit = liveLimit(limit, caller);
    staticLimits_ = limitsFrom(staticLtl_, staticUtl_);
    band_.reset();
  };
  set(staticLtl_, ltl);
  set(staticUtl_, utl);
}

}  // namespace palvex
