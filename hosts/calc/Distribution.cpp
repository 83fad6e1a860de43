#include "hosts/calc/Distribution.h"

#include <algorithm>
#include <cmath>
#include <com/sun/star/beans/PropertyAttribute.hpp>
#include <com/sun/star/beans/UnknownPropertyException.hpp>
#include <com/sun/star/beans/theIntrospection.hpp>
#include <com/sun/star/script/BasicErrorException.hpp>
#include <limits>
#include <new>
#include <optional>

#include "hosts/calc/Conversion.h"
#include "hosts/calc/Office.h"
#include "hosts/calc/Text.h"
#include "hosts/calc/Uno.h"

namespace palvex::calc {

namespace {

using css::reflection::InvocationTargetException;
using css::script::InvocationInfo;

constexpr std::int32_t internalError = 51;
constexpr std::int32_t argumentMissing = 449;
constexpr std::int32_t argumentsTooMany = 450;

// ---- arguments ----

/// A number, a numeric text, or a cell that holds one.
Variant valueOf(const Any& given) {
  Variant value = fromOffice(given);
  return value.isObject() ? value.toObject()->get("Value") : value;
}

double number(const Any& given) {
  return valueOf(given).toDouble();
}

/// A whole number of one of the interface's sizes; halves go to the even neighbour.
template <class Whole>
Whole whole(const Any& given) {
  const double rounded = std::nearbyint(number(given));
  if (!(rounded >= std::numeric_limits<Whole>::min() &&
        rounded <= std::numeric_limits<Whole>::max()))
    raise(fault::overflow);
  return static_cast<Whole>(rounded);
}

std::int16_t index(const Any& given) {
  return whole<std::int16_t>(given);
}

std::string text(const Any& given) {
  return valueOf(given).toText();
}

/// The arguments of a call; void stands for one that was left out.
class Arguments {
 public:
  Arguments(const Sequence<Any>& given, sal_Int32 most) : given_(given) {
    if (count() > most) throw RuntimeError(argumentsTooMany, "Wrong number of arguments");
  }

  [[nodiscard]] sal_Int32 count() const { return given_.getLength(); }
  [[nodiscard]] bool has(sal_Int32 i) const { return i < count() && given_[i].hasValue(); }
  [[nodiscard]] const Any& operator[](sal_Int32 i) const {
    if (!has(i)) throw RuntimeError(argumentMissing, "Argument not optional");
    return given_[i];
  }
  [[nodiscard]] bool truth(sal_Int32 i) const { return has(i) && number(given_[i]) != 0; }
  [[nodiscard]] Variant optional(sal_Int32 i) const {
    return has(i) ? valueOf(given_[i]) : Variant::missing();
  }

  /// Text for the first argument, which is a variable of the caller's.
  void answer(const std::string& message) { answer_ = wide(message); }
  [[nodiscard]] const std::optional<OUString>& answer() const { return answer_; }

 private:
  const Sequence<Any>& given_;
  std::optional<OUString> answer_;
};

// ---- the members ----

using Owner = Distribution;
using Read = Any (*)(Owner&);
using Write = void (*)(Owner&, const Any&);
using Call = Any (*)(Owner&, Arguments&);

/// A property has a `read`, one that can be assigned a `write` too; a method has a `call`.
struct Member {
  const char* name;
  Read read = nullptr;
  Write write = nullptr;
  Call call = nullptr;
  sal_Int32 most = 0;  // arguments of the method
  bool computes = call != nullptr;
};

template <std::size_t place>
constexpr Member variant(const char* name) {
  return {.name = name,
          .read = [](Owner& d) { return d.given(place); },
          .write = [](Owner& d, const Any& value) { d.give(place, value); }};
}

template <auto variable>
constexpr Member flag(const char* name) {
  return {.name = name,
          .read = [](Owner& d) { return Any(d.engine().*variable); },
          .write = [](Owner& d, const Any& value) { d.engine().*variable = number(value) != 0; }};
}

template <auto variable>
constexpr Member note(const char* name) {
  return {.name = name,
          .read = [](Owner& d) { return Any(wide(d.engine().*variable)); },
          .write = [](Owner& d, const Any& value) { d.engine().*variable = text(value); }};
}

constexpr Member reading(const char* name, Read read) {
  return {.name = name, .read = read};
}

constexpr Member method(const char* name, sal_Int32 most, Call call) {
  return {.name = name, .call = call, .most = most};
}

template <double (c_Distribution::*point)(std::int16_t) const>
constexpr Member pointOf(const char* name) {
  return method(name, 1, [](Owner& d, Arguments& given) {
    return Any((d.engine().*point)(index(given[0])));
  });
}

template <void (c_Distribution::*setPoint)(std::int16_t, double)>
constexpr Member assignmentOf(const char* name) {
  return method(name, 2, [](Owner& d, Arguments& given) {
    (d.engine().*setPoint)(index(given[0]), number(given[1]));
    return Any();
  });
}

template <auto bound>
constexpr Member plotBound(const char* name) {
  return method(name, 1, [](Owner& d, Arguments& given) {
    // The engine's own default stands for a number of standard deviations that was left out.
    return Any((d.engine().*bound)(given.has(0) ? number(given[0]) : 0));
  });
}

constexpr std::array members{
    variant<0>("param1"),
    variant<1>("param2"),
    variant<2>("param3"),
    variant<3>("param4"),
    variant<4>("ltl"),
    variant<5>("utl"),
    flag<&c_Distribution::Active>("Active"),
    flag<&c_Distribution::Dynamic>("Dynamic"),
    note<&c_Distribution::graphMax>("graphMax"),
    note<&c_Distribution::graphMin>("graphMin"),
    note<&c_Distribution::numberFormat>("numberFormat"),
    reading("ValidDistributions",
            [](Owner& d) { return toOffice(d.engine().ValidDistributions()); }),
    reading("DataConfigurations",
            [](Owner& d) { return toOffice(d.engine().DataConfigurations()); }),
    Member{.name = "ScaleFactor",
           .read = [](Owner& d) { return Any(d.engine().ScaleFactor()); },
           .write = [](Owner& d, const Any& value) { d.engine().ScaleFactor(number(value)); }},
    Member{.name = "distType",
           .read = [](Owner& d) { return Any(wide(d.engine().distType())); },
           .write = [](Owner& d, const Any& value) { d.engine().distType(text(value)); }},
    pointOf<&c_Distribution::GraphX>("GraphX"),
    pointOf<&c_Distribution::GraphX>("getGraphX"),
    assignmentOf<&c_Distribution::GraphX>("setGraphX"),
    pointOf<&c_Distribution::GraphPDF>("GraphPDF"),
    pointOf<&c_Distribution::GraphPDF>("getGraphPDF"),
    assignmentOf<&c_Distribution::GraphPDF>("setGraphPDF"),
    pointOf<&c_Distribution::GraphOL>("GraphOL"),
    pointOf<&c_Distribution::GraphOL>("getGraphOL"),
    assignmentOf<&c_Distribution::GraphOL>("setGraphOL"),
    method("ResizeArrays", 1,
           [](Owner& d, Arguments& given) {
             return toOffice(d.engine().ResizeArrays(index(given[0])));
           }),
    reading("NumPoints", [](Owner& d) { return Any(d.engine().NumPoints()); }),
    method("GuessParamValue", 2,
           [](Owner& d, Arguments& given) {
             return Any(d.engine().GuessParamValue(index(given[0]), number(given[1])));
           }),
    method("RandVal", 1,
           [](Owner& d, Arguments& given) { return Any(d.engine().RandVal(number(given[0]))); }),
    method("CalcMean", 0, [](Owner& d, Arguments&) { return Any(d.engine().CalcMean()); }),
    method("CalcStdev", 1,
           [](Owner& d, Arguments& given) { return Any(d.engine().CalcStdev(number(given[0]))); }),
    Member{
        .name = "mean", .read = [](Owner& d) { return Any(d.engine().mean()); }, .computes = true},
    method("StDev", 1,
           [](Owner& d, Arguments& given) { return Any(d.engine().StDev(given.optional(0))); }),
    plotBound<&c_Distribution::XMin>("XMin"),
    plotBound<&c_Distribution::XMax>("XMax"),
    method("pdf", 3,
           [](Owner& d, Arguments& given) {
             return Any(d.engine().pdf(number(given[0]), given.truth(1), given.optional(2)));
           }),
    method("cdf", 1,
           [](Owner& d, Arguments& given) { return Any(d.engine().cdf(number(given[0]))); }),
    method("CreateGraphData", 3,
           [](Owner& d, Arguments& given) {
             d.engine().CreateGraphData(number(given[0]), number(given[1]), given.truth(2));
             return Any();
           }),
    method("ParamsOK", 1,
           [](Owner& d, Arguments& given) {
             std::string fault;
             const bool valid = d.engine().ParamsOK(fault);
             given.answer(fault);
             return Any(valid);
           }),
    reading("NegInfinity", [](Owner& d) { return Any(wide(d.engine().NegInfinity())); }),
    reading("PosInfinity", [](Owner& d) { return Any(wide(d.engine().PosInfinity())); }),
    method("ParamName", 1,
           [](Owner& d, Arguments& given) {
             return Any(wide(d.engine().ParamName(whole<std::int32_t>(given[0]))));
           }),
    method("NumParams", 0, [](Owner& d, Arguments&) { return Any(d.engine().NumParams()); }),
    reading("LastErrorNumber", [](Owner& d) { return Any(d.lastError().number); }),
    reading("LastErrorSource", [](Owner& d) { return Any(wide(d.lastError().source)); }),
    reading("LastErrorDescription", [](Owner& d) { return Any(wide(d.lastError().description)); }),
};

const Member* find(const OUString& name) {
  const auto* const found = std::find_if(members.begin(), members.end(), [&](const Member& member) {
    return name.equalsIgnoreAsciiCaseAscii(member.name);
  });
  return found == members.end() ? nullptr : &*found;
}

const Member& memberNamed(const OUString& name) {
  const Member* const member = find(name);
  if (member == nullptr)
    throw css::beans::UnknownPropertyException("palvex: no member " + name, {});
  return *member;
}

InvocationInfo description(const Member& member) {
  InvocationInfo info;
  info.aName = OUString::createFromAscii(member.name);
  info.eMemberType =
      member.call != nullptr ? css::script::MemberType_METHOD : css::script::MemberType_PROPERTY;
  const bool readOnly = member.call == nullptr && member.write == nullptr;
  info.PropertyAttribute = readOnly ? css::beans::PropertyAttribute::READONLY : 0;
  info.aType = cppu::UnoType<Any>::get();
  info.aParamTypes = Sequence<css::uno::Type>(member.most);
  info.aParamModes = Sequence<css::reflection::ParamMode>(member.most);
  for (sal_Int32 i = 0; i < member.most; ++i) {
    info.aParamTypes.getArray()[i] = cppu::UnoType<Any>::get();
    info.aParamModes.getArray()[i] = css::reflection::ParamMode_IN;
  }
  return info;
}

}  // namespace

void Distribution::give(std::size_t place, const Any& value) {
  const std::array<Variant*, 6> variables{&engine_.param1, &engine_.param2, &engine_.param3,
                                          &engine_.param4, &engine_.ltl,    &engine_.utl};
  *variables.at(place) = fromOffice(value);
  given_.at(place) = value;
}

/// Any failure becomes a RuntimeError of the engine, and a note of it.
template <class Work>
auto Distribution::attempt(Work&& work) {
  const auto noted = [&](RuntimeError error) {
    lastError_ = {error.number(), error.source(), error.description()};
    return error;
  };
  try {
    return work();
  } catch (const RuntimeError& error) {
    throw noted(error);
  } catch (const std::bad_alloc&) {
    throw noted(RuntimeError(fault::outOfMemory));
  } catch (const std::exception& failure) {
    throw noted(RuntimeError(internalError, failure.what()));
  }
}

Any Distribution::invoke(const OUString& name, const Sequence<Any>& arguments,
                         Sequence<sal_Int16>& changed, Sequence<Any>& changedTo) {
  const Member* const member = find(name);
  if (member == nullptr || member->call == nullptr)
    throw css::lang::IllegalArgumentException("palvex: no method " + name, *this, 0);
  changed = {};
  changedTo = {};
  lastError_ = {};
  try {
    return attempt([&] {
      Arguments given(arguments, member->most);
      const Any result = member->call(*this, given);
      if (given.answer() && given.count() > 0) {
        changed = only(sal_Int16{0});
        changedTo = only(Any(*given.answer()));
      }
      return result;
    });
  } catch (const RuntimeError& error) {
    const css::script::BasicErrorException inner(wide(error.what()), *this, error.number(),
                                                 wide(error.description()));
    throw InvocationTargetException(inner.Message, *this, Any(inner));
  }
}

void Distribution::setValue(const OUString& name, const Any& value) {
  const Member& member = memberNamed(name);
  if (member.write == nullptr)
    throw css::beans::UnknownPropertyException("palvex: " + name + " can only be read", *this);
  try {
    attempt([&] { member.write(*this, value); });
  } catch (const RuntimeError& error) {
    const css::uno::RuntimeException inner(wide(error.what()), *this);
    throw InvocationTargetException(inner.Message, *this, Any(inner));
  }
}

Any Distribution::getValue(const OUString& name) {
  const Member& member = memberNamed(name);
  if (member.read == nullptr)
    throw css::beans::UnknownPropertyException("palvex: " + name + " is a method", *this);
  if (member.computes) lastError_ = {};
  try {
    return attempt([&] { return member.read(*this); });
  } catch (const RuntimeError& error) {
    throw css::uno::RuntimeException(wide(error.what()), *this);
  }
}

sal_Bool Distribution::hasMethod(const OUString& name) {
  const Member* const member = find(name);
  return member != nullptr && member->call != nullptr;
}

sal_Bool Distribution::hasProperty(const OUString& name) {
  const Member* const member = find(name);
  return member != nullptr && member->read != nullptr;
}

Sequence<OUString> Distribution::getMemberNames() {
  Sequence<OUString> names(static_cast<sal_Int32>(members.size()));
  std::transform(members.begin(), members.end(), names.getArray(),
                 [](const Member& member) { return OUString::createFromAscii(member.name); });
  return names;
}

Sequence<InvocationInfo> Distribution::getInfo() {
  Sequence<InvocationInfo> all(static_cast<sal_Int32>(members.size()));
  std::transform(members.begin(), members.end(), all.getArray(), description);
  return all;
}

InvocationInfo Distribution::getInfoForName(const OUString& name, sal_Bool) {
  const Member* const member = find(name);
  if (member == nullptr)
    throw css::lang::IllegalArgumentException("palvex: no member " + name, *this, 0);
  return description(*member);
}

OUString Distribution::getExactName(const OUString& approximate) {
  const Member* const member = find(approximate);
  return member == nullptr ? OUString() : OUString::createFromAscii(member->name);
}

/// Clients look at the object's members before they call them, and do not expect a null here.
Reference<css::beans::XIntrospectionAccess> Distribution::getIntrospection() {
  return css::beans::theIntrospection::get(context())->inspect(
      Any(Reference<css::script::XInvocation>(this)));
}

OUString Distribution::getImplementationName() {
  return OUString::createFromAscii(implementation);
}

sal_Bool Distribution::supportsService(const OUString& service) {
  return service.equalsAscii(implementation);
}

Sequence<OUString> Distribution::getSupportedServiceNames() {
  return only(getImplementationName());
}

}  // namespace palvex::calc
