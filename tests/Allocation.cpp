#include "Allocation.h"

#include <cstdlib>

void* operator new(std::size_t size) {
  using namespace palvex::allocation;
  const std::size_t number = ++made;
  const std::size_t first = firstFailing;
  const bool fails = first != 0 && (number == first || (lasting && number > first));
  void* const memory = fails ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
