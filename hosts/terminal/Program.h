#pragma once

#include <functional>

#include "hosts/terminal/Faults.h"
#include "simulation/Run.h"

namespace palvex::terminal {

/// What a program does with simulations: the one at the terminal works them out itself, the one
/// for several machines shares them out, or works for another.
struct Role {
  std::function<simulation::Results(const simulation::Model&, const simulation::Settings&,
                                    const simulation::RunOptions&)>
      simulate = simulation::run;
  bool writes = true;  // whether it writes files; if not, `simulate` never returns
  bool alone = true;   // whether `simulate` works out all trials here, in their order
};

/// The engine on the command line. The worksheet is a CSV file, the random numbers are the
/// program's own.
ExitCode runProgram(int argc, char** argv, const Role& role = {});

}  // namespace palvex::terminal
