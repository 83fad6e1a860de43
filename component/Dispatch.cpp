#include "component/Dispatch.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "component/Boundary.h"
#include "component/Module.h"
#include "component/Owned.h"

namespace palvex::component {

namespace {

// ---- arguments ----

/// What a reference to a variant refers to; any other content itself.
VARIANT& target(VARIANT& given) noexcept {
  return V_VT(&given) == (VT_VARIANT | VT_BYREF) ? *V_VARIANTREF(&given) : given;
}

/// The arguments of a call by their positions, counted from 0. The caller passes the named ones
/// first and the others last to first; the value of an assignment is the last of all.
class Arguments {
 public:
  explicit Arguments(const LateCall& call) : call_(call), given_(*call.parameters) {
    const bool whole = (given_.cArgs == 0 || given_.rgvarg != nullptr) &&
                       (given_.cNamedArgs == 0 || given_.rgdispidNamedArgs != nullptr) &&
                       given_.cNamedArgs <= given_.cArgs;
    if (!whole) throw Refused{E_INVALIDARG};
  }

  [[nodiscard]] UINT count() const noexcept { return given_.cArgs; }
  [[nodiscard]] LCID locale() const noexcept { return call_.locale; }

  /// The argument, or null when it was left out.
  [[nodiscard]] VARIANT* find(UINT position) const {
    VARIANT* const argument = slot(position);
    if (argument == nullptr) return nullptr;
    if (V_ISBYREF(argument) && V_BYREF(argument) == nullptr) refuse(position, DISP_E_TYPEMISMATCH);
    const VARIANT& content = target(*argument);
    const bool leftOut = V_VT(&content) == VT_ERROR && V_ERROR(&content) == DISP_E_PARAMNOTFOUND;
    return leftOut ? nullptr : argument;
  }

  /// The argument; refused when it was left out.
  [[nodiscard]] VARIANT& at(UINT position) const {
    VARIANT* const argument = find(position);
    if (argument == nullptr) throw Refused{DISP_E_PARAMNOTOPTIONAL};
    return *argument;
  }

  /// Refuses the call because of one argument.
  [[noreturn]] void refuse(UINT position, HRESULT code) const {
    if (call_.badArgument != nullptr)
      *call_.badArgument = static_cast<UINT>(slot(position) - given_.rgvarg);
    throw Refused{code};
  }

 private:
  [[nodiscard]] VARIANT* slot(UINT position) const noexcept {
    for (UINT i = 0; i < given_.cNamedArgs; ++i) {
      const DISPID name = given_.rgdispidNamedArgs[i];
      if (name == static_cast<DISPID>(position) ||
          (name == DISPID_PROPERTYPUT && position == given_.cArgs - 1))
        return given_.rgvarg + i;
    }
    if (position >= given_.cArgs - given_.cNamedArgs) return nullptr;
    return given_.rgvarg + (given_.cArgs - 1 - position);
  }

  const LateCall& call_;
  const DISPPARAMS& given_;
};

// ---- kinds of argument and result ----

struct Number {
  static constexpr VARTYPE type = VT_R8;
  static double& of(VARIANT& content) noexcept { return V_R8(&content); }
};
struct Short {
  static constexpr VARTYPE type = VT_I2;
  static short& of(VARIANT& content) noexcept { return V_I2(&content); }
};
struct Long {
  static constexpr VARTYPE type = VT_I4;
  static long& of(VARIANT& content) noexcept { return V_I4(&content); }
};
struct Truth {
  static constexpr VARTYPE type = VT_BOOL;
  static VARIANT_BOOL& of(VARIANT& content) noexcept { return V_BOOL(&content); }
};
struct Text {
  static constexpr VARTYPE type = VT_BSTR;
  static BSTR& of(VARIANT& content) noexcept { return V_BSTR(&content); }
};
struct Any {};
struct TextByReference {};
template <class Kind>
struct Optional {};

/// An argument in the form in which the method takes it; the form lives as long as this object.
template <class Kind>
class Argument {
 public:
  static constexpr bool optional = false;

  Argument(const Arguments& given, UINT position) : content_(&target(given.at(position))) {
    if (V_VT(content_) == Kind::type) return;
    const HRESULT outcome =
        VariantChangeTypeEx(converted_.receive(), content_, given.locale(), 0, Kind::type);
    if (FAILED(outcome)) given.refuse(position, outcome);
    content_ = &converted_.get();
  }

  [[nodiscard]] auto value() noexcept { return Kind::of(*content_); }

 private:
  OwnedVariant converted_;
  VARIANT* content_;
};

template <>
class Argument<Any> {
 public:
  static constexpr bool optional = false;

  Argument(const Arguments& given, UINT position) : content_(target(given.at(position))) {}

  [[nodiscard]] VARIANT value() const noexcept { return content_; }

 private:
  VARIANT content_;  // the caller's, who owns it for the time of the call
};

/// A truth value that was left out is false.
template <>
class Argument<Optional<Truth>> {
 public:
  static constexpr bool optional = true;

  Argument(const Arguments& given, UINT position)
      : value_(given.find(position) != nullptr ? Argument<Truth>(given, position).value()
                                               : VARIANT_FALSE) {}

  [[nodiscard]] VARIANT_BOOL value() const noexcept { return value_; }

 private:
  VARIANT_BOOL value_;
};

template <>
class Argument<Optional<Any>> {
 public:
  static constexpr bool optional = true;

  Argument(const Arguments& given, UINT position) {
    if (VARIANT* const argument = given.find(position)) {
      content_ = target(*argument);
    } else {
      V_VT(&content_) = VT_ERROR;
      V_ERROR(&content_) = DISP_E_PARAMNOTFOUND;
    }
  }

  [[nodiscard]] VARIANT value() const noexcept { return content_; }

 private:
  VARIANT content_{};
};

/// A text that the method replaces. The caller's variable may be a text or, in scripts, a variant
/// of any content; a value that is no variable receives nothing.
template <>
class Argument<TextByReference> {
 public:
  static constexpr bool optional = false;

  Argument(const Arguments& given, UINT position) {
    VARIANT& argument = given.at(position);
    VARIANT& content = target(argument);
    if (V_VT(&content) == (VT_BSTR | VT_BYREF)) {
      text_ = V_BSTRREF(&content);
      return;
    }
    const HRESULT outcome =
        VariantChangeTypeEx(converted_.receive(), &content, given.locale(), 0, VT_BSTR);
    if (FAILED(outcome)) given.refuse(position, outcome);
    text_ = &V_BSTR(&converted_.get());
    if (&content != &argument) variable_ = &content;
  }
  Argument(const Argument&) = delete;
  Argument& operator=(const Argument&) = delete;
  ~Argument() {
    if (variable_ != nullptr && SUCCEEDED(VariantClear(variable_)))
      *variable_ = converted_.release();
  }

  [[nodiscard]] BSTR* value() const noexcept { return text_; }

 private:
  OwnedVariant converted_;
  BSTR* text_ = nullptr;
  VARIANT* variable_ = nullptr;
};

/// Where a method leaves its result, on the way to the caller.
template <class Kind>
class Result {
 public:
  auto* receive() noexcept {
    V_VT(&content_.get()) = VT_EMPTY;
    return &Kind::of(content_.get());
  }
  void give(VARIANT* to) noexcept {
    V_VT(&content_.get()) = Kind::type;
    if (to != nullptr) *to = content_.release();
  }

 private:
  OwnedVariant content_;
};

template <>
class Result<Any> {
 public:
  VARIANT* receive() noexcept { return content_.receive(); }
  void give(VARIANT* to) noexcept {
    if (to != nullptr) *to = content_.release();
  }

 private:
  OwnedVariant content_;
};

// ---- the members ----

/// How a member is called: the method behind it and how many arguments it takes. The function
/// returns the method's own outcome, and throws Refused when the arguments do not fit.
struct Access {
  HRESULT (*call)(_c_Distribution&, const Arguments&, VARIANT*) = nullptr;
  UINT fewest = 0;
  UINT most = 0;
};

template <class... Kinds, class Call>
HRESULT withArguments(const Arguments& given, Call&& call) {
  return [&]<std::size_t... i>(std::index_sequence<i...>) {
    return call(Argument<Kinds>(given, static_cast<UINT>(i)).value()...);
  }
  (std::index_sequence_for<Kinds...>{});
}

template <class... Kinds>
constexpr UINT required = (0u + ... + (Argument<Kinds>::optional ? 0u : 1u));

/// A method with a result.
template <auto method, class Answer, class... Kinds>
constexpr Access get{[](_c_Distribution& object, const Arguments& given, VARIANT* result) {
                       Result<Answer> answer;
                       const HRESULT outcome = withArguments<Kinds...>(given, [&](auto... values) {
                         return (object.*method)(values..., answer.receive());
                       });
                       if (SUCCEEDED(outcome)) answer.give(result);
                       return outcome;
                     },
                     required<Kinds...>, sizeof...(Kinds)};

/// A method without a result, or an assignment, whose last argument is the value.
template <auto method, class... Kinds>
constexpr Access act{[](_c_Distribution& object, const Arguments& given, VARIANT*) {
                       return withArguments<Kinds...>(
                           given, [&](auto... values) { return (object.*method)(values...); });
                     },
                     required<Kinds...>, sizeof...(Kinds)};

/// A list, or with an argument one item of it: late-bound callers write `list(3)` for both.
template <auto method>
constexpr Access list{[](_c_Distribution& object, const Arguments& given, VARIANT* result) {
                        OwnedVariant items;
                        const HRESULT outcome = (object.*method)(items.receive());
                        if (FAILED(outcome) || result == nullptr) return outcome;
                        if (given.count() == 0) {
                          *result = items.release();
                          return outcome;
                        }
                        LONG i = Argument<Long>(given, 0).value();
                        const HRESULT found =
                            SafeArrayGetElement(V_ARRAY(&items.get()), &i, result);
                        if (FAILED(found)) given.refuse(0, found);
                        return outcome;
                      },
                      0, 1};

struct Member {
  std::wstring_view name;
  Access read;             // as a method or the reading of a property
  Access write = {};       // as an assignment; none for a method and a read-only property
  bool reference = false;  // may be set to an object
};

using I = _c_Distribution;

/// All members, in the order of the interface: a member's identifier is its place, from 1.
constexpr std::array members{
    Member{L"param1", get<&I::get_param1, Any>, act<&I::put_param1, Any>, true},
    Member{L"param2", get<&I::get_param2, Any>, act<&I::put_param2, Any>, true},
    Member{L"param3", get<&I::get_param3, Any>, act<&I::put_param3, Any>, true},
    Member{L"param4", get<&I::get_param4, Any>, act<&I::put_param4, Any>, true},
    Member{L"ltl", get<&I::get_ltl, Any>, act<&I::put_ltl, Any>, true},
    Member{L"utl", get<&I::get_utl, Any>, act<&I::put_utl, Any>, true},
    Member{L"Active", get<&I::get_Active, Truth>, act<&I::put_Active, Truth>},
    Member{L"Dynamic", get<&I::get_Dynamic, Truth>, act<&I::put_Dynamic, Truth>},
    Member{L"graphMax", get<&I::get_graphMax, Text>, act<&I::put_graphMax, Text>},
    Member{L"graphMin", get<&I::get_graphMin, Text>, act<&I::put_graphMin, Text>},
    Member{L"numberFormat", get<&I::get_numberFormat, Text>, act<&I::put_numberFormat, Text>},
    Member{L"ValidDistributions", list<&I::get_ValidDistributions>},
    Member{L"DataConfigurations", list<&I::get_DataConfigurations>},
    Member{L"ScaleFactor", get<&I::get_ScaleFactor, Number>, act<&I::put_ScaleFactor, Number>},
    Member{L"distType", get<&I::get_distType, Text>, act<&I::put_distType, Text>},
    Member{L"GraphX", get<&I::get_GraphX, Number, Short>, act<&I::put_GraphX, Short, Number>},
    Member{L"GraphPDF", get<&I::get_GraphPDF, Number, Short>, act<&I::put_GraphPDF, Short, Number>},
    Member{L"GraphOL", get<&I::get_GraphOL, Number, Short>, act<&I::put_GraphOL, Short, Number>},
    Member{L"ResizeArrays", get<&I::ResizeArrays, Any, Short>},
    Member{L"NumPoints", get<&I::get_NumPoints, Short>},
    Member{L"GuessParamValue", get<&I::GuessParamValue, Number, Short, Number>},
    Member{L"RandVal", get<&I::RandVal, Number, Number>},
    Member{L"CalcMean", get<&I::CalcMean, Number>},
    Member{L"CalcStdev", get<&I::CalcStdev, Number, Number>},
    Member{L"mean", get<&I::get_mean, Number>},
    Member{L"StDev", get<&I::get_StDev, Number, Optional<Any>>},
    Member{L"XMin", get<&I::get_XMin, Number, Optional<Any>>},
    Member{L"XMax", get<&I::get_XMax, Number, Optional<Any>>},
    Member{L"pdf", get<&I::pdf, Number, Number, Optional<Truth>, Optional<Any>>},
    Member{L"cdf", get<&I::cdf, Number, Number>},
    Member{L"CreateGraphData", act<&I::CreateGraphData, Number, Number, Optional<Truth>>},
    Member{L"ParamsOK", get<&I::ParamsOK, Truth, TextByReference>},
    Member{L"NegInfinity", get<&I::get_NegInfinity, Text>},
    Member{L"PosInfinity", get<&I::get_PosInfinity, Text>},
    Member{L"ParamName", get<&I::ParamName, Text, Long>},
    Member{L"NumParams", get<&I::NumParams, Short>},
};

constexpr wchar_t lower(wchar_t c) noexcept {
  return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

bool sameName(std::wstring_view a, std::wstring_view b) noexcept {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](wchar_t x, wchar_t y) { return lower(x) == lower(y); });
}

const Member& memberOf(DISPID id) {
  if (id < 1 || static_cast<std::size_t>(id) > members.size()) throw Refused{DISP_E_MEMBERNOTFOUND};
  return members[static_cast<std::size_t>(id - 1)];
}

const Access& accessOf(const Member& member, WORD flags) {
  const bool reading = (flags & (DISPATCH_METHOD | DISPATCH_PROPERTYGET)) != 0;
  const bool setting = !reading && (flags & DISPATCH_PROPERTYPUT) == 0;
  const Access& access = reading ? member.read : member.write;
  if (access.call == nullptr || (setting && !member.reference))
    throw Refused{DISP_E_MEMBERNOTFOUND};
  return access;
}

/// Hands the caller of IDispatch::Invoke a method's failure: its code and the thread's error
/// object.
HRESULT raised(HRESULT code, EXCEPINFO* exception) {
  if (exception == nullptr) return code;
  *exception = {};
  exception->scode = code;
  Ref<IErrorInfo> info;
  if (GetErrorInfo(0, info.receive()) == S_OK) {
    info->GetSource(&exception->bstrSource);
    info->GetDescription(&exception->bstrDescription);
  }
  return DISP_E_EXCEPTION;
}

}  // namespace

HRESULT findIdentifiers(LPOLESTR* names, UINT count, DISPID* ids) noexcept {
  if (names == nullptr || ids == nullptr || count == 0 || names[0] == nullptr) return E_INVALIDARG;
  if (count > 1) {
    return guarded([&] {
      const auto info = typeInfo(__uuidof(_c_Distribution));
      const HRESULT found = DispGetIDsOfNames(info.get(), names, count, ids);
      if (FAILED(found)) throw Refused{found};
    });
  }
  const auto* const found = std::find_if(
      members.begin(), members.end(),
      [name = std::wstring_view(names[0])](const Member& m) { return sameName(m.name, name); });
  if (found == members.end()) {
    ids[0] = DISPID_UNKNOWN;
    return DISP_E_UNKNOWNNAME;
  }
  ids[0] = static_cast<DISPID>(found - members.begin()) + 1;
  return S_OK;
}

HRESULT invoke(_c_Distribution& object, const LateCall& call) noexcept {
  if (call.parameters == nullptr) return E_INVALIDARG;
  if (call.result != nullptr) VariantInit(call.result);
  HRESULT outcome = S_OK;
  const HRESULT refusal = guarded([&] {
    const Access& access = accessOf(memberOf(call.member), call.flags);
    const Arguments arguments(call);
    if (arguments.count() > access.most) throw Refused{DISP_E_BADPARAMCOUNT};
    if (arguments.count() < access.fewest) throw Refused{DISP_E_PARAMNOTOPTIONAL};
    outcome = access.call(object, arguments, call.result);
  });
  if (FAILED(refusal)) return refusal;
  return FAILED(outcome) ? raised(outcome, call.exception) : S_OK;
}

}  // namespace palvex::component
