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

double c_Distribution::XMin(double numSD) try {
  return plotRange(numSD).first;
} catch (RuntimeError& error) {
  error.leave("c_Distribution.XMin");
}

double c_Distribution::XMax(double numSD) try {
  return plotRange(numSD).second;
} catch (RuntimeError& error) {
  error.leave("c_Distribution.XMax");
}

std::pair<double, double> c_Distribution::plotRange(double numSD, Line caller) const try {
  const Family* const family = family_;  // a cell that answers may set another one
  if (family == nullptr) return {0, 0};
  const Parameters p = currentParameters(family->parametersRead);
  const Values values{p, fitted_};
  const Support support = family->support(values);
  if (support.lower > support.upper) raise(fault::invalidCall);
  if (support.lower == support.upper) {
    const double only = support.lower;
    return {checked(std::min(only - 1, std::nextafter(only, -infinity))),
            checked(std::max(only + 1, std::nextafter(only, infinity)))};
  }

  const double deviations = numSD > 0 ? numSD : defaultNumSD;
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
    const laws::Moments whole = momentsOf(*family, values, {}, Method::closedForm);
    if (lowerOpen) lower = away(whole, -1);
    if (upperOpen) upper = away(whole, 1);
  }
  if (lower >= upper && (lowerCuts || upperCuts)) {  // a limit far out in a tail
    const laws::Moments kept = momentsOf(*family, values, limits, Method::closedForm);
    if (lowerOpen) lower = away(kept, -1);
    if (upperOpen) upper = away(kept, 1);
  }
  return {lower, checked(std::max(upper, std::nextafter(lower, infinity)))};
} catch (RuntimeError& error) {
  error.leave(caller);
}

namespace {

/// The density that pdf reports at x; where its formula leaves the range of doubles, the stable
/// form of it, and at a pole the density half a step inside.
double graphDensity(const Family& family, const Values& values, double x, const Limits& limits,
                    const Variant& priorX, double halfStep, Line line) {
  if (family.stableDensity == nullptr) return family.density(values, x, limits, priorX, line);
  const Support support = family.support(values);
  const bool atEnd = x == support.lower || x == support.upper;
  if (atEnd && std::isinf(family.stableDensity(values, x))) {
    if (limits.cut(x)) return 0;
    // Not beyond the middle, and at least by one double.
    const double inside = std::min(halfStep, (support.upper - support.lower) / 2);
    const double moved = x == support.lower ? std::max(x + inside, std::nextafter(x, infinity))
                                            : std::min(x - inside, std::nextafter(x, -infinity));
    const bool isInside = support.lower < moved && moved < support.upper;
    if (!isInside) raise(fault::overflow, line);  // no double lies between the ends
    return graphDensity(family, values, moved, {}, priorX, halfStep, line);
  }
  // Whether the formula holds is asked first, where it often does not: an error for each point
  // would take a hundred times as long.
  if (family.densityHolds == nullptr || family.densityHolds(values, x)) {
    try {
      return family.density(values, x, limits, priorX, line);
    } catch (const RuntimeError&) {
      // The stable form it is.
    }
  }
  return limits.cut(x) ? 0 : checked(family.stableDensity(values, x), line);
}

}  // namespace

void c_Distribution::CreateGraphData(double graphXmin, double graphXmax, bool noTruncation) try {
  if (!(graphXmin < graphXmax)) raise(fault::invalidCall);
  checked(graphXmin);
  checked(graphXmax);
  const Family* const family = family_;  // a cell that answers may set another one
  const Limits limits = noTruncation ? Limits{} : currentLimits();
  const Parameters p = currentParameters(family == nullptr ? 0 : family->parametersRead);
  Prepared prepared;
  const Values values{p, fitted_, &prepared};

  constexpr std::size_t usualPoints = 101;
  const std::size_t points = graphX_.empty() ? usualPoints : graphX_.size();
  const double steps = points > 1 ? static_cast<double>(points - 1) : 1;
  const double halfStep = graphXmax / steps / 2 - graphXmin / steps / 2;
  Series xs(points);
  Series kept(points);
  Series whole(points);
  Variant priorX = Variant::missing();
  for (std::size_t i = 0; i < points; ++i) {
    const double x = std::lerp(graphXmin, graphXmax, static_cast<double>(i) / steps);
    const auto scaled = [&](const Limits& by, Line line = Line::here()) {
      if (family == nullptr) return 0.0;
      const double density = graphDensity(*family, values, x, by, priorX, halfStep, line);
      return checked(scaleFactor_ * density, line);
    };
    xs[i] = x;
    whole[i] = scaled({});
    kept[i] = limits.lower || limits.upper ? scaled(limits) : whole[i];
    priorX = x;
  }
  graphX_ = std::move(xs);
  graphPDF_ = std::move(kept);
  graphOL_ = std::move(whole);
} catch (RuntimeError& error) {
  error.leave("c_Distribution.CreateGraphData");
}

}  // namespace palvex
