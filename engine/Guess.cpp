// Starting values for the parameters of a new distribution.

#include <cmath>

#include "engine/c_Distribution.h"
#include "runtime/Arithmetic.h"

namespace palvex {

namespace {

constexpr double gammaOfThreeHalves = 0.886226925452761;  // mean of a Weibull of shape 2, scale 1
constexpr double ln2 = 0.693147180559945309;
constexpr double rootOfTwo = 1.41421356237309505;  // mean of the lognormal with location 0 below

double orElse(double guess, double replacementOfZero) {
  return guess == 0 ? replacementOfZero : guess;
}

double itself(double x) {
  return x;
}
double lowerBound(double x) {
  return (x >= 0 ? 0.9 : 1.1) * x;
}
double upperBound(double x) {
  return (x >= 0 ? 1.1 : 0.9) * x;
}
double spread(double x) {
  return orElse(std::abs(x / 10), 0.1);
}

template <int value>
double constant(double) {
  return value;
}

struct Guesses {
  std::string_view type;
  std::array<double (*)(double x), 4> parameters;
};

// Each row puts the mean, or the location, of the type at x, with a moderate spread.
constexpr std::array<Guesses, 9> guesses{{
    {"Normal", {itself, spread}},
    {"Uniform", {lowerBound, [](double x) { return orElse(upperBound(x), 0.1); }}},
    {"Triangular",
     {[](double x) { return orElse(lowerBound(x), -0.1); }, itself,
      [](double x) { return orElse(upperBound(x), 0.1); }}},
    {"Exponential",
     {[](double x) { return x != 0 ? std::abs(10 / x) : 1; },
      [](double x) { return x - std::abs(x / 10); }}},
    {"Weibull",
     {constant<2>, [](double x) { return x > 0 ? x / gammaOfThreeHalves : 1; },
      [](double x) { return x > 0 ? 0 : x - gammaOfThreeHalves; }}},
    {"Lognormal",
     {[](double x) { return x > 0 ? std::log(x) - 0.5 * ln2 : 0; },
      [](double) { return std::sqrt(ln2); }, [](double x) { return x >= 0 ? 0 : x - rootOfTwo; }}},
    {"Gamma",
     {constant<2>, [](double x) { return x > 0 ? x / 2 : 1; },
      [](double x) { return x >= 0 ? 0 : x - 2; }}},
    {"Beta",
     {constant<2>, constant<2>, lowerBound, [](double x) { return orElse(upperBound(x), 1); }}},
    {"Johnson", {itself, spread, constant<0>, constant<3>}},
}};

}  // namespace

double c_Distribution::GuessParamValue(std::int16_t paramIndex, double cellValue) const {
  if (paramIndex < 1 || paramIndex > NumParams()) return 0;
  for (const Guesses& row : guesses) {
    if (row.type == entry_->name) {
      return checked(row.parameters[static_cast<std::size_t>(paramIndex - 1)](cellValue));
    }
  }
  return 0;
}

}  // namespace palvex
