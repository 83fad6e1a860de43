#include "hosts/terminal/CsvSheet.h"

#include <fmt/core.h>

#include "hosts/terminal/Range.h"
#include "simulation/Fault.h"

namespace palvex::terminal {

simulation::Sheet::Reference CsvSheet::refer(std::string_view text) const {
  const auto given = parseReference(text.substr(1));
  if (!given) {
    throw simulation::Fault(fmt::format(
        "'{}' is no reference; write =B3 for a cell, =A2:A200 for several, =[Name] for a row "
        "above.",
        text));
  }
  const Block block = sheet_->ended(*given);
  if (!sheet_->contains(block)) {
    throw simulation::Fault(fmt::format("'{}' is outside the sheet, which ends at {}{}.", text,
                                        columnName(sheet_->columns()), sheet_->rows()));
  }
  return {std::make_shared<Range>(sheet_, block), false};
}

}  // namespace palvex::terminal
