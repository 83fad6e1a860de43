#include "hosts/calc/Functions.h"

#include <array>
#include <com/sun/star/lang/IllegalArgumentException.hpp>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/LawTypes.h"
#include "hosts/calc/Conversion.h"
#include "hosts/calc/Office.h"
#include "hosts/calc/Text.h"
#include "hosts/calc/Uno.h"
#include "runtime/Cells.h"
#include "runtime/RuntimeError.h"
#include "simulation/Model.h"

namespace palvex::calc {

namespace {

using css::lang::IllegalArgumentException;

/// An argument: empty when it is left out, a number, a text, or a range, which Calc hands over as
/// its contents.
Variant argument(const Any& given) {
  Variant value = fromOffice(given);
  if (!value.isArray()) return value;
  const auto cells = std::make_shared<Cells>(value.upperBound(1), value.upperBound(2));
  for (std::int32_t i = 1; i <= cells->rows(); ++i) {
    for (std::int32_t j = 1; j <= cells->columns(); ++j) cells->at(i, j) = value.at(i, j);
  }
  return cells;
}

/// A law as a cell describes it. Parameters beyond those of the type are not looked at.
struct Description {
  const OUString& kind;
  std::array<Variant, 4> parameters;
  Variant ltl;
  Variant utl;

  Description(const OUString& type, const Any& p1, const Any& p2, const Any& p3, const Any& p4,
              const Any& lower, const Any& upper)
      : kind(type),
        parameters{argument(p1), argument(p2), argument(p3), argument(p4)},
        ltl(argument(lower)),
        utl(argument(upper)) {}

  [[nodiscard]] Law law() const {
    const std::string name = utf8(kind);
    const LawType* const type = findLawType(name);
    std::vector<Variant> given;
    for (std::size_t i = 0; type != nullptr && i < static_cast<std::size_t>(type->parameterCount());
         ++i) {
      given.push_back(parameters[i]);
      if (!given.back().isEmpty()) continue;
      const std::optional<double> usual = simulation::usualParameter(*type, i);
      if (!usual)
        throw std::invalid_argument(std::string(type->parameters[i]).append(" is missing."));
      given.back() = *usual;
    }
    return makeLaw(name, given, ltl, utl);
  }
};

/// What a law answers; whatever fails is an argument that Calc shows as an error.
template <class Question>
double answer(const Question& question) {
  try {
    return question();
  } catch (const std::exception& fault) {
    throw IllegalArgumentException(wide(fault.what()), {}, 0);
  }
}

}  // namespace

double Functions::density(const Text& kind, double x, Given p1, Given p2, Given p3, Given p4,
                          Given ltl, Given utl) {
  return answer([&] { return Description(kind, p1, p2, p3, p4, ltl, utl).law().density(x); });
}

double Functions::probability(const Text& kind, double x, Given p1, Given p2, Given p3, Given p4,
                              Given ltl, Given utl) {
  return answer([&] { return Description(kind, p1, p2, p3, p4, ltl, utl).law().probability(x); });
}

double Functions::exceedance(const Text& kind, double x, Given p1, Given p2, Given p3, Given p4,
                             Given ltl, Given utl) {
  return answer([&] { return Description(kind, p1, p2, p3, p4, ltl, utl).law().exceedance(x); });
}

double Functions::quantile(const Text& kind, double p, Given p1, Given p2, Given p3, Given p4,
                           Given ltl, Given utl) {
  return answer([&] { return Description(kind, p1, p2, p3, p4, ltl, utl).law().quantile(p); });
}

double Functions::mean(const Text& kind, Given p1, Given p2, Given p3, Given p4, Given ltl,
                       Given utl) {
  return answer([&] { return Description(kind, p1, p2, p3, p4, ltl, utl).law().mean(); });
}

double Functions::stdev(const Text& kind, Given p1, Given p2, Given p3, Given p4, Given ltl,
                        Given utl) {
  return answer([&] { return Description(kind, p1, p2, p3, p4, ltl, utl).law().sd(); });
}

OUString Functions::check(const Text& kind, Given p1, Given p2, Given p3, Given p4, Given ltl,
                          Given utl) {
  try {
    static_cast<void>(Description(kind, p1, p2, p3, p4, ltl, utl).law());
    return {};
  } catch (const RuntimeError& error) {
    return wide(error.description());
  } catch (const std::exception& fault) {
    return wide(fault.what());
  }
}

OUString Functions::getImplementationName() {
  return OUString::createFromAscii(implementation);
}

sal_Bool Functions::supportsService(const Text& service) {
  return service.equalsAscii(implementation);
}

Sequence<OUString> Functions::getSupportedServiceNames() {
  return only(getImplementationName());
}

}  // namespace palvex::calc
