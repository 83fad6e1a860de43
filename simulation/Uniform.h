#pragma once

#include <Random123/philox.h>

#include <cstdint>

namespace palvex::simulation {

/// The upper 52 of 64 random bits as an odd multiple of 2^-53: never 0 and never 1, and 1 - u is as
/// likely as u.
inline double openUnit(std::uint64_t random) {
  return (static_cast<double>(random >> 12) + 0.5) * 0x1p-52;
}

/// 64 random bits: Philox4x32-10 (Salmon, Moraes, Dror, Shaw: Parallel random numbers: as easy as
/// 1, 2, 3; SC11) with the seed as its key and (trial, stream) as its counter. They depend on
/// nothing else, so that trials may be drawn in any order and anywhere.
inline std::uint64_t randomBits(std::uint64_t seed, std::uint64_t stream, std::uint64_t trial) {
  const auto low = [](std::uint64_t word) { return static_cast<std::uint32_t>(word); };
  const auto high = [](std::uint64_t word) { return static_cast<std::uint32_t>(word >> 32); };
  const r123::Philox4x32::ctr_type counter{{low(trial), high(trial), low(stream), high(stream)}};
  const r123::Philox4x32::key_type key{{low(seed), high(seed)}};
  const auto random = r123::Philox4x32{}(counter, key);
  return std::uint64_t{random[1]} << 32 | random[0];
}

/// The uniform random number of a trial, see randomBits.
/// @returns a value in (0, 1), see openUnit
inline double uniform(std::uint64_t seed, std::uint64_t stream, std::uint64_t trial) {
  return openUnit(randomBits(seed, stream, trial));
}

}  // namespace palvex::simulation
