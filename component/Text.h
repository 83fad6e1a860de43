#pragma once

#include <string>
#include <string_view>

#include "component/Owned.h"

namespace palvex::component {

/// 16-bit text as UTF-8; an unpaired surrogate becomes U+FFFD.
[[nodiscard]] std::string utf8(std::wstring_view text);
/// The same for a BSTR, which may be null and may hold zero characters.
[[nodiscard]] std::string utf8FromBstr(BSTR text);

/// UTF-8 as 16-bit text.
[[nodiscard]] std::wstring wide(std::string_view text);

/// UTF-8 as a BSTR of its own.
[[nodiscard]] Bstr bstr(std::string_view text);

}  // namespace palvex::component
