#include "simulation/Simulation.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "simulation/Sensitivity.h"

namespace palvex::simulation {

namespace {

constexpr double undefined = std::numeric_limits<double>::quiet_NaN();
constexpr std::array<double, 4> markPercents{10, 50, 80, 90};
constexpr std::size_t shares = 32;
constexpr std::size_t tenth = positionCells / 10;

/// Numbers of trials within the first block at which it is noted how the results have settled.
constexpr std::array<std::uint64_t, 9> earlyObservations{100,   200,    500,    1'000, 2'000,
                                                         5'000, 10'000, 20'000, 50'000};

void checkPercents(const std::vector<double>& percents) {
  for (const double percent : percents) {
    if (!(percent >= 0 && percent <= 100)) {
      throw Fault("a percentile of " + Variant(percent).toText() + " is not between 0 and 100.");
    }
  }
}

std::vector<double> sortedOnce(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end()), values.end());
  return values;
}

}  // namespace

void CellSums::add(const CellSums& later) {
  for (std::size_t i = 0; i < counts.size(); ++i) counts[i] += later.counts[i];
  for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += later.sums[i];
}

Simulation::Simulation(const Model& model, Settings settings)
    : model_(model),
      settings_(std::move(settings)),
      sampler_(settings_.sampling, settings_.trials, settings_.seed, model.inputs().size()),
      blocks_((settings_.trials + blockTrials - 1) / blockTrials),
      moments_(model.rows().size()),
      sample_(model.rows().size()),
      settling_(model.results().size()) {
  model.check();
  if (settings_.trials == 0) throw Fault("there is no trial to simulate.");
  if (settings_.trials > std::uint64_t{1} << 62) throw Fault("there are more than 2^62 trials.");
  checkPercents(settings_.percents);
  settings_.percents = sortedOnce(std::move(settings_.percents));
  if (settings_.correlations) copula_.emplace(*settings_.correlations, model.inputNames());
  percents_ = settings_.percents;
  percents_.insert(percents_.end(), markPercents.begin(), markPercents.end());
  percents_ = sortedOnce(std::move(percents_));
  const std::size_t inputs = model.inputs().size();
  cells_.counts.resize(inputs * positionCells);
  cells_.sums.resize(model.results().size() * inputs * positionCells);
  startPercentiles();
}

void Simulation::startPercentiles() {
  percentiles_.assign(model_.results().size(), Percentiles(percents_, reach_));
  renewBlanks();
}

void Simulation::renewBlanks() {
  auto blanks = std::make_shared<std::vector<Digest>>();
  for (const Percentiles& result : percentiles_) blanks->push_back(result.blank());
  blanks_ = std::move(blanks);
}

std::optional<Task> Simulation::next() {
  if (complete_ || dealt_ == blocks_) return {};
  Task task;
  task.block = dealt_++;
  task.pass = pass_;
  task.statistics = pass_ == 1;
  if (pass_ == 1) {
    // Without failures it is known how many trials the blocks before contribute.
    const std::uint64_t before =
        settings_.skipFailures ? sample_[0].size() : task.block * blockTrials;
    task.sample = rankTrials - std::min(before, rankTrials);
  }
  task.blanks = blanks_;
  return task;
}

void Simulation::add(Block block) {
  if (block.pass != pass_) return;  // of an earlier pass
  const std::uint64_t number = block.number;
  waiting_.emplace(number, std::move(block));
  while (!complete_ && !waiting_.empty() && waiting_.begin()->first == combined_) {
    combine(std::move(waiting_.extract(waiting_.begin()).mapped()));
    if (combined_ == blocks_) endPass();
  }
}

void Simulation::combine(Block block) {
  if (!block.fault.empty() && !settings_.skipFailures) throw TrialFault(block.fault);
  ++combined_;
  for (std::size_t i = 0; i < percentiles_.size(); ++i) {
    percentiles_[i].add(std::move(block.digests[i]));
  }
  if (pass_ == 1) {
    failures_ += block.failures;
    for (std::size_t i = 0; i < moments_.size(); ++i) moments_[i].add(block.moments[i]);
    cells_.add(block.cells);
    addSample(block);
    if (takeText_ && !block.text.empty()) takeText_(block.text);
    if (combined_ == nextObservation_) observe();
  }
  renewBlanks();
}

void Simulation::addSample(Block& block) {
  if (block.sample.empty()) return;
  if (sample_[0].empty()) {
    sample_ = std::move(block.sample);
    return;
  }
  for (std::size_t i = 0; i < sample_.size(); ++i) {
    const std::size_t wanted = rankTrials - sample_[i].size();
    const auto first = block.sample[i].begin();
    const auto count = static_cast<std::ptrdiff_t>(std::min(wanted, block.sample[i].size()));
    sample_[i].insert(sample_[i].end(), first, first + count);
  }
}

void Simulation::observe() {
  // The next time is when a quarter more blocks are combined.
  nextObservation_ = combined_ + (combined_ + 3) / 4;
  if (total() == 0) return;
  for (const std::uint64_t trials : earlyObservations) {
    const auto& noted = settling_[0];
    if (trials < total() && (noted.empty() || noted.back().trials < trials)) settle(trials);
  }
  settle(total());
  if (settings_.until && narrowEnough()) {
    settled_ = true;
    blocks_ = combined_;
  }
}

void Simulation::settle(std::uint64_t trials) {
  for (std::size_t i = 0; i < settling_.size(); ++i) {
    if (trials == total()) {
      const Moments& moments = moments_[model_.results()[i]];
      settling_[i].push_back({trials, moments.mean, moments.standardError(), percentile(i, 80)});
      continue;
    }
    const std::span<const double> pilot = percentiles_[i].pilot();
    if (trials > pilot.size()) continue;
    const std::span<const double> values = pilot.first(trials);
    Percentiles early(std::vector<double>{80});
    Digest digest;
    digest.add(values);
    early.add(std::move(digest));
    const Moments moments = Moments::of(values);
    const auto [value, low, high] = *early.estimate(0);
    settling_[i].push_back({trials, moments.mean, moments.standardError(), {80, value, low, high}});
  }
}

bool Simulation::narrowEnough() {
  for (std::size_t i = 0; i < percentiles_.size(); ++i) {
    for (const double percent : settings_.percents) {
      const auto [asked, value, low, high] = percentile(i, percent);
      if (!(high - low < *settings_.until * std::abs(value))) return false;
    }
  }
  return true;
}

void Simulation::endPass() {
  bool missed = false;
  for (std::size_t i = 0; i < percentiles_.size(); ++i) {
    for (const double percent : percents_) {
      missed = missed || (total() > 0 && std::isnan(percentile(i, percent).value));
    }
  }
  if (!missed) {
    complete_ = true;
    return;
  }
  // The trials are drawn again, with wider windows.
  ++pass_;
  reach_ *= 4;
  dealt_ = combined_ = 0;
  waiting_.clear();
  startPercentiles();
}

Percentile Simulation::percentile(std::size_t result, double percent) {
  const auto place = std::lower_bound(percents_.begin(), percents_.end(), percent);
  const auto index = static_cast<std::size_t>(place - percents_.begin());
  const auto found = percentiles_[result].estimate(index);
  if (!found) return {percent, undefined, undefined, undefined};
  return {percent, found->value, found->low, found->high};
}

std::vector<std::vector<Sensitivity>> Simulation::sensitivities() const {
  const std::span<const std::size_t> inputs = model_.inputs();
  const std::span<const std::size_t> results = model_.results();
  Sorter sorter;
  std::vector<std::vector<double>> ranksOfResults;
  for (const std::size_t row : results) ranksOfResults.push_back(ranksOf(sample_[row], sorter));

  std::vector<std::vector<Sensitivity>> all(results.size());
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const std::vector<double> ranks = ranksOf(sample_[inputs[i]], sorter);
    for (std::size_t result = 0; result < results.size(); ++result) {
      const std::size_t column = result * inputs.size() + i;
      const Conditional conditional{
          std::span(cells_.counts).subspan(i * positionCells, positionCells),
          std::span(cells_.sums).subspan(column * positionCells, positionCells)};
      all[result].push_back({correlation(ranks, ranksOfResults[result]),
                             conditional.varianceShare(shares, moments_[results[result]]),
                             conditional.mean(0, tenth),
                             conditional.mean(positionCells - tenth, positionCells)});
    }
  }
  return all;
}

Results Simulation::results() {
  Results all;
  all.trials = total();
  all.failures = failures_;
  all.asked = settings_.trials;
  all.seed = settings_.seed;
  all.sampling = settings_.sampling;
  all.rankTrials = sample_[0].size();
  all.cancelled = !complete_;
  all.settled = settled_;
  for (const std::size_t input : model_.inputs()) {
    const Row& row = model_.rows()[input];
    all.inputs.push_back({row.name, row.type, row.unit, moments_[input]});
  }
  if (all.trials > 0 && (settling_[0].empty() || settling_[0].back().trials != all.trials)) {
    settle(all.trials);
  }
  if (all.trials == 0) return all;
  std::vector<std::vector<Sensitivity>> sensitivities = this->sensitivities();
  for (std::size_t i = 0; i < percentiles_.size(); ++i) {
    const Row& row = model_.rows()[model_.results()[i]];
    ResultStatistics result{row.name, row.unit, moments_[model_.results()[i]], {}, {}, {}, {}, {}};
    for (const double percent : settings_.percents) {
      result.percentiles.push_back(percentile(i, percent));
    }
    for (const double percent : markPercents) result.marks.push_back(percentile(i, percent));
    result.sensitivities = std::move(sensitivities[i]);
    result.histogram = percentiles_[i].histogram();
    result.settling = settling_[i];
    all.results.push_back(std::move(result));
  }
  return all;
}

Worker::Worker(const Simulation& simulation, std::unique_ptr<Workbook> workbook)
    : simulation_(simulation),
      workbook_(std::move(workbook)),
      trials_(simulation.model(), simulation.sampler(), simulation.copula(), workbook_.get()) {}

std::optional<Block> Worker::work(const Task& task, const std::function<bool()>& stopped) {
  const Model& model = simulation_.model();
  const std::uint64_t first = task.block * Simulation::blockTrials;
  const std::uint64_t end =
      std::min(first + Simulation::blockTrials, simulation_.settings().trials);
  Block block;
  block.number = task.block;
  block.pass = task.pass;
  block.digests = *task.blanks;
  if (task.statistics) {
    block.moments.resize(model.rows().size());
    block.cells.counts.resize(model.inputs().size() * positionCells);
    block.cells.sums.resize(model.results().size() * model.inputs().size() * positionCells);
  }
  const auto most = static_cast<std::size_t>(end - first);
  for (Digest& digest : block.digests) {
    if (digest.wanted.empty()) digest.values.reserve(most);
  }
  if (task.sample > 0) {
    block.sample.resize(model.rows().size());
    // Room for later blocks, too, since the first one's columns become those of the run.
    const std::uint64_t room = std::min(task.sample, simulation_.settings().trials - first);
    for (auto& column : block.sample) column.reserve(static_cast<std::size_t>(room));
  }

  for (std::uint64_t trial = first; trial < end; trial += Trials::most) {
    if (stopped && stopped()) return {};
    trials_.work(trial,
                 static_cast<std::size_t>(std::min<std::uint64_t>(end - trial, Trials::most)));
    block.trials += trials_.count();
    block.failures += trials_.failures();
    if (trials_.failures() > 0 && block.fault.empty()) {
      block.fault = trials_.fault();
      if (!simulation_.settings().skipFailures) return block;
    }
    reduce(task, block);
  }
  return block;
}

void Worker::reduce(const Task& task, Block& block) const {
  const Model& model = simulation_.model();
  const std::span<const std::size_t> results = model.results();
  for (std::size_t i = 0; i < results.size(); ++i) {
    block.digests[i].add(trials_.values(results[i]));
  }
  if (!task.statistics) return;

  for (std::size_t row = 0; row < block.moments.size(); ++row) {
    block.moments[row].add(Moments::of(trials_.values(row)));
  }
  const std::size_t inputs = model.inputs().size();
  for (std::size_t input = 0; input < inputs; ++input) {
    const std::span<const std::uint8_t> cells = trials_.cells(input);
    std::uint64_t* const counts = block.cells.counts.data() + input * positionCells;
    for (const std::uint8_t cell : cells) ++counts[cell];
    for (std::size_t i = 0; i < results.size(); ++i) {
      double* const sums = block.cells.sums.data() + (i * inputs + input) * positionCells;
      const double* const values = trials_.values(results[i]).data();
      for (std::size_t t = 0; t < cells.size(); ++t) sums[cells[t]] += values[t];
    }
  }
  for (std::size_t row = 0; row < block.sample.size(); ++row) {
    std::vector<double>& column = block.sample[row];
    const std::span<const double> values = trials_.values(row);
    const std::size_t wanted =
        std::min(values.size(), static_cast<std::size_t>(task.sample) - column.size());
    column.insert(column.end(), values.begin(),
                  values.begin() + static_cast<std::ptrdiff_t>(wanted));
  }
  if (simulation_.settings().describeTrials) describe(block.text);
}

void Worker::describe(std::string& text) const {
  const std::size_t rows = simulation_.model().rows().size();
  std::array<char, 32> digits;
  for (std::size_t t = 0; t < trials_.count(); ++t) {
    for (std::size_t row = 0; row < rows; ++row) {
      const auto end =
          std::to_chars(digits.data(), digits.data() + digits.size(), trials_.values(row)[t]);
      text.append(digits.data(), end.ptr).append(1, row + 1 < rows ? ',' : '\n');
    }
  }
}

}  // namespace palvex::simulation
