#pragma once

#include <cmath>

#include "runtime/RuntimeError.h"

/// Arithmetic that raises the error of an automation run-time where plain C++ carries on with an
/// infinity or a NaN: 5 for an invalid argument, 6 for overflow, 11 for a division by zero.
/// Underflow is no fault.
namespace palvex {

/// `value`, or error 6 when it is infinite or NaN.
inline double checked(double value, Line line = Line::here()) {
  if (!std::isfinite(value)) [[unlikely]]
    raise(fault::overflow, line);
  return value;
}

/// Raises error 6 when `value` is NaN. An infinity passes: functions have limit values there.
inline void refuseNaN(double value, Line line = Line::here()) {
  if (std::isnan(value)) [[unlikely]]
    raise(fault::overflow, line);
}

/// a / b; error 11 for b = 0 and a finite a other than 0; 6 for 0 / 0, for b = 0 and an a that is
/// not finite, and for a quotient that is not finite.
inline double Divide(double a, double b, Line line = Line::here()) {
  if (b == 0) [[unlikely]] {
    raise(a == 0 || !std::isfinite(a) ? fault::overflow : fault::divisionByZero, line);
  }
  return checked(a / b, line);
}

/// Natural logarithm; error 5 for x <= 0, 6 for an x that is not finite.
inline double Log(double x, Line line = Line::here()) {
  if (x <= 0) [[unlikely]]
    raise(std::isinf(x) ? fault::overflow : fault::invalidCall, line);
  return checked(std::log(x), line);
}

/// e^x; error 6 when it overflows or x is not finite.
inline double Exp(double x, Line line = Line::here()) {
  return checked(std::exp(checked(x, line)), line);
}

/// Square root; error 5 for a negative x, 6 for an x that is not finite.
inline double Sqr(double x, Line line = Line::here()) {
  if (x < 0) [[unlikely]]
    raise(std::isinf(x) ? fault::overflow : fault::invalidCall, line);
  return checked(std::sqrt(x), line);
}

/// base^exponent; error 5 for a negative base with a fractional exponent and for 0 with a negative
/// one, 6 when the result overflows or an argument is not finite.
inline double Power(double base, double exponent, Line line = Line::here()) {
  checked(base, line);
  checked(exponent, line);
  if (base < 0 ? exponent != std::floor(exponent) : base == 0 && exponent < 0) [[unlikely]] {
    raise(fault::invalidCall, line);
  }
  return checked(std::pow(base, exponent), line);
}

}  // namespace palvex
