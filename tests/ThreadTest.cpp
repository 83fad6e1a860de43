// What threads may share and what they may do beside each other, for the thread sanitizer.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cmath>
#include <functional>
#include <latch>
#include <random>
#include <thread>
#include <vector>

#include "ManyLaws.h"
#include "palvex/palvex.h"
#include "palvex/simulation.h"
#include "runtime/NumericText.h"

namespace palvex {
namespace {

/// Does the same on several threads that start together; the answers of all are to be those of the
/// first.
template <class Answers>
void onThreads(const std::function<Answers()>& work) {
  std::array<Answers, 4> answers;
  {
    std::latch start(answers.size());
    std::vector<std::jthread> threads;
    for (Answers& one : answers) {
      threads.emplace_back([&] {
        start.arrive_and_wait();
        one = work();
      });
    }
  }
  ASSERT_FALSE(answers[0].empty());
  for (const Answers& one : answers) EXPECT_EQ(one, answers[0]);
}

TEST(Threads, ShareLawsThatNobodyAskedBefore) {
  std::vector<Law> laws = manyLaws();
  for (const Law& whole : manyLaws()) {
    const std::vector<Law> cut = withLimits(whole);
    laws.insert(laws.end(), cut.begin() + 1, cut.end());
  }
  onThreads<std::vector<std::string>>([&] {
    std::vector<std::string> answers;
    std::mt19937 bits(7);
    for (const Law& law : laws) {
      std::array<double, 6> x{1e-300, 1e-9, 0.1, 0.5, 0.9, 1};
      law.quantiles(x, x);
      for (const double value : x) {
        for (const double answer :
             {value, law.density(value), law.logDensity(value), law.probability(value),
              law.exceedance(value), law.upperQuantile(law.exceedance(value)), law(bits)})
          answers.push_back(numberText(answer));
      }
      answers.push_back(numberText(law.mean()) + numberText(law.sd()));
      answers.push_back(numberText(law.between(law.quantile(0.1), {}).quantile(0.5)));
    }
    return answers;
  });
}

TEST(Threads, UseObjectsOfTheirOwn) {
  onThreads<std::string>([] {
    std::string answers;
    const auto note = [&](const std::function<double()>& member) {
      try {
        answers += numberText(member()) + ' ';
      } catch (const RuntimeError& error) {
        answers += error.what();
      }
    };
    const std::array data{1.0, 2.0, 2.0, 5.0};
    for (const auto& [type, parameters] : std::vector<std::pair<const char*, std::vector<Variant>>>{
             {"Normal", {1, 2}},
             {"Uniform", {0, 3}},
             {"Triangular", {0, 1, 3}},
             {"Lognormal", {0, 0.5, 0}},
             {"Exponential", {2, 0}},
             {"Weibull", {2, 1, 0}},
             {"Beta", {2, 3, 0, 3}},
             {"Gamma", {2.5, 1, 0}},
             {"Johnson", {1, 1, 0.5, 4}},
             {"Johnson", {1, 0.5, 0.5, 2.5}},
             {"Histogram", {std::make_shared<Cells>(data), "Raw Data"}},
             {"Normal", {1, -2}}}) {
      c_Distribution d;
      d.distType(type);
      d.param1 = parameters[0];
      d.param2 = parameters[1];
      if (parameters.size() > 2) d.param3 = parameters[2];
      if (parameters.size() > 3) d.param4 = parameters[3];
      d.utl = std::make_shared<Cells>(std::array{2.5});
      std::string cause;
      note([&] { return d.ParamsOK(cause); });
      answers += cause;
      for (const bool dynamic : {false, true}) {
        d.Dynamic = dynamic;
        for (const double p : {0.3, 2.0}) note([&] { return d.RandVal(p) + d.cdf(p) + d.pdf(p); });
        note([&] { return d.mean() + d.StDev() + d.CalcMean(); });
        note([&] { return d.CreateGraphData(d.XMin(), d.XMax()), d.GraphPDF(50); });
      }
    }
    return answers;
  });
}

/// Doubles what it received.
class Doubling : public simulation::Workbook {
 public:
  void put(std::size_t, double value) override { value_ = value; }
  double read(std::size_t) override { return 0; }
  double result(std::size_t) override { return 2 * value_; }

 private:
  double value_ = 0;
};

TEST(Threads, SimulateTogether) {
  using namespace simulation;
  Model model;
  model.add("A", Law::gamma(2, 3).between({}, 20));
  model.add("B", Law::beta(2, 5, 0, 4), 0.3);
  model.addFormula("Sum", "[A] + sqrt([B])");
  Settings settings;
  settings.trials = 5 * Simulation::blockTrials;
  settings.describeTrials = true;
  std::string text;
  std::atomic<std::uint64_t> most = 0;
  RunOptions options;
  options.onTrials = [&](std::string_view lines) { text += lines.substr(0, 100); };
  options.progress = [&](std::uint64_t done, std::uint64_t) { most = std::max(most.load(), done); };
  options.cancelled = [&] { return false; };
  const auto figures = [&](unsigned threads) {
    text.clear();
    options.threads = threads;
    const Results results = run(model, settings, options);
    return std::pair(text, results.results[0].moments.mean);
  };
  EXPECT_EQ(figures(4), figures(1));
  EXPECT_GT(most, 0U);

  options.threads = 4;
  options.cancelled = [&] { return most > 2 * Simulation::blockTrials; };
  most = 0;
  EXPECT_TRUE(run(model, settings, options).trials < settings.trials);

  options.cancelled = {};
  model.addFormula("Fails", "sqrt([A] - 1)");
  EXPECT_THROW(run(model, settings, options), TrialFault);
  options.onTrials = [](std::string_view) { throw std::runtime_error("the disk is full"); };
  settings.skipFailures = true;
  EXPECT_THROW(run(model, settings, options), std::runtime_error);

  Model workbook;
  workbook.add("A", Law::normal(0, 1));
  workbook.addCell("Twice", "B1");
  settings.describeTrials = false;
  options.openWorkbook = [] { return std::make_unique<Doubling>(); };
  EXPECT_NEAR(run(workbook, settings, options).results[0].moments.sd(), 2, 0.02);
}

}  // namespace
}  // namespace palvex
