#include "simulation/Correlations.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "engine/Law.h"
#include "simulation/Text.h"

namespace palvex::simulation {

namespace {

using Eigen::MatrixXd;
using std::numbers::pi;

std::string pairOf(const std::string& a, const std::string& b) {
  return "the correlation of " + a + " with " + b;
}

/// The correlation of two normal variables whose ranks correlate by `rank`, and the reverse.
double normalFromRank(double rank) {
  return 2 * std::sin(pi * rank / 6);
}
double rankFromNormal(double normal) {
  return 6 / pi * std::asin(std::clamp(normal / 2, -0.5, 0.5));
}

MatrixXd normalMatrix(const Correlations& correlations) {
  const auto n = static_cast<Eigen::Index>(correlations.names.size());
  MatrixXd matrix(n, n);
  for (Eigen::Index i = 0; i < n; ++i) {
    for (Eigen::Index j = 0; j < n; ++j) {
      matrix(i, j) = i == j ? 1
                            : normalFromRank(correlations.at(static_cast<std::size_t>(i),
                                                             static_cast<std::size_t>(j)));
    }
  }
  return matrix;
}

/// The nearest matrix without eigenvalues below `least`.
MatrixXd withoutSmallEigenvalues(const MatrixXd& matrix, double least) {
  const Eigen::SelfAdjointEigenSolver<MatrixXd> solver(matrix);
  const MatrixXd& vectors = solver.eigenvectors();
  return vectors * solver.eigenvalues().cwiseMax(least).asDiagonal() * vectors.transpose();
}

/// Alternating projections on the matrices without small eigenvalues and on those with ones on
/// their diagonal, with Dykstra's correction.
MatrixXd nearestCorrelation(const MatrixXd& matrix) {
  constexpr double leastEigenvalue = 1e-8;  // so that Cholesky's factor exists
  constexpr int mostRounds = 1000;
  MatrixXd nearest = matrix;
  MatrixXd correction = MatrixXd::Zero(matrix.rows(), matrix.cols());
  for (int round = 0; round < mostRounds; ++round) {
    const MatrixXd corrected = nearest - correction;
    const MatrixXd positive = withoutSmallEigenvalues(corrected, leastEigenvalue);
    correction = positive - corrected;
    const MatrixXd before = nearest;
    nearest = positive;
    nearest.diagonal().setOnes();
    if ((nearest - before).norm() < 1e-10 * nearest.norm()) break;
  }
  // Setting the diagonal may have left an eigenvalue a little too small: a last projection, scaled
  // to ones on the diagonal.
  const MatrixXd positive = withoutSmallEigenvalues(nearest, leastEigenvalue);
  const Eigen::VectorXd scale = positive.diagonal().cwiseSqrt().cwiseInverse();
  return scale.asDiagonal() * positive * scale.asDiagonal();
}

bool isPositiveDefinite(const MatrixXd& matrix) {
  const Eigen::SelfAdjointEigenSolver<MatrixXd> solver(matrix, Eigen::EigenvaluesOnly);
  return solver.eigenvalues().minCoeff() > 1e-12;
}

/// The rows that hold something, and no comment.
std::vector<std::int32_t> filledRows(const Sheet& sheet) {
  std::vector<std::int32_t> rows;
  for (std::int32_t row = 1; row <= sheet.rows(); ++row) {
    bool filled = false;
    for (std::int32_t column = 1; column <= sheet.columns(); ++column) {
      filled = filled || !cellText(sheet.at(row, column)).empty();
    }
    if (filled && !cellText(sheet.at(row, 1)).starts_with('#')) rows.push_back(row);
  }
  return rows;
}

std::size_t placeOf(const std::vector<std::string>& names, const std::string& name) {
  const auto found = std::find_if(names.begin(), names.end(), [&](const std::string& other) {
    return sameLetters(other, name);
  });
  return static_cast<std::size_t>(found - names.begin());
}

void check(const Correlations& correlations) {
  const std::vector<std::string>& names = correlations.names;
  for (std::size_t i = 0; i < names.size(); ++i) {
    for (std::size_t j = 0; j < names.size(); ++j) {
      const double rank = correlations.at(i, j);
      if (!(rank >= -1 && rank <= 1)) {
        throw Fault(pairOf(names[i], names[j]) + ", " + Variant(rank).toText() +
                    ", is not between -1 and 1.");
      }
      if (i == j && rank != 1) throw Fault(pairOf(names[i], "itself") + " is not 1.");
      if (rank != correlations.at(j, i)) {
        throw Fault("the correlations are not symmetric: " + names[i] + " with " + names[j] + " " +
                    Variant(rank).toText() + ", the other way round " +
                    Variant(correlations.at(j, i)).toText() + '.');
      }
    }
  }
}

}  // namespace

Correlations Correlations::fromSheet(const Sheet& sheet) {
  const std::vector<std::int32_t> rows = filledRows(sheet);
  Correlations correlations;
  std::vector<std::int32_t> columns;
  for (std::int32_t column = 2; !rows.empty() && column <= sheet.columns(); ++column) {
    const std::string name = cellText(sheet.at(rows[0], column));
    if (name.empty()) continue;
    if (placeOf(correlations.names, name) < correlations.names.size()) {
      throw Fault(name + " stands twice in the first row.");
    }
    correlations.names.push_back(name);
    columns.push_back(column);
  }
  const std::size_t n = correlations.names.size();
  if (n == 0) throw Fault("there are no names in the first row.");

  correlations.ranks.resize(n * n);
  std::vector<bool> seen(n);
  for (auto row = rows.begin() + 1; row != rows.end(); ++row) {
    const std::string name = cellText(sheet.at(*row, 1));
    const std::size_t i = placeOf(correlations.names, name);
    if (i == n) throw Fault("'" + name + "' in the first column does not stand in the first row.");
    if (seen[i]) throw Fault(name + " stands twice in the first column.");
    seen[i] = true;
    for (std::size_t j = 0; j < n; ++j) {
      const Variant cell = sheet.at(*row, columns[j]);
      if (cell.isEmpty() || !cell.isNumeric()) {
        throw Fault(pairOf(correlations.names[i], correlations.names[j]) + " is not a number.");
      }
      correlations.ranks[i * n + j] = cell.toDouble();
    }
  }
  for (std::size_t i = 0; i < n; ++i) {
    if (!seen[i]) throw Fault(correlations.names[i] + " does not stand in the first column.");
  }
  check(correlations);
  return correlations;
}

std::optional<Correlations::Change> Correlations::repair() {
  const MatrixXd matrix = normalMatrix(*this);
  if (isPositiveDefinite(matrix)) return {};
  const MatrixXd nearest = nearestCorrelation(matrix);
  const std::size_t n = names.size();
  Change largest{};
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const double before = at(i, j);
      const double after =
          rankFromNormal(nearest(static_cast<Eigen::Index>(i), static_cast<Eigen::Index>(j)));
      ranks[i * n + j] = ranks[j * n + i] = after;
      if (std::abs(after - before) >= std::abs(largest.after - largest.before)) {
        largest = {names[j], names[i], before, after};
      }
    }
  }
  return largest;
}

Copula::Copula(const Correlations& correlations, std::span<const std::string> inputs) {
  check(correlations);
  const std::vector<std::string> known(inputs.begin(), inputs.end());
  for (const std::string& name : correlations.names) {
    const std::size_t input = placeOf(known, name);
    if (input == known.size()) {
      const std::vector<std::string_view> names(known.begin(), known.end());
      throw Fault("there is no input '" + name + "'" + suggestion(name, names));
    }
    inputs_.push_back(input);
  }

  const MatrixXd matrix = normalMatrix(correlations);
  const Eigen::LLT<MatrixXd> cholesky(matrix);
  if (!isPositiveDefinite(matrix) || cholesky.info() != Eigen::Success) {
    throw Contradiction("the correlations contradict each other: they are not positive definite.");
  }
  const MatrixXd factor = cholesky.matrixL();
  for (Eigen::Index i = 0; i < factor.rows(); ++i) {
    for (Eigen::Index j = 0; j <= i; ++j) factor_.push_back(factor(i, j));
  }
}

void Copula::apply(std::span<const std::span<double>> columns) const {
  static const Law standard = Law::normal(0, 1);
  if (columns.empty()) return;
  const std::size_t trials = columns[0].size();
  const std::vector<double> independent = [&] {
    std::vector<double> scores(columns.size() * trials);
    for (std::size_t i = 0; i < columns.size(); ++i) {
      standard.quantiles(columns[i], std::span(scores).subspan(i * trials, trials));
    }
    return scores;
  }();

  std::vector<double> scores(trials);
  const double* nextRow = factor_.data();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const double* const row = nextRow;
    nextRow += i + 1;
    // An input that is not correlated with any earlier one keeps its numbers to the bit.
    if (std::all_of(row, row + i, [](double element) { return element == 0; })) continue;
    std::fill(scores.begin(), scores.end(), 0);
    for (std::size_t j = 0; j <= i; ++j) {
      const double* earlier = independent.data() + j * trials;
      for (std::size_t t = 0; t < trials; ++t) scores[t] += row[j] * earlier[t];
    }
    for (std::size_t t = 0; t < trials; ++t) {
      columns[i][t] = std::clamp(standard.probability(scores[t]), 0x1p-53, 1 - 0x1p-53);
    }
  }
}

}  // namespace palvex::simulation
