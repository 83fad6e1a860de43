#include "component/Platform.h"

#include <cmath>
#include <optional>
#include <string>
#include <string_view>

#include "component/Text.h"
#include "runtime/MessageBox.h"
#include "runtime/NumericText.h"

namespace palvex::component {

namespace {

std::optional<double> regionalNumericText(std::string_view text) {
  const std::wstring content = wide(text);
  if (content.find(L'\0') != std::wstring::npos) return {};  // the rule would stop reading there
  double value = 0;
  if (FAILED(VarR8FromStr(const_cast<LPOLESTR>(content.c_str()), LOCALE_USER_DEFAULT, 0, &value)))
    return {};
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

void showMessageBox(std::string_view text) {
  ::MessageBoxW(GetActiveWindow(), wide(text).c_str(), L"", MB_OK);
}

}  // namespace

void installPlatform() {
  setNumericTextRule(regionalNumericText);
  setMessageBox(showMessageBox);
}

}  // namespace palvex::component
