// The law itself, each query for each type, whole and between limits; quantiles of whole blocks
// beside draws in a loop.

#include <algorithm>
#include <array>
#include <span>
#include <string>

#include "bench/Cases.h"
#include "engine/Law.h"

namespace palvex::bench {

namespace {

Law wholeLaw(const Case& which) {
  return which.object()->law();
}

/// What the limits keep between the quantiles of `from` and `to`; reversed where from > to.
Law lawBetween(const Case& which, double from, double to) {
  const Law whole = wholeLaw(which);
  return whole.between(whole.quantile(from), whole.quantile(to));
}

constexpr std::size_t blockLength = 1000;

/// Times `fill` from blocks of probabilities, block after block.
template <class Fill>
void timeBlocks(benchmark::State& state, Fill&& fill) {
  const std::span<const double> p = probabilities();
  std::array<double, blockLength> x{};
  std::size_t start = 0;
  for (auto _ : state) {
    fill(p.subspan(start, blockLength), std::span(x));
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
    start = start + 2 * blockLength <= p.size() ? start + blockLength : 0;
  }
}

void registerCase(const Case& one) {
  const auto add = [&](const std::string& what, const std::string& who, auto run) {
    benchmark::RegisterBenchmark((what + '/' + one.name + '/' + who).c_str(),
                                 [=, &one](benchmark::State& state) { run(state, one); });
  };
  add("pdf", "Law", [](auto& state, const Case& which) {
    timeOver(state, which.arguments(),
             [law = wholeLaw(which)](double x) { return law.density(x); });
  });
  add("cdf", "Law", [](auto& state, const Case& which) {
    timeOver(state, which.arguments(),
             [law = wholeLaw(which)](double x) { return law.probability(x); });
  });
  add("cdf", "Law, above", [](auto& state, const Case& which) {
    timeOver(state, which.arguments(),
             [law = wholeLaw(which)](double x) { return law.exceedance(x); });
  });
  add("draw", "Law", [](auto& state, const Case& which) {
    timeOver(state, probabilities(), [law = wholeLaw(which)](double p) { return law.quantile(p); });
  });
  const auto addWithLimits = [&](const std::string& limits, double from, double to) {
    add(limits, "Law", [=](auto& state, const Case& which) {
      timeOver(state, probabilities(),
               [law = lawBetween(which, from, to)](double p) { return law.quantile(p); });
    });
    add("cdf " + limits, "Law", [=](auto& state, const Case& which) {
      timeOver(state, which.arguments(),
               [law = lawBetween(which, from, to)](double x) { return law.probability(x); });
    });
  };
  addWithLimits("between", 0.2, 0.9);
  addWithLimits("outside", 0.7, 0.4);
  add("block", "Law", [](auto& state, const Case& which) {
    timeBlocks(state, [law = wholeLaw(which)](auto p, auto x) { law.quantiles(p, x); });
  });
  add("block", "object", [](auto& state, const Case& which) {
    timeBlocks(state, [d = which.object()](auto p, auto x) {
      std::transform(p.begin(), p.end(), x.begin(), [&](double at) { return d->RandVal(at); });
    });
  });
}

const bool registered = [] {
  for (const Case& one : cases()) registerCase(one);
  return true;
}();

}  // namespace

}  // namespace palvex::bench
