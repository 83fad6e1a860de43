#include "component/Registration.h"

#include <string>
#include <utility>
#include <vector>

#include "component/Boundary.h"
#include "component/Module.h"

namespace palvex::component {

namespace {

const std::wstring programId = L"palvex.c_Distribution";
const std::wstring versionedProgramId = programId + L".1";
const std::wstring title = L"palvex distribution";
const std::wstring libraryVersion = L"1.0";
const std::wstring platform = sizeof(void*) == 8 ? L"win64" : L"win32";
const std::wstring otherPlatform = sizeof(void*) == 8 ? L"win32" : L"win64";
const std::wstring automationMarshaller = L"{00020424-0000-0000-C000-000000000046}";

std::wstring text(REFGUID guid) {
  wchar_t buffer[39];
  StringFromGUID2(guid, buffer, 39);
  return buffer;
}

void succeed(LSTATUS status) {
  if (status != ERROR_SUCCESS) throw Refused{HRESULT_FROM_WIN32(static_cast<DWORD>(status))};
}

/// A key of the registry, closed at the end.
class Key {
 public:
  static Key create(HKEY parent, const std::wstring& path) {
    Key key;
    succeed(RegCreateKeyExW(parent, path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr,
                            &key.handle_, nullptr));
    return key;
  }
  /// For a key that is not there, one whose `exists` is false.
  static Key open(HKEY parent, const std::wstring& path) noexcept {
    Key key;
    if (RegOpenKeyExW(parent, path.c_str(), 0, KEY_READ | KEY_WRITE | DELETE, &key.handle_) !=
        ERROR_SUCCESS)
      key.handle_ = nullptr;
    return key;
  }
  Key(Key&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Key& operator=(Key&&) = delete;
  ~Key() {
    if (handle_ != nullptr) RegCloseKey(handle_);
  }

  [[nodiscard]] HKEY get() const noexcept { return handle_; }
  [[nodiscard]] bool exists() const noexcept { return handle_ != nullptr; }

  void set(const wchar_t* name, const std::wstring& value) const {
    const auto* const bytes = reinterpret_cast<const BYTE*>(value.c_str());
    const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    succeed(RegSetValueExW(handle_, name, 0, REG_SZ, bytes, size));
  }

 private:
  Key() = default;
  HKEY handle_ = nullptr;
};

struct Entry {
  std::wstring key;
  const wchar_t* name;  // null for the key's own value
  std::wstring value;
};

std::wstring classKey() {
  return L"CLSID\\" + text(__uuidof(::c_Distribution));
}
std::wstring interfaceKey() {
  return L"Interface\\" + text(__uuidof(_c_Distribution));
}
std::wstring libraryKey() {
  return L"TypeLib\\" + text(LIBID_palvex);
}
std::wstring languageKey() {
  return libraryKey() + L"\\" + libraryVersion + L"\\0";
}

std::vector<Entry> entries() {
  const std::wstring path = modulePath();
  const std::wstring folder = path.substr(0, path.find_last_of(L'\\'));
  const std::wstring classId = text(__uuidof(::c_Distribution));
  const std::wstring libraryId = text(LIBID_palvex);
  const std::wstring version = libraryKey() + L"\\" + libraryVersion;
  return {
      {programId, nullptr, title},
      {programId + L"\\CLSID", nullptr, classId},
      {programId + L"\\CurVer", nullptr, versionedProgramId},
      {versionedProgramId, nullptr, title},
      {versionedProgramId + L"\\CLSID", nullptr, classId},
      {classKey(), nullptr, title},
      {classKey() + L"\\InprocServer32", nullptr, path},
      {classKey() + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
      {classKey() + L"\\ProgID", nullptr, versionedProgramId},
      {classKey() + L"\\VersionIndependentProgID", nullptr, programId},
      {classKey() + L"\\TypeLib", nullptr, libraryId},
      {classKey() + L"\\Version", nullptr, libraryVersion},
      {classKey() + L"\\Programmable", nullptr, L""},
      {interfaceKey(), nullptr, L"_c_Distribution"},
      {interfaceKey() + L"\\ProxyStubClsid32", nullptr, automationMarshaller},
      {interfaceKey() + L"\\TypeLib", nullptr, libraryId},
      {interfaceKey() + L"\\TypeLib", L"Version", libraryVersion},
      {version, nullptr, L"palvex: probability distributions"},
      {version + L"\\FLAGS", nullptr, L"0"},
      {version + L"\\HELPDIR", nullptr, folder},
      {languageKey() + L"\\" + platform, nullptr, path},
  };
}

/// The part of the registry that holds classes, of the machine or of the user.
Key classes(Scope scope) {
  return Key::create(scope == Scope::machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER,
                     L"Software\\Classes");
}

void removeTree(const Key& root, const std::wstring& key) {
  const LSTATUS status = RegDeleteTreeW(root.get(), key.c_str());
  if (status != ERROR_FILE_NOT_FOUND) succeed(status);
}

/// A user's folders of classes, interfaces and libraries may not have been there before.
void removeIfEmpty(const Key& root, const wchar_t* folder) {
  DWORD keys = 0;
  DWORD values = 0;
  {
    const Key key = Key::open(root.get(), folder);
    if (!key.exists() ||
        RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values,
                         nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
      return;
  }
  if (keys == 0 && values == 0) RegDeleteKeyW(root.get(), folder);
}

}  // namespace

void registerComponent(Scope scope) {
  try {
    const Key root = classes(scope);
    for (const Entry& entry : entries()) {
      Key::create(root.get(), entry.key).set(entry.name, entry.value);
    }
  } catch (...) {
    try {
      unregisterComponent(scope);
    } catch (...) {
      // The first failure is the one to report.
    }
    throw;
  }
}

void unregisterComponent(Scope scope) {
  const Key root = classes(scope);
  removeTree(root, classKey());
  removeTree(root, interfaceKey());
  removeTree(root, languageKey() + L"\\" + platform);
  removeIfEmpty(root, L"CLSID");
  removeIfEmpty(root, L"Interface");
  // The library and the names of the class are shared with the DLL of the other bitness.
  if (Key::open(root.get(), languageKey() + L"\\" + otherPlatform).exists()) return;
  removeTree(root, libraryKey());
  removeTree(root, programId);
  removeTree(root, versionedProgramId);
  removeIfEmpty(root, L"TypeLib");
}

}  // namespace palvex::component
