// Density, probability and draw: the current values handed to the family of the type.

#include "engine/c_Distribution.h"
#include "runtime/NumericText.h"

namespace palvex {

namespace {

/// A limit as the record of a call shows it: numbers and numeric texts as numbers.
std::string recordText(const Variant& limit) {
  if (limit.isNumeric()) return numberText(limit.toDouble());
  if (limit.isText()) return limit.toText();
  if (limit.isError()) return "Error " + std::to_string(limit.errorCode());
  return "";
}

}  // namespace

double c_Distribution::pdf(double x, bool noTruncation, const Variant& priorX) try {
  static const Limits none;
  if (!Dynamic) {
    if (family_ == nullptr) return 0;
    return family_->density(kept_, x, noTruncation ? none : staticLimits_, priorX, Line::here());
  }
  const Family* const family = family_;  // a cell that answers may set another one
  const Limits limits = noTruncation ? none : liveLimits();
  if (family == nullptr) return 0;
  const Parameters p = currentParameters(family->parametersRead);
  return family->density({p, fitted_}, x, limits, priorX, Line::here());
} catch (RuntimeError& error) {
  addCall(error, "pdf", x);
  error.leave("c_Distribution.pdf");
}

double c_Distribution::cdf(double x) try {
  const Family* const family = family_;
  if (family == nullptr) return 0;
  if (!Dynamic) return family->cumulative(kept_, x, Line::here());
  const Parameters p = currentParameters(family->parametersRead);
  return family->cumulative({p, fitted_}, x, Line::here());
} catch (RuntimeError& error) {
  addCall(error, "cdf", x);
  error.leave("c_Distribution.cdf");
}

double c_Distribution::keptValue(double rndP) try {
  if (!band_) return firstValue(rndP);
  return family_->value(kept_, *band_, rndP, Line::here());
} catch (RuntimeError& error) {
  addDraw(error, rndP, staticLtl_, staticUtl_);
  error.leave("c_Distribution.RandVal");
}

double c_Distribution::firstValue(double rndP, Line caller) {
  if (family_ == nullptr) return 0;
  if (family_->ignoresLimits != nullptr && family_->ignoresLimits(kept_, rndP)) {
    return family_->value(kept_, Band{}, rndP, caller);
  }
  band_ = family_->band(kept_, staticLimits_, caller);
  return family_->value(kept_, *band_, rndP, caller);
}

double c_Distribution::liveValue(double rndP) {
  Variant lower;
  Variant upper;
  try {
    const Family* const family = family_;
    lower = liveLimit(ltl);
    upper = liveLimit(utl);
    const Limits limits = limitsFrom(lower, upper);
    if (family == nullptr) return 0;
    const Parameters p = currentParameters(family->parametersRead);
    const Values values{p, fitted_};
    Band band;
    if (family->ignoresLimits == nullptr || !family->ignoresLimits(values, rndP)) {
      band = family->band(values, limits, Line::here());
    }
    return family->value(values, band, rndP, Line::here());
  } catch (RuntimeError& error) {
    addDraw(error, rndP, lower, upper);
    error.leave("c_Distribution.RandVal");
  }
}

std::string c_Distribution::parameterRecord(std::size_t count) const {
  std::string record;
  for (std::size_t i = 0; i < count; ++i) {
    record += ',';
    try {
      record += numberText(Dynamic ? liveParameter(*parameters()[i]) : staticParams_[i]);
    } catch (const RuntimeError&) {
      // The record is about another error: a parameter that does not answer stays blank in it.
    }
  }
  return record;
}

void c_Distribution::addCall(RuntimeError& error, std::string_view member, double argument) const {
  error.addToDescription(std::string(member) + ": (" + numberText(argument) + parameterRecord(4) +
                         ")");
}

void c_Distribution::addDraw(RuntimeError& error, double rndP, const Variant& lower,
                             const Variant& upper) const {
  error.addToDescription("RandVal: (" + numberText(rndP) + parameterRecord(3) + "," +
                         recordText(lower) + "," + recordText(upper) + ")");
}

}  // namespace palvex
