// Plot range and graph data.

#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/c_Distribution.h"

namespace palvex {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

bool within(const std::optional<double>& limit, const Support& support) {
  return limit && *limit > support.lower && *limit < support.upper;
}

}  // namespace

double c_Distribution::XMin(double numSD) const try {
  return plotRange(numSD).first;
} catch (RuntimeError& error) {
  error.leave("c_Distribution.XMin");
}

double c_Distribution::XMax(double numSD) const try {
  return plotRange(numSD).second;
} catch (RuntimeError& error) {
  error.leave("c_Distribution.XMax");
}

std::pair<double, double> c_Distribution::plotRange(double numSD, Line caller) const try {
  const Family* const family = family_;  // reading a cell may set another one
  if (family == nullptr) return {0, 0};
  return with(*this, *family, [&](const Values& values) {
    return plotRange(*family, values, numSD > 0 ? numSD : defaultNumSD);
  });
} catch (RuntimeError& error) {
  error.leave(caller);
}

std::pair<double, double> c_Distribution::plotRange(const Family& family, const Values& values,
                                                    double deviations) const {
  if (!family.isLawful(values)) raise(fault::invalidCall);
  const Support support = family.law->support(values);
  if (support.lower == support.upper) {
    const double only = support.lower;
    return {checked(std::min(only - 1, std::nextafter(only, -infinity))),
            checked(std::max(only + 1, std::nextafter(only, infinity)))};
  }

  const auto away = [&](const laws::Moments& of, double direction) {
    return checked(of.mean + direction * deviations * of.sd);
  };
  const Limits limits = currentLimits();
  const bool lowerCuts = !limits.reversed() && within(limits.lower, support);
  const bool upperCuts = !limits.reversed() && within(limits.upper, support);
  double lower = lowerCuts ? *limits.lower : support.lower;
  double upper = upperCuts ? *limits.upper : support.upper;
  const bool lowerOpen = std::isinf(lower);
  const bool upperOpen = std::isinf(upper);
  if (lowerOpen || upperOpen) {
    const laws::Moments whole = momentsOf(family, values, {}, Method::closedForm);
    if (lowerOpen) lower = away(whole, -1);
    if (upperOpen) upper = away(whole, 1);
  }
  if (lower >= upper && (lowerCuts || upperCuts)) {  // a limit far out in a tail
    const laws::Moments kept = momentsOf(family, values, limits, Method::closedForm);
    if (lowerOpen) lower = away(kept, -1);
    if (upperOpen) upper = away(kept, 1);
  }
  return {lower, checked(std::max(upper, std::nextafter(lower, infinity)))};
}

namespace {

/// The density that pdf reports, for a graph: where its formula leaves the range of doubles, the
/// stable form of it, and at a pole the density half a step inside.
class GraphDensity {
 public:
  GraphDensity(const Family& family, Values& values, double halfStep)
      : family_(family), values_(values), halfStep_(halfStep) {
    if (family.law->density == nullptr || !family.isLawful(values)) return;
    stable_ = family.law->density(values);
    support_ = family.law->support(values);
  }

  double operator()(double x, const Limits& limits, const Variant& priorX, Line line) const {
    if (!stable_) return family_.density(values_, x, limits, priorX, line);
    if (isPole(x)) return limits.cut(x) ? 0 : (*this)(inside(x, line), {}, priorX, line);
    // Whether the formula stays in the range of doubles is tested first: an exception for each
    // point would take a hundred times as long.
    if (family_.densityHolds == nullptr || family_.densityHolds(values_, x)) {
      try {
        return family_.density(values_, x, limits, priorX, line);
      } catch (const RuntimeError&) {
        // The stable form answers below.
      }
    }
    return limits.cut(x) ? 0 : checked(stable_(x), line);
  }

 private:
  [[nodiscard]] bool isPole(double x) const {
    return (x == support_.lower || x == support_.upper) && std::isinf(stable_(x));
  }

  /// Half a step from an end, but not beyond the middle, and at least by one double.
  /// Error 6 where no double lies between the ends.
  [[nodiscard]] double inside(double end, Line line) const {
    const double step = std::min(halfStep_, (support_.upper - support_.lower) / 2);
    const double x = end == support_.lower ? std::max(end + step, std::nextafter(end, infinity))
                                           : std::min(end - step, std::nextafter(end, -infinity));
    if (!(support_.lower < x && x < support_.upper)) raise(fault::overflow, line);
    return x;
  }

  const Family& family_;
  Values& values_;
  double halfStep_;
  std::function<double(double)> stable_;
  Support support_{0, 0};
};

}  // namespace

void c_Distribution::CreateGraphData(double graphXmin, double graphXmax, bool noTruncation) try {
  if (!(graphXmin < graphXmax)) raise(fault::invalidCall);
  checked(graphXmin);
  checked(graphXmax);
  const Family* const family = family_;  // reading a cell may set another one
  const Limits limits = noTruncation ? Limits{} : currentLimits();

  constexpr std::size_t usualPoints = 101;
  const std::size_t points = graphX_.empty() ? usualPoints : graphX_.size();
  const double steps = points > 1 ? static_cast<double>(points - 1) : 1;
  const double halfStep = graphXmax / steps / 2 - graphXmin / steps / 2;
  Series xs(points);
  Series kept(points);
  Series whole(points);
  for (std::size_t i = 0; i < points; ++i) {
    xs[i] = std::lerp(graphXmin, graphXmax, static_cast<double>(i) / steps);
  }
  if (family != nullptr) {
    with(*this, *family, [&](Values& values) {
      const Line line = Line::here();
      const GraphDensity density(*family, values, halfStep);
      Variant priorX = Variant::missing();
      for (std::size_t i = 0; i < points; ++i) {
        const auto scaled = [&](const Limits& by) {
          return checked(scaleFactor_ * density(xs[i], by, priorX, line), line);
        };
        whole[i] = scaled({});
        kept[i] = limits.lower || limits.upper ? scaled(limits) : whole[i];
        priorX = xs[i];
      }
    });
  }
  graphX_ = std::move(xs);
  graphPDF_ = std::move(kept);
  graphOL_ = std::move(whole);
} catch (RuntimeError& error) {
  error.leave("c_Distribution.CreateGraphData");
}

}  // namespace palvex
