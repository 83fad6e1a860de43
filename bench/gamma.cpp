// The gamma family beside Boost.Math (in double precision), R's standalone library and GSL.
// Each time is the mean over the same points: x at, or p from, evenly shuffled probabilities.

#include <benchmark/benchmark.h>
#include <gsl/gsl_cdf.h>
#include <gsl/gsl_sf_gamma.h>

#include <algorithm>
#include <array>
#include <boost/math/special_functions/gamma.hpp>
#include <random>

#include "engine/c_Distribution.h"
#include "families/m_Gamma.h"

#define MATHLIB_STANDALONE
#include <Rmath.h>

namespace {

using Policy = boost::math::policies::policy<boost::math::policies::promote_double<false>>;
using Points = std::array<double, 1024>;

constexpr std::array shapes{0.3, 2.5, 50.0, 5000.0};

const Points& probabilities() {
  static const Points points = [] {
    Points p{};
    for (std::size_t i = 0; i < p.size(); ++i) {
      p[i] = (static_cast<double>(i) + 0.5) / static_cast<double>(p.size());
    }
    std::shuffle(p.begin(), p.end(), std::mt19937(1));
    return p;
  }();
  return points;
}

double shapeOf(const benchmark::State& state) {
  return shapes[static_cast<std::size_t>(state.range(0))];
}

/// Times `compute(point)` over all points.
template <class Compute>
void run(benchmark::State& state, const Points& points, Compute compute) {
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(compute(points[i]));
    i = (i + 1) % points.size();
  }
  state.SetLabel("shape " + std::to_string(shapeOf(state)));
}

void probability(benchmark::State& state, double (*compute)(double a, double x)) {
  const double a = shapeOf(state);
  Points x{};
  std::transform(probabilities().begin(), probabilities().end(), x.begin(),
                 [a](double p) { return palvex::m_Gamma::GammaINV(p, a, 1, false); });
  run(state, x, [=](double at) { return compute(a, at); });
}

void draw(benchmark::State& state, double (*compute)(double a, double p)) {
  const double a = shapeOf(state);
  run(state, probabilities(), [=](double p) { return compute(a, p); });
}

void drawFromObject(benchmark::State& state) {
  palvex::c_Distribution distribution;
  distribution.distType("Gamma");
  distribution.param1 = shapeOf(state);
  distribution.param2 = 1;
  distribution.param3 = 0;
  std::string cause;
  if (!distribution.ParamsOK(cause)) state.SkipWithError(cause.c_str());
  run(state, probabilities(), [&](double p) { return distribution.RandVal(p); });
}

void probabilityFromObject(benchmark::State& state) {
  palvex::c_Distribution distribution;
  distribution.distType("Gamma");
  distribution.param1 = shapeOf(state);
  distribution.param2 = 1;
  distribution.param3 = 0;
  std::string cause;
  if (!distribution.ParamsOK(cause)) state.SkipWithError(cause.c_str());
  const double a = shapeOf(state);
  Points x{};
  std::transform(probabilities().begin(), probabilities().end(), x.begin(),
                 [a](double p) { return palvex::m_Gamma::GammaINV(p, a, 1, false); });
  run(state, x, [&](double at) { return distribution.cdf(at); });
}

double ratio(double a, double x) {
  double p = 0;
  double q = 0;
  palvex::m_Gamma::gratio(a, x, p, q, 0);
  return p;
}

void everyShape(benchmark::internal::Benchmark* benchmark) {
  benchmark->DenseRange(0, static_cast<int>(shapes.size()) - 1);
}

BENCHMARK_CAPTURE(probability, palvex, ratio)->Apply(everyShape);
BENCHMARK(probabilityFromObject)->Apply(everyShape);
BENCHMARK_CAPTURE(probability, Boost, [](double a, double x) {
  return boost::math::gamma_p(a, x, Policy());
})->Apply(everyShape);
BENCHMARK_CAPTURE(probability, R, [](double a, double x) {
  return pgamma(x, a, 1, 1, 0);
})->Apply(everyShape);
BENCHMARK_CAPTURE(probability, GSL, [](double a, double x) {
  return gsl_cdf_gamma_P(x, a, 1);
})->Apply(everyShape);

BENCHMARK_CAPTURE(draw, palvex, [](double a, double p) {
  return palvex::m_Gamma::GammaINV(p, a, 1, false);
})->Apply(everyShape);
BENCHMARK(drawFromObject)->Apply(everyShape);
BENCHMARK_CAPTURE(draw, Boost, [](double a, double p) {
  return boost::math::gamma_p_inv(a, p, Policy());
})->Apply(everyShape);
BENCHMARK_CAPTURE(draw, R, [](double a, double p) {
  return qgamma(p, a, 1, 1, 0);
})->Apply(everyShape);
BENCHMARK_CAPTURE(draw, GSL, [](double a, double p) {
  return gsl_cdf_gamma_Pinv(p, a, 1);
})->Apply(everyShape);

}  // namespace
