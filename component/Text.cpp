#include "component/Text.h"

#include <limits>
#include <new>

#include "runtime/RuntimeError.h"

namespace palvex::component {

namespace {

int length(std::size_t size) {
  if (size > static_cast<std::size_t>(std::numeric_limits<int>::max())) raise(fault::outOfMemory);
  return static_cast<int>(size);
}

}  // namespace

std::string utf8(std::wstring_view text) {
  if (text.empty()) return {};
  const auto convert = [&](char* to, int room) {
    return WideCharToMultiByte(CP_UTF8, 0, text.data(), length(text.size()), to, room, nullptr,
                               nullptr);
  };
  std::string converted(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
  convert(converted.data(), length(converted.size()));
  return converted;
}

std::string utf8FromBstr(BSTR text) {
  return text == nullptr ? std::string() : utf8(std::wstring_view(text, SysStringLen(text)));
}

std::wstring wide(std::string_view text) {
  if (text.empty()) return {};
  const auto convert = [&](wchar_t* to, int room) {
    return MultiByteToWideChar(CP_UTF8, 0, text.data(), length(text.size()), to, room);
  };
  std::wstring converted(static_cast<std::size_t>(convert(nullptr, 0)), L'\0');
  convert(converted.data(), length(converted.size()));
  return converted;
}

Bstr bstr(std::string_view text) {
  const std::wstring converted = wide(text);
  const BSTR made =
      SysAllocStringLen(converted.data(), static_cast<UINT>(length(converted.size())));
  if (made == nullptr) throw std::bad_alloc();
  return Bstr(made);
}

}  // namespace palvex::component
