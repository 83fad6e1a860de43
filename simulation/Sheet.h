#pragma once

#include <cstdint>
#include <string_view>

#include "runtime/Variant.h"

namespace palvex::simulation {

/// The worksheet that holds a table: a CSV file, or a sheet of an open document. Rows and columns
/// count from 1.
class Sheet {
 public:
  /// What a reference such as "=B3" or "=A2:A200" stands for: a range object, as c_Distribution
  /// takes it; or a cell that is to be read anew in each trial (see Workbook).
  struct Reference {
    Variant range;      ///< a range object; empty for a cell that is live
    bool live = false;  ///< whether it is a cell to be read in each trial
  };

  Sheet() = default;
  Sheet(const Sheet&) = delete;
  Sheet& operator=(const Sheet&) = delete;
  virtual ~Sheet() = default;

  /// The last row that holds anything.
  [[nodiscard]] virtual std::int32_t rows() const = 0;
  /// The last column that holds anything.
  [[nodiscard]] virtual std::int32_t columns() const = 0;
  /// The content of a cell: empty, a number, a text or an error value.
  [[nodiscard]] virtual Variant at(std::int32_t row, std::int32_t column) const = 0;
  /// @param text  begins with "="
  /// @throws Fault when it refers to nothing
  [[nodiscard]] virtual Reference refer(std::string_view text) const = 0;
};

}  // namespace palvex::simulation
