// Counting: references, the DLL's lock, and memory over many lives.

#include <heapapi.h>

#include <thread>

#include "component/tests/HostRange.h"

namespace palvex::component::testing {
namespace {

TEST(Lifetime, KeepsOneIdentity) {
  Library library;
  const Distribution d = library.create();
  const auto unknown = d.as<IUnknown>();
  EXPECT_EQ(d.as<IDispatch>().as<IUnknown>().get(), unknown.get());
  EXPECT_EQ(d.as<ISupportErrorInfo>().as<IUnknown>().get(), unknown.get());
  EXPECT_EQ(d.as<IProvideClassInfo>().as<_c_Distribution>().get(), d.get());
  EXPECT_FALSE(d.as<IClassFactory>());
  EXPECT_EQ(d->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(d->AddRef(), 3u);
  EXPECT_EQ(d->Release(), 2u);
}

TEST(Lifetime, MayBeUnloadedWhenNothingIsHeld) {
  Library library;
  EXPECT_TRUE(library.canUnload());
  {
    const auto factory = library.factory();
    EXPECT_FALSE(library.canUnload());
    void* made = nullptr;
    EXPECT_EQ(factory->CreateInstance(factory.get(), IID_IUnknown, &made), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IClassFactory, &made), E_NOINTERFACE);
    EXPECT_EQ(made, nullptr);
  }
  EXPECT_TRUE(library.canUnload());
  Distribution d = library.create();
  EXPECT_FALSE(library.canUnload());
  d = Distribution();
  EXPECT_TRUE(library.canUnload());
  library.factory()->LockServer(TRUE);
  EXPECT_FALSE(library.canUnload());
  library.factory()->LockServer(FALSE);
  EXPECT_TRUE(library.canUnload());
  const auto getClassObject =
      library.find<HRESULT WINAPI(REFCLSID, REFIID, void**)>("DllGetClassObject");
  void* made = nullptr;
  EXPECT_EQ(getClassObject(IID_IUnknown, IID_IUnknown, &made), CLASS_E_CLASSNOTAVAILABLE);
}

TEST(Lifetime, UnloadsAfterTheLastReleaseOnAnotherThread) {
  auto library = std::make_unique<Library>();
  Distribution d;
  std::thread user([&] {
    d = library->create();
    describe(d, "Normal", {0, 1});
    EXPECT_EQ(faultOf(d), "");
    double result = 0;
    EXPECT_EQ(d->RandVal(2, &result), runtimeError(5));  // the thread has thrown inside the DLL
    std::thread([&] { d = Distribution(); }).join();
    EXPECT_TRUE(library->canUnload());
    library.reset();
    EXPECT_EQ(GetModuleHandleW(L"palvex.dll"), nullptr);
  });
  user.join();  // what the DLL left on this thread must not be touched now
}

/// Blocks that the process holds on its heap.
std::size_t heapBlocks() {
  std::size_t blocks = 0;
  PROCESS_HEAP_ENTRY entry{};
  HeapLock(GetProcessHeap());
  while (HeapWalk(GetProcessHeap(), &entry))
    blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) ? 1 : 0;
  HeapUnlock(GetProcessHeap());
  return blocks;
}

using Leaks = WithWorksheet;

TEST_F(Leaks, HundredThousandLivesLeaveNothing) {
  Library library;
  const auto factory = library.factory();
  const auto range = HostRange::of(cell(3));
  const OwnedVariant reference = object(range.get());
  const OwnedVariant name = text("Triangular");
  const auto live = [&](int i) {
    Distribution d;
    ASSERT_EQ(factory->CreateInstance(nullptr, __uuidof(_c_Distribution),
                                      reinterpret_cast<void**>(d.receive())),
              S_OK);
    d->put_distType(V_BSTR(&name.get()));
    d->put_param1(number(0).get());
    d->put_param2(reference.get());
    d->put_param3(text("10").get());
    d->put_numberFormat(V_BSTR(&name.get()));
    if (i % 4 == 0) d->put_utl(text("abc").get());
    Bstr cause;
    VARIANT_BOOL valid = VARIANT_FALSE;
    ASSERT_EQ(d->ParamsOK(cause.receive(), &valid), S_OK);
    double result = 0;
    d->RandVal(0.5, &result);
    if (i % 16 == 0) {
      d->put_distType(bstr("Normal").get());
      d->put_Dynamic(VARIANT_TRUE);
      ASSERT_EQ(d->RandVal(2, &result), runtimeError(5));
    }
    OwnedVariant list;
    ASSERT_EQ(d->get_ValidDistributions(list.receive()), S_OK);
    OwnedVariant back;
    ASSERT_EQ(d->get_param2(back.receive()), S_OK);
    Bstr text;
    ASSERT_EQ(d->ParamName(2, text.receive()), S_OK);
  };
  for (int i = 0; i < 2000; ++i) live(i);
  SetErrorInfo(0, nullptr);
  const ULONG references = range->references();
  const std::size_t blocks = heapBlocks();
  for (int i = 0; i < 100000; ++i) live(i);
  SetErrorInfo(0, nullptr);
  EXPECT_EQ(range->references(), references);
  EXPECT_EQ(heapBlocks(), blocks);
  std::printf("heap blocks before and after: %zu, %zu; ranges alive: %d\n", blocks, heapBlocks(),
              HostRange::alive);
}

}  // namespace
}  // namespace palvex::component::testing
