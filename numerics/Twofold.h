#pragma once

#include <bit>
#include <cstdint>

/// Numbers in two parts, for the few places where the rounding of one double would be magnified.
namespace palvex {

/// hi + lo, lo being no more than the rounding of hi.
struct Twofold {
  double hi;      ///< the number as one double
  double lo = 0;  ///< the number less `hi`
};

/// a + b, exactly (D. E. Knuth, The Art of Computer Programming 2, 4.2.2).
[[nodiscard]] inline Twofold sumOf(double a, double b) noexcept {
  const double sum = a + b;
  const double fromB = sum - a;
  return {sum, (a - (sum - fromB)) + (b - fromB)};
}

/// a in two parts of 26 and 27 bits, exactly, so that products of parts are exact but for the last
/// bit of the smallest.
[[nodiscard]] inline Twofold halvesOf(double a) noexcept {
  constexpr std::uint64_t upperBits = ~((std::uint64_t{1} << 27) - 1);
  const auto upper = std::bit_cast<double>(std::bit_cast<std::uint64_t>(a) & upperBits);
  return {upper, a - upper};
}

/// a b - product, where product is a b rounded (T. J. Dekker, Numer. Math. 18 (1971) 224-242). Not
/// by std::fma: some C libraries for Windows round that twice.
[[nodiscard]] inline double restOfProduct(double a, double b, double product) noexcept {
  const Twofold x = halvesOf(a);
  const Twofold y = halvesOf(b);
  return ((x.hi * y.hi - product) + x.hi * y.lo + x.lo * y.hi) + x.lo * y.lo;
}

/// x y to twice the precision of a double.
[[nodiscard]] inline Twofold productOf(Twofold x, Twofold y) noexcept {
  const double product = x.hi * y.hi;
  return {product, restOfProduct(x.hi, y.hi, product) + (x.hi * y.lo + x.lo * y.hi)};
}

/// x/y to twice the precision of a double.
[[nodiscard]] inline Twofold quotientOf(Twofold x, double y) noexcept {
  const double quotient = x.hi / y;
  const double product = quotient * y;
  return {quotient, ((x.hi - product) - restOfProduct(quotient, y, product) + x.lo) / y};
}

/// 1 - x for x in (0, 1), given with `rounded`, which is 1 - x but for its last digits.
[[nodiscard]] inline Twofold complementOf(double x, double rounded) noexcept {
  return {rounded, (1 - rounded) - x};
}

/// ln(x^a / x.hi^a), to the first order in x.lo.
[[nodiscard]] inline double logOfRest(Twofold x, double a) noexcept {
  return a * (x.lo / x.hi);
}

}  // namespace palvex
