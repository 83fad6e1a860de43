#include "families/Truncation.h"

namespace palvex {

double Band::wrappedProbability(double p, Line line) const {
  if (!std::isfinite(split)) raise(upper == 0 ? fault::overflow : fault::divisionByZero, line);
  if (p <= split) return Divide(upper * p, split, line);
  return Divide((p - split) * (1 - lower), 1 - split, line) + lower;
}

}  // namespace palvex
