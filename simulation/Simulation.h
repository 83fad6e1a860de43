#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulation/Correlations.h"
#include "simulation/Model.h"
#include "simulation/Percentiles.h"
#include "simulation/Results.h"
#include "simulation/Sampling.h"
#include "simulation/Statistics.h"
#include "simulation/Trials.h"
#include "simulation/Workbook.h"

namespace palvex::simulation {

/// What is to be simulated beside the model.
struct Settings {
  std::uint64_t trials = 10'000;                           ///< from 1 to 2^62
  std::uint64_t seed = 1;                                  ///< the same seed gives the same draws
  Sampling sampling = Sampling::random;                    ///< how inputs are drawn
  std::optional<Correlations> correlations;                ///< none: the inputs are independent
  std::vector<double> percents = {5, 10, 50, 80, 90, 95};  ///< from 0 to 100, in any order
  /// Whether trials that fail are left out, instead of ending the run with a TrialFault.
  bool skipFailures = false;
  /// Stop when the 95 % interval of each percentile is narrower than this share of its value.
  std::optional<double> until;
  /// Whether there is to be a line of text for each trial, see Simulation::onTrials.
  bool describeTrials = false;
};

/// Sums of the results over the trials in which an input lies in one of the positionCells equally
/// probable cells of its distribution.
struct CellSums {
  std::vector<std::uint64_t> counts;  ///< trials, [input][cell]
  std::vector<double> sums;           ///< of the results, [result][input][cell]

  /// Joins the sums of later trials.
  void add(const CellSums& later);
};

/// One block of trials to be worked out, anywhere and in any order.
struct Task {
  std::uint64_t block = 0;   ///< its number, from 0
  int pass = 1;              ///< 2, ... when trials are drawn again because a percentile was missed
  bool statistics = true;    ///< false when only percentiles are still missing
  std::uint64_t sample = 0;  ///< how many values of each row are asked for, for rank correlations
  std::shared_ptr<const std::vector<Digest>> blanks;  ///< what each result is to be added to
};

/// What a block of trials is reduced to.
struct Block {
  std::uint64_t number = 0;                 ///< that of the Task
  int pass = 1;                             ///< that of the Task
  std::uint64_t trials = 0;                 ///< how many did not fail
  std::uint64_t failures = 0;               ///< how many failed
  std::string fault;                        ///< why the first one failed, in one sentence
  std::vector<Moments> moments;             ///< of each row of the model
  CellSums cells;                           ///< empty without Task::statistics
  std::vector<std::vector<double>> sample;  ///< values of each row; empty without Task::sample
  std::vector<Digest> digests;              ///< of each result
  std::string text;                         ///< see Settings::describeTrials
};

/// The coordinator of a simulation: it deals out blocks of trials and combines their results in the
/// blocks' order. The results therefore do not depend on which thread or process works a block out,
/// nor when.
///
///     Simulation simulation(model, settings);
///     Worker worker(simulation);  // one for each thread or process
///     while (const auto task = simulation.next()) simulation.add(*worker.work(*task));
///     Results results = simulation.results();
class Simulation {
 public:
  /// Trials in each block but the last.
  static constexpr std::uint64_t blockTrials = 65'536;
  /// The first trials, which rank correlations are made from.
  static constexpr std::uint64_t rankTrials = 100'000;

  /// @param model  is to outlive the simulation
  /// @throws Fault
  Simulation(const Model& model, Settings settings);

  /// What is simulated.
  [[nodiscard]] const Model& model() const { return model_; }
  /// How it is simulated.
  [[nodiscard]] const Settings& settings() const { return settings_; }
  /// Draws the uniform numbers of any trial.
  [[nodiscard]] const Sampler& sampler() const { return sampler_; }
  /// Correlates them; null for independent inputs.
  [[nodiscard]] const Copula* copula() const { return copula_ ? &*copula_ : nullptr; }

  /// The next block to work out; nothing while all are dealt out. Then results may still come that
  /// make further blocks necessary, until it is finished.
  std::optional<Task> next();
  /// Takes a block that was worked out; in any order.
  /// @throws TrialFault when a trial failed: the first one of all
  void add(Block block);
  /// Whether all results are known: then no further block is needed.
  [[nodiscard]] bool finished() const { return complete_; }
  /// Blocks that all trials make.
  [[nodiscard]] std::uint64_t blocks() const { return blocks_; }
  /// Blocks that were dealt out and are not yet combined.
  [[nodiscard]] std::uint64_t pending() const { return dealt_ - combined_; }

  /// Receives the text of the trials, block by block in their order.
  void onTrials(std::function<void(std::string_view text)> take) { takeText_ = std::move(take); }

  /// Of all blocks that are combined: complete once it is finished.
  Results results();

 private:
  void combine(Block block);
  void addSample(Block& block);
  void observe();  // how the results have settled
  void settle(std::uint64_t trials);
  [[nodiscard]] bool narrowEnough();
  void endPass();
  void renewBlanks();
  void startPercentiles();
  [[nodiscard]] std::uint64_t total() const {
    return static_cast<std::uint64_t>(moments_[0].count);
  }
  [[nodiscard]] Percentile percentile(std::size_t result, double percent);
  [[nodiscard]] std::vector<std::vector<Sensitivity>> sensitivities() const;  // of each result

  const Model& model_;
  Settings settings_;
  Sampler sampler_;
  std::optional<Copula> copula_;
  std::function<void(std::string_view)> takeText_;

  std::uint64_t blocks_;  // at most
  std::uint64_t dealt_ = 0;
  std::uint64_t combined_ = 0;
  std::map<std::uint64_t, Block> waiting_;  // for blocks before them
  int pass_ = 1;
  double reach_ = Percentiles::usualReach;
  bool settled_ = false;
  bool complete_ = false;

  std::uint64_t failures_ = 0;
  std::vector<Moments> moments_;  // of each row
  CellSums cells_;
  std::vector<std::vector<double>> sample_;  // of each row
  std::vector<double> percents_;             // asked for and marks, in order, each once
  std::vector<Percentiles> percentiles_;     // of each result
  std::shared_ptr<const std::vector<Digest>> blanks_;
  std::uint64_t nextObservation_ = 1;            // combined blocks
  std::vector<std::vector<Settling>> settling_;  // of each result
};

/// Works out blocks on one thread.
class Worker {
 public:
  /// @param simulation  is to outlive the worker; the worker reads only what never changes in it
  explicit Worker(const Simulation& simulation, std::unique_ptr<Workbook> workbook = nullptr);

  /// @param stopped  asked before every Trials::most trials
  /// @returns nothing when it was stopped
  std::optional<Block> work(const Task& task, const std::function<bool()>& stopped = {});

 private:
  void reduce(const Task& task, Block& block) const;
  void describe(std::string& text) const;

  const Simulation& simulation_;
  std::unique_ptr<Workbook> workbook_;
  Trials trials_;
};

}  // namespace palvex::simulation
