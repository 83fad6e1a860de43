#include "bench/Cases.h"

#include <algorithm>
#include <map>
#include <random>
#include <stdexcept>

#include "tests/FakeRange.h"

namespace palvex::bench {

namespace {

/// 20 bins with counts that rise and fall.
Variant histogramData() {
  std::vector<Variant> cells;
  for (int bin = 0; bin < 20; ++bin) {
    cells.insert(cells.end(), {bin, bin + 1, 1 + bin * (20 - bin)});
  }
  return block(3, cells);
}

}  // namespace

const std::vector<Case>& cases() {
  static const std::vector<Case> all{
      {"Normal", "Normal", {1, 2}},
      {"Uniform", "Uniform", {1, 5}},
      {"Triangular", "Triangular", {1, 2, 5}},
      {"Exponential", "Exponential", {0.7, 1}},
      {"Weibull", "Weibull", {1.5, 2, 1}},
      {"Lognormal", "Lognormal", {0.5, 0.8, 0}},
      {"Gamma 0.3", "Gamma", {0.3, 1, 0}},
      {"Gamma 2.5", "Gamma", {2.5, 1, 0}},
      {"Gamma 50", "Gamma", {50, 1, 0}},
      {"Gamma 5000", "Gamma", {5000, 1, 0}, false},
      {"Beta 0.5 0.5", "Beta", {0.5, 0.5, 0, 1}},
      {"Beta 2 3", "Beta", {2, 3, 0, 1}},
      {"Beta 2.2 3.3", "Beta", {2.2, 3.3, 0, 1}},
      {"Beta 30 70", "Beta", {30, 70, 0, 1}},
      {"Johnson SL", "Johnson", {0, 2, 1.75, 8.898357624544985}},
      {"Johnson SU", "Johnson", {3, 1, 0.5, 5}},
      {"Johnson SB", "Johnson", {3, 1, 0.5, 2.5}},
      {"Histogram", "Histogram", {}},
  };
  return all;
}

const Case& caseNamed(const std::string& name) {
  for (const Case& one : cases()) {
    if (one.name == name) return one;
  }
  throw std::invalid_argument("no case " + name);
}

const Points& probabilities() {
  static const Points points = [] {
    Points p(pointCount);
    for (std::size_t i = 0; i < p.size(); ++i) {
      p[i] = (static_cast<double>(i) + 0.5) / static_cast<double>(p.size());
    }
    std::shuffle(p.begin(), p.end(), std::mt19937(1));
    return p;
  }();
  return points;
}

std::unique_ptr<c_Distribution> Case::object(const Variant& lower, const Variant& upper) const {
  auto made = std::make_unique<c_Distribution>();
  made->distType(type);
  made->param1 = type == "Histogram" ? histogramData() : Variant(parameters[0]);
  made->param2 = type == "Histogram" ? Variant("Bins and Counts (3 cols)") : Variant(parameters[1]);
  made->param3 = parameters[2];
  made->param4 = parameters[3];
  made->ltl = lower;
  made->utl = upper;
  std::string cause;
  if (!made->ParamsOK(cause)) throw std::invalid_argument(name + ": " + cause);
  return made;
}

const Points& Case::arguments() const {
  static std::map<std::string, Points> known;
  Points& x = known[name];
  if (!x.empty()) return x;
  const auto distribution = object();
  x.resize(pointCount);
  std::transform(probabilities().begin(), probabilities().end(), x.begin(),
                 [&](double p) { return distribution->RandVal(p); });
  return x;
}

}  // namespace palvex::bench
