#pragma once

#include <cstdint>

namespace palvex {

/// An automation Boolean: 16 bits, true is -1 and false 0.
class Boolean {
 public:
  /// Implicit, like the conversion back, so that a Boolean can stand wherever a bool can.
  constexpr Boolean(bool value = false) noexcept
      : bits_(value ? std::int16_t{-1} : std::int16_t{0}) {}
  /// False for 0, true for anything else.
  constexpr operator bool() const noexcept { return bits_ != 0; }

  /// -1 for true, 0 for false.
  [[nodiscard]] constexpr std::int16_t bits() const noexcept { return bits_; }

 private:
  std::int16_t bits_;
};

}  // namespace palvex
