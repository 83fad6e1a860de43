#pragma once

#include <string>

#include "hosts/terminal/Table.h"
#include "simulation/Model.h"
#include "simulation/Results.h"

namespace palvex::terminal {

/// The results of a simulation as a text: for people a table of figures for each result and the
/// inputs that it depends on most; as comma-separated values a line for each result; as JSON
/// everything.
[[nodiscard]] std::string resultsText(const simulation::Results& results, Format format);

/// The first line of a file of trials: the names of the rows.
[[nodiscard]] std::string trialsHead(const simulation::Model& model);

}  // namespace palvex::terminal
