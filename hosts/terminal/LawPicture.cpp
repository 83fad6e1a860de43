#include "hosts/terminal/LawPicture.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace palvex::terminal {

namespace {

constexpr double largest = 1e300;  // of an axis, so that its length is a double

/// The bulk of a law: on each side up to the end of its values where that is near, else to where
/// only the share `rare` lies beyond.
Axis bulkOf(const Law& law) {
  constexpr double rare = 0.0005;
  double from = law.quantile(rare);
  double to = law.upperQuantile(rare);
  const double near = 0.1 * (to - from);
  const auto& [lower, upper, lowerIncluded, upperIncluded] = law.support();
  if (lower >= from - near) from = lower;
  if (upper <= to + near) to = upper;
  if (const double reach = 6 * law.sd(); reach > 0) {
    from = std::max(from, law.mean() - reach);
    to = std::min(to, law.mean() + reach);
  }
  return {std::max(from, -largest), std::min(to, largest)};
}

/// The kept pieces of an axis, or those that are cut away.
std::vector<Axis> pieces(const Limits& limits, const Axis& axis, bool kept) {
  std::vector<double> borders{axis.from};
  for (const auto& limit : {limits.lower, limits.upper}) {
    if (limit && *limit > axis.from && *limit < axis.to) borders.push_back(*limit);
  }
  borders.push_back(axis.to);
  std::sort(borders.begin(), borders.end());
  std::vector<Axis> found;
  for (std::size_t i = 1; i < borders.size(); ++i) {
    const double middle = std::midpoint(borders[i - 1], borders[i]);
    if (limits.cut(middle) != kept) found.push_back({borders[i - 1], borders[i]});
  }
  return found;
}

/// The greatest height of lines, without the surroundings of poles. Sets `pole` where there is one.
double highest(const std::vector<Line>& lines, const Axis& axis, bool& pole) {
  const double surroundings = 0.025 * (axis.to - axis.from);
  double most = 0;
  for (const Line& line : lines) {
    std::vector<double> poles;
    for (const Point& point : line) {
      if (std::isinf(point.y)) poles.push_back(point.x);
    }
    pole = pole || !poles.empty();
    for (const Point& point : line) {
      const bool nearPole = std::any_of(poles.begin(), poles.end(), [&](double x) {
        return std::abs(x - point.x) <= surroundings;
      });
      if (!nearPole) most = std::max(most, point.y);
    }
  }
  return most;
}

}  // namespace

Axis axisOf(const Subject& subject) {
  auto [from, to] = bulkOf(subject.law);
  if (!(from < to)) {  // one value, or as good as one
    const double beside = std::max(1., std::abs(from) * 1e-3);
    return {from - beside, to + beside};
  }
  if (subject.limits.lower || subject.limits.upper) {
    const Axis whole = bulkOf(subject.whole);
    const double most = 0.6 * (to - from);
    from = std::min(from, std::max(whole.from, from - most));
    to = std::max(to, std::min(whole.to, to + most));
  }
  const double margin = std::max(0.02 * (to - from), std::abs(from) * 1e-15);
  return {from - margin, to + margin};
}

std::vector<double> landmarks(const Law& law) {
  constexpr int parts = 256;
  const auto& support = law.support();
  std::vector<double> values{support.lower, support.upper};
  for (int i = 1; i < parts; ++i) values.push_back(law.quantile(i / double{parts}));
  return values;
}

Curve densityCurve(const Subject& subject, const Axis& axis) {
  const auto& [law, whole, limits] = subject;
  Curve curve;
  const double only = law.support().lower;
  if (only == law.support().upper) {
    curve.lines = {{{axis.from, 0}, {only, 0}, {only, 1}, {only, 0}, {axis.to, 0}}};
    return curve;
  }
  const std::vector<double> through = landmarks(law);
  for (const auto& [from, to] : pieces(limits, axis, true)) {
    curve.lines.push_back(
        traced([&law = law](double x) { return law.density(x); }, from, to, through));
  }
  const double share = law.keptProbability();
  const auto cutDensity = [&whole = whole, share](double x) { return whole.density(x) / share; };
  for (const auto& [from, to] : pieces(limits, axis, false)) {
    curve.cut.push_back(traced(cutDensity, from, to, landmarks(whole)));
  }
  return curve;
}

Curve probabilityCurve(const Law& law, const Axis& axis) {
  const auto probability = [&law](double x) { return law.probability(x); };
  return {"", {traced(probability, axis.from, axis.to, landmarks(law))}, {}};
}

double heightFor(const std::vector<Curve>& curves, const Axis& axis) {
  bool pole = false;
  double kept = 0;
  double cut = 0;
  for (const Curve& curve : curves) {
    bool beyond = false;
    kept = std::max(kept, highest(curve.lines, axis, pole));
    cut = std::max(cut, highest(curve.cut, axis, beyond));
  }
  double height = kept > 0 ? std::min(std::max(kept, cut), 2.5 * kept) : cut;
  if (pole) height *= 2;
  return height > 0 && std::isfinite(height) ? height : 1;
}

}  // namespace palvex::terminal
