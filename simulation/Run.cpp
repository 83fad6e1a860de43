#include "simulation/Run.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace palvex::simulation {

namespace {

/// The threads of a run, and what they share.
class Crew {
 public:
  Crew(Simulation& simulation, const RunOptions& options, std::uint64_t threads)
      : simulation_(simulation), options_(options), mostPending_(2 * threads) {}

  void work(Worker& worker) {
    workOut([&](const Task& task) {
      return worker.work(task, [this] {
        report(Trials::most);
        return isStopped();
      });
    });
  }

  void work(const std::function<Block(const Task&)>& helper) {
    workOut([&](const Task& task) {
      report(Simulation::blockTrials);
      return std::optional(helper(task));
    });
  }

  /// Ends the run with the exception in flight, unless there was one before.
  void fail() noexcept {
    {
      const std::lock_guard lock(mutex_);
      if (!error_) error_ = std::current_exception();
      stopped_ = true;
    }
    changed_.notify_all();
  }

  void rethrow() const {
    if (error_) std::rethrow_exception(error_);
  }

 private:
  /// Works out blocks as long as there are some.
  /// @param blockOf  gives the block of a task, or nothing when the run was stopped
  template <class BlockOf>
  void workOut(const BlockOf& blockOf) {
    try {
      while (const auto task = nextTask()) {
        auto block = blockOf(*task);
        if (!block) break;
        const std::lock_guard lock(mutex_);
        simulation_.add(std::move(*block));
        stopped_ = stopped_ || simulation_.finished();
        changed_.notify_all();
      }
    } catch (...) {
      fail();
    }
    // A thread that found the run unfinished held the mutex until it began to wait: once the mutex
    // is free, the notification reaches it.
    { const std::lock_guard lock(mutex_); }
    changed_.notify_all();
  }

  /// Reports progress, when `trials` more are about to be worked out.
  void report(std::uint64_t trials) {
    if (!options_.progress) return;
    const std::lock_guard lock(mutex_);
    const std::uint64_t all = simulation_.settings().trials;
    options_.progress(std::min(begun_, all), all);
    begun_ += trials;
  }

  [[nodiscard]] bool isStopped() {
    if (options_.cancelled && options_.cancelled()) stopped_ = true;
    return stopped_;
  }

  /// Waits for a block to work out; nothing when there will be none.
  std::optional<Task> nextTask() {
    std::unique_lock lock(mutex_);
    for (;;) {
      if (isStopped()) return {};
      // So that blocks do not pile up while an early one takes long.
      if (simulation_.pending() < mostPending_) {
        if (auto task = simulation_.next()) return task;
      }
      changed_.wait(lock);
    }
  }

  Simulation& simulation_;
  const RunOptions& options_;
  std::uint64_t mostPending_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::uint64_t begun_ = 0;  // trials, about
  std::atomic<bool> stopped_ = false;
  std::exception_ptr error_;
};

}  // namespace

Results run(const Model& model, const Settings& settings, const RunOptions& options) {
  Simulation simulation(model, settings);
  simulation.onTrials(options.onTrials);
  const unsigned wanted =
      options.threads > 0 ? options.threads : std::max(1U, std::thread::hardware_concurrency());
  const auto threads = static_cast<unsigned>(std::min<std::uint64_t>(wanted, simulation.blocks()));

  std::vector<Worker> workers;
  workers.reserve(threads);
  for (unsigned i = 0; i < threads; ++i) {
    workers.emplace_back(simulation, options.openWorkbook ? options.openWorkbook() : nullptr);
  }
  Crew crew(simulation, options, threads + options.helpers.size());
  {
    std::vector<std::jthread> others;
    try {
      for (unsigned i = 1; i < threads; ++i) {
        others.emplace_back([&crew, &worker = workers[i]] { crew.work(worker); });
      }
      for (const auto& helper : options.helpers) {
        others.emplace_back([&crew, &helper] { crew.work(helper); });
      }
    } catch (const std::system_error&) {  // no more threads: fewer give the same bits
    } catch (...) {
      crew.fail();
    }
    crew.work(workers[0]);
  }
  crew.rethrow();
  return simulation.results();
}

}  // namespace palvex::simulation
