#include "component/HostObject.h"

#include <dispex.h>

#include <algorithm>

#include "component/Boundary.h"
#include "component/Conversion.h"
#include "component/Text.h"

namespace palvex::component {

namespace {

constexpr std::int32_t automationError = 440;  // a failure without a number

/// What a failed call of a member says about its failure.
class Exception {
 public:
  Exception() = default;
  Exception(const Exception&) = delete;
  Exception& operator=(const Exception&) = delete;
  ~Exception() {
    SysFreeString(info_.bstrSource);
    SysFreeString(info_.bstrDescription);
    SysFreeString(info_.bstrHelpFile);
  }

  [[nodiscard]] EXCEPINFO* receive() noexcept { return &info_; }

  [[noreturn]] void raise() {
    if (info_.pfnDeferredFillIn != nullptr) info_.pfnDeferredFillIn(&info_);
    const std::int32_t number = info_.scode != 0 ? errorNumber(info_.scode) : info_.wCode;
    throw RuntimeError(number != 0 ? number : automationError, utf8FromBstr(info_.bstrDescription),
                       utf8FromBstr(info_.bstrSource));
  }

 private:
  EXCEPINFO info_{};
};

/// Some script engines list the members of their classes only through the extended interface.
HRESULT identifierOf(IDispatch* object, std::wstring name, DISPID& identifier) {
  LPOLESTR text = name.data();
  const HRESULT result =
      object->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &identifier);
  if (result != E_NOTIMPL) return result;
  const auto extended = Ref<IDispatch>(object).as<IDispatchEx>();
  if (!extended) return result;
  const Bstr member = bstr(utf8(name));
  return extended->GetDispID(member.get(), fdexNameCaseInsensitive, &identifier);
}

}  // namespace

DISPID HostObject::identifier(std::string_view member) {
  const auto known = std::find_if(identifiers_.begin(), identifiers_.end(),
                                  [&](const auto& entry) { return entry.first == member; });
  if (known != identifiers_.end()) return known->second;
  DISPID found = DISPID_UNKNOWN;
  require(identifierOf(object_.get(), wide(member), found));
  return identifiers_.emplace_back(member, found).second;
}

Variant HostObject::doGet(std::string_view member, const std::vector<Variant>& arguments) {
  // The host may replace the parameter that owns this object while it answers.
  const auto alive = shared_from_this();
  const DISPID id = identifier(member);

  std::vector<OwnedVariant> owned;
  std::vector<VARIANT> reversed;  // arguments travel last first
  for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument) {
    reversed.push_back(owned.emplace_back(toAutomation(*argument)).get());
  }
  DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  const auto flags = static_cast<WORD>(reversed.empty() ? DISPATCH_PROPERTYGET
                                                        : DISPATCH_METHOD | DISPATCH_PROPERTYGET);

  OwnedVariant result;
  Exception exception;
  const HRESULT outcome = object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                          result.receive(), exception.receive(), nullptr);
  if (outcome == DISP_E_EXCEPTION) exception.raise();
  require(outcome);
  return fromAutomation(result.get());
}

}  // namespace palvex::component
