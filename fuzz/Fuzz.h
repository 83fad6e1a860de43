#pragma once

// What the fuzz targets share; each is included by one source, which defines `run`.

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

namespace palvex::fuzz {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// Tries what the data say. Whatever it throws is a finding.
void run(FuzzedDataProvider& data);

/// Ends the program: the fuzzer keeps the input.
[[noreturn]] inline void fail(const std::string& what) {
  std::fprintf(stderr, "FOUND: %s\n", what.c_str());
  std::abort();
}

template <class Item, std::size_t size>
const Item& oneOf(FuzzedDataProvider& data, const std::array<Item, size>& items) {
  return items[data.ConsumeIntegralInRange<std::size_t>(0, size - 1)];
}

/// A small number as people write it, one at the borders of arithmetic, or any bits at all.
inline double number(FuzzedDataProvider& data) {
  constexpr std::array odd{0.0,    -0.0,   1.0,  -1.0,     0.5,       0.1,    1e-17,
                           5e-324, 1e-300, 1e15, 1e-5,     1e155,     -1e308, 1e308,
                           -700.0, 1e5,    1e10, infinity, -infinity, nan};
  const int kind = data.ConsumeIntegralInRange(0, 3);
  if (kind == 0) return oneOf(data, odd);
  if (kind == 1) return std::bit_cast<double>(data.ConsumeIntegral<std::uint64_t>());
  return data.ConsumeIntegral<std::int16_t>() / 64.0;
}

/// A probability, often close to an end.
inline double probability(FuzzedDataProvider& data) {
  const double p = data.ConsumeIntegral<std::uint32_t>() * 0x1p-32;
  const int kind = data.ConsumeIntegralInRange(0, 3);
  if (kind == 0) return std::ldexp(p, -data.ConsumeIntegralInRange(0, 1000));
  if (kind == 1) return 1 - std::ldexp(p, -data.ConsumeIntegralInRange(0, 30));
  return p;
}

/// The same double, or both no number.
inline bool same(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) ||
         (std::isnan(a) && std::isnan(b));
}

}  // namespace palvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  palvex::fuzz::run(data);
  return 0;
}
