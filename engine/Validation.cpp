// ParamsOK: the first fault of parameters and limits in one sentence, and the caches behind it.

#include "engine/c_Distribution.h"

namespace palvex {

namespace {

struct Wording {
  bool forbidNegative;
  bool forbidZero;
  std::string_view suffix;
};

constexpr Wording wording(Demand demand) {
  switch (demand) {
    case Demand::statedReal:
      return {false, false, ".  Must be a real number."};
    case Demand::nonNegative:
      return {true, false, ".  Must be a non-negative real number."};
    case Demand::positive:
      return {true, true, ".  Must be a positive real number."};
    case Demand::positiveNoArticle:
      return {true, true, ".  Must be positive real number."};
    case Demand::real:
    case Demand::worksheetData:
      break;
  }
  return {false, false, "."};
}

bool equalLimits(const Variant& lower, const Variant& upper) {
  if (lower.isNumeric() && upper.isNumeric()) return lower.toDouble() == upper.toDouble();
  return lower.isText() && lower == upper;
}

}  // namespace

bool c_Distribution::ParamsOK(std::string& errCause) try {
  errCause.clear();
  paramsOk_ = false;
  // Reading a cell runs code of the host, which may set another type: this check goes on with the
  // one that it began with.
  const Family* const family = family_;
  errCause = checkAndFit(family);
  if (errCause.empty()) errCause = checkAndKeepLimits(*family);
  paramsOk_ = errCause.empty() && family == family_;
  return errCause.empty();
} catch (RuntimeError& error) {
  error.leave("c_Distribution.ParamsOK");
}

std::string c_Distribution::checkAndFit(const Family* family, Line caller) {
  if (family == nullptr) return "Incorrect distribution type.";
  const Parameters& asked = *family->parameters;
  const auto name = [&](std::size_t i) { return std::string(asked[i].name); };
  if (family->tabulate != nullptr) {
    if (!IsRange(param1)) return "Please select the cells for the " + name(0) + ".";
    return family->tabulate(Variant(param1), Variant(param2), kept_, caller);
  }
  for (std::size_t i = 0; i < asked.size(); ++i) {
    const Wording words = wording(asked[i].demand);
    const Permission allowed{.negative = !words.forbidNegative, .zero = !words.forbidZero};
    const std::string fault = BadParam(*parameters()[i], allowed, caller);
    if (!fault.empty()) return fault + name(i) + std::string(words.suffix);
  }
  if (!family->relatesParameters()) return "";
  SetStaticParams(*family, caller);
  return family->fitTo(kept_, caller);
}

std::string c_Distribution::checkAndKeepLimits(const Family& family, Line caller) {
  SetStaticParams(family, caller);
  const auto fault = [&](const Variant& limit) {
    return BadParam(limit, {.infinity = true}, caller);
  };
  if (const std::string about = fault(ltl); !about.empty()) return about + "LTL.";
  if (const std::string about = fault(utl); !about.empty()) return about + "UTL.";
  SetStaticLimits(caller);
  if (equalLimits(staticLtl_, staticUtl_)) return "LTL value can not be equal to UTL value.";
  if (AllTruncated(family, caller))
    return "Truncation limits exclude all distribution values.  Please adjust.";
  return "";
}

std::string c_Distribution::BadParam(Variant param, const Permission& allowed, Line caller) try {
  const bool range = IsRange(param);
  if (range) {
    if (param.toObject()->get("count").toDouble() > 1) return "More than one cell selected for ";
    if (CellValueError(*param.toObject())) return "Error in cell value for ";
  }
  const Variant value = range ? param.toObject()->get("Value") : param;
  const auto prefix = [&](const char* fault) {
    return std::string(fault) + (IsRange(param) ? " in cell referenced for " : " for ");
  };
  if (value.isNumeric() || value.isEmpty()) {
    if (!allowed.negative && value.toDouble() < 0) return prefix("Negative value");
    if (!allowed.zero && value.toDouble() == 0) return prefix("Value of zero");
    return "";
  }
  if (!allowed.infinity) return prefix("Non-numeric value");
  if (value == Variant("-Infinity") || value == Variant("+Infinity")) return "";
  return prefix("Improper value");
} catch (RuntimeError& error) {
  error.leave("c_Distribution.BadParam", caller);
}

Boolean c_Distribution::CellValueError(Object& range) {
  try {
    const double count = range.get("count").toDouble();
    for (std::int32_t i = 1; i <= count; ++i) {
      static_cast<void>(range.get("Cells", {i}).toObject()->get("Value").toText());
    }
    return false;
  } catch (const RuntimeError&) {
    return true;
  }
}

bool c_Distribution::AllTruncated(const Family& family, Line caller) const try {
  enum class Place { belowMin, inMiddle, aboveMax };
  const Support support = family.law->support(kept_);
  const auto place = [&](double limit) {
    if (support.lowerIncluded ? limit < support.lower : limit <= support.lower)
      return Place::belowMin;
    if (support.upperIncluded ? limit > support.upper : limit >= support.upper)
      return Place::aboveMax;
    return Place::inMiddle;
  };
  const auto& [lower, upper] = staticLimits_;
  const bool lowerAboveMax = lower && place(*lower) == Place::aboveMax;
  const bool upperBelowMin = upper && place(*upper) == Place::belowMin;
  if (staticLimits_.reversed()) return lowerAboveMax && upperBelowMin;
  return lowerAboveMax || upperBelowMin ||
         (family.law->keepsNothing != nullptr && family.law->keepsNothing(kept_, staticLimits_));
} catch (RuntimeError& error) {
  error.leave("c_Distribution.AllTruncated", caller);
}

}  // namespace palvex
