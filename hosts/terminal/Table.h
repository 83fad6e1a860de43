#pragma once

#include <string>
#include <variant>
#include <vector>

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
  /// row, a column without content left out of it.
  /// @param digits  significant digits of a number for people
  [[nodiscard]] std::string text(Format format, int digits = 10) const;

 private:
  [[nodiscard]] std::string forPeople(int digits) const;
  [[nodiscard]] std::string csv() const;
  [[nodiscard]] std::string json() const;

  std::vector<std::string> columns_;
  std::vector<std::vector<Cell>> rows_;
};

}  // namespace palvex::terminal
