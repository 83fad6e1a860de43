#pragma once

#include <windows.h>

namespace palvex::component {

/// For whom the component is registered.
enum class Scope { machine, user };

/// Writes the entries that let clients find the class and its type library. After a failure, what
/// was written is gone again.
void registerComponent(Scope scope);

/// Removes the entries; those that the DLL of the other bitness still needs stay until that one is
/// unregistered too.
void unregisterComponent(Scope scope);

}  // namespace palvex::component
