#pragma once

#include <xmmintrin.h>

#include <cstdint>

namespace palvex::component {

/// For the time of a call, the floating-point settings that the engine counts on: round to nearest,
/// full precision, no traps, denormals kept. At the end the caller's own settings are back, exactly
/// as they were. Hosts differ in them: the x87 unit usually comes with 53 bits of precision, and
/// some languages let a division by zero trap.
class StandardArithmetic {
 public:
  StandardArithmetic() noexcept : sse_(_mm_getcsr()) {
    asm volatile("fnstcw %0" : "=m"(x87_) : : "memory");
    if (x87_ != standardX87) loadX87(standardX87);
    if ((sse_ & ~sseFlags) != standardSse) _mm_setcsr(standardSse);
  }
  StandardArithmetic(const StandardArithmetic&) = delete;
  StandardArithmetic& operator=(const StandardArithmetic&) = delete;
  ~StandardArithmetic() {
    if (x87_ != standardX87) {
      // Exceptions flagged during the call must not trap under the caller's settings.
      if ((x87_ & masked) != masked) asm volatile("fnclex" : : : "memory");
      loadX87(x87_);
    }
    if ((sse_ & ~sseFlags) != standardSse) _mm_setcsr(sse_);
  }

 private:
  static constexpr std::uint16_t standardX87 = 0x037F;
  static constexpr std::uint16_t masked = 0x003F;
  static constexpr unsigned standardSse = 0x1F80;
  static constexpr unsigned sseFlags = 0x003F;

  static void loadX87(std::uint16_t word) noexcept {
    asm volatile("fldcw %0" : : "m"(word) : "memory");
  }

  unsigned sse_;
  std::uint16_t x87_ = 0;
};

}  // namespace palvex::component
