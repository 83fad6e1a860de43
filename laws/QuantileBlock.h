#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

#include "laws/StandardNormal.h"
#include "laws/Triangular.h"
#include "laws/Uniform.h"

/// Quantiles of one piece of a law, one by one or many at once, with the same results bit for bit.
namespace palvex::laws {

/// A piece that limits keep: the probabilities below and above it, its own, and its outermost
/// values.
struct KeptPart {
  double below;        ///< probability below the piece
  double above;        ///< probability above it
  double probability;  ///< that of the piece
  double least;        ///< its first value
  double greatest;     ///< its last value

  /// The tail of the whole law below the position p of the piece: a sum, so nothing cancels.
  [[nodiscard]] double lowerTail(double p) const noexcept { return below + p * probability; }
  /// The tail above the position 1 - q, likewise.
  [[nodiscard]] double upperTail(double q) const noexcept { return above + q * probability; }

  /// x, or the nearer end of the piece.
  [[nodiscard]] double inside(double x) const noexcept {
    return std::min(std::max(x, least), greatest);
  }
  /// The quantile of any p, from what the law gives for a p in (0, 1).
  [[nodiscard]] double ended(double p, double quantile) const noexcept {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const double end = p == 0 ? least : p == 1 ? greatest : nan;
    return p > 0 && p < 1 ? inside(quantile) : end;
  }
};

/// How many quantiles are worked out at a time.
inline constexpr std::size_t blockSize = 256;

/// @{
/// The quantiles at the positions p[0], ..., p[n - 1] into x, of any p as KeptPart::ended has it.
/// @param x  an array other than p
/// @param n  at most blockSize
void quantileBlock(const Uniform& law, const KeptPart& part, const double* p, double* x,
                   std::size_t n) noexcept;
void quantileBlock(const Triangular& law, const KeptPart& part, const double* p, double* x,
                   std::size_t n) noexcept;
/// @}

/// The normal deviates at the positions p.
/// @param n  at most blockSize
void deviateBlock(const KeptPart& part, const double* p, double* z, std::size_t n) noexcept;

/// For laws of a transformed normal deviate.
template <class TheLaw>
requires requires(const TheLaw& law) {
  law.fromDeviate(0.0);
}
void quantileBlock(const TheLaw& law, const KeptPart& part, const double* p, double* x,
                   std::size_t n) noexcept {
  deviateBlock(part, p, x, n);
  for (std::size_t i = 0; i < n; ++i) x[i] = part.ended(p[i], law.fromDeviate(x[i]));
}

}  // namespace palvex::laws
