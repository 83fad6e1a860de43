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
  throw;
}

double c_Distribution::XMax(double numSD) try {
  return plotRange(numSD).second;
} catch (RuntimeError& error) {
  error.leave("c_Distribution.XMax");
  throw;
}

std::pair<double, double> c_Distribution::plotRange(double numSD) const {
  if (family_ == nullptr) return {0, 0};
  const Parameters p = currentParameters(family_->parametersRead);
  const Values values{p, fitted_};
  const Support support = family_->support(values);
  if (support.lower > support.upper) raise(fault::invalidCall);
  if (support.lower == support.upper) {
    const double only = support.lower;
    return {std::min(only - 1, std::nextafter(only, -infinity)),
            std::max(only + 1, std::nextafter(only, infinity))};
  }

  const double deviations = numSD > 0 ? numSD : defaultNumSD;
  const auto away = [&](const Moments& of, double direction) {
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
    const Moments whole = momentsOf(values, {}, Method::closedForm);
    if (lowerOpen) lower = away(whole, -1);
    if (upperOpen) upper = away(whole, 1);
  }
  if (lower >= upper && (lowerCuts || upperCuts)) {  // a limit far out in a tail
    const Moments kept = momentsOf(values, limits, Method::closedForm);
    if (lowerOpen) lower = away(kept, -1);
    if (upperOpen) upper = away(kept, 1);
  }
  return {lower, std::max(upper, std::nextafter(lower, infinity))};
}

double c_Distribution::graphDensity(const Values& values, double x, const Limits& limits,
                                    const Variant& priorX, double halfStep) const {
  if (family_->stableDensity == nullptr) {
    return family_->density(values, x, limits, priorX, Line::here());
  }
  if (limits.cut(x)) return 0;
  const Support support = family_->support(values);
  const bool atEnd = x == support.lower || x == support.upper;
  if (atEnd && std::isinf(family_->stableDensity(values, x))) {
    // Half a step inside, but not beyond the middle and at least by one double.
    const double inside = std::min(halfStep, (support.upper - support.lower) / 2);
    x = x == support.lower ? std::max(x + inside, std::nextafter(x, infinity))
                           : std::min(x - inside, std::nextafter(x, -infinity));
  }
  try {
    return family_->density(values, x, {}, priorX, Line::here());
  } catch (const RuntimeError&) {
    return checked(family_->stableDensity(values, x));
  }
}

void c_Distribution::CreateGraphData(double graphXmin, double graphXmax, bool noTruncation) try {
  if (!(graphXmin < graphXmax)) raise(fault::invalidCall);
  checked(graphXmin);
  checked(graphXmax);
  constexpr std::size_t usualPoints = 101;
  const std::size_t points = graphX_.empty() ? usualPoints : graphX_.size();
  const double steps = points > 1 ? static_cast<double>(points - 1) : 1;
  const double halfStep = graphXmax / steps / 2 - graphXmin / steps / 2;
  const Limits limits = noTruncation ? Limits{} : currentLimits();
  const Parameters p = currentParameters(family_ == nullptr ? 0 : family_->parametersRead);
  Prepared prepared;
  const Values values{p, fitted_, &prepared};

  Series xs(points);
  Series kept(points);
  Series whole(points);
  Variant priorX = Variant::missing();
  for (std::size_t i = 0; i < points; ++i) {
    const double x = std::lerp(graphXmin, graphXmax, static_cast<double>(i) / steps);
    const auto scaled = [&](const Limits& by) {
      if (family_ == nullptr) return 0.0;
      return checked(scaleFactor_ * graphDensity(values, x, by, priorX, halfStep));
    };
    xs[i] = x;
    kept[i] = scaled(limits);
    whole[i] = scaled({});
    priorX = x;
  }
  graphX_ = std::move(xs);
  graphPDF_ = std::move(kept);
  graphOL_ = std::move(whole);
} catch (RuntimeError& error) {
  error.leave("c_Distribution.CreateGraphData");
  throw;
}

}  // namespace palvex
