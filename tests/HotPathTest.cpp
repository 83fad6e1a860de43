// While Dynamic is false, evaluations allocate nothing and ask the host nothing: counted here with
// an allocator of this program's own and a range that counts its reads.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <new>
#include <string>

#include "FakeRange.h"
#include "engine/c_Distribution.h"

namespace {
std::size_t allocations = 0;
}

void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace palvex {
namespace {

void expectQuiet(const char* type, const Variant& third, const Variant& fourth) {
  const struct {
    const char* what;
    Variant lower, upper;
  } limits[] = {{"none", {}, {}},    {"lower", -1, {}},           {"both", -1, 2},
                {"reversed", 2, -1}, {"numeric text", "-1", "2"}, {"infinity", "-Infinity", 2}};
  for (const auto& [what, lower, upper] : limits) {
    const auto mean = cell(0.5);
    const auto upperCell = cell(upper);
    c_Distribution d;
    d.distType(type);
    d.param1 = mean;
    d.param2 = 2;
    d.param3 = third;
    d.param4 = fourth;
    d.ltl = lower;
    d.utl = upperCell;
    std::string cause;
    ASSERT_TRUE(d.ParamsOK(cause)) << cause;

    const std::size_t allocated = allocations;
    const int reads = mean->reads + upperCell->reads;
    double sum = 0;
    for (int i = 0; i < 200'000; ++i) {
      const double p = (i + 0.5) / 2e5;
      sum += d.pdf(8 * p - 4) + d.cdf(8 * p - 4) + d.RandVal(p);
    }
    EXPECT_EQ(allocations - allocated, 0u) << what;
    EXPECT_EQ(mean->reads + upperCell->reads, reads) << what;
    EXPECT_TRUE(std::isfinite(sum));
  }
}

TEST(HotPath, NoAllocationAndNoCallOfTheHost) {
  expectQuiet("Normal", {}, {});
  expectQuiet("Johnson", 0.5, 5);
  expectQuiet("Johnson", 0.5, 2.5);
}

TEST(HotPath, PreparedShapesAllocateNothing) {
  c_Distribution d;
  d.distType("Beta");
  d.param1 = 2.2;
  d.param2 = 150;
  d.param3 = 0;
  d.param4 = 1;
  d.utl = 0.5;
  std::string cause;
  ASSERT_TRUE(d.ParamsOK(cause)) << cause;
  const std::size_t allocated = allocations;
  double sum = 0;
  for (int i = 0; i < 1000; ++i) {
    const double p = (i + 0.5) / 1e3;
    sum += d.pdf(p) + d.cdf(p) + d.RandVal(p);
  }
  EXPECT_EQ(allocations - allocated, 0u);
  EXPECT_TRUE(std::isfinite(sum));
}

}  // namespace
}  // namespace palvex
