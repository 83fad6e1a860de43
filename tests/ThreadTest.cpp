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
#include "Session.h"
#include "palvex/simulation.h"
#include "runtime/MessageBox.h"
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
  setMessageBox([](const std::string&) {});
  onThreads<std::string>([] {
    std::string answers;
    for (const Case& as : cases()) {
      for (const bool dynamic : {false, true}) {
        c_Distribution d = described(as, dynamic);
        for (const Member& member : members()) {
          try {
            answers += numberText(member.call(d)) + ' ';
          } catch (const std::exception& error) {
            answers += error.what();  // with its trace
          }
        }
      }
    }
    return answers;
  });
}

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
}

}  // namespace
}  // namespace palvex
