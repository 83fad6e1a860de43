// The exported functions of the DLL: the class factory, registration, and whether it may be
// unloaded.

#define INITGUID  // this file holds the identifiers of the type library
#include <string_view>

#include "component/Boundary.h"
#include "component/Distribution.h"
#include "component/Module.h"
#include "component/Platform.h"
#include "component/Registration.h"

namespace palvex::component {

namespace {

/// Makes distributions. There is one, for as long as the DLL is loaded; references to it keep the
/// DLL loaded.
class Factory final : public IClassFactory {
 public:
  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_IClassFactory) return E_NOINTERFACE;
    *object = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override {
    Lock::add();
    return 2;
  }
  STDMETHODIMP_(ULONG) Release() override {
    Lock::remove();
    return 1;
  }

  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    return guarded([&] {
      const auto made = Ref<_c_Distribution>::adopt(new Distribution);
      const HRESULT found = made->QueryInterface(iid, object);
      if (FAILED(found)) throw Refused{found};
    });
  }
  STDMETHODIMP LockServer(BOOL lock) override {
    if (lock != FALSE) {
      Lock::add();
    } else {
      Lock::remove();
    }
    return S_OK;
  }
};

Factory factory;

}  // namespace

}  // namespace palvex::component

using namespace palvex::component;

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH) installPlatform();
  return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
  if (object == nullptr) return E_POINTER;
  *object = nullptr;
  if (clsid != __uuidof(c_Distribution)) return CLASS_E_CLASSNOTAVAILABLE;
  return factory.QueryInterface(iid, object);
}

STDAPI DllCanUnloadNow() {
  return Lock::held() ? S_FALSE : S_OK;
}

STDAPI DllRegisterServer() {
  return guarded([] { registerComponent(Scope::machine); });
}

STDAPI DllUnregisterServer() {
  return guarded([] { unregisterComponent(Scope::machine); });
}

/// `regsvr32 /n /i:user palvex.dll` registers for the current user, with /u it unregisters; without
/// "user" it is the machine.
STDAPI DllInstall(BOOL install, LPCWSTR argument) {
  const bool user = argument != nullptr && std::wstring_view(argument) == L"user";
  return guarded([&] {
    const auto apply = install != FALSE ? registerComponent : unregisterComponent;
    apply(user ? Scope::user : Scope::machine);
  });
}
