#pragma once

#include <string>

#include "component/Owned.h"
#include "component/palvex_h.h"

namespace palvex::component {

/// The full path of this DLL.
[[nodiscard]] std::wstring modulePath();

/// A description from the type library that this DLL carries.
[[nodiscard]] Ref<ITypeInfo> typeInfo(REFGUID guid);

/// Keeps the DLL loaded: every object that a client can hold has one.
class Lock {
 public:
  Lock() noexcept { add(); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;
  ~Lock() { remove(); }

  static void add() noexcept;
  static void remove() noexcept;
  /// Whether anything keeps the DLL loaded.
  [[nodiscard]] static bool held() noexcept;
};

}  // namespace palvex::component
