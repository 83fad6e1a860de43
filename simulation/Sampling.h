#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace palvex::simulation {

/// How the uniform numbers of an input come about: independently of each other, or as a Latin
/// hypercube, where each of n equal parts of (0, 1) is met in exactly one of n trials.
enum class Sampling { random, lhs };

/// A permutation of 0, ..., n - 1 that is computed place by place, so that nothing is stored: a
/// Feistel network on a grid of at least n places, applied again while it gives a place that is not
/// below n (Black and Rogaway: Ciphers with arbitrary finite domains; CT-RSA 2002).
class Permutation {
 public:
  /// @param n      from 1 to 2^62
  /// @param seed   with `input`, chooses the permutation
  Permutation(std::uint64_t n, std::uint64_t seed, std::uint64_t input);

  /// The place of `t`, both in 0, ..., n - 1.
  [[nodiscard]] std::uint64_t operator()(std::uint64_t t) const;

 private:
  std::uint64_t n_;
  std::uint64_t columns_;  // of the grid
  std::uint64_t rows_;
  std::array<std::uint64_t, 4> keys_;  // one for each round
};

/// The uniform numbers of a simulation's inputs; each can be computed without the others.
class Sampler {
 public:
  /// @param trials  how many trials there will be: with lhs, the number of strata
  /// @param inputs  how many inputs there are; they count from 1
  Sampler(Sampling sampling, std::uint64_t trials, std::uint64_t seed, std::size_t inputs);

  /// The numbers that become the draws of `input` in the trials first, first + 1, ...; in (0, 1).
  void draws(std::size_t input, std::uint64_t first, std::span<double> u) const;

  /// The numbers that decide in which of these trials `input` happens: where they are below its
  /// chance; in (0, 1).
  void events(std::size_t input, std::uint64_t first, std::span<double> u) const;

 private:
  std::uint64_t trials_;
  std::uint64_t seed_;
  std::vector<Permutation> strata_;  // one for each input; none without lhs
};

}  // namespace palvex::simulation
