#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "simulation/Correlations.h"
#include "simulation/Model.h"
#include "simulation/Sampling.h"
#include "simulation/Workbook.h"

namespace palvex::simulation {

/// Cells that an input's distribution is cut into, all equally probable: a common multiple of the
/// 32 shares and the ten tenths that sensitivities ask for.
inline constexpr std::size_t positionCells = 160;

/// Works out trials, some at a time, column by column: for one thread.
class Trials {
 public:
  /// How many trials are worked out at a time, so that the columns stay in the cache.
  static constexpr std::size_t most = 1024;

  /// All of them are to outlive this one.
  /// @param copula    null for independent inputs
  /// @param workbook  null for a model without one
  Trials(const Model& model, const Sampler& sampler, const Copula* copula, Workbook* workbook);

  /// Works out the trials first, first + 1, ...
  /// @param count  from 1 to `most`
  void work(std::uint64_t first, std::size_t count);

  // Of the trials of the last call that did not fail, in their order.
  /// How many trials did not fail.
  [[nodiscard]] std::size_t count() const { return count_; }
  /// The values of a row of the model.
  [[nodiscard]] std::span<const double> values(std::size_t row) const {
    return {values_[row].data(), count_};
  }
  /// The cell in which the position of an input lies.
  /// @param input  its place in Model::inputs
  [[nodiscard]] std::span<const std::uint8_t> cells(std::size_t input) const {
    return {cells_[input].data(), count_};
  }

  /// How many trials failed.
  [[nodiscard]] std::size_t failures() const { return failures_; }
  /// Why the first trial that failed did: a sentence.
  [[nodiscard]] const std::string& fault() const { return fault_; }

 private:
  void workRow(std::size_t row, std::size_t from, std::size_t to);
  void draw(std::size_t row, std::size_t from, std::size_t to);
  void drawOne(std::size_t row, std::size_t input, std::size_t trial);
  void calculate(std::size_t row, std::size_t from, std::size_t to);
  void addUp(std::size_t row, std::size_t from, std::size_t to);
  void checkFinite(std::size_t row, std::size_t from, std::size_t to);
  void dropFailed();

  [[nodiscard]] double number(const Number& number, std::size_t trial) const;
  [[nodiscard]] Law lawIn(const Row& row, std::size_t trial) const;
  void fail(std::size_t row, std::size_t trial, const std::string& why);
  [[nodiscard]] std::string valuesThatWentIn(const Row& row, std::size_t trial) const;

  const Model& model_;
  const Sampler& sampler_;
  const Copula* copula_;
  Workbook* workbook_;

  std::vector<std::size_t> inputOf_;                    // of each row that is an input: which one
  std::vector<bool> reversed_;                          // of each input: its law's mean is negative
  std::vector<std::optional<Calculator>> calculators_;  // of each row with a formula
  std::vector<std::vector<double>> values_;             // of each row
  std::vector<std::vector<double>> uniforms_;           // of each input
  std::vector<std::vector<double>> events_;             // of each input that may not happen
  std::vector<std::vector<std::uint8_t>> cells_;        // of each input

  std::uint64_t first_ = 0;
  std::size_t count_ = 0;
  std::size_t failures_ = 0;
  std::vector<bool> failed_;
  std::size_t firstFailed_ = 0;
  std::string fault_;
};

}  // namespace palvex::simulation
