// The simulation library: what a run of the program (tests/simulation-check) does not reach.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <numbers>
#include <random>

#include "Allocation.h"
#include "palvex/simulation.h"

namespace {

std::atomic<int> threadsLeft = 1000;  // that the system is to give

}  // namespace

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument) noexcept {
  if (threadsLeft-- <= 0) return EAGAIN;
  static const auto real =
      reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  return real(thread, attributes, start, argument);
}

namespace palvex::simulation {
namespace {

using Cells = std::vector<std::vector<Variant>>;

/// A sheet in memory; "=@n" is its live cell n.
class FakeSheet : public Sheet {
 public:
  explicit FakeSheet(Cells cells) : cells_(std::move(cells)) {}

  [[nodiscard]] std::int32_t rows() const override {
    return static_cast<std::int32_t>(cells_.size());
  }
  [[nodiscard]] std::int32_t columns() const override { return 7; }
  [[nodiscard]] Variant at(std::int32_t row, std::int32_t column) const override {
    const auto& cells = cells_.at(static_cast<std::size_t>(row - 1));
    const auto place = static_cast<std::size_t>(column - 1);
    return place < cells.size() ? cells[place] : Variant();
  }
  [[nodiscard]] Reference refer(std::string_view text) const override {
    if (text.starts_with("=@")) return {Variant(), true};
    throw Fault("no such cell.");
  }

 private:
  Cells cells_;
};

TEST(Percentiles, AreExactHoweverManyValuesThereAre) {
  const std::vector<double> percents{0, 0.001, 5, 50, 50.01, 80, 99.999, 100};
  std::mt19937_64 random(1);
  std::exponential_distribution<double> smooth;
  const std::vector<std::function<double()>> laws{
      [&] { return smooth(random); },
      [&] { return std::floor(4 * smooth(random)); },                // many values are equal
      [&] { return random() % 100 == 0 ? 5 + smooth(random) : 0; },  // a rare event
      [] { return 7.0; }};
  for (const auto& law : laws) {
    for (const std::size_t n : {1UL, 1000UL, 131'071UL, 131'072UL, 3'000'000UL}) {
      std::vector<double> values(n);
      std::generate(values.begin(), values.end(), law);
      Percentiles percentiles(percents);
      for (std::size_t from = 0; from < n; from += 65'536) {
        Digest part = percentiles.blank();
        part.add(std::span(values).subspan(from, std::min<std::size_t>(65'536, n - from)));
        percentiles.add(std::move(part));
      }
      std::sort(values.begin(), values.end());
      for (std::size_t i = 0; i < percents.size(); ++i) {
        const auto found = percentiles.estimate(i);
        ASSERT_TRUE(found) << percents[i] << " of " << n;
        const auto [low, high] = intervalRanks(percents[i], n);
        EXPECT_EQ(found->value, values[percentileRank(percents[i], n) - 1]) << percents[i];
        EXPECT_EQ(found->low, values[low - 1]) << percents[i];
        EXPECT_EQ(found->high, values[high - 1]) << percents[i];
      }
      const Histogram histogram = percentiles.histogram();
      std::uint64_t counted = histogram.below + histogram.above;
      for (const std::uint64_t count : histogram.counts) counted += count;
      EXPECT_EQ(counted, n);
    }
  }
}

/// Answers a run of trials with rising values, so that the first ones tell nothing about the
/// others.
class RisingWorkbook : public Workbook {
 public:
  explicit RisingWorkbook(std::uint64_t trials) : trials_(trials) {}
  void put(std::size_t /*row*/, double /*value*/) override {}
  double read(std::size_t /*cell*/) override { return 0; }
  double result(std::size_t /*row*/) override { return static_cast<double>(next_++ % trials_); }

 private:
  std::uint64_t trials_;
  std::uint64_t next_ = 0;
};

TEST(Simulation, DrawsAgainWhenAPercentileWasMissed) {
  Model model;
  model.add("Input", Law::uniform(0, 1));
  model.addCell("Rising", "B1");
  Settings settings;
  settings.trials = 400'000;
  RunOptions options;
  options.threads = 1;
  options.openWorkbook = [&] { return std::make_unique<RisingWorkbook>(settings.trials); };
  const ResultStatistics result = run(model, settings, options).results.at(0);
  for (const auto& [percent, value, low, high] : result.percentiles) {
    const auto [lowRank, highRank] = intervalRanks(percent, settings.trials);
    EXPECT_EQ(value, percent * 4000 - 1);
    EXPECT_EQ(low, static_cast<double>(lowRank - 1));
    EXPECT_EQ(high, static_cast<double>(highRank - 1));
  }
  EXPECT_EQ(result.moments.count, 400'000);
  EXPECT_DOUBLE_EQ(result.moments.mean, 399'999 / 2.);
}

TEST(Simulation, BlocksWorkedOutElsewhereAndAnEarlyEnd) {
  Model model;
  model.add("Delay", Law::exponential(0.1), 0.4);
  Settings settings;
  settings.trials = 500'000;
  RunOptions options;
  options.threads = 1;
  const auto text = [](const Results& results) {
    std::string figures = std::to_string(results.trials);
    for (const auto& [percent, value, low, high] : results.results.at(0).percentiles)
      figures += ' ' + Variant(value).toText() + ' ' + Variant(high).toText();
    return figures + ' ' + Variant(results.results[0].moments.mean).toText();
  };
  const std::string alone = text(run(model, settings, options));
  const Simulation there(model, settings);
  Worker worker(there);
  std::atomic<int> helped = 0;
  options.helpers.emplace_back([&](const Task& task) {
    ++helped;
    return worker.work(task).value();
  });
  EXPECT_EQ(text(run(model, settings, options)), alone);
  EXPECT_GT(helped, 0);
  options.helpers = {[](const Task&) -> Block { throw std::runtime_error("a cable was pulled"); }};
  EXPECT_THROW(run(model, settings, options), std::runtime_error);

  // With threads that can not be started: on those that can.
  options.helpers.clear();
  options.threads = 4;
  for (const int given : {0, 2}) {
    threadsLeft = given;
    EXPECT_EQ(text(run(model, settings, options)), alone) << given;
    EXPECT_LT(threadsLeft, 0);
  }
  threadsLeft = 1000;
  options.threads = 1;

  // Ended after six blocks: as a run of that length.
  std::uint64_t begun = 0;
  options.progress = [&](std::uint64_t done, std::uint64_t) { begun = done; };
  options.cancelled = [&] { return begun >= 6 * Simulation::blockTrials; };
  const Results ended = run(model, settings, options);
  EXPECT_TRUE(ended.cancelled);
  EXPECT_EQ(ended.trials, 6 * Simulation::blockTrials);
  EXPECT_EQ(ended.results[0].settling.back().trials, ended.trials);
  settings.trials = ended.trials;
  EXPECT_EQ(text(run(model, settings)), text(ended));
}

TEST(Simulation, RefusesWhatCanNotBeSimulated) {
  const struct {
    const char* sentence;
    std::function<void(Model&, Settings&)> spoil;
  } cases[] = {
      {"there is no trial to simulate.", [](Model&, Settings& s) { s.trials = 0; }},
      {"there are more than 2^62 trials.", [](Model&, Settings& s) { s.trials = ~0ULL; }},
      {"a percentile of 101 is not between 0 and 100.",
       [](Model&, Settings& s) {
         s.percents = {50, 101};
       }},
      {"a percentile of -1 is not between 0 and 100.",
       [](Model&, Settings& s) { s.percents = {-1}; }},
      {"Row 2, B: a chance of 1.5 is not between 0 and 1.",
       [](Model& m, Settings&) { m.add("B", Law::uniform(0, 1), 1.5); }},
      {"Row 2, B: a chance of -0.5 is not between 0 and 1.",
       [](Model& m, Settings&) { m.add("B", Law::uniform(0, 1), -0.5); }},
  };
  for (const auto& [sentence, spoil] : cases) {
    Model model;
    model.add("A", Law::uniform(0, 1));
    Settings settings;
    try {
      spoil(model, settings);
      run(model, settings);
      ADD_FAILURE() << sentence;
    } catch (const Fault& fault) {
      EXPECT_STREQ(fault.what(), sentence);
    }
  }
  // Nothing counts where every trial fails.
  Model model;
  model.add("A", Law::uniform(-2, -1));
  model.addFormula("Root", "sqrt([A])");
  Settings settings;
  settings.skipFailures = true;
  const Results results = run(model, settings);
  EXPECT_EQ(results.trials, 0U);
  EXPECT_EQ(results.failures, settings.trials);
  EXPECT_TRUE(results.results.empty());
}

TEST(Percentiles, RanksOfTheirIntervals) {
  struct Case {
    double percent;
    std::uint64_t n, low, high;
  };
  // Binomial sums in 40 digits with mpmath: the largest l with P(B < l) <= 0.025 and the smallest u
  // with P(B >= u) <= 0.025.
  for (const auto& [percent, n, low, high] : {
           Case{50, 1, 1, 1},
           Case{50, 5, 1, 5},
           Case{50, 6, 1, 6},
           Case{50, 10, 2, 9},
           Case{5, 10, 1, 3},
           Case{95, 59, 52, 59},
           Case{5, 58, 1, 8},
           Case{80, 1000, 775, 825},
           Case{99.9, 1000, 997, 1000},
           Case{99.9, 3000, 2993, 3000},
           Case{2.5, 100000, 2404, 2598},
           Case{80, 1000000, 799216, 800785},
           Case{99.99, 1000000, 999880, 999920},
           Case{50, 100000000, 49990200, 50009801},
           Case{0.1, 100000000, 99381, 100621},
       }) {
    EXPECT_EQ(intervalRanks(percent, n), std::pair(low, high)) << percent << " of " << n;
  }
}

TEST(Correlations, NearestOnesThatCanBe) {
  // The example of Higham (2002), section 4: 1 and 0 become 0.7607 and 0.1573.
  Correlations correlations{{"A", "B", "C"}, {1, 1, 0, 1, 1, 1, 0, 1, 1}};
  const std::vector<std::string> inputs{"A", "B", "C"};
  EXPECT_THROW(Copula(correlations, inputs), Contradiction);
  ASSERT_TRUE(correlations.repair());
  const auto normal = [&](std::size_t i, std::size_t j) {
    return 2 * std::sin(std::numbers::pi * correlations.at(i, j) / 6);
  };
  EXPECT_NEAR(normal(0, 1), 0.7607, 1e-4);
  EXPECT_NEAR(normal(1, 2), 0.7607, 1e-4);
  EXPECT_NEAR(normal(0, 2), 0.1573, 1e-4);
  EXPECT_NO_THROW(Copula(correlations, inputs));
  EXPECT_FALSE(correlations.repair());
}

TEST(Correlations, WrongTables) {
  struct Case {
    Cells cells;
    const char* sentence;
  };
  const std::vector<Case> cases{
      {{}, "there are no names in the first row."},
      {{{"", "A", "A"}}, "A stands twice in the first row."},
      {{{"", "A"}, {"B", 1}}, "'B' in the first column does not stand in the first row."},
      {{{"", "A"}, {"A", 1}, {"A", 1}}, "A stands twice in the first column."},
      {{{"", "A", "B"}, {"A", 1, 0.5}}, "B does not stand in the first column."},
      {{{"# ranks"}, {}, {"", "A", "B"}, {"A", 1, 0.5}, {"B", "", 1}},
       "the correlation of B with A is not a number."},
      {{{"", "A", "B"}, {"A", 1, 0.5}, {"B", {}, 1}},
       "the correlation of B with A is not a number."},
      {{{"", "A", "B"}, {"A", 1, -2}, {"B", -2, 1}},
       "the correlation of A with B, -2, is not between -1 and 1."},
      {{{"", "Elsewhere"}, {"Elsewhere", 1}}, "there is no input 'Elsewhere'."},
      {{{"", "A", "B"}, {"A", 1, 0.5}, {"B", 0.4, 1}},
       "the correlations are not symmetric: A with B 0.5, the other way round 0.4."},
      {{{"", "A", "B"}, {"A", 1, 2}, {"B", 2, 1}},
       "the correlation of A with B, 2, is not between -1 and 1."},
      {{{"", "A"}, {"A", 0.9}}, "the correlation of A with itself is not 1."},
      {{{"", "Prize"}, {"Prize", 1}}, "there is no input 'Prize'; did you mean Price?"},
  };
  const std::vector<std::string> inputs{"Price", "A", "B"};
  for (const auto& [cells, sentence] : cases) {
    try {
      const Copula copula(Correlations::fromSheet(FakeSheet(cells)), inputs);
      ADD_FAILURE() << sentence;
    } catch (const Fault& fault) {
      EXPECT_STREQ(fault.what(), sentence);
    }
  }
}

/// Has two cells of its own: "=@0", twice what the first row drew; and its result, their sum. Both
/// fail for some draws.
class DoublingWorkbook : public Workbook {
 public:
  void put(std::size_t row, double value) override { values_.at(row) = value; }
  double read(std::size_t /*cell*/) override {
    if (values_[0] > 0.9) throw std::runtime_error("the cell holds an error value.");
    return 2 * values_[0];
  }
  double result(std::size_t /*row*/) override {
    if (values_[0] < 0.05) throw std::runtime_error("the sum holds an error value.");
    return values_[0] + values_[1];
  }

 private:
  std::array<double, 2> values_{};
};

const FakeSheet doublingSheet({{"Name", "Type", "Param1", "Param2", "LTL", "Cell"},
                               {"First", "Uniform", 0, 1, {}, "B1"},
                               {"Second", "Uniform", "=@0", "=@0", {}, "B2"},
                               {"Sum", {}, {}, {}, {}, "B3"},
                               {"Trials", {}, 500},
                               {"Seed", {}, 7},
                               {"Sampling", {}, "lhs"}});

TEST(Workbook, IsReadInEachTrial) {
  const Model model = Model::fromWorkbook(doublingSheet);
  EXPECT_EQ(model.settings().at("trials"), Variant(500));
  EXPECT_EQ(model.settings().at("seed"), Variant(7));
  EXPECT_EQ(model.settings().at("sampling"), Variant("lhs"));
  EXPECT_EQ(model.cells().size(), 2U);
  Settings settings;
  settings.trials = 2000;
  settings.describeTrials = settings.skipFailures = true;
  std::string text;
  RunOptions options;
  options.openWorkbook = [] { return std::make_unique<DoublingWorkbook>(); };
  options.onTrials = [&](std::string_view lines) { text += lines; };
  const Results results = run(model, settings, options);
  EXPECT_EQ(results.trials + results.failures, 2000U);
  EXPECT_NEAR(static_cast<double>(results.failures), 300, 60);
  std::istringstream lines(text);
  double first = 0, second = 0, sum = 0;
  char comma = 0;
  std::uint64_t count = 0;
  for (; lines >> first >> comma >> second >> comma >> sum; ++count) {
    ASSERT_EQ(second, 2 * first);
    ASSERT_EQ(sum, first + second);
  }
  EXPECT_EQ(count, results.trials);

  settings.skipFailures = false;
  EXPECT_THROW(run(model, settings, options), TrialFault);
  options.openWorkbook = {};
  try {
    run(model, settings, options);
    ADD_FAILURE() << "a cell was read without a workbook";
  } catch (const TrialFault& fault) {
    EXPECT_STREQ(fault.what(),
                 "Row 3, Second, trial 1: there is no workbook to read the cell from.");
  }
  const std::vector<Variant> head{"Name", "Type", "Param1", "Param2", "LTL", "Cell"};
  const std::pair<std::vector<Variant>, const char*> wrong[] = {
      {{"A", "Uniform", 0, 1}, "Row 2, A: the cell that receives the draw is missing."},
      {{"A"}, "Row 2, A: there is neither a type nor a formula."},
  };
  for (const auto& [row, sentence] : wrong) {
    try {
      Model::fromWorkbook(FakeSheet({head, row}));
      ADD_FAILURE() << sentence;
    } catch (const Fault& fault) {
      EXPECT_STREQ(fault.what(), sentence);
    }
  }
}

// A run without memory ends so, and neither counts that as a trial that failed nor spoils its
// model.
TEST(Simulation, EndsWithoutMemoryAndRunsAgain) {
  const auto untouched = [](const Model& model, const Model& fresh) {
    EXPECT_EQ(model.rows().size(), fresh.rows().size());
    EXPECT_EQ(model.inputs().size() + model.results().size(), model.rows().size());
    for (const std::size_t row : model.results())
      EXPECT_EQ(model.rows()[row].name, fresh.rows()[row].name);
  };
  const auto add = [](Model& model) { return model.add("A", Law::normal(0, 1)), 0; };
  const auto addFormula = [](Model& model) {
    return model.addFormula("Sum", "[A] * 2 + max([A], 1)"), 0;
  };
  const auto withInput = [&] {
    Model model;
    add(model);
    return model;
  };
  allocation::failEach([] { return Model(); }, add, untouched);
  allocation::failEach(withInput, addFormula, untouched);
  Settings settings;
  settings.trials = 20;
  settings.describeTrials = settings.skipFailures = true;
  RunOptions options;
  options.openWorkbook = [] { return std::make_unique<DoublingWorkbook>(); };
  std::size_t text = 0;
  options.onTrials = [&](std::string_view lines) { text = lines.size(); };
  const std::size_t allocations = allocation::failEach(
      [] { return Model::fromWorkbook(doublingSheet); },
      [&](const Model& model) {
        const Results results = run(model, settings, options);
        return results.results[0].moments.mean + static_cast<double>(text + results.failures);
      },
      untouched);
  EXPECT_GT(allocations, 100U);
  std::printf("%zu allocations failed, twice each\n", allocations);
}

}  // namespace
}  // namespace palvex::simulation
