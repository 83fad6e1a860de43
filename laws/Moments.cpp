#include "laws/Moments.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "numerics/m_Integration.h"
#include "runtime/Arithmetic.h"

namespace palvex::laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Densities below exp(-50) of the largest are left out.
constexpr double negligible = 50;

/// A first step for walking away from the anchor in the direction of `end`: within it the density
/// falls by a factor of no more than e.
double firstStep(const std::function<double(double)>& logDensity, double end) {
  const double sign = end < 0 ? -1 : 1;
  if (std::isfinite(end) && logDensity(end) > -1) return std::abs(end);
  double near = 0x1p-1000;
  double far = std::min(std::abs(end), 0x1p1000);
  while (far / near > 2) {
    const double between = std::sqrt(near) * std::sqrt(far);
    (logDensity(sign * between) > -1 ? near : far) = between;
  }
  return near;
}

/// Of the integrals of |distance|^order times the density: the logarithm of the largest integrand
/// met so far, for each order.
using Peaks = std::array<double, 3>;

/// Adds the breaks step, 2 step, 4 step.. towards `end`, up to where the integrands of all orders
/// are negligible against their peaks.
void walk(const std::function<double(double)>& logDensity, const Scale& scale, double step,
          double end, std::vector<double>& breaks, Peaks& peaks) {
  if (end == 0) return;
  for (double t = std::copysign(step, end);; t *= 2) {
    const bool atEnd = std::abs(t) >= std::abs(end);
    if (atEnd) t = end;
    breaks.push_back(t);
    const double density = logDensity(t);
    const double distance = scale.logDistance(t);
    bool done = true;
    for (std::size_t order = 0; order < peaks.size(); ++order) {
      const double integrand =
          order == 0 ? density : density + static_cast<double>(order) * distance;
      peaks[order] = std::max(peaks[order], integrand);
      done = done && !(integrand > peaks[order] - negligible);
    }
    if (done || atEnd) return;
  }
}

/// Puts the breaks in order, and others between them at step, 2 step, 4 step.. from the bend of the
/// scale.
void addBend(const Scale& scale, std::vector<double>& breaks) {
  std::sort(breaks.begin(), breaks.end());
  const double lowest = breaks.front();
  const double highest = breaks.back();
  const double bend = scale.bend();
  if (!(lowest < bend && bend < highest) || bend == 0) return;
  breaks.push_back(bend);
  double t = scale.length();
  while (t < highest - lowest) {
    if (bend - t > lowest) breaks.push_back(bend - t);
    if (bend + t < highest) breaks.push_back(bend + t);
    t *= 2;
  }
  std::sort(breaks.begin(), breaks.end());
}

}  // namespace

double distance(double x, double origin) {
  return std::isinf(x) ? x : checked(x - origin);
}

KeptIntervals::KeptIntervals(const Limits& limits, double lowest, double highest) {
  const double lower = limits.lower ? std::max(*limits.lower, lowest) : lowest;
  const double upper = limits.upper ? std::min(*limits.upper, highest) : highest;
  if (limits.reversed()) {
    add(lowest, upper);
    add(lower, highest);
  } else {
    add(lower, upper);
  }
}

void KeptIntervals::add(double lower, double upper) {
  if (lower < upper) intervals_[count_++] = {lower, upper};
}

void Mixture::add(Piece piece) {
  if (piece.logMass == -infinity) return;
  // The mean is counted from the heavier piece: counted from a light one far away, it would be
  // rounded to the precision of that distance.
  if (piece.logMass > whole_.logMass) std::swap(piece, whole_);
  const double gap = whole_.logMass - piece.logMass;
  const double share = 1 / (1 + std::exp(gap));
  if (share == 0) return;
  const double rest = 1 / (1 + std::exp(-gap));
  const double between =
      (piece.mean.base - whole_.mean.base) + (piece.mean.offset - whole_.mean.offset);
  const double within = std::hypot(std::sqrt(share) * piece.sd, std::sqrt(rest) * whole_.sd);
  whole_.mean.offset += share * between;
  whole_.sd = std::hypot(within, std::sqrt(share) * std::sqrt(rest) * between);
  whole_.logMass += std::log1p(std::exp(-gap));
}

Moments Mixture::moments() const {
  refuseNaN(whole_.logMass);
  if (std::exp(whole_.logMass) == 0) raise(fault::divisionByZero);
  return {checked(whole_.mean.base + whole_.mean.offset), checked(whole_.sd)};
}

Limits halved(const Limits& limits) {
  Limits half;
  if (limits.lower) half.lower = *limits.lower / 2;
  if (limits.upper) half.upper = *limits.upper / 2;
  return half;
}

Moments doubled(const Moments& ofHalf) {
  return {checked(2 * ofHalf.mean), checked(2 * ofHalf.sd)};
}

std::optional<Moments> PartialMoments::moments() const {
  constexpr double smallestMass = 1e-280;  // far enough from where doubles lose digits
  constexpr double allowed = 1e-11;
  const double mass = sums_[0];
  if (!(mass > smallestMass)) return {};
  const double mean = sums_[1] / mass;
  const double square = sums_[2] / mass;
  const double variance = square - mean * mean;
  const double meanError = (errors_[1] + std::abs(mean) * errors_[0]) / mass;
  const double varianceError =
      (errors_[2] + 2 * std::abs(mean) * errors_[1] + (square + 2 * mean * mean) * errors_[0]) /
      mass;
  if (!(variance > 0 && std::isfinite(variance))) return {};
  const double sd = std::sqrt(variance);
  if (!(meanError <= allowed * sd && varianceError <= 2 * allowed * variance)) return {};
  return Moments{mean, sd};
}

Bounds Bounds::ofWidth(double lower, double width) {
  // D. E. Knuth, The Art of Computer Programming 2, 4.2.2, theorem B: the exact error of a sum.
  const double upper = lower + width;
  const double widthPart = upper - lower;
  return {lower, upper, (lower - (upper - widthPart)) + (width - widthPart)};
}

Anchor anchorAt(double mode, double origin, const Interval& kept) {
  const double lower = distance(kept.lower, origin);
  const double upper = distance(kept.upper, origin);
  const double width = kept.upper - kept.lower;
  if (mode <= lower) return {{kept.lower, 0}, lower, infinity, {lower, 0}, {upper, width}, false};
  if (mode >= upper) return {{kept.upper, 0}, upper, infinity, {lower, -width}, {upper, 0}, false};
  return {{origin, mode}, mode, infinity, {lower, lower - mode}, {upper, upper - mode}, true};
}

Anchor anchorWithin(const Bounds& ends, double modeBelow, double modeAbove, const Interval& kept) {
  constexpr double smallest = std::numeric_limits<double>::min();
  if (modeBelow < smallest || modeAbove < smallest) {
    // What is added on one side is taken from the other: their sum is the width.
    const double below = std::max(modeBelow - std::max(smallest - modeAbove, 0.0), smallest);
    const double above = std::max(modeAbove - std::max(smallest - modeBelow, 0.0), smallest);
    Anchor anchor = anchorWithin(ends, below, above, kept);
    anchor.isMode = false;
    return anchor;
  }
  const bool nearUpper = modeBelow > modeAbove;
  const auto endAt = [&](double x) {
    const double below = ends.below(x);
    const double above = ends.above(x);
    return End{below, nearUpper ? modeAbove - above : below - modeBelow, above};
  };
  End lower = endAt(kept.lower);
  End upper = endAt(kept.upper);
  const double width = kept.upper - kept.lower;
  if (lower.fromAnchor >= 0) {
    upper.fromAnchor = width;
    lower.fromAnchor = 0;
    return {{kept.lower, 0}, lower.fromOrigin, lower.toUpperEnd, lower, upper, false};
  }
  if (upper.fromAnchor <= 0) {
    lower.fromAnchor = -width;
    upper.fromAnchor = 0;
    return {{kept.upper, 0}, upper.fromOrigin, upper.toUpperEnd, lower, upper, false};
  }
  const Point mode =
      nearUpper ? Point{ends.upper, ends.rest - modeAbove} : Point{ends.lower, modeBelow};
  return {mode, modeBelow, modeAbove, lower, upper, true};
}

double logRatio(double a, double b, double difference) {
  return std::abs(difference) < b / 2 ? std::log1p(difference / b) : std::log(a) - std::log(b);
}

double LogisticScale::distance(double t) const {
  // Counted from the nearer end, at first `near`, the value moves away by the factor e^s.
  const bool nearUpper = above_ < below_;
  const double s = nearUpper ? -rate_ * t : rate_ * t;
  const double ratio = nearUpper ? above_ / below_ : below_ / above_;
  const double moved =
      s < 0 ? std::expm1(s) / (1 + ratio * std::exp(s)) : -std::expm1(-s) / (std::exp(-s) + ratio);
  return nearUpper ? -moved : moved;
}

double LogisticScale::logDistance(double t) const {
  const double s = std::abs(rate_ * t);
  const double toward = t < 0 ? logAbove_ - logBelow_ : logBelow_ - logAbove_;
  // |distance| = below (1 - e^-s)/(1 + (below/above) e^-s) downwards, likewise upwards.
  return (t < 0 ? logBelow_ : logAbove_) - std::log(unit()) + std::log(-std::expm1(-s)) -
         softplus(-toward - s);
}

double LogisticScale::logAboveLowerEnd(double t) const {
  const double logRatio = logBelow_ - logAbove_;
  return logBelow_ - std::log(unit()) + rate_ * t + softplus(logRatio) -
         softplus(logRatio + rate_ * t);
}

double LogisticScale::logBelowUpperEnd(double t) const {
  const double logRatio = logAbove_ - logBelow_;
  return logAbove_ - std::log(unit()) - rate_ * t + softplus(logRatio) -
         softplus(logRatio - rate_ * t);
}

double SinhScale::position(const End& end) const {
  if (std::isinf(end.fromOrigin)) return end.fromOrigin;
  // The difference of two inverse hyperbolic sines as one, with its argument free of cancellation.
  const double a = std::sinh(start_);
  const double b = end.fromOrigin / unit();
  const double aRoot = std::hypot(1, a);
  const double bRoot = std::hypot(1, b);
  const bool sameSign = (a < 0) == (b < 0);
  const double argument = sameSign ? end.fromAnchor / unit() * (a + b) / (b * aRoot + a * bRoot)
                                   : b * aRoot - a * bRoot;
  return std::asinh(argument) / rate_;
}

double SinhScale::logDistance(double t) const {
  const double half = rate_ * t / 2;
  const auto logSinh = [](double u) {
    return std::abs(u) + std::log(-std::expm1(-2 * std::abs(u)) / 2);
  };
  const double slope = 2 * std::abs(start_ + half);
  return slope / 2 + std::log1p(std::exp(-slope)) + logSinh(half);
}

namespace {

/// Distances from a point in units of the scale, and the logarithms of their sizes.
struct Distances {
  Point from;
  std::function<double(double t)> value;
  std::function<double(double t)> logarithm;
};

/// Integrals over the density of a piece.
class PieceIntegrals {
 public:
  PieceIntegrals(const std::function<double(double)>& logDensity, std::span<const double> breaks)
      : logDensity_(logDensity),
        breaks_(breaks),
        mass_(m_Integration::integrate([&](double t) { return std::exp(logDensity(t)); }, breaks)) {
  }

  [[nodiscard]] double mass() const { return mass_; }

  [[nodiscard]] double mean(const Distances& distances) const {
    const double peak = highest(1, distances);
    const double first = m_Integration::integrate(
        [&](double t) {
          return std::copysign(std::exp(logDensity_(t) + distances.logarithm(t) - peak),
                               distances.value(t));
        },
        breaks_);
    return first / mass_ * std::exp(peak);
  }

  /// The standard deviation, for the mean that `mean` gives. It is multiplied by `unit` here,
  /// because the product may be in the range of doubles where the standard deviation in units
  /// overflows.
  [[nodiscard]] double deviation(const Distances& distances, double mean, double unit) const {
    const double peak = highest(2, distances);
    const double second = m_Integration::integrate(
        [&](double t) {
          const double fromMean = distances.value(t) - mean;
          const double logarithm =
              std::isfinite(fromMean) ? std::log(std::abs(fromMean)) : distances.logarithm(t);
          return std::exp(logDensity_(t) + 2 * logarithm - peak);
        },
        breaks_);
    return std::sqrt(second / mass_) * std::exp(peak / 2 + std::log(unit));
  }

 private:
  /// Logarithm of the largest integrand of an order. Integrals are in units of that: neither the
  /// density nor the square of a distance needs to be a double.
  [[nodiscard]] double highest(int order, const Distances& distances) const {
    double peak = -infinity;
    for (const double t : breaks_) {
      peak = std::max(peak, logDensity_(t) + order * distances.logarithm(t));
    }
    return peak;
  }

  const std::function<double(double)>& logDensity_;
  std::span<const double> breaks_;
  double mass_;
};

}  // namespace

Piece integratedPiece(const Point& anchor, const Interval& t, const Scale& scale,
                      const std::function<double(double)>& logDensity, double logAtAnchor) {
  // The width of an interval is below exp(710), so that one with such a density has no probability
  // in double precision.
  if (logAtAnchor < -1500) return {-infinity, {0, 0}, 0};
  double step = scale.length();
  if (t.lower < 0) step = std::min(step, firstStep(logDensity, t.lower));
  if (t.upper > 0) step = std::min(step, firstStep(logDensity, t.upper));
  const bool hasWidth = t.lower <= 0 && 0 <= t.upper && t.lower < t.upper;
  if (!(hasWidth && step > 0 && scale.unit() > 0)) raise(fault::overflow);

  std::vector<double> breaks{0};
  Peaks peaks{0, -infinity, -infinity};
  walk(logDensity, scale, step, t.lower, breaks, peaks);
  walk(logDensity, scale, step, t.upper, breaks, peaks);
  addBend(scale, breaks);

  const PieceIntegrals integrals(logDensity, breaks);
  const auto piece = [&](const Distances& distances, double mean) -> Piece {
    return {logAtAnchor + std::log(integrals.mass()),
            {distances.from.base, distances.from.offset + scale.unit() * mean},
            integrals.deviation(distances, mean, scale.unit())};
  };
  const Distances fromAnchor{anchor, [&](double u) { return scale.distance(u); },
                             [&](double u) { return scale.logDistance(u); }};
  const double mean = integrals.mean(fromAnchor);
  const double above = std::exp(scale.logAboveLowerEnd(0));
  const double below = std::exp(scale.logBelowUpperEnd(0));
  if (mean < -above / 2) {
    const Distances fromEnd{scale.lowerEnd(),
                            [&](double u) { return std::exp(scale.logAboveLowerEnd(u)); },
                            [&](double u) { return scale.logAboveLowerEnd(u); }};
    return piece(fromEnd, integrals.mean(fromEnd));
  }
  if (mean > below / 2) {
    const Distances fromEnd{scale.upperEnd(),
                            [&](double u) { return -std::exp(scale.logBelowUpperEnd(u)); },
                            [&](double u) { return scale.logBelowUpperEnd(u); }};
    return piece(fromEnd, integrals.mean(fromEnd));
  }
  return piece(fromAnchor, mean);
}

double softplus(double x) {
  return std::max(x, 0.0) + std::log1p(std::exp(-std::abs(x)));
}

double expm1LessT(double t) {
  double term = t * t / 2;
  double sum = term;
  for (int n = 3; n < 20; ++n) {
    term *= t / n;
    sum += term;
  }
  return sum;
}

double lessExpm1(double t, double a, double b) {
  if (std::abs(t) > 0.5) return a * t - b * std::expm1(t);
  return (a - b) * t - b * expm1LessT(t);
}

}  // namespace palvex::laws
