#pragma once

#include <rtl/ustring.hxx>
#include <string>
#include <string_view>

// Text is UTF-8 in the engine and UTF-16 in the office.

namespace palvex::calc {

inline rtl::OUString wide(std::string_view text) {
  return {text.data(), static_cast<sal_Int32>(text.size()), RTL_TEXTENCODING_UTF8};
}

inline std::string utf8(const rtl::OUString& text) {
  const rtl::OString bytes = rtl::OUStringToOString(text, RTL_TEXTENCODING_UTF8);
  return {bytes.getStr(), static_cast<std::size_t>(bytes.getLength())};
}

}  // namespace palvex::calc
