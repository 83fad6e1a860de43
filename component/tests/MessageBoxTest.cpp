// The real message box of an unknown type's name, shown and dismissed.

#include <atomic>
#include <thread>

#include "component/tests/Client.h"

namespace palvex::component::testing {
namespace {

struct Shown {
  HWND window = nullptr;
  std::wstring title;
  std::wstring text;
};

std::wstring windowText(HWND window) {
  wchar_t buffer[256] = {};
  GetWindowTextW(window, buffer, 256);
  return buffer;
}

BOOL CALLBACK findDialog(HWND window, LPARAM to) {
  DWORD process = 0;
  wchar_t kind[32] = {};
  GetWindowThreadProcessId(window, &process);
  GetClassNameW(window, kind, 32);
  if (process != GetCurrentProcessId() || std::wstring(kind) != L"#32770" ||
      !IsWindowVisible(window))
    return TRUE;
  reinterpret_cast<Shown*>(to)->window = window;
  return FALSE;
}

BOOL CALLBACK readText(HWND window, LPARAM to) {
  wchar_t kind[32] = {};
  GetClassNameW(window, kind, 32);
  if (std::wstring(kind) == L"Static") reinterpret_cast<Shown*>(to)->text += windowText(window);
  return TRUE;
}

TEST(UnknownType, ShowsAMessageBoxAndKeepsTheOldOne) {
  Library library;
  const Distribution d = library.create();
  ASSERT_EQ(d->put_distType(bstr("Weibull").get()), S_OK);

  Shown shown;
  std::thread user([&] {
    for (int i = 0; i < 500 && shown.window == nullptr; ++i) {
      Sleep(10);
      EnumWindows(findDialog, reinterpret_cast<LPARAM>(&shown));
    }
    if (shown.window == nullptr) return;
    shown.title = windowText(shown.window);
    EnumChildWindows(shown.window, readText, reinterpret_cast<LPARAM>(&shown));
    PostMessageW(shown.window, WM_COMMAND, IDOK, 0);
  });
  EXPECT_EQ(d->put_distType(bstr("weib\u00fcll").get()), S_OK);
  user.join();

  ASSERT_NE(shown.window, nullptr);
  EXPECT_EQ(utf8(shown.title), "");
  EXPECT_EQ(utf8(shown.text), "Unknown distribution type 'weib\u00fcll'.");
  EXPECT_FALSE(IsWindow(shown.window));
  EXPECT_EQ(textOf([&](auto* to) { return d->get_distType(to); }), "Weibull");
}

}  // namespace
}  // namespace palvex::component::testing
