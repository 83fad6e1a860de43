#pragma once

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <optional>

#include "runtime/Limits.h"

/// What the laws share for the mean and the standard deviation of the law that limits keep.
///
/// Each law has two ways to them. `moments` is its closed form; where the terms of that would
/// cancel (a narrow band, a far tail) it answers nothing rather than a wrong number.
/// `integratedMoments` integrates the density numerically and holds everywhere: distances,
/// densities and tails are taken relative to an anchor inside the kept interval, so that nothing
/// cancels.
///
/// These routines have no trap. Errors: 11 when what the limits keep has no probability in double
/// precision, 6 for a result beyond the double range.
namespace palvex::laws {

struct Moments {
  double mean;
  double sd;

  /// sqrt(E (X - x)^2): the standard deviation when x is the mean.
  [[nodiscard]] double deviationFrom(double x) const { return std::hypot(sd, mean - x); }
};

// ---- kept intervals ----

struct Interval {
  double lower;
  double upper;
};

/// The intervals, in increasing order.
class KeptIntervals {
 public:
  /// Those of [lowest, highest] that the limits keep and that have a width: at most one, or with
  /// reversed limits two.
  KeptIntervals(const Limits& limits, double lowest, double highest);

  [[nodiscard]] const Interval* begin() const { return intervals_.data(); }
  [[nodiscard]] const Interval* end() const { return intervals_.data() + count_; }

 private:
  void add(double lower, double upper);

  std::array<Interval, 2> intervals_{};
  std::size_t count_ = 0;
};

/// A law restricted to one interval: the logarithm of the interval's probability (up to a constant
/// that the law's other intervals share) and the moments in it.
struct Piece {
  double logMass;
  Moments moments;
};

/// The moments of a law's pieces together. Error 11 when none has any probability.
class Mixture {
 public:
  void add(const Piece& piece);
  [[nodiscard]] Moments moments() const;

 private:
  double logMass_ = -std::numeric_limits<double>::infinity();
  Moments moments_{0, 0};
};

// ---- closed forms ----

/// Sums for the moments of order 0, 1 and 2 about a fixed origin, with an estimate of their
/// rounding errors.
class PartialMoments {
 public:
  /// Adds a term to the sum of an order. `relativeError` is the term's own.
  void add(std::size_t order, double term, double relativeError) {
    sums_[order] += term;
    errors_[order] += std::abs(term) * relativeError;
  }

  /// The moments about the origin, or nothing where cancellation leaves the mean or the standard
  /// deviation uncertain by more than 1e-11 standard deviations.
  [[nodiscard]] std::optional<Moments> moments() const;

 private:
  std::array<double, 3> sums_{};
  std::array<double, 3> errors_{};
};

// ---- integration ----

/// An end of a kept interval. Both distances are kept, since neither gives the other without
/// rounding.
struct End {
  double fromOrigin;
  double fromAnchor;
};

/// Where in a kept interval an integration starts: at the mode, or the end nearest to it.
struct Anchor {
  double value;
  double fromOrigin;  // value less the law's origin
  End lower;
  End upper;
  bool isMode;
};

/// @param origin  where the law's own coordinate starts; `mode` counts from there
Anchor anchorAt(double mode, double origin, const Interval& kept);

/// ln(a/b) for b > 0, the difference a - b being known more precisely.
double logRatio(double a, double b, double difference);

/// The distance from the anchor as a function of the variable t of an integral, increasing and 0 at
/// t = 0. Each scale's `position` is the t of an end.
class Scale {
 public:
  Scale() = default;
  Scale(const Scale&) = delete;
  Scale& operator=(const Scale&) = delete;
  virtual ~Scale() = default;
  [[nodiscard]] virtual double distance(double t) const = 0;
  /// A length in t on which the distance is smooth around the anchor.
  [[nodiscard]] virtual double length() const { return std::numeric_limits<double>::infinity(); }
  /// Where, apart from the anchor, the distance bends on that length.
  [[nodiscard]] virtual double bend() const { return 0; }
  /// ln |distance(t)|, also where the distance exceeds the double range.
  [[nodiscard]] virtual double logDistance(double t) const {
    return std::log(std::abs(distance(t)));
  }
};

/// unit t
class LinearScale : public Scale {
 public:
  explicit LinearScale(double unit) : unit_(unit) {}
  [[nodiscard]] double distance(double t) const override { return unit_ * t; }
  [[nodiscard]] double position(const End& end) const { return end.fromAnchor / unit_; }

 private:
  double unit_;
};

/// value (exp(rate t) - 1): t runs over the logarithm of a value > 0, in units of 1/rate.
class ExponentialScale : public Scale {
 public:
  ExponentialScale(double value, double rate)
      : value_(value), rate_(rate), logValue_(std::log(value)) {}
  [[nodiscard]] double distance(double t) const override { return value_ * std::expm1(rate_ * t); }
  [[nodiscard]] double length() const override { return 1 / rate_; }
  [[nodiscard]] double position(const End& end) const {
    return logRatio(end.fromOrigin, value_, end.fromAnchor) / rate_;
  }
  [[nodiscard]] double logDistance(double t) const override {
    const double exponent = rate_ * t;
    return logValue_ + (exponent > 40 ? exponent : std::log(std::abs(std::expm1(exponent))));
  }

 private:
  double value_;
  double rate_;
  double logValue_;
};

/// On an interval, at the distances `below` and `above` from its ends: t runs over the logarithm of
/// the ratio of these distances, in units of 1/rate.
class LogisticScale : public Scale {
 public:
  LogisticScale(double below, double above, double rate)
      : below_(below), above_(above), rate_(rate) {}
  [[nodiscard]] double distance(double t) const override {
    const double exponent = -std::abs(rate_ * t);
    const double factor = std::exp(exponent);
    const double fall = std::expm1(exponent);
    return t < 0 ? below_ * (above_ * fall / (above_ + below_ * factor))
                 : -above_ * (below_ * fall / (below_ + above_ * factor));
  }
  [[nodiscard]] double length() const override { return 1 / rate_; }
  [[nodiscard]] double bend() const override {
    return (std::log(above_) - std::log(below_)) / rate_;
  }
  /// @param below  distance from the interval's lower end; `above` from its upper end
  [[nodiscard]] double position(const End& below, double above) const {
    return (logRatio(below.fromOrigin, below_, below.fromAnchor) -
            logRatio(above, above_, -below.fromAnchor)) /
           rate_;
  }

 private:
  double below_;
  double above_;
  double rate_;
};

/// unit (sinh(start + rate t) - sinh(start))
class SinhScale : public Scale {
 public:
  SinhScale(double unit, double start, double rate) : unit_(unit), start_(start), rate_(rate) {}
  [[nodiscard]] double distance(double t) const override {
    const double half = rate_ * t / 2;
    return unit_ * 2 * std::cosh(start_ + half) * std::sinh(half);
  }
  [[nodiscard]] double length() const override { return 1 / rate_; }
  [[nodiscard]] double bend() const override { return -start_ / rate_; }
  [[nodiscard]] double position(const End& end) const;
  [[nodiscard]] double logDistance(double t) const override;

 private:
  double unit_;
  double start_;
  double rate_;
};

/// The piece around an anchor, by numerical integration over the scale's variable t.
/// @param t             the ends in t, lower <= 0 <= upper
/// @param logDensity    logarithm of the density of t relative to that at t = 0; unimodal, largest
///                      at the anchor, and falling at least exponentially where the interval is
///                      infinite in t
/// @param logAtAnchor   logarithm of the density of t at the anchor
Piece integratedPiece(double anchor, const Interval& t, const Scale& scale,
                      const std::function<double(double)>& logDensity, double logAtAnchor);

/// e^t - 1 - t, without cancellation around 0.
double expm1LessT(double t);

}  // namespace palvex::laws
