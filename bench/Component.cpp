// What one draw costs through each way in, beside the same draw in plain C++.

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "component/tests/Client.h"
#include "engine/c_Distribution.h"

namespace {

using namespace palvex::component;
using namespace palvex::component::testing;

constexpr int calls = 200000;

/// Nanoseconds for one call of `draw`, the best of many runs; the sum keeps the calls alive.
template <class Draw>
double cost(Draw&& draw) {
  double best = 1e300;
  double sum = 0;
  for (int run = 0; run < 15; ++run) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i) sum += draw((i + 0.5) / calls);
    const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
    best = std::min(best, time.count() / calls);
  }
  return sum == 0.125 ? 0 : best;
}

void measure(const Distribution& d, palvex::c_Distribution& engine) {
  std::printf("  plain C++                 %7.1f ns\n",
              cost([&](double p) { return engine.RandVal(p); }));
  std::printf("  vtable                    %7.1f ns\n", cost([&](double p) {
                double x = 0;
                d->RandVal(p, &x);
                return x;
              }));
  LPOLESTR name = const_cast<LPOLESTR>(L"RandVal");
  DISPID id = 0;
  d->GetIDsOfNames(IID_NULL, &name, 1, 0, &id);
  const auto invoke = [&](double p) {
    OwnedVariant argument = number(p);
    OwnedVariant result;
    DISPPARAMS parameters{&argument.get(), nullptr, 1, 0};
    d->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &parameters, result.receive(), nullptr, nullptr);
    return V_R8(&result.get());
  };
  std::printf("  Invoke                    %7.1f ns\n", cost(invoke));
  std::printf("  GetIDsOfNames and Invoke  %7.1f ns\n", cost([&](double p) {
                d->GetIDsOfNames(IID_NULL, &name, 1, 0, &id);
                return invoke(p);
              }));
}

}  // namespace

int main() {
  const Library library;
  const Distribution d = library.create();
  palvex::c_Distribution engine;
  std::string fault;
  d->put_distType(bstr("Normal").get());
  engine.distType("Normal");
  d->put_param1(number(10).get());
  engine.param1 = 10;
  d->put_param2(number(2).get());
  engine.param2 = 2;
  Bstr cause;
  VARIANT_BOOL valid = VARIANT_FALSE;
  d->ParamsOK(cause.receive(), &valid);
  if (valid == VARIANT_FALSE || !engine.ParamsOK(fault)) return 1;

  std::printf("One draw of a normal distribution, %d-bit:\n", static_cast<int>(8 * sizeof(void*)));
  measure(d, engine);
  const std::uint16_t spreadsheets = 0x027F;
  asm volatile("fldcw %0" : : "m"(spreadsheets));
  std::printf("With the x87 precision of 53 bits, as hosts set it:\n");
  measure(d, engine);
}
