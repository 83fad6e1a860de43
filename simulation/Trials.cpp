#include "simulation/Trials.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <numeric>

#include "engine/LawTypes.h"

namespace palvex::simulation {

namespace {

std::uint8_t cellOf(double position) {
  constexpr auto cells = static_cast<double>(positionCells);
  // By way of 32-bit integers, to which processors convert directly.
  return static_cast<std::uint8_t>(
      static_cast<std::int32_t>(std::min(position * cells, cells - 1)));
}

/// Where a value of an input that happens with this chance lies in its distribution, of which 0,
/// for not happening, is a part.
/// @param reversed  the other values lie below 0
double position(double u, double chance, bool happens, bool reversed) {
  const double share = happens ? chance : 1 - chance;
  const bool above = happens != reversed;
  return (above ? 1 - share : 0) + share * u;
}

bool isCertain(const Number& chance) {
  const auto* known = std::get_if<double>(&chance);
  return known != nullptr && *known == 1;
}

}  // namespace

Trials::Trials(const Model& model, const Sampler& sampler, const Copula* copula, Workbook* workbook)
    : model_(model), sampler_(sampler), copula_(copula), workbook_(workbook) {
  const std::span<const Row> rows = model.rows();
  inputOf_.resize(rows.size());
  calculators_.resize(rows.size());
  values_.assign(rows.size(), std::vector<double>(most));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Row& row = rows[i];
    if (row.kind == Row::Kind::formula) calculators_[i].emplace(row.formula);
    if (!row.isInput()) continue;
    const bool certain = isCertain(row.chance);
    inputOf_[i] = uniforms_.size();
    uniforms_.emplace_back(most);
    events_.emplace_back(certain ? 0 : most);
    cells_.emplace_back(most);
    reversed_.push_back(!certain && !row.isLive() && row.law->mean() < 0);
  }
  failed_.resize(most);
}

void Trials::work(std::uint64_t first, std::size_t count) {
  first_ = first;
  count_ = count;
  failures_ = 0;
  firstFailed_ = count;
  std::fill(failed_.begin(), failed_.end(), false);

  for (std::size_t i = 0; i < uniforms_.size(); ++i) {
    // Inputs count from 1 in what their random numbers are made from.
    sampler_.draws(i + 1, first, std::span(uniforms_[i]).first(count));
    if (!events_[i].empty()) sampler_.events(i + 1, first, std::span(events_[i]).first(count));
  }
  if (copula_ != nullptr) {
    std::vector<std::span<double>> columns;
    for (const std::size_t input : copula_->inputs()) {
      columns.push_back(std::span(uniforms_[input]).first(count));
    }
    copula_->apply(columns);
  }

  const std::size_t rows = model_.rows().size();
  // A workbook works out one trial after the other.
  const std::size_t step = workbook_ != nullptr ? 1 : count;
  for (std::size_t from = 0; from < count; from += step) {
    for (std::size_t row = 0; row < rows; ++row) workRow(row, from, from + step);
  }
  if (failures_ > 0) dropFailed();
}

void Trials::workRow(std::size_t row, std::size_t from, std::size_t to) {
  switch (model_.rows()[row].kind) {
    case Row::Kind::input:
      draw(row, from, to);
      break;
    case Row::Kind::formula:
      calculate(row, from, to);
      break;
    case Row::Kind::total:
      addUp(row, from, to);
      break;
    case Row::Kind::cell:
      break;
  }
  if (workbook_ == nullptr) {
    checkFinite(row, from, to);
    return;
  }
  if (failed_[from]) return;
  try {
    const Row::Kind kind = model_.rows()[row].kind;
    if (kind == Row::Kind::cell) values_[row][from] = workbook_->result(row);
    checkFinite(row, from, to);
    if (kind == Row::Kind::input && !failed_[from]) workbook_->put(row, values_[row][from]);
  } catch (const std::bad_alloc&) {
    throw;  // no fault of the trial
  } catch (const std::exception& error) {
    fail(row, from, error.what());
  }
}

void Trials::draw(std::size_t row, std::size_t from, std::size_t to) {
  const Row& drawn = model_.rows()[row];
  const std::size_t input = inputOf_[row];
  const std::span<const double> u = std::span(uniforms_[input]).subspan(from, to - from);
  const auto* const chance = std::get_if<double>(&drawn.chance);
  if (drawn.isLive() || chance == nullptr) {
    for (std::size_t t = from; t < to; ++t) drawOne(row, input, t);
    return;
  }
  drawn.law->quantiles(u, std::span(values_[row]).subspan(from, to - from));
  if (isCertain(drawn.chance)) {
    for (std::size_t t = from; t < to; ++t) cells_[input][t] = cellOf(uniforms_[input][t]);
    return;
  }
  for (std::size_t t = from; t < to; ++t) {
    const bool happens = events_[input][t] < *chance;
    if (!happens) values_[row][t] = 0;
    cells_[input][t] = cellOf(position(uniforms_[input][t], *chance, happens, reversed_[input]));
  }
}

void Trials::drawOne(std::size_t row, std::size_t input, std::size_t trial) {
  const Row& drawn = model_.rows()[row];
  const double u = uniforms_[input][trial];
  bool happens = true;
  bool reversed = reversed_[input];
  double chance = 1;
  double value = 0;
  try {
    const double given = number(drawn.chance, trial);
    if (!(given >= 0 && given <= 1)) throw Fault(chanceFault(given));
    chance = given;
    happens = chance == 1 || events_[input][trial] < chance;
    if (drawn.isLive()) {
      const Law law = lawIn(drawn, trial);
      value = law.quantile(u);
      if (chance < 1) reversed = law.mean() < 0;
    } else {
      value = drawn.law->quantile(u);
    }
  } catch (const std::bad_alloc&) {
    throw;  // no fault of the trial
  } catch (const std::exception& error) {
    if (happens) fail(row, trial, error.what());
  }
  values_[row][trial] = happens ? value : 0;
  cells_[input][trial] = cellOf(position(u, chance, happens, reversed));
}

void Trials::calculate(std::size_t row, std::size_t from, std::size_t to) {
  Calculator& calculator = *calculators_[row];
  const std::vector<std::size_t>& operands = model_.rows()[row].formula.rows;
  for (std::size_t t = from; t < to; ++t) {
    for (std::size_t i = 0; i < operands.size(); ++i) {
      calculator.operand(i) = values_[operands[i]][t];
    }
    values_[row][t] = calculator();
  }
}

void Trials::addUp(std::size_t row, std::size_t from, std::size_t to) {
  std::vector<double>& sums = values_[row];
  std::fill(sums.begin() + static_cast<std::ptrdiff_t>(from),
            sums.begin() + static_cast<std::ptrdiff_t>(to), 0);
  for (const std::size_t input : model_.inputs()) {
    const double* const column = values_[input].data();
    for (std::size_t t = from; t < to; ++t) sums[t] += column[t];
  }
}

void Trials::checkFinite(std::size_t row, std::size_t from, std::size_t to) {
  const double* const column = values_[row].data();
  // x - x is 0, or NaN for an infinite x and for NaN; summed in lanes that run side by side.
  std::array<double, 8> zeros{};
  std::size_t t = from;
  for (; t + zeros.size() <= to; t += zeros.size()) {
    for (std::size_t i = 0; i < zeros.size(); ++i) zeros[i] += column[t + i] - column[t + i];
  }
  for (; t < to; ++t) zeros[0] += column[t] - column[t];
  if (std::accumulate(zeros.begin(), zeros.end(), 0.0) == 0) return;
  for (t = from; t < to; ++t) {
    if (!std::isfinite(column[t])) fail(row, t, "the value is not finite.");
  }
}

double Trials::number(const Number& number, std::size_t trial) const {
  if (const auto* row = std::get_if<RowValue>(&number)) return values_[row->row][trial];
  if (const auto* cell = std::get_if<CellValue>(&number)) {
    if (workbook_ == nullptr) throw Fault("there is no workbook to read the cell from.");
    return workbook_->read(cell->cell);
  }
  return std::get<double>(number);
}

Law Trials::lawIn(const Row& row, std::size_t trial) const {
  const auto limit = [&](const std::optional<Number>& given) {
    return given ? std::optional(number(*given, trial)) : std::nullopt;
  };
  const std::optional<double> lower = limit(row.lower);
  const std::optional<double> upper = limit(row.upper);
  if (row.law) return row.law->between(lower, upper);
  std::vector<double> parameters;
  for (const Number& parameter : row.parameters) parameters.push_back(number(parameter, trial));
  return makeLaw(*findLawType(row.type), parameters, {lower, upper});
}

void Trials::fail(std::size_t row, std::size_t trial, const std::string& why) {
  if (failed_[trial]) return;  // a row above failed already
  failed_[trial] = true;
  ++failures_;
  if (trial >= firstFailed_) return;
  firstFailed_ = trial;
  const Row& failing = model_.rows()[row];
  fault_ = failing.place + ", trial " + std::to_string(first_ + trial + 1) + ": " + why +
           valuesThatWentIn(failing, trial);
}

std::string Trials::valuesThatWentIn(const Row& row, std::size_t trial) const {
  std::string text;
  const auto add = [&](std::size_t other) {
    text += (text.empty() ? " (" : ", ") + model_.rows()[other].name + " = " +
            Variant(values_[other][trial]).toText();
  };
  for (const std::size_t operand : row.formula.rows) add(operand);
  const auto addLive = [&](const Number& number) {
    if (const auto* above = std::get_if<RowValue>(&number)) add(above->row);
  };
  for (const Number& parameter : row.parameters) addLive(parameter);
  if (row.lower) addLive(*row.lower);
  if (row.upper) addLive(*row.upper);
  addLive(row.chance);
  return text.empty() ? text : text + ')';
}

void Trials::dropFailed() {
  const auto drop = [&](auto& column) {
    std::size_t kept = 0;
    for (std::size_t t = 0; t < count_; ++t) {
      if (!failed_[t]) column[kept++] = column[t];
    }
  };
  for (auto& column : values_) drop(column);
  for (auto& column : cells_) drop(column);
  count_ -= failures_;
}

}  // namespace palvex::simulation
