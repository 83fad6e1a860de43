#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace palvex {

/// The rows of a file of references in tests/data: numbers with commas between.
inline std::vector<std::vector<double>> references(const std::string& name) {
  std::vector<std::vector<double>> rows;
  std::ifstream file(PALVEX_TEST_DATA "/" + name);
  EXPECT_TRUE(file) << name;
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    rows.emplace_back();
    for (std::string field; std::getline(fields, field, ',');) {
      rows.back().push_back(std::stod(field));
    }
  }
  return rows;
}

inline double relativeError(double value, double reference) {
  return std::abs(value - reference) / std::abs(reference);
}

/// A published formula in double arithmetic against references/formulas: `ulps` roundings of the
/// formula itself, times `amplification` where an exponential magnifies them, and `trueError` more
/// from the formula to the true function.
struct Formula {
  const char* name;
  double ulps;
  double trueError;
  double (*compute)(const std::vector<double>& arguments);
  double (*amplification)(const std::vector<double>& arguments) = nullptr;
};

inline void expectAgreement(const Formula& formula) {
  const auto rows = references(std::string("formulas/") + formula.name + ".csv");
  EXPECT_GE(rows.size(), 2000U);
  for (const auto& row : rows) {
    const std::vector<double> arguments(row.begin(), row.end() - 2);
    const double expected = row[row.size() - 2];
    const double away = row.back();
    const double amplified = formula.amplification ? 1 + formula.amplification(arguments) : 1;
    const double tolerance = formula.ulps * 2.3e-16 * amplified;
    const double value = formula.compute(arguments);
    EXPECT_LE(relativeError(value, expected), tolerance) << formula.name << ' ' << row[0];
    EXPECT_LE(std::abs(value / expected - (1 + away)), tolerance + formula.trueError)
        << formula.name << ' ' << row[0];
  }
}

}  // namespace palvex
