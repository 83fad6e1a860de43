// Density, probability and draw: the current values handed to the family of the type.

#include <new>

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

// Reading a cell runs code of the host, which may set another type: a member goes on with the one
// that it began with.

double c_Distribution::pdf(double x, bool noTruncation, const Variant& priorX) try {
  const Family* const family = family_;
  static constexpr Limits none;
  Limits live;
  if (Dynamic && !noTruncation) live = liveLimits();
  if (family == nullptr) return 0;
  const Limits& limits = noTruncation ? none : Dynamic ? live : staticLimits_;
  return with(*this, *family, [&](Values& values) {
    return family->density(values, x, limits, priorX, Line::here());
  });
} catch (RuntimeError& error) {
  addCall(error, "pdf", x);
  error.leave("c_Distribution.pdf");
}

double c_Distribution::cdf(double x) try {
  const Family* const family = family_;
  if (family == nullptr) return 0;
  return with(*this, *family,
              [&](Values& values) { return family->cumulative(values, x, Line::here()); });
} catch (RuntimeError& error) {
  addCall(error, "cdf", x);
  error.leave("c_Distribution.cdf");
}

namespace {

/// The first draw with these limits. Leaves the band that they keep in `band`, for later draws.
double draw(const Family& family, Values& values, const Limits& limits, std::optional<Band>& band,
            double rndP, Line line) {
  if (family.ignoresLimits != nullptr && family.ignoresLimits(values, rndP)) {
    return family.value(values, Band{}, rndP, line);
  }
  band = family.band(values, limits, line);
  return family.value(values, *band, rndP, line);
}

}  // namespace

double c_Distribution::keptDraw(double rndP) try {
  if (band_) return family_->value(kept_, *band_, rndP, Line::here());  // the usual case, quickly
  if (family_ == nullptr) return 0;
  return draw(*family_, kept_, staticLimits_, band_, rndP, Line::here());
} catch (RuntimeError& error) {
  addDraw(error, rndP, staticLtl_, staticUtl_);
  error.leave("c_Distribution.RandVal");
}

double c_Distribution::liveDraw(double rndP) {
  Variant lower;
  Variant upper;
  try {
    const Family* const family = family_;
    lower = liveLimit(ltl);
    upper = liveLimit(utl);
    const Limits limits = limitsFrom(lower, upper);
    if (family == nullptr) return 0;
    std::optional<Band> band;
    return with(*this, *family, [&](Values& values) {
      return draw(*family, values, limits, band, rndP, Line::here());
    });
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
      record += numberText(Dynamic ? liveParameter(*parameters()[i]) : kept_.p[i]);
    } catch (const RuntimeError&) {
      // The record is about another error: a parameter that does not answer stays blank in it.
    }
  }
  return record;
}

void c_Distribution::addCall(RuntimeError& error, std::string_view member,
                             double argument) const noexcept try {
  error.addToDescription(std::string(member) + ": (" + numberText(argument) + parameterRecord(4) +
                         ")");
} catch (const std::bad_alloc&) {
  // The error itself matters more than its record.
}

void c_Distribution::addDraw(RuntimeError& error, double rndP, const Variant& lower,
                             const Variant& upper) const noexcept try {
  error.addToDescription("RandVal: (" + numberText(rndP) + parameterRecord(3) + "," +
                         recordText(lower) + "," + recordText(upper) + ")");
} catch (const std::bad_alloc&) {
  // The error itself matters more than its record.
}

}  // namespace palvex
