#pragma once

#include <algorithm>
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
/// These routines add no line to the trace of an error. Errors: 11 when what the limits keep has no
/// probability in double precision, 6 for a result beyond the double range.
namespace palvex::laws {

/// Mean and standard deviation.
struct Moments {
  double mean;  ///< E X
  double sd;    ///< >= 0

  /// sqrt(E (X - x)^2): the standard deviation when x is the mean.
  [[nodiscard]] double deviationFrom(double x) const { return std::hypot(sd, mean - x); }
};

// ---- kept intervals ----

/// x - origin, infinite for an infinite x. Error 6 where it leaves the double range.
double distance(double x, double origin);

/// Whether distance/unit, or factor times that, has lost digits to underflow.
inline bool underflows(double distance, double unit, double factor = 1) {
  return distance > 0 &&
         std::min(factor, 1.0) * (distance / unit) < std::numeric_limits<double>::min();
}

/// The numbers from `lower` to `upper`, either of which may be infinite.
struct Interval {
  double lower;  ///< its smallest number
  double upper;  ///< its greatest number
};

/// The intervals, in increasing order.
class KeptIntervals {
 public:
  /// Those of [lowest, highest] that the limits keep and that have a width: at most one, or with
  /// reversed limits two.
  KeptIntervals(const Limits& limits, double lowest, double highest);

  /// The first interval.
  [[nodiscard]] const Interval* begin() const { return intervals_.data(); }
  /// Behind the last one.
  [[nodiscard]] const Interval* end() const { return intervals_.data() + count_; }

 private:
  void add(double lower, double upper);

  std::array<Interval, 2> intervals_{};
  std::size_t count_ = 0;
};

/// The number base + offset, which as one double would lose what tells near points far from 0
/// apart.
struct Point {
  double base;    ///< a double near the point
  double offset;  ///< point - base
};

/// A law restricted to one interval: the logarithm of the interval's probability (up to a constant
/// that the law's other intervals share) and the moments in it.
struct Piece {
  double logMass;  ///< -infinity for an interval without probability
  Point mean;      ///< of the values in the interval
  double sd;       ///< of these values
};

/// The moments of a law's pieces together. Error 11 when none has any probability.
class Mixture {
 public:
  /// Joins a piece, in any order.
  void add(Piece piece);
  /// The moments of all pieces so far.
  [[nodiscard]] Moments moments() const;

 private:
  Piece whole_{-std::numeric_limits<double>::infinity(), {0, 0}, 0};
};

/// The moments of a law whose ends lie farther apart than the largest double, from the same law at
/// half its size.
Limits halved(const Limits& limits);
/// From the moments at half the size to those of the law.
Moments doubled(const Moments& ofHalf);

// ---- closed forms ----

/// Sums for the moments of order 0, 1 and 2 about a fixed origin, with an estimate of their
/// rounding errors.
class PartialMoments {
 public:
  /// Adds factor times tail to the sum of an order. `relativeError` is that of the term; a tail
  /// below about 1e-290 is less certain, having lost digits or all to underflow.
  void add(std::size_t order, double factor, double tail, double relativeError) {
    constexpr double underflow = 1e-305;
    constexpr double lastDigit = std::numeric_limits<double>::denorm_min();
    sums_[order] += factor * tail;
    errors_[order] +=
        std::abs(factor) * std::max(std::abs(tail) * relativeError, underflow) + lastDigit;
  }

  /// The moments about the origin, or nothing where cancellation leaves the mean or the standard
  /// deviation uncertain by more than 1e-11 standard deviations.
  [[nodiscard]] std::optional<Moments> moments() const;

 private:
  std::array<double, 3> sums_{};
  std::array<double, 3> errors_{};
};

// ---- integration ----

/// Where a law with two ends begins and ends. The upper end is upper + rest: what the sum of a
/// minimum and a width rounds away matters where the values crowd beside it.
struct Bounds {
  double lower;     ///< the lower end
  double upper;     ///< the upper end, less `rest`
  double rest = 0;  ///< >= 0, less than the last digit of `upper`

  /// The bounds `lower` and lower + width.
  static Bounds ofWidth(double lower, double width);
  /// Distance of x from the lower end, 0 at and below it.
  [[nodiscard]] double below(double x) const { return std::max(x - lower, 0.0); }
  /// Distance of x from the upper end, 0 beyond it.
  [[nodiscard]] double above(double x) const { return std::max(upper - x + rest, 0.0); }
  /// The first double that is not below the upper end.
  [[nodiscard]] double ceiling() const {
    return rest > 0 ? std::nextafter(upper, std::numeric_limits<double>::infinity()) : upper;
  }
};

/// An end of a kept interval. Its distances are all kept, since none gives another without
/// rounding.
struct End {
  double fromOrigin;  ///< distance from where the law's own coordinate starts
  double fromAnchor;  ///< distance from the anchor, < 0 below it
  /// Distance to the upper end of the law; infinite where it has none.
  double toUpperEnd = std::numeric_limits<double>::infinity();
};

/// Where in a kept interval an integration starts: at the mode, or the end nearest to it.
struct Anchor {
  Point point;        ///< where it is
  double fromOrigin;  ///< distance from where the law's own coordinate starts
  double toUpperEnd;  ///< distance to the upper end of the law; infinite where it has none
  End lower;          ///< lower end of the kept interval
  End upper;          ///< its upper end
  bool isMode;        ///< false at an end
};

/// @param origin  where the law's own coordinate starts; `mode` counts from there
Anchor anchorAt(double mode, double origin, const Interval& kept);

/// The same for a law with two ends. The mode's distances from both are given.
Anchor anchorWithin(const Bounds& ends, double modeBelow, double modeAbove, const Interval& kept);

/// ln(a/b) for b > 0, with the help of `difference`, a more precise value of a - b.
double logRatio(double a, double b, double difference);

/// Values x as a function of the variable t of an integral, increasing; t = 0 is the anchor. All
/// distances are in multiples of `unit`. Each scale's `position` is the t of an end.
class Scale {
 public:
  /// @param unit  > 0
  explicit Scale(double unit) : unit_(unit) {}
  /// For a scale that knows the logarithms of the distances from the ends of the law.
  Scale(double unit, Point lowerEnd, Point upperEnd)
      : unit_(unit), lowerEnd_(lowerEnd), upperEnd_(upperEnd) {}
  Scale(const Scale&) = delete;
  Scale& operator=(const Scale&) = delete;
  virtual ~Scale() = default;
  /// What distances are counted in.
  [[nodiscard]] double unit() const { return unit_; }
  /// The lower end of the law, -infinity for none.
  [[nodiscard]] const Point& lowerEnd() const { return lowerEnd_; }
  /// The upper end of the law, infinity for none.
  [[nodiscard]] const Point& upperEnd() const { return upperEnd_; }
  /// Distance of the value at t from the anchor, negative below it.
  [[nodiscard]] virtual double distance(double t) const = 0;
  /// ln |distance(t)|, also where the distance exceeds the double range.
  [[nodiscard]] virtual double logDistance(double t) const = 0;
  /// ln of the distance from the lower end of the law; infinite without one. Values may crowd there
  /// so closely that their distances from the anchor would all be one number.
  [[nodiscard]] virtual double logAboveLowerEnd(double) const { return infinity; }
  /// ln of the distance from the upper end of the law; infinite without one.
  [[nodiscard]] virtual double logBelowUpperEnd(double) const { return infinity; }
  /// A length in t on which the distance is smooth around the anchor.
  [[nodiscard]] virtual double length() const { return infinity; }
  /// Where, apart from the anchor, the distance bends on that length.
  [[nodiscard]] virtual double bend() const { return 0; }

 protected:
  /// What a scale answers with for an end or a length that it has not.
  static constexpr double infinity = std::numeric_limits<double>::infinity();

 private:
  double unit_;
  Point lowerEnd_{-infinity, 0};
  Point upperEnd_{infinity, 0};
};

/// The value at t is anchor + unit t.
class LinearScale : public Scale {
 public:
  /// @param unit  > 0
  explicit LinearScale(double unit) : Scale(unit) {}
  [[nodiscard]] double distance(double t) const override { return t; }
  [[nodiscard]] double logDistance(double t) const override { return std::log(std::abs(t)); }
  /// The t of an end.
  [[nodiscard]] double position(const End& end) const { return end.fromAnchor / unit(); }
};

/// The value at t is anchor + fromOrigin (exp(rate t) - 1): t runs over the logarithm of the
/// distance from the law's origin, which is its lower end, in units of 1/rate.
class ExponentialScale : public Scale {
 public:
  /// @param fromOrigin  distance of the anchor from the origin, > 0
  ExponentialScale(double origin, double fromOrigin, double rate)
      : Scale(fromOrigin, {origin, 0}, {infinity, 0}), rate_(rate) {}
  [[nodiscard]] double distance(double t) const override { return std::expm1(rate_ * t); }
  [[nodiscard]] double logDistance(double t) const override {
    const double exponent = rate_ * t;
    return exponent > 40 ? exponent : std::log(std::abs(std::expm1(exponent)));
  }
  [[nodiscard]] double logAboveLowerEnd(double t) const override { return rate_ * t; }
  [[nodiscard]] double length() const override { return 1 / rate_; }
  /// The t of an end.
  [[nodiscard]] double position(const End& end) const {
    return logRatio(end.fromOrigin, unit(), end.fromAnchor) / rate_;
  }

 private:
  double rate_;
};

/// Between the law's two ends, with the anchor at the distances `below` and `above` from them: t
/// runs over the logarithm of the ratio of these distances, in units of 1/rate.
class LogisticScale : public Scale {
 public:
  /// @param below,above  > 0
  LogisticScale(const Bounds& ends, double below, double above, double rate)
      : Scale(std::min(below, above), {ends.lower, 0}, {ends.upper, ends.rest}),
        below_(below),
        above_(above),
        logBelow_(std::log(below)),
        logAbove_(std::log(above)),
        rate_(rate) {}
  [[nodiscard]] double distance(double t) const override;
  [[nodiscard]] double logDistance(double t) const override;
  [[nodiscard]] double logAboveLowerEnd(double t) const override;
  [[nodiscard]] double logBelowUpperEnd(double t) const override;
  [[nodiscard]] double length() const override { return 1 / rate_; }
  [[nodiscard]] double bend() const override { return (logAbove_ - logBelow_) / rate_; }
  /// The t of an end.
  [[nodiscard]] double position(const End& end) const {
    return (logRatio(end.fromOrigin, below_, end.fromAnchor) -
            logRatio(end.toUpperEnd, above_, -end.fromAnchor)) /
           rate_;
  }

 private:
  double below_;
  double above_;
  double logBelow_;
  double logAbove_;
  double rate_;
};

/// The value at t is anchor + unit (sinh(start + rate t) - sinh(start)).
class SinhScale : public Scale {
 public:
  /// @param start  arsinh of the anchor, in units from the centre
  SinhScale(double unit, double start, double rate) : Scale(unit), start_(start), rate_(rate) {}
  [[nodiscard]] double distance(double t) const override {
    const double half = rate_ * t / 2;
    return 2 * std::cosh(start_ + half) * std::sinh(half);
  }
  [[nodiscard]] double logDistance(double t) const override;
  [[nodiscard]] double length() const override { return 1 / rate_; }
  [[nodiscard]] double bend() const override { return -start_ / rate_; }
  /// The t of an end.
  [[nodiscard]] double position(const End& end) const;

 private:
  double start_;
  double rate_;
};

/// The piece around an anchor, by numerical integration over the scale's variable t.
/// @param t             the ends in t, lower <= 0 <= upper
/// @param logDensity    logarithm of the density of t relative to that at t = 0; unimodal, largest
///                      at the anchor, and falling at least exponentially where the interval is
///                      infinite in t
/// @param logAtAnchor   logarithm of the density of t at the anchor
/// Error 6 where the interval has no width in t, or the scale no length.
Piece integratedPiece(const Point& anchor, const Interval& t, const Scale& scale,
                      const std::function<double(double)>& logDensity, double logAtAnchor);

/// ln(1 + e^x)
double softplus(double x);

/// e^t - 1 - t for |t| <= 0.5, without cancellation around 0.
double expm1LessT(double t);

/// a t - b (e^t - 1), without cancellation around 0.
double lessExpm1(double t, double a, double b);

}  // namespace palvex::laws
