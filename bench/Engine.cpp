// The distribution object by itself: each member for each type, limits against none, live values
// against kept ones, the first draw against later ones, many draws against few.

#include <algorithm>
#include <cmath>

#include "bench/Cases.h"

namespace palvex::bench {

namespace {

enum class Member { pdf, cdf, draw };

void member(benchmark::State& state, const Case& which, Member called) {
  const auto d = which.object();
  if (called == Member::draw) {
    timeOver(state, probabilities(), [&](double p) { return d->RandVal(p); });
    return;
  }
  const Points& x = which.arguments();
  if (called == Member::pdf) {
    timeOver(state, x, [&](double at) { return d->pdf(at); });
  } else {
    timeOver(state, x, [&](double at) { return d->cdf(at); });
  }
}

void drawLive(benchmark::State& state, const Case& which) {
  const auto d = which.object();
  d->Dynamic = true;
  timeOver(state, probabilities(), [&](double p) { return d->RandVal(p); });
}

/// Draws between the limits, or, for comparison, draws without limits at the probabilities that the
/// limits map to.
void drawBetween(benchmark::State& state, const Case& which, double from, double to,
                 bool limitsAtWork) {
  const auto whole = which.object();
  const double lower = whole->RandVal(from);
  const double upper = whole->RandVal(to);
  if (limitsAtWork) {
    const auto cut = which.object(lower, upper);
    timeOver(state, probabilities(), [&](double p) { return cut->RandVal(p); });
    return;
  }
  Points mapped = probabilities();
  const double split = to / (1 - from + to);
  for (double& p : mapped) {
    if (from < to) {
      p = from + (to - from) * p;
    } else {
      p = p <= split ? to * p / split : from + (p - split) * (1 - from) / (1 - split);
    }
  }
  timeOver(state, mapped, [&](double p) { return whole->RandVal(p); });
}

void validate(benchmark::State& state, const Case& which) {
  const auto whole = which.object();
  const auto d = which.object(whole->RandVal(0.2), whole->RandVal(0.9));
  std::string cause;
  for (auto _ : state) benchmark::DoNotOptimize(d->ParamsOK(cause));
}

/// Draws after the kept band and what is prepared were dropped, as they are by ParamsOK: setting
/// the type drops them, too, and takes so little time that the first draw shows beside it.
void drawAfresh(benchmark::State& state, const Case& which, int draws) {
  const auto whole = which.object();
  const auto d = which.object(whole->RandVal(0.2), whole->RandVal(0.9));
  std::size_t i = 0;
  for (auto _ : state) {
    d->distType(which.type);
    for (int draw = 0; draw < draws; ++draw) {
      benchmark::DoNotOptimize(d->RandVal(probabilities()[i]));
      i = (i + 1) % pointCount;
    }
  }
}

/// `count` draws at the multiples of the golden ratio.
void drawMany(benchmark::State& state, const Case& which, std::int64_t count) {
  constexpr double golden = 0.6180339887498949;
  const auto d = which.object();
  for (auto _ : state) {
    double p = 0;
    for (std::int64_t i = 0; i < count; ++i) {
      p += golden;
      if (p >= 1) p -= 1;
      benchmark::DoNotOptimize(d->RandVal(p));
    }
  }
  state.SetItemsProcessed(state.iterations() * count);
}

const bool registered = [] {
  const auto add = [](const std::string& name, auto run) {
    return benchmark::RegisterBenchmark(name.c_str(), run);
  };
  for (const Case& one : cases()) {
    if (one.density)
      add("pdf/" + one.name + "/object", [=](auto& state) { member(state, one, Member::pdf); });
    add("cdf/" + one.name + "/object", [=](auto& state) { member(state, one, Member::cdf); });
    add("draw/" + one.name + "/object", [=](auto& state) { member(state, one, Member::draw); });
    for (const bool at : {false, true}) {
      const std::string who = at ? "/limits" : "/none";
      add("between/" + one.name + who, [=](auto& s) { drawBetween(s, one, 0.2, 0.9, at); });
      add("outside/" + one.name + who, [=](auto& s) { drawBetween(s, one, 0.7, 0.4, at); });
    }
    add("dynamic/" + one.name + "/on", [=](auto& state) { drawLive(state, one); });
    add("validate/" + one.name + "/object", [=](auto& state) { validate(state, one); });
    for (const int draws : {0, 1}) {
      add("afresh/" + one.name + "/" + std::to_string(draws),
          [=](auto& state) { drawAfresh(state, one, draws); });
    }
  }
  for (const auto& [name, most] : {std::pair{"Uniform", 8}, {"Normal", 8}, {"Gamma 2.5", 6}}) {
    for (int power = 4; power <= most; ++power) {
      const auto count = static_cast<std::int64_t>(std::pow(10.0, power));
      auto* many = add(std::string("many/") + name + "/" + std::to_string(power),
                       [=, &one = caseNamed(name)](auto& state) { drawMany(state, one, count); });
      many->Unit(benchmark::kMillisecond);
      if (power >= 7) many->Iterations(1);
    }
  }
  return true;
}();

}  // namespace

}  // namespace palvex::bench
