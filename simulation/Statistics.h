#pragma once

#include <cstdint>
#include <limits>
#include <span>

namespace palvex::simulation {

/// Number, mean and spread of values, in a form in which those of two parts combine: the sums of
/// the second, third and fourth powers of the distances from the mean.
struct Moments {
  double count = 0;    ///< how many values
  double mean = 0;     ///< their mean
  double squares = 0;  ///< sum of the second powers of the distances from the mean
  double cubes = 0;    ///< sum of the third powers
  double fourths = 0;  ///< sum of the fourth powers
  double smallest = std::numeric_limits<double>::infinity();   ///< infinity without values
  double greatest = -std::numeric_limits<double>::infinity();  ///< -infinity without values

  /// The moments of these values, in two passes.
  static Moments of(std::span<const double> values);

  /// Joins the values that came after these (Pebay: Formulas for robust, one-pass parallel
  /// computation of covariances and arbitrary-order statistical moments; Sandia 2008).
  void add(const Moments& later);

  // Undefined results, such as the spread of one value, are NaN. m_k is the mean of the k-th powers
  // of the distances from the mean.

  /// The standard deviation of a sample, with count - 1: from two values on.
  [[nodiscard]] double sd() const;
  /// The standard error of the mean, sd/sqrt(count).
  [[nodiscard]] double standardError() const;
  /// m_3/m_2^(3/2)
  [[nodiscard]] double skewness() const;
  /// m_4/m_2^2 - 3: 0 for a normal law.
  [[nodiscard]] double kurtosis() const;

 private:
  [[nodiscard]] bool spread() const { return smallest < greatest; }
};

}  // namespace palvex::simulation
