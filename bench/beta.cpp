// The beta family beside Boost.Math (in double precision), R's standalone library and GSL.
// Each time is the mean over the same points: x at, or p from, evenly shuffled probabilities.

#include <benchmark/benchmark.h>
#include <gsl/gsl_cdf.h>

#include <algorithm>
#include <array>
#include <boost/math/special_functions/beta.hpp>
#include <random>
#include <string>
#include <utility>

#include "engine/c_Distribution.h"
#include "families/m_Beta.h"

#define MATHLIB_STANDALONE
#include <Rmath.h>

namespace {

using Policy = boost::math::policies::policy<boost::math::policies::promote_double<false>>;
using Points = std::array<double, 1024>;
using Compute = double (*)(double alpha, double beta, double at);

constexpr std::array<std::pair<double, double>, 4> shapes{
    {{2, 3}, {2.2, 3.3}, {0.5, 0.5}, {30, 70}}};

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

const Points& quantiles(std::size_t shape) {
  static const auto points = [] {
    std::array<Points, shapes.size()> x{};
    for (std::size_t i = 0; i < shapes.size(); ++i) {
      const auto [alpha, beta] = shapes[i];
      std::transform(probabilities().begin(), probabilities().end(), x[i].begin(), [&](double p) {
        return palvex::m_Beta::BetaINV(p, alpha, beta, false).toDouble();
      });
    }
    return x;
  }();
  return points[shape];
}

std::size_t shapeOf(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

/// Times `evaluate(point)` over all points.
template <class Evaluate>
void run(benchmark::State& state, const Points& points, Evaluate evaluate) {
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(evaluate(points[i]));
    i = (i + 1) % points.size();
  }
  const auto [alpha, beta] = shapes[shapeOf(state)];
  state.SetLabel("shapes " + std::to_string(alpha) + ' ' + std::to_string(beta));
}

void probability(benchmark::State& state, Compute compute) {
  const auto [alpha, beta] = shapes[shapeOf(state)];
  run(state, quantiles(shapeOf(state)),
      [=, a = alpha, b = beta](double x) { return compute(a, b, x); });
}

void draw(benchmark::State& state, Compute compute) {
  const auto [alpha, beta] = shapes[shapeOf(state)];
  run(state, probabilities(), [=, a = alpha, b = beta](double p) { return compute(a, b, p); });
}

void fromObject(benchmark::State& state, double (palvex::c_Distribution::*member)(double),
                const Points& points) {
  palvex::c_Distribution distribution;
  distribution.distType("Beta");
  distribution.param1 = shapes[shapeOf(state)].first;
  distribution.param2 = shapes[shapeOf(state)].second;
  distribution.param3 = 0;
  distribution.param4 = 1;
  std::string cause;
  if (!distribution.ParamsOK(cause)) state.SkipWithError(cause.c_str());
  run(state, points, [&](double at) { return (distribution.*member)(at); });
}

void probabilityFromObject(benchmark::State& state) {
  fromObject(state, &palvex::c_Distribution::cdf, quantiles(shapeOf(state)));
}

void drawFromObject(benchmark::State& state) {
  fromObject(state, &palvex::c_Distribution::RandVal, probabilities());
}

double ratio(double a, double b, double x) {
  double cum = 0;
  double ccum = 0;
  palvex::m_Beta::cumbet(x, 1 - x, a, b, cum, ccum);
  return cum;
}

void everyShape(benchmark::internal::Benchmark* benchmark) {
  benchmark->DenseRange(0, static_cast<int>(shapes.size()) - 1);
}

BENCHMARK_CAPTURE(probability, palvex, ratio)->Apply(everyShape);
BENCHMARK(probabilityFromObject)->Apply(everyShape);
BENCHMARK_CAPTURE(probability, Boost, [](double a, double b, double x) {
  return boost::math::ibeta(a, b, x, Policy());
})->Apply(everyShape);
BENCHMARK_CAPTURE(probability, R, [](double a, double b, double x) {
  return pbeta(x, a, b, 1, 0);
})->Apply(everyShape);
BENCHMARK_CAPTURE(probability, GSL, [](double a, double b, double x) {
  return gsl_cdf_beta_P(x, a, b);
})->Apply(everyShape);

BENCHMARK_CAPTURE(draw, palvex, [](double a, double b, double p) {
  return palvex::m_Beta::BetaINV(p, a, b, false).toDouble();
})->Apply(everyShape);
BENCHMARK(drawFromObject)->Apply(everyShape);
BENCHMARK_CAPTURE(draw, Boost, [](double a, double b, double p) {
  return boost::math::ibeta_inv(a, b, p, Policy());
})->Apply(everyShape);
BENCHMARK_CAPTURE(draw, R, [](double a, double b, double p) {
  return qbeta(p, a, b, 1, 0);
})->Apply(everyShape);
BENCHMARK_CAPTURE(draw, GSL, [](double a, double b, double p) {
  return gsl_cdf_beta_Pinv(p, a, b);
})->Apply(everyShape);

}  // namespace
