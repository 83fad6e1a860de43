#pragma once

#include <stdexcept>

namespace palvex::simulation {

/// What keeps a model from being simulated, in one sentence for people.
struct Fault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A trial that failed, in one sentence that names the trial (from 1), the row, and the values that
/// went in.
struct TrialFault : Fault {
  using Fault::Fault;
};

}  // namespace palvex::simulation
