#pragma once

#include <memory>
#include <string>

#include "simulation/Simulation.h"

// What the terminal program sees of libpalvex-calc.so, which it loads when a workbook is to be
// simulated. Both are built together from the same sources; `version` makes sure of it.

namespace palvex::calc {

/// A workbook file, open in an office inside this process. One at a time.
class OpenWorkbook {
 public:
  OpenWorkbook() = default;
  OpenWorkbook(const OpenWorkbook&) = delete;
  OpenWorkbook& operator=(const OpenWorkbook&) = delete;
  virtual ~OpenWorkbook() = default;

  /// The table of its simulation.
  [[nodiscard]] virtual const simulation::Sheet& table() const = 0;
  /// What the table's rows Trials, Seed and Sampling say. @throws Fault
  [[nodiscard]] virtual simulation::Settings settings(const simulation::Model& model) const = 0;
  /// The cells that the trials of the table's model write and read; for one thread.
  /// @throws Fault
  [[nodiscard]] virtual std::unique_ptr<simulation::Workbook> cells(
      const simulation::Model& model) const = 0;
};

/// The office and the files that opening a workbook needs.
struct Places {
  std::string office;  // folder of the office's programs; its libmergedlo.so is loaded already
  std::string
      palvex;  // folder of libpalvex-calc.so, palvex.rdb and the other files of the extension
};

/// Opens a file. For one that can not be opened, or has no table, nothing is opened and `fault` is
/// a sentence.
using OpenWorkbookFunction = void (*)(std::unique_ptr<OpenWorkbook>& opened, const Places& places,
                                      const std::string& file, std::string& fault);
using VersionFunction = const char* (*)();

inline constexpr const char* openWorkbookName = "palvex_open_workbook";
inline constexpr const char* versionName = "palvex_calc_version";

}  // namespace palvex::calc
