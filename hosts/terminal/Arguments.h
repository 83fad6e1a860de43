#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/LawTypes.h"
#include "engine/c_Distribution.h"
#include "hosts/terminal/Faults.h"
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
    bool isLimit = false;

    /// The value as a table shows it: a number, a text, how many cells there are, or what an empty
    /// cell counts as.
    [[nodiscard]] Table::Cell shown() const;
  };

  void addTo(CLI::App& command);

  /// The blocks of the worksheet that the parameters and limits refer to.
  [[nodiscard]] std::vector<Block> references() const;

  /// The parameters and the limits that were given. The type's name becomes the engine's; the
  /// worksheet is read if it was not yet.
  /// @throws Refusal for an unknown type
  /// @throws UsageError for a wrong number of parameters or a wrong reference
  /// @throws SheetError
  std::vector<Item> read();

  /// The law of the items that were read, with a note on standard error where a fitted curve is far
  /// from what was asked for.
  /// @throws Refusal with the engine's sentence
  [[nodiscard]] Law law(const std::vector<Item>& items) const;

  std::string type;
  std::vector<std::string> parameters;
  std::string lowerLimit;
  std::string upperLimit;
  std::string sheetFile;
  std::shared_ptr<const Worksheet> sheet;  // once it was read
};

/// Reads the worksheet of each distribution that has one, each file once.
/// @throws SheetError
void readSheets(std::span<DistributionArguments> distributions);

/// The name of a type as the engine spells it, written in any letter case.
/// @throws Refusal for an unknown one, with the nearest name if there is one
std::string typeNamed(const std::string& type);

/// The law that the items of a type describe, between the limits among them.
/// @throws Refusal with the engine's sentence
Law lawOf(const std::string& type, const std::vector<DistributionArguments::Item>& items);

/// Hands type, parameters and limits to `distribution` and lets it check them.
/// @throws Refusal when it finds a fault, and for a type that the members do not have
void setChecked(c_Distribution& distribution, const std::string& type,
                const std::vector<DistributionArguments::Item>& items);

/// A Refusal with a sentence of the engine and, where it helps, a hint for the command line.
Refusal refusal(const std::string& sentence);

/// The number that an argument spells: as the engine reads texts, or "10%" for 0.1; nothing for any
/// other text.
/// @throws UsageError where a comma may be a decimal comma
std::optional<double> numberIn(const std::string& argument);

/// What a parameter is as a variant: "=B3" or "=A2:A200" a range of the sheet, a number, or the
/// text as it stands.
/// @param sheet  null when no sheet was given
/// @throws UsageError for a wrong reference, and for a comma that may be a decimal comma
Variant argumentValue(const std::string& argument, const std::shared_ptr<const Worksheet>& sheet);

/// What a parameter or limit holds: itself, or the content of its range.
Variant content(const Variant& value);

/// The finite number that the argument of `option` spells.
/// @throws UsageError
double numberArgument(const std::string& option, const std::string& argument);

/// The percentages in a list such as "10,50,80,90", each from 0 to 100.
/// @throws UsageError
std::vector<double> percentagesArgument(const std::string& option, const std::string& list);

/// "10 %", as tables and pictures name a percentile.
std::string percentName(double percent);

/// The whole number in [least, most] that the argument of `option` spells, such as "1000000",
/// "1,000,000" or "1e6".
/// @throws UsageError
std::uint64_t countArgument(const std::string& option, const std::string& argument,
                            std::uint64_t least, std::uint64_t most);

}  // namespace palvex::terminal
