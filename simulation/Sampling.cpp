#include "simulation/Sampling.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "simulation/Uniform.h"

namespace palvex::simulation {

namespace {

/// The upper half of a stream's number says what the numbers are for, the lower half is the input.
enum class Purpose : std::uint64_t { draw = 0, event = 1, permutation = 2 };

constexpr std::uint64_t stream(std::uint64_t input, Purpose purpose) {
  return static_cast<std::uint64_t>(purpose) << 32 | input;
}

constexpr double greatestBelowOne = 1 - 0x1p-53;

/// Spreads the bits of a number over all of its bits (Stafford's variant 13 of the finaliser of
/// MurmurHash3, known from SplitMix64).
constexpr std::uint64_t mixed(std::uint64_t x) {
  x = (x ^ x >> 30) * 0xbf58476d1ce4e5b9;
  x = (x ^ x >> 27) * 0x94d049bb133111eb;
  return x ^ x >> 31;
}

/// A number in 0, ..., range - 1 that depends on `x` and `key`; range up to 2^32.
constexpr std::uint64_t scrambled(std::uint64_t x, std::uint64_t key, std::uint64_t range) {
  return (mixed(x + key) >> 32) * range >> 32;
}

/// The sum of two numbers below `range`, modulo it.
constexpr std::uint64_t wrappedSum(std::uint64_t a, std::uint64_t b, std::uint64_t range) {
  return a + b < range ? a + b : a + b - range;
}

/// uniform(seed, stream, t) for t = first, first + 1, ...: the same generator, worked for eight
/// trials side by side.
#if defined(__x86_64__) && defined(__gnu_linux__) && !defined(__SANITIZE_THREAD__)
// Compiled a second time for processors with wide registers; which one runs is decided when the
// program is loaded, before the thread sanitizer is ready for it. The numbers are the same.
[[gnu::target_clones("avx512f", "default")]]
#endif
void fill(std::uint64_t seed, std::uint64_t stream, std::uint64_t first, std::span<double> u) {
  constexpr std::size_t lanes = 8;
  constexpr std::uint64_t low = 0xffffffff;  // the bits of a word of the generator
  using Words = std::array<std::uint64_t, lanes>;
  std::size_t done = 0;
  for (; done + lanes <= u.size(); done += lanes) {
    Words a;
    Words b;
    Words c;
    Words d;
    for (std::size_t i = 0; i < lanes; ++i) {
      const std::uint64_t trial = first + done + i;
      a[i] = trial & low;
      b[i] = trial >> 32;
      c[i] = stream & low;
      d[i] = stream >> 32;
    }
    std::uint64_t key0 = seed & low;
    std::uint64_t key1 = seed >> 32;
    for (int round = 0; round < PHILOX4x32_DEFAULT_ROUNDS; ++round) {
      for (std::size_t i = 0; i < lanes; ++i) {
        const std::uint64_t p = PHILOX_M4x32_0 * a[i];
        const std::uint64_t q = PHILOX_M4x32_1 * c[i];
        a[i] = q >> 32 ^ b[i] ^ key0;
        b[i] = q & low;
        c[i] = p >> 32 ^ d[i] ^ key1;
        d[i] = p & low;
      }
      key0 = (key0 + PHILOX_W32_0) & low;
      key1 = (key1 + PHILOX_W32_1) & low;
    }
    for (std::size_t i = 0; i < lanes; ++i) {
      // As openUnit, with the 52 bits as the fraction of a number from 2^52 on.
      const std::uint64_t bits = b[i] << 20 | a[i] >> 12;
      const auto shifted = std::bit_cast<double>(std::bit_cast<std::uint64_t>(0x1p52) | bits);
      u[done + i] = (shifted - 0x1p52 + 0.5) * 0x1p-52;
    }
  }
  for (; done < u.size(); ++done) u[done] = uniform(seed, stream, first + done);
}

}  // namespace

Permutation::Permutation(std::uint64_t n, std::uint64_t seed, std::uint64_t input)
    : n_(n),
      columns_(static_cast<std::uint64_t>(std::ceil(std::sqrt(static_cast<double>(n))))),
      rows_((n + columns_ - 1) / columns_) {
  for (std::size_t round = 0; round < keys_.size(); ++round) {
    keys_[round] = randomBits(seed, stream(input, Purpose::permutation), round);
  }
}

std::uint64_t Permutation::operator()(std::uint64_t t) const {
  do {
    std::uint64_t row = t / columns_;
    std::uint64_t column = t % columns_;
    for (std::size_t round = 0; round < keys_.size(); round += 2) {
      row = wrappedSum(row, scrambled(column, keys_[round], rows_), rows_);
      column = wrappedSum(column, scrambled(row, keys_[round + 1], columns_), columns_);
    }
    t = row * columns_ + column;
  } while (t >= n_);
  return t;
}

Sampler::Sampler(Sampling sampling, std::uint64_t trials, std::uint64_t seed, std::size_t inputs)
    : trials_(trials), seed_(seed) {
  if (sampling == Sampling::random) return;
  for (std::size_t input = 1; input <= inputs; ++input) strata_.emplace_back(trials, seed, input);
}

void Sampler::draws(std::size_t input, std::uint64_t first, std::span<double> u) const {
  fill(seed_, stream(input, Purpose::draw), first, u);
  if (strata_.empty()) return;
  const Permutation& stratumOf = strata_[input - 1];
  for (std::size_t i = 0; i < u.size(); ++i) {
    const auto stratum = static_cast<double>(stratumOf(first + i));
    // A place that rounds up to the next stratum stays in its own.
    const double place = std::min(stratum + u[i], std::nextafter(stratum + 1, 0.0));
    u[i] = std::min(place / static_cast<double>(trials_), greatestBelowOne);
  }
}

void Sampler::events(std::size_t input, std::uint64_t first, std::span<double> u) const {
  fill(seed_, stream(input, Purpose::event), first, u);
}

}  // namespace palvex::simulation
