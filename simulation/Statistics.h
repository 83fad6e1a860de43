#pragma once

#include <cstdint>
#include <limits>
#include <span>

namespace palvex::simulation {

/// Number, mean and spread of values, in a form in which those of two parts combine: the sums of
/// the second, third and fourth powers of the distances from the mean.
struct Moments {
  double count = 0;
  double mean = 0;
  double squares = 0;
  double cubes = 0;
  double fourths = 0;
  double smallest = std::numeric_limits<double>::infinity();
  double greatest = -std::numeric_limits<double>::infinity();

  /// Of these values, in two passes.
  static Moments of(std::span<const double> values);

  /// Joins the values that came after these (Pebay: Formulas for robust, one-pass parallel
  /// computation of covariances and arbitrary-order statistical moments; Sandia 2008).
  void add(const Moments& later);

  // What is undefined is NaN.
  [[nodiscard]] double sd() const;             // of a sample: with n - 1; from two values on
  [[nodiscard]] double standardError() const;  // of the mean
  [[nodiscard]] double skewness() const;       // third over second plain moment to 3/2
  [[nodiscard]] double kurtosis() const;       // fourth over second plain moment squared, less 3

 private:
  [[nodiscard]] bool spread() const { return smallest < greatest; }
};

}  // namespace palvex::simulation
