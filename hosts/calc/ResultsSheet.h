#pragma once

#include "hosts/calc/Workbook.h"
#include "simulation/Results.h"

namespace palvex::calc {

/// The percentiles that the results' curves are drawn through, and those that are listed.
[[nodiscard]] std::vector<double> curvePercents();

/// Whether a document can take a sheet of results. @throws Fault when it can not: a sentence
void checkTakesResults(const Document& document);

/// Writes the sheet "palvex results", anew or over an earlier one: trials and seed, the figures of
/// each result, its S-curve and its tornado. One step of the document's undo list.
void writeResults(const Document& document, const simulation::Results& results);

}  // namespace palvex::calc
