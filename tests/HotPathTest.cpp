// While Dynamic is false, evaluations allocate nothing and ask the host nothing: counted here with
// an allocator of this program's own and a range that counts its reads.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <new>
#include <string>

#include "FakeRange.h"
#include "engine/c_Distribution.h"
#include "runtime/NumericText.h"

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

struct Case {
  const char* type;
  std::shared_ptr<FakeRange> first;  // the first parameter
  std::array<Variant, 3> others;
  double low, high;  // limits well inside the support
  int calls;         // of each member, with each kind of limits
};

void expectQuiet(const Case& c) {
  const double low = c.low;
  const double high = c.high;
  const struct {
    const char* what;
    Variant lower, upper;
  } limits[] = {{"none", {}, {}},
                {"lower", low, {}},
                {"both", low, high},
                {"reversed", high, low},
                {"numeric text", numberText(low), numberText(high)},
                {"infinity", "-Infinity", high}};
  for (const auto& [what, lower, upper] : limits) {
    const auto upperCell = cell(upper);
    c_Distribution d;
    d.distType(c.type);
    d.param1 = c.first;
    d.param2 = c.others[0];
    d.param3 = c.others[1];
    d.param4 = c.others[2];
    d.ltl = lower;
    d.utl = upperCell;
    std::string cause;
    ASSERT_TRUE(d.ParamsOK(cause)) << c.type << ": " << cause;

    const std::size_t allocated = allocations;
    const int reads = c.first->reads + upperCell->reads;
    double sum = 0;
    for (int i = 0; i < c.calls; ++i) {
      const double p = (i + 0.5) / c.calls;
      const double x = low + (high - low) * (1.2 * p - 0.1);
      sum += d.pdf(x) + d.cdf(x) + d.RandVal(p);
    }
    EXPECT_EQ(allocations - allocated, 0u) << c.type << ", limits: " << what;
    EXPECT_EQ(c.first->reads + upperCell->reads, reads) << c.type << ", limits: " << what;
    EXPECT_TRUE(std::isfinite(sum)) << c.type << ", limits: " << what;
  }
}

TEST(HotPath, NoAllocationAndNoCallOfTheHost) {
  constexpr int some = 10'000;
  const Case cases[] = {
      {"Normal", cell(0.5), {2}, -1, 2, 1'000'000},
      {"Uniform", cell(0), {8}, 1, 5, some},
      {"Triangular", cell(0), {3, 8}, 1, 5, some},
      {"Lognormal", cell(1), {0.5, 0}, 1, 5, some},
      {"Exponential", cell(0.5), {0}, 1, 5, some},
      {"Weibull", cell(2), {3, 0}, 1, 5, some},
      {"Gamma", cell(2.5), {1, 0}, 1, 5, some},
      {"Beta", cell(2.2), {150, 0, 1}, 0.01, 0.02, some},
      {"Johnson", cell(0.5), {2, 0.5, 5}, -1, 2, some},
      {"Johnson", cell(0.5), {2, 0.5, 2.5}, -1, 2, some},
      {"Histogram", block(1, {0, 1, 1, 2, 3}), {"Raw Data"}, 0.5, 2, some},
  };
  for (const Case& c : cases) expectQuiet(c);
}

}  // namespace
}  // namespace palvex
