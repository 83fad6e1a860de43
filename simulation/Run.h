#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "simulation/Simulation.h"

namespace palvex::simulation {

/// How a simulation is run on this machine.
struct RunOptions {
  unsigned threads = 0;  ///< at most; 0 for as many as the machine has
  /// Called often, from any thread but never from two at once, with the trials done and all.
  std::function<void(std::uint64_t done, std::uint64_t all)> progress;
  /// Asked now and then, from any thread; true ends the run with the whole blocks done so far.
  std::function<bool()> cancelled;
  /// With Settings::describeTrials: receives the values of the trials that count, in their order,
  /// as lines of comma-separated values, a column for each row of the model.
  std::function<void(std::string_view text)> onTrials;
  /// Work out blocks elsewhere, such as on other machines: each is called on a thread of its own,
  /// again and again, with a model and settings there that are the same as here. What one throws
  /// ends the run.
  std::vector<std::function<Block(const Task&)>> helpers;
  /// Opens the workbook of one thread; called once for each. May be left empty for a model that has
  /// no cells of a workbook.
  std::function<std::unique_ptr<Workbook>()> openWorkbook;
};

/// Runs a simulation. The results are the same to the bit for any number of threads.
/// @throws Fault       for a model or settings that can not be simulated
/// @throws TrialFault  for the first trial that fails
Results run(const Model& model, const Settings& settings, const RunOptions& options = {});

}  // namespace palvex::simulation
