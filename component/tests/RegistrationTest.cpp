// Registration and unregistration, for the machine and for the user, leaving nothing behind.

#define INITGUID  // the identifiers of the type library
#include <set>
#include <thread>

#include "component/tests/Client.h"

namespace palvex::component::testing {
namespace {

constexpr const wchar_t* classes = L"Software\\Classes";

/// The names under the keys that a registration writes to.
std::set<std::wstring> keysOf(HKEY hive) {
  std::set<std::wstring> names;
  for (const std::wstring folder : {L"", L"\\CLSID", L"\\Interface", L"\\TypeLib"}) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(hive, (classes + folder).c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
      continue;
    wchar_t name[256];
    for (DWORD i = 0;; ++i) {
      DWORD size = 256;
      if (RegEnumKeyExW(key, i, name, &size, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
        break;
      names.insert(folder + L"\\" + name);
    }
    RegCloseKey(key);
  }
  return names;
}

std::string valueOfKey(HKEY hive, const std::wstring& path, const wchar_t* name = nullptr) {
  wchar_t buffer[512] = {};
  DWORD size = sizeof buffer;
  const std::wstring key = std::wstring(classes) + L"\\" + path;
  if (RegGetValueW(hive, key.c_str(), name, RRF_RT_REG_SZ, nullptr, buffer, &size) != ERROR_SUCCESS)
    return "none";
  return utf8(std::wstring_view(buffer));
}

std::wstring textOfGuid(REFGUID guid) {
  wchar_t buffer[39];
  StringFromGUID2(guid, buffer, 39);
  return buffer;
}

class Registration : public ::testing::Test {
 protected:
  void SetUp() override { call("DllUnregisterServer"); }  // whatever stood there before

  HRESULT call(const char* name) { return library.find<HRESULT WINAPI()>(name)(); }
  HRESULT install(bool on, const wchar_t* scope) {
    return library.find<HRESULT WINAPI(BOOL, LPCWSTR)>("DllInstall")(on, scope);
  }

  Library library;
};

TEST_F(Registration, LetsClientsFindTheClassAndLeavesNothingBehind) {
  const auto before = keysOf(HKEY_LOCAL_MACHINE);
  ASSERT_EQ(call("DllRegisterServer"), S_OK);
  ASSERT_EQ(call("DllRegisterServer"), S_OK);  // a second time changes nothing

  const std::wstring classId = textOfGuid(__uuidof(::c_Distribution));
  EXPECT_EQ(valueOfKey(HKEY_LOCAL_MACHINE, L"palvex.c_Distribution\\CurVer"),
            "palvex.c_Distribution.1");
  EXPECT_EQ(
      valueOfKey(HKEY_LOCAL_MACHINE, L"CLSID\\" + classId + L"\\InprocServer32", L"ThreadingModel"),
      "Apartment");
  EXPECT_EQ(valueOfKey(HKEY_LOCAL_MACHINE, L"CLSID\\" + classId + L"\\ProgID"),
            "palvex.c_Distribution.1");

  ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
  for (const wchar_t* name : {L"palvex.c_Distribution", L"palvex.c_Distribution.1"}) {
    CLSID found{};
    ASSERT_EQ(CLSIDFromProgID(name, &found), S_OK);
    EXPECT_EQ(found, __uuidof(::c_Distribution));
    Distribution d;
    ASSERT_EQ(CoCreateInstance(found, nullptr, CLSCTX_INPROC_SERVER, __uuidof(_c_Distribution),
                               reinterpret_cast<void**>(d.receive())),
              S_OK);
    EXPECT_EQ(textOf([&](auto* to) { return d->get_NegInfinity(to); }), "-Infinity");
  }
  Ref<ITypeLib> types;
  EXPECT_EQ(LoadRegTypeLib(LIBID_palvex, 1, 0, 0, types.receive()), S_OK);
  types = Ref<ITypeLib>();

  // A client outside any single-threaded apartment goes through the system's marshaller.
  std::thread([] {
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    {
      Distribution d;
      ASSERT_EQ(CoCreateInstance(__uuidof(::c_Distribution), nullptr, CLSCTX_INPROC_SERVER,
                                 __uuidof(_c_Distribution), reinterpret_cast<void**>(d.receive())),
                S_OK);
      describe(d, "Normal", {1, 2});
      EXPECT_EQ(faultOf(d), "");
      EXPECT_EQ(valueOf<double>([&](auto* to) { return d->RandVal(0.5, to); }), 1);
      double result = 0;
      EXPECT_EQ(d->RandVal(2, &result), runtimeError(5));
      EXPECT_EQ(valueOf<double>([&](auto* to) { return d->get_XMin(number(1).get(), to); }), -1);
    }
    CoUninitialize();
  }).join();
  CoUninitialize();

  ASSERT_EQ(call("DllUnregisterServer"), S_OK);
  EXPECT_EQ(keysOf(HKEY_LOCAL_MACHINE), before);
  EXPECT_EQ(call("DllUnregisterServer"), S_OK);  // nothing to remove is no failure
}

TEST_F(Registration, ServesAUserWithoutRights) {
  const auto machine = keysOf(HKEY_LOCAL_MACHINE);
  const auto before = keysOf(HKEY_CURRENT_USER);
  ASSERT_EQ(install(true, L"user"), S_OK);
  EXPECT_EQ(keysOf(HKEY_LOCAL_MACHINE), machine);
  EXPECT_EQ(utf8(textOfGuid(__uuidof(::c_Distribution))),
            valueOfKey(HKEY_CURRENT_USER, L"palvex.c_Distribution\\CLSID"));
  EXPECT_NE(
      valueOfKey(HKEY_CURRENT_USER, L"TypeLib\\" + textOfGuid(LIBID_palvex) + L"\\1.0\\FLAGS"),
      "none");
  ASSERT_EQ(install(false, L"user"), S_OK);
  EXPECT_EQ(keysOf(HKEY_CURRENT_USER), before);
}

TEST_F(Registration, LeavesWhatTheOtherBitnessNeeds) {
  const auto before = keysOf(HKEY_LOCAL_MACHINE);
  ASSERT_EQ(call("DllRegisterServer"), S_OK);
  const std::wstring other = std::wstring(classes) + L"\\TypeLib\\" + textOfGuid(LIBID_palvex) +
                             (sizeof(void*) == 8 ? L"\\1.0\\0\\win32" : L"\\1.0\\0\\win64");
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyW(HKEY_LOCAL_MACHINE, other.c_str(), &key), ERROR_SUCCESS);
  RegCloseKey(key);
  ASSERT_EQ(call("DllUnregisterServer"), S_OK);
  EXPECT_NE(valueOfKey(HKEY_LOCAL_MACHINE, L"palvex.c_Distribution\\CLSID"), "none");
  RegDeleteKeyW(HKEY_LOCAL_MACHINE, other.c_str());
  ASSERT_EQ(call("DllUnregisterServer"), S_OK);
  EXPECT_EQ(keysOf(HKEY_LOCAL_MACHINE), before);
}

}  // namespace
}  // namespace palvex::component::testing
