#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <span>
#include <string_view>

#include "laws/Support.h"
#include "runtime/Limits.h"

namespace palvex {

class c_Distribution;
struct LawType;

namespace laws {
class AnyLaw;
}

/// A probability law as a textbook means it, whole or between limits: unlike the members of
/// c_Distribution, whose results differ from it in the places that docs/departures.md lists.
///
/// A value: copies are cheap and may be used on several threads at once, and no query changes
/// anything, allocates (but for `mean` and `sd`) or throws. Whatever the limits cut away, results
/// are as accurate as those of the whole law, down to tails as small as the smallest normal double.
///
/// The functions that make a law throw std::invalid_argument with the sentence that
/// c_Distribution::ParamsOK has for the fault.
class Law {
 public:
  /// The normal law.
  /// @param sd  standard deviation, >= 0; 0 is a point mass
  [[nodiscard]] static Law normal(double mean, double sd);
  /// The same density all over [minimum, maximum].
  /// @param minimum,maximum  minimum <= maximum; equal for a point mass
  [[nodiscard]] static Law uniform(double minimum, double maximum);
  /// A density that rises from 0 at the minimum to its peak and falls to 0 at the maximum.
  /// @param likely  where the peak is; minimum <= likely <= maximum, all equal for a point mass
  [[nodiscard]] static Law triangular(double minimum, double likely, double maximum);
  /// The law of minimum + exp(location + scale Z), Z standard normal.
  /// @param location,scale  mean and standard deviation (> 0) of the logarithm
  [[nodiscard]] static Law lognormal(double location, double scale, double minimum = 0);
  /// P(X > x) = exp(-lambda (x - minimum)): mean minimum + 1/lambda.
  /// @param lambda  a rate, > 0
  [[nodiscard]] static Law exponential(double lambda, double minimum = 0);
  /// P(X > x) = exp(-((x - minimum)/scale)^shape).
  /// @param shape,scale  > 0
  [[nodiscard]] static Law weibull(double shape, double scale, double minimum = 0);
  /// The density of u = (x - minimum)/(maximum - minimum) is proportional to u^(alpha - 1) (1 -
  /// u)^(beta - 1): mean minimum + (maximum - minimum) alpha/(alpha + beta).
  /// @param alpha,beta       shapes, > 0
  /// @param minimum,maximum  minimum <= maximum; equal for a point mass
  [[nodiscard]] static Law beta(double alpha, double beta, double minimum = 0, double maximum = 1);
  /// The density of z = (x - minimum)/scale is proportional to z^(shape - 1) exp(-z): mean
  /// minimum + shape scale.
  /// @param shape,scale  > 0
  [[nodiscard]] static Law gamma(double shape, double scale, double minimum = 0);
  /// The Johnson curve fitted to these moments. It has them only roughly: the fit is loose.
  /// @param sd        > 0
  /// @param kurtosis  3 for the normal law, > 1 + skewness^2
  /// @throws std::invalid_argument also when no curve is found
  [[nodiscard]] static Law johnson(double mean, double sd, double skewness, double kurtosis);
  /// The beta law with the shapes 1 + 4 (likely - minimum)/width and 1 + 4 (maximum -
  /// likely)/width, width = maximum - minimum; minimum <= likely <= maximum
  [[nodiscard]] static Law pert(double minimum, double likely, double maximum);
  /// The lognormal law of a mean and a standard deviation of its own.
  /// @param mean  > minimum
  /// @param sd    > 0
  [[nodiscard]] static Law lognormalMean(double mean, double sd, double minimum = 0);
  /// Bins of equal width over the values, as many as m_Histogram::CreateHistogramArrays chooses.
  /// @param data  at least one value; equal ones are a point mass
  [[nodiscard]] static Law histogram(std::span<const double> data);
  /// Bins between neighbouring edges, which increase.
  /// @param edges   one more than counts
  /// @param counts  >= 0, not all 0
  [[nodiscard]] static Law histogram(std::span<const double> edges, std::span<const double> counts);

  /// The law between limits, in place of any earlier ones: restricted to what they keep and
  /// rescaled to the probability 1. A lower limit above the upper one cuts out what lies between
  /// them; an infinite one on its own side is none.
  /// @throws std::invalid_argument for limits that are equal or NaN, or keep nothing
  [[nodiscard]] Law between(std::optional<double> lower, std::optional<double> upper) const;

  /// "Normal", "Uniform", ...; "PERT" and "LognormalMean" for these.
  [[nodiscard]] std::string_view type() const noexcept;
  /// The smallest and the greatest value that the limits keep.
  [[nodiscard]] Support support() const noexcept;
  /// The probability that the whole law gives to what the limits keep: 1 without limits.
  [[nodiscard]] double keptProbability() const noexcept;

  // NaN for a NaN and for a probability outside [0, 1]; nothing else gives NaN.

  /// The density at x: infinite at a pole, 0 where the limits cut; 1 at the value of a point mass.
  [[nodiscard]] double density(double x) const noexcept;
  /// ln of the density, also where the density itself is beyond the doubles; -infinity where it is
  /// 0.
  [[nodiscard]] double logDensity(double x) const noexcept;
  /// P(X <= x), with a small relative error also in the far lower tail.
  [[nodiscard]] double probability(double x) const noexcept;
  /// P(X > x), with a small relative error also in the far upper tail.
  [[nodiscard]] double exceedance(double x) const noexcept;
  /// The least x with probability(x) >= p; the ends of the support for p = 0 and p = 1.
  [[nodiscard]] double quantile(double p) const noexcept;
  /// The least x with exceedance(x) <= q.
  [[nodiscard]] double upperQuantile(double q) const noexcept;
  /// The quantiles of p, bit for bit those of `quantile`, into x, which may be the same span.
  /// @throws std::invalid_argument for spans of unequal length
  void quantiles(std::span<const double> p, std::span<double> x) const;
  /// The mean; infinite beyond the range of doubles.
  [[nodiscard]] double mean() const;
  /// The standard deviation; infinite beyond the range of doubles.
  [[nodiscard]] double sd() const;

  /// A draw, so that a Law serves where a distribution of the header `<random>` does.
  template <std::uniform_random_bit_generator Bits>
  double operator()(Bits& bits) const {
    std::uniform_int_distribution<std::uint64_t> integers(0, (std::uint64_t{1} << 52) - 1);
    return quantile((static_cast<double>(integers(bits)) + 0.5) * 0x1p-52);
  }

 private:
  friend class c_Distribution;
  friend Law makeLaw(std::string_view type, std::span<const Variant> parameters, const Variant& ltl,
                     const Variant& utl);
  friend Law makeLaw(const LawType& type, std::span<const double> parameters, const Limits& limits);
  explicit Law(std::shared_ptr<const laws::AnyLaw> law);

  std::shared_ptr<const laws::AnyLaw> law_;
};

}  // namespace palvex
