#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "laws/Moments.h"
#include "laws/Support.h"
#include "runtime/Limits.h"

namespace palvex::laws {

/// A law between limits, whatever its family: the implementation behind a Law, which documents the
/// queries.
class AnyLaw {
 public:
  AnyLaw() = default;
  AnyLaw(const AnyLaw&) = delete;
  AnyLaw& operator=(const AnyLaw&) = delete;
  virtual ~AnyLaw() = default;

  /// The whole law between other limits.
  /// @throws std::invalid_argument
  [[nodiscard]] virtual std::shared_ptr<const AnyLaw> between(const Limits& limits) const = 0;
  /// The same law by another name, which must outlive it.
  [[nodiscard]] virtual std::shared_ptr<const AnyLaw> named(std::string_view type) const = 0;

  /// "Normal", "Uniform", ...: see Law::type.
  [[nodiscard]] virtual std::string_view type() const noexcept = 0;
  /// See Law::support.
  [[nodiscard]] virtual Support support() const noexcept = 0;
  /// See Law::keptProbability.
  [[nodiscard]] virtual double keptProbability() const noexcept = 0;
  /// See Law::density.
  [[nodiscard]] virtual double density(double x) const noexcept = 0;
  /// See Law::logDensity.
  [[nodiscard]] virtual double logDensity(double x) const noexcept = 0;
  /// See Law::probability.
  [[nodiscard]] virtual double probability(double x) const noexcept = 0;
  /// See Law::exceedance.
  [[nodiscard]] virtual double exceedance(double x) const noexcept = 0;
  /// See Law::quantile.
  [[nodiscard]] virtual double quantile(double p) const noexcept = 0;
  /// See Law::upperQuantile.
  [[nodiscard]] virtual double upperQuantile(double q) const noexcept = 0;
  /// See Law::quantiles.
  /// @param x  as long as p; may be the same span
  virtual void quantiles(std::span<const double> p, std::span<double> x) const noexcept = 0;
  /// Mean and standard deviation. Error 6 where one leaves the range of doubles.
  [[nodiscard]] virtual Moments moments() const = 0;
};

}  // namespace palvex::laws
