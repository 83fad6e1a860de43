#include "laws/QuantileBlock.h"

#include <array>

// Compiled twice, for any processor and for one with AVX2; the loader takes the one that suits the
// machine. Both do the same sums and products, so that results agree bit for bit. The thread and
// address sanitizers do not support such functions.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__linux__) && \
    !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
#define PALVEX_FOR_EACH_PROCESSOR [[gnu::target_clones("avx2", "default")]]
#else
#define PALVEX_FOR_EACH_PROCESSOR
#endif

namespace palvex::laws {

PALVEX_FOR_EACH_PROCESSOR void quantileBlock(const Uniform& law, const KeptPart& part,
                                             const double* __restrict p, double* __restrict x,
                                             std::size_t n) noexcept {
  const Uniform own = law;
  const KeptPart kept = part;
  for (std::size_t i = 0; i < n; ++i) {
    x[i] = kept.ended(p[i], own.quantile(kept.lowerTail(p[i]), kept.upperTail(1 - p[i])));
  }
}

PALVEX_FOR_EACH_PROCESSOR void quantileBlock(const Triangular& law, const KeptPart& part,
                                             const double* __restrict p, double* __restrict x,
                                             std::size_t n) noexcept {
  const Triangular own = law;
  const KeptPart kept = part;
  for (std::size_t i = 0; i < n; ++i) {
    x[i] = kept.ended(p[i], own.quantile(kept.lowerTail(p[i]), kept.upperTail(1 - p[i])));
  }
}

namespace {

/// The deviates as if all were central; `centred` tells which are.
PALVEX_FOR_EACH_PROCESSOR void centralBlock(const KeptPart& part, const double* __restrict p,
                                            double* __restrict centred, double* __restrict z,
                                            std::size_t n) noexcept {
  const KeptPart kept = part;
  for (std::size_t i = 0; i < n; ++i) {
    centred[i] = centredProbability(kept.lowerTail(p[i]), kept.upperTail(1 - p[i]));
    z[i] = centralDeviate(centred[i]);
  }
}

/// The deviates of r = sqrt(-ln tail). On entry `r` holds the squares.
PALVEX_FOR_EACH_PROCESSOR void tailBlock(double* __restrict r, double* __restrict z,
                                         std::size_t n) noexcept {
  for (std::size_t i = 0; i < n; ++i) {
    r[i] = std::sqrt(r[i]);
    z[i] = nearTailDeviate(r[i]);
  }
}

}  // namespace

void deviateBlock(const KeptPart& part, const double* p, double* z, std::size_t n) noexcept {
  std::array<double, blockSize> centred;  // NOLINT: filled as far as it is read
  centralBlock(part, p, centred.data(), z, n);
  // The positions in the tails are collected, without a branch that the processor could not
  // predict, and worked on together.
  std::array<std::size_t, blockSize> place;  // NOLINT: likewise
  std::size_t tails = 0;
  for (std::size_t i = 0; i < n; ++i) {
    place[tails] = i;
    tails += isCentral(centred[i]) ? 0 : 1;
  }
  std::array<double, blockSize> r;         // NOLINT: likewise
  std::array<double, blockSize> deviates;  // NOLINT: likewise
  for (std::size_t k = 0; k < tails; ++k) {
    const double at = p[place[k]];
    r[k] = -std::log(std::min(part.lowerTail(at), part.upperTail(1 - at)));
  }
  tailBlock(r.data(), deviates.data(), tails);
  for (std::size_t k = 0; k < tails; ++k) {
    const double deviate = r[k] <= 5 ? deviates[k] : farTailDeviate(r[k]);
    z[place[k]] = std::copysign(deviate, centred[place[k]]);
  }
}

}  // namespace palvex::laws
