#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "simulation/Simulation.h"

namespace palvex::terminal {

// An office works out one trial at a time, so that several processors need several processes. Each
// of them opens the workbook itself and works out a part of the trials; this process draws the same
// numbers and takes from them what their workbooks answered. Results do not depend on how many
// there are.

/// The processes that share this one's trials. They run the same command, and end when this object
/// does.
class Helpers {
 public:
  /// Starts them. @throws Refusal
  explicit Helpers(unsigned count);
  Helpers(const Helpers&) = delete;
  Helpers& operator=(const Helpers&) = delete;
  ~Helpers();

  /// A workbook that answers what the helpers' workbooks did. The trials are to be worked out in
  /// their order, once or several times.
  [[nodiscard]] std::unique_ptr<simulation::Workbook> workbook(std::uint64_t trials) const;

 private:
  struct Process {
    int id;
    int pipe;  // what it writes
  };
  std::vector<Process> processes_;
};

/// Whether this process is a helper of another one, which then handles Ctrl-C for both.
[[nodiscard]] bool isHelper();

/// Ends a run when a helper's answers stop. No std::exception, since those fail a single trial,
/// which a run may skip.
struct HelperLost {};

/// A helper's work: its part of the trials, again and again, until nobody reads the answers any
/// more.
void help(const simulation::Model& model, const simulation::Settings& settings,
          std::unique_ptr<simulation::Workbook> cells);

/// A workbook that calls `begun` whenever a trial begins.
[[nodiscard]] std::unique_ptr<simulation::Workbook> counted(
    std::unique_ptr<simulation::Workbook> cells, const simulation::Model& model,
    std::function<void()> begun);

}  // namespace palvex::terminal
