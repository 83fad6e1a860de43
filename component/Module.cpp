#include "component/Module.h"

#include <atomic>

#include "component/Boundary.h"

namespace palvex::component {

namespace {

std::atomic<long> locks = 0;

HMODULE thisModule() {
  HMODULE module = nullptr;
  const auto flags = static_cast<DWORD>(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                        GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT);
  GetModuleHandleExW(flags, reinterpret_cast<LPCWSTR>(&locks), &module);
  return module;
}

}  // namespace

std::wstring modulePath() {
  std::wstring path(MAX_PATH, L'\0');
  while (true) {
    const DWORD size =
        GetModuleFileNameW(thisModule(), path.data(), static_cast<DWORD>(path.size()));
    if (size == 0) throw Refused{HRESULT_FROM_WIN32(GetLastError())};
    if (size < path.size()) {
      path.resize(size);
      return path;
    }
    path.resize(2 * path.size());
  }
}

Ref<ITypeInfo> typeInfo(REFGUID guid) {
  // Loading is rare (early binding, named arguments) and the system keeps its own cache.
  Ref<ITypeLib> library;
  const HRESULT loaded = LoadTypeLibEx(modulePath().c_str(), REGKIND_NONE, library.receive());
  if (FAILED(loaded)) throw Refused{loaded};
  Ref<ITypeInfo> info;
  const HRESULT found = library->GetTypeInfoOfGuid(guid, info.receive());
  if (FAILED(found)) throw Refused{found};
  return info;
}

void Lock::add() noexcept {
  ++locks;
}

void Lock::remove() noexcept {
  --locks;
}

bool Lock::held() noexcept {
  return locks != 0;
}

}  // namespace palvex::component
