#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

#include "laws/AnyLaw.h"
#include "laws/QuantileBlock.h"
#include "laws/Tails.h"

namespace palvex::laws {

/// The limits that cut anything: -infinity as a lower limit and infinity as an upper one are left
/// out.
/// @throws std::invalid_argument for a NaN and for equal limits
[[nodiscard]] Limits takingPart(Limits limits);

/// Whether no value of the support is between the limits.
[[nodiscard]] bool excludesAll(const Limits& limits, const Support& support) noexcept;

/// What the limits keep of a law: one piece of its values, or two. Probabilities, of a piece or up
/// to a value, are differences of the smaller tails, so that they stay accurate in the far tails.
template <class TheLaw>
class Kept final : public AnyLaw {
 public:
  /// @throws std::invalid_argument when the limits keep nothing
  Kept(std::string_view type, TheLaw law, const Limits& limits)
      : type_(type), law_(std::move(law)), limits_(takingPart(limits)) {
    if constexpr (requires { law_.prepare(); }) law_.prepare();
    if (excludesAll(limits_, law_.support()) || keepsNothing()) {
      throw std::invalid_argument(
          "Truncation limits exclude all distribution values.  Please adjust.");
    }
    findPieces();
    if (!(probability_ > 0)) {
      throw std::invalid_argument("Truncation limits keep no probability in double precision.");
    }
    logProbability_ = std::log(probability_);
  }

  [[nodiscard]] std::shared_ptr<const AnyLaw> between(const Limits& limits) const override {
    return std::make_shared<const Kept>(type_, law_, limits);
  }
  [[nodiscard]] std::shared_ptr<const AnyLaw> named(std::string_view type) const override {
    return std::make_shared<const Kept>(type, law_, limits_);
  }

  [[nodiscard]] std::string_view type() const noexcept override { return type_; }
  [[nodiscard]] Support support() const noexcept override { return support_; }
  [[nodiscard]] double keptProbability() const noexcept override { return probability_; }

  [[nodiscard]] double density(double x) const noexcept override {
    if (std::isnan(x)) return x;
    return keeps(x) && std::isfinite(x) ? law_.density(x) / probability_ : 0;
  }

  [[nodiscard]] double logDensity(double x) const noexcept override {
    if (std::isnan(x)) return x;
    return keeps(x) && std::isfinite(x) ? law_.logDensity(x) - logProbability_ : -infinity;
  }

  [[nodiscard]] double probability(double x) const noexcept override {
    if (std::isnan(x)) return x;
    if (x >= support_.upper) return 1;
    double below = 0;
    for (std::size_t i = 0; i < count_; ++i) {
      const Piece& piece = pieces_[i];
      if (x < piece.values.lower) break;
      below +=
          x >= piece.values.upper ? piece.probability : difference(piece.atLower, law_.tails(x));
    }
    return std::clamp(below / probability_, 0.0, 1.0);
  }

  [[nodiscard]] double exceedance(double x) const noexcept override {
    if (std::isnan(x)) return x;
    if (x >= support_.upper) return 0;
    double above = 0;
    for (std::size_t i = count_; i-- > 0;) {
      const Piece& piece = pieces_[i];
      if (x >= piece.values.upper) break;
      above +=
          x < piece.values.lower ? piece.probability : difference(law_.tails(x), piece.atUpper);
    }
    return std::clamp(above / probability_, 0.0, 1.0);
  }

  [[nodiscard]] double quantile(double p) const noexcept override {
    if (p > 0 && p < 1) return at(p, 1 - p);
    if (p == 0) return support_.lower;
    return p == 1 ? support_.upper : nan;
  }

  [[nodiscard]] double upperQuantile(double q) const noexcept override {
    if (q > 0 && q < 1) return at(1 - q, q);
    if (q == 0) return support_.upper;
    return q == 1 ? support_.lower : nan;
  }

  void quantiles(std::span<const double> p, std::span<double> x) const noexcept override {
    if constexpr (requires(double* values) {
                    quantileBlock(law_, KeptPart{}, values, values, 1);
                  }) {
      if (count_ == 1 && support_.lower < support_.upper) {
        quantileBlocks(p, x);
        return;
      }
    }
    for (std::size_t i = 0; i < p.size(); ++i) x[i] = quantile(p[i]);
  }

  [[nodiscard]] Moments moments() const override {
    if (support_.lower == support_.upper) return {support_.lower, 0};
    const std::optional<Moments> closed = law_.moments(limits_);
    return closed ? *closed : law_.integratedMoments(limits_);
  }

 private:
  static constexpr double infinity = std::numeric_limits<double>::infinity();
  static constexpr double nan = std::numeric_limits<double>::quiet_NaN();

  struct Piece {
    Interval values;
    Tails atLower;
    Tails atUpper;
    double probability;
  };

  /// The probability between two values, from the tails there.
  static double difference(const Tails& lower, const Tails& upper) noexcept {
    return upper.lower <= lower.upper ? upper.lower - lower.lower : lower.upper - upper.upper;
  }

  [[nodiscard]] bool keepsNothing() const {
    if constexpr (requires { law_.keepsNothing(limits_); }) return law_.keepsNothing(limits_);
    return false;
  }

  [[nodiscard]] bool keeps(double x) const noexcept {
    const auto in = [x](const Piece& piece) {
      return piece.values.lower <= x && x <= piece.values.upper;
    };
    return in(pieces_[0]) || (count_ > 1 && in(pieces_[1]));
  }

  /// An end of a piece: its last value, and the tails there.
  struct Cut {
    double value;
    Tails tails;
  };

  void findPieces() {
    const Support whole = law_.support();
    const Cut lowest{whole.lower, {0, 1}};
    const Cut highest{whole.upper, {1, 0}};
    const auto cutAt = [&](const std::optional<double>& limit, const Cut& otherwise) {
      const double value = limit.value_or(otherwise.value);
      if (!(whole.lower < value && value < whole.upper)) return otherwise;
      return Cut{value, law_.tails(value)};
    };
    const Cut lower = cutAt(limits_.lower, lowest);
    const Cut upper = cutAt(limits_.upper, highest);
    if (!limits_.reversed()) {
      // Limits that touch the support in one point keep nothing of it.
      const bool touches = limits_.lower.value_or(-infinity) >= whole.upper ||
                           limits_.upper.value_or(infinity) <= whole.lower;
      if (!touches || whole.lower == whole.upper) add(lower, upper);
    } else {
      if (*limits_.upper > whole.lower) add(lowest, upper);
      if (*limits_.lower < whole.upper) add(lower, highest);
    }
    if (count_ == 0) return;
    const Piece& first = pieces_[0];
    part_ = {first.atLower.lower, first.atUpper.upper, first.probability, first.values.lower,
             first.values.upper};
    support_ = {first.values.lower, pieces_[count_ - 1].values.upper};
    support_.lowerIncluded = support_.lower > whole.lower || whole.lowerIncluded;
    support_.upperIncluded = support_.upper < whole.upper || whole.upperIncluded;
  }

  void add(const Cut& lower, const Cut& upper) {
    const double probability = difference(lower.tails, upper.tails);
    if (!(probability > 0)) return;
    Interval values{lower.value, upper.value};
    if constexpr (requires { law_.valuesIn(values); }) values = law_.valuesIn(values);
    pieces_[count_++] = {values, lower.tails, upper.tails, probability};
    probability_ = std::min(probability_ + probability, 1.0);
  }

  static double inside(const Piece& piece, double x) noexcept {
    return std::clamp(x, piece.values.lower, piece.values.upper);
  }

  void quantileBlocks(std::span<const double> p, std::span<double> x) const noexcept {
    // p and x may be the same memory; with local arrays the compiler can work on several values at
    // once.
    std::array<double, blockSize> from;  // NOLINT: filled as far as it is read
    std::array<double, blockSize> to;    // NOLINT: likewise
    for (std::size_t start = 0; start < p.size(); start += blockSize) {
      const std::size_t n = std::min(blockSize, p.size() - start);
      std::copy_n(p.begin() + static_cast<std::ptrdiff_t>(start), n, from.begin());
      quantileBlock(law_, part_, from.data(), to.data(), n);
      std::copy_n(to.begin(), n, x.begin() + static_cast<std::ptrdiff_t>(start));
    }
  }

  /// The quantile of p and q = 1 - p, both in (0, 1).
  [[nodiscard]] double at(double p, double q) const noexcept {
    if (count_ == 1) return part_.inside(law_.quantile(part_.lowerTail(p), part_.upperTail(q)));
    return atOneOfTwo(p, q);
  }

  [[nodiscard]] double atOneOfTwo(double p, double q) const noexcept {
    const auto& [first, second] = pieces_;
    const double lower = p * probability_;
    const double upper = q * probability_;
    // What is left of a piece, from the smaller of p and q.
    if (p < q ? lower <= first.probability : upper >= second.probability) {
      const double rest = p < q ? first.probability - lower : upper - second.probability;
      return inside(first, law_.quantile(lower, first.atUpper.upper + rest));
    }
    const double rest = p < q ? lower - first.probability : second.probability - upper;
    return inside(second, law_.quantile(second.atLower.lower + rest, upper));
  }

  std::string_view type_;
  TheLaw law_;
  Limits limits_;
  Support support_{};
  std::array<Piece, 2> pieces_{};
  std::size_t count_ = 0;
  KeptPart part_{};  // the first piece, for quantiles when there is only one
  double probability_ = 0;
  double logProbability_ = 0;
};

}  // namespace palvex::laws
