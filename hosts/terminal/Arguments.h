#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/c_Distribution.h"
#include "hosts/terminal/Table.h"
#include "hosts/terminal/Worksheet.h"

namespace palvex::terminal {

/// The options of every command that gives a result.
struct ResultOptions {
  Format format = Format::people;

  void addTo(CLI::App& command);
};

/// The arguments that say what distribution is meant: TYPE PARAMETER... --ltl --utl --sheet.
struct DistributionArguments {
  /// One parameter or limit: how it was written, and as the engine receives it.
  struct Item {
    std::string name;
    std::string given;
    Variant value;
  };

  void addTo(CLI::App& command);

  /// Hands type, parameters and limits to `distribution`.
  /// @returns the parameters and the limits that were given
  /// @throws Refusal for an unknown type
  /// @throws UsageError for a wrong number of parameters or a wrong reference
  /// @throws SheetError
  std::vector<Item> set(c_Distribution& distribution) const;

  /// Likewise, and lets the distribution check them.
  /// @throws Refusal also when it finds a fault
  std::vector<Item> setChecked(c_Distribution& distribution) const;

  std::string type;
  std::vector<std::string> parameters;
  std::string lowerLimit;
  std::string upperLimit;
  std::string sheetFile;
};

/// Sets the type.
/// @throws Refusal for an unknown one
void setType(c_Distribution& distribution, const std::string& type);

/// What a parameter or limit is as a variant: "=B3" or "=A2:A200" a range of the sheet, another
/// text that reads as a number a number, anything else a text.
/// @param sheet  null when no sheet was given
/// @throws UsageError for a wrong reference
Variant argumentValue(const std::string& argument, const std::shared_ptr<const Worksheet>& sheet);

/// What a parameter or limit holds: itself, or the content of its range.
Variant content(const Variant& value);

/// The content as a table shows it: a number, a text, or how many cells there are.
Table::Cell shownContent(const Variant& value);

/// The finite number that the argument of `option` spells.
/// @throws UsageError
double numberArgument(const std::string& option, const std::string& argument);

/// The whole number in [least, most] that the argument of `option` spells.
/// @throws UsageError
std::uint64_t countArgument(const std::string& option, const std::string& argument,
                            std::uint64_t least, std::uint64_t most);

}  // namespace palvex::terminal
