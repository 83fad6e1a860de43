#pragma once

#include <string>

#include "simulation/Model.h"
#include "simulation/Results.h"

namespace palvex::terminal {

/// What a report says about the run besides its results.
struct RunDescription {
  std::string file;     // of the table, as it was named
  std::string repeat;   // the command line that gives the same results
  std::string version;  // of palvex
};

/// The results of a simulation as one HTML page for whoever decides by them: it needs no other
/// file and no network, follows the reader's light or dark scheme, and prints on A4.
///
/// For each result: what to expect in a sentence, a histogram and an S-curve with mean and
/// percentiles, the inputs that move it most, a table of figures, and how mean and P80 settled over
/// the trials. At the end the inputs, each with a picture of its law and of what its limits cut.
[[nodiscard]] std::string reportOf(const simulation::Model& model,
                                   const simulation::Results& results, const RunDescription& run);

}  // namespace palvex::terminal
