// Memory that runs out inside the DLL: each allocation of a host's session fails in turn.

#include <algorithm>
#include <cstdlib>

#include "component/tests/HostRange.h"

namespace palvex::component::testing {
namespace {

int made = 0;
int firstFailing = 0;  // 0 for none
bool lasting = false;  // whether all later ones fail, too
int held = 0;          // blocks of the DLL

bool fails() {
  ++made;
  return firstFailing != 0 && (made == firstFailing || (lasting && made > firstFailing));
}

// What the DLL calls in place of its imports.

void* allocate(std::size_t size) {
  void* const memory = fails() ? nullptr : std::malloc(size);
  held += memory != nullptr ? 1 : 0;
  return memory;
}
void release(void* memory) {
  held -= memory != nullptr ? 1 : 0;
  std::free(memory);
}
BSTR WINAPI allocateText(const OLECHAR* text, UINT size) {
  return fails() ? nullptr : SysAllocStringLen(text, size);
}
SAFEARRAY* WINAPI allocateArray(VARTYPE type, LONG lower, ULONG size) {
  return fails() ? nullptr : SafeArrayCreateVector(type, lower, size);
}
HRESULT WINAPI copyVariant(VARIANT* to, VARIANT* from) {
  return fails() ? E_OUTOFMEMORY : VariantCopyInd(to, from);
}

/// Makes palvex.dll call a function in place of one that it imports.
template <class Function>
void replaceImport(const wchar_t* library, const char* name, Function* with) {
  const auto number = [](auto* function) {
    return reinterpret_cast<ULONG_PTR>(reinterpret_cast<void*>(function));
  };
  auto* const base = reinterpret_cast<std::byte*>(GetModuleHandleW(L"palvex.dll"));
  const auto start = reinterpret_cast<IMAGE_DOS_HEADER*>(base)->e_lfanew;
  const auto& table = reinterpret_cast<IMAGE_NT_HEADERS*>(base + start)
                          ->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
  auto* const first = reinterpret_cast<ULONG_PTR*>(base + table.VirtualAddress);
  auto* const last = first + table.Size / sizeof *first;
  const ULONG_PTR what = number(GetProcAddress(GetModuleHandleW(library), name));
  EXPECT_EQ(std::count(first, last, what), 1) << name;
  DWORD access = 0;
  VirtualProtect(first, table.Size, PAGE_READWRITE, &access);
  std::replace(first, last, what, number(with));
  VirtualProtect(first, table.Size, access, &access);
}

constexpr HRESULT outOfMemory = runtimeError(7);

/// A host's session up to the first call without memory: what each call answered.
std::vector<double> session(IClassFactory& factory, IDispatch* range) {
  std::vector<double> answers;
  Distribution d;
  double x = 0;
  Bstr text;
  OwnedVariant content;
  VARIANT_BOOL valid = VARIANT_FALSE;
  DISPID id = 0;
  LPOLESTR name = const_cast<LPOLESTR>(L"mean");
  DISPPARAMS none{};
  const Bstr type = bstr("Normal");
  const OwnedVariant mean = object(range);
  const OwnedVariant spread = testing::text("00000000000000000000000002");
  const std::vector<std::function<HRESULT()>> calls{
      [&] {
        return factory.CreateInstance(nullptr, __uuidof(_c_Distribution),
                                      reinterpret_cast<void**>(d.receive()));
      },
      [&] { return d->put_distType(type.get()); },
      [&] { return d->put_param1(mean.get()); },
      [&] { return d->put_param2(spread.get()); },
      [&] { return d->ParamsOK(text.receive(), &valid); },
      [&] { return d->RandVal(0.3, &x); },
      [&] { return d->RandVal(2, &x); },  // error 5, with its trace
      [&] { return d->put_Dynamic(VARIANT_TRUE); },
      [&] { return d->RandVal(0.3, &x); },
      [&] { return d->cdf(0.3, &x); },
      [&] { return d->CreateGraphData(0, 1, VARIANT_FALSE); },
      [&] { return d->GetIDsOfNames(IID_NULL, &name, 1, 0x409, &id); },
      [&] {
        return d->Invoke(id, IID_NULL, 0x409, DISPATCH_PROPERTYGET, &none, content.receive(),
                         nullptr, nullptr);
      },
      [&] { return d->get_ValidDistributions(content.receive()); },
      [&] { return d->get_param2(content.receive()); },
      [&] { return d->ParamName(2, text.receive()); },
      [&] { return d->put_param2(number(-2).get()); },
      [&] { return d->ParamsOK(text.receive(), &valid); }};
  for (const auto& call : calls) {
    const HRESULT code = call();
    if (code == outOfMemory) return answers;
    answers.insert(answers.end(), {static_cast<double>(code), x, static_cast<double>(valid),
                                   static_cast<double>(SysStringLen(text.get())),
                                   static_cast<double>(V_VT(&content.get()))});
  }
  return answers;
}

using Memory = WithWorksheet;

TEST_F(Memory, ASessionEndsWithErrorSevenAndLeavesNothing) {
  Library library;
  replaceImport(L"msvcrt.dll", "malloc", allocate);
  replaceImport(L"msvcrt.dll", "free", release);
  replaceImport(L"oleaut32.dll", "SysAllocStringLen", allocateText);
  replaceImport(L"oleaut32.dll", "SafeArrayCreateVector", allocateArray);
  replaceImport(L"oleaut32.dll", "VariantCopyInd", copyVariant);
  const auto factory = library.factory();
  const auto range = HostRange::of(cell(1));
  const std::vector<double> usual = session(*factory.get(), range.get());
  made = 0;
  session(*factory.get(), range.get());
  const int allocations = made;
  EXPECT_GT(allocations, 100);
  const auto failEach = [&](bool allLater) {
    for (int n = 1; n <= allocations; ++n) {
      SCOPED_TRACE(n);
      made = 0;
      lasting = allLater;
      firstFailing = n;
      const std::vector<double> answers = session(*factory.get(), range.get());
      firstFailing = 0;
      ASSERT_LE(answers.size(), usual.size());
      EXPECT_TRUE(std::equal(answers.begin(), answers.end(), usual.begin()));
      EXPECT_EQ(range->references(), 1U);
    }
  };
  failEach(false);
  // By now the run-time has what it keeps for exceptions: on a thread, and without memory.
  const int before = held;
  failEach(false);
  EXPECT_EQ(held, before);
  failEach(true);
  EXPECT_EQ(held, before);
  EXPECT_EQ(session(*factory.get(), range.get()), usual);
  // Nor does a host leave anything behind whose range fails at any of its calls.
  restart();
  session(*factory.get(), range.get());
  const int calls = HostRange::calls;
  for (int n = 1; n <= calls; ++n) {
    restart(n);
    EXPECT_EQ(session(*factory.get(), range.get()).size(), usual.size());
    EXPECT_EQ(held, before) << "call " << n;
    EXPECT_EQ(range->references(), 1U) << "call " << n;
  }
  restart();
  std::printf("%d allocations failed, twice each, and %d calls of the host\n", allocations, calls);
}

}  // namespace
}  // namespace palvex::component::testing
