#pragma once

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

#include "hosts/terminal/Output.h"

namespace palvex::terminal {

/// How results are written: aligned columns for people (numbers to ten digits), or comma-separated
/// values or JSON for programs (numbers in the shortest form that reads back the same).
enum class Format { people, csv, json };

/// A result with named columns.
class Table {
 public:
  using Cell = std::variant<std::monostate, double, std::string>;

  explicit Table(std::vector<std::string> columns) : columns_(std::move(columns)) {}

  /// @param row  as many cells as there are columns
  void add(std::vector<Cell> row) { rows_.push_back(std::move(row)); }

  /// The table as a text that ends with a line break. JSON is an array with one object for each
  /// row, a column without content left out of it. For people, control characters are written out.
  /// @param digits  significant digits of a number for people
  [[nodiscard]] std::string text(Format format, int digits = 10) const;

 private:
  friend class TableWriter;

  // The columns' names, and the rows, of a table that is written in parts.
  [[nodiscard]] std::string head(Format format, int digits, std::vector<std::size_t>& widths) const;
  [[nodiscard]] std::string body(Format format, int digits, std::vector<std::size_t>& widths,
                                 bool isFirst) const;
  static std::string tail(Format format);

  void widen(std::vector<std::size_t>& widths, int digits) const;
  [[nodiscard]] bool isNumeric(std::size_t column) const;

  std::vector<std::string> columns_;
  std::vector<std::vector<Cell>> rows_;
};

/// Writes a table of any length row by row, in little memory. For people, the columns are as wide
/// as the first rows need, and wider from where later ones need more.
class TableWriter {
 public:
  TableWriter(Output& output, std::vector<std::string> columns, Format format, int digits = 10)
      : output_(output), part_(std::move(columns)), format_(format), digits_(digits) {}

  void add(std::vector<Table::Cell> row);
  /// Writes what is left, so that the table is whole. To be called at the end.
  void close();
  /// Likewise after a fault; but a table of which nothing was written yet is dropped.
  void breakOff() {
    if (!isFirst_) close();
  }

 private:
  void flush();

  Output& output_;
  Table part_;
  Format format_;
  int digits_;
  std::vector<std::size_t> widths_;
  bool isFirst_ = true;
};

}  // namespace palvex::terminal
