#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "simulation/Fault.h"
#include "simulation/Sheet.h"

namespace palvex::simulation {

/// Correlations that no draws can have together.
struct Contradiction : Fault {
  using Fault::Fault;
};

/// Rank correlations (Spearman's) between inputs.
struct Correlations {
  std::vector<std::string> names;  ///< the correlated inputs, in any order
  std::vector<double> ranks;       ///< of each name with each, row by row, in [-1, 1]

  /// Of a worksheet with the names in its first row and in its first column.
  /// @throws Fault unless it is symmetric with ones on its diagonal and otherwise in [-1, 1]
  static Correlations fromSheet(const Sheet& sheet);

  /// The correlation of names[i] with names[j].
  [[nodiscard]] double at(std::size_t i, std::size_t j) const {
    return ranks[i * names.size() + j];
  }

  /// The largest change that repair() made.
  struct Change {
    std::string first;   ///< name of an input
    std::string second;  ///< name of the other one
    double before;       ///< rank correlation as it was given
    double after;        ///< as it is now
  };
  /// Where no draws can have these correlations together, takes the nearest that draws can have
  /// (Higham: Computing the nearest correlation matrix; IMA J. Numer. Anal. 22, 2002).
  /// @returns the largest change; nothing when none was needed
  std::optional<Change> repair();
};

/// Makes uniform numbers correlated: a Gaussian copula.
class Copula {
 public:
  /// @param inputs  the names of a model's inputs in their order
  /// @throws Fault for an unknown name; a Contradiction
  Copula(const Correlations& correlations, std::span<const std::string> inputs);

  /// Which inputs are correlated, counted from 0, in the order of the correlations.
  [[nodiscard]] std::span<const std::size_t> inputs() const { return inputs_; }

  /// Turns independent uniform numbers into correlated ones.
  /// @param columns  one for each of inputs(), all of one length, in (0, 1); likewise afterwards
  void apply(std::span<const std::span<double>> columns) const;

 private:
  std::vector<std::size_t> inputs_;
  std::vector<double> factor_;  // Cholesky's: row i has i + 1 elements
};

}  // namespace palvex::simulation
