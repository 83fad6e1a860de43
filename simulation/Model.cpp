#include "simulation/Model.h"

#include <algorithm>
#include <limits>
#include <new>

#include "engine/LawTypes.h"
#include "runtime/Object.h"
#include "simulation/Text.h"

namespace palvex::simulation {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// What a fixed operand holds: itself, or the content of its range.
Variant content(const Variant& operand) {
  return operand.isObject() ? operand.toObject()->get("Value") : operand;
}

bool isEmpty(const Operand& operand) {
  const auto* fixed = std::get_if<Variant>(&operand);
  return fixed != nullptr && fixed->isEmpty();
}

bool isLive(const Operand& operand) {
  return !std::holds_alternative<Variant>(operand);
}

/// A parameter of a law that is set up in each trial. Faults have the sentences of c_Distribution.
Number parameterNumber(const Operand& operand, std::string_view name) {
  if (const auto* row = std::get_if<RowValue>(&operand)) return *row;
  if (const auto* cell = std::get_if<CellValue>(&operand)) return *cell;
  const auto& fixed = std::get<Variant>(operand);
  const Variant value = content(fixed);
  if (value.isNumeric() || value.isEmpty()) return value.toDouble();
  const std::string where = fixed.isObject() ? " in cell referenced for " : " for ";
  throw Fault("Non-numeric value" + where + std::string(name) + '.');
}

std::optional<Number> limitNumber(const Operand& operand, std::string_view name) {
  if (isEmpty(operand)) return {};
  if (const auto* fixed = std::get_if<Variant>(&operand)) {
    const Variant value = content(*fixed);
    if (value.isEmpty()) return {};
    if (value == Variant("-Infinity")) return -infinity;
    if (value == Variant("+Infinity")) return infinity;
    if (!value.isNumeric()) throw Fault("Improper value for " + std::string(name) + '.');
  }
  return parameterNumber(operand, name);
}

Number chanceNumber(const Operand& operand) {
  if (isEmpty(operand)) return 1.0;
  if (isLive(operand)) return parameterNumber(operand, "Chance");
  const Variant value = content(std::get<Variant>(operand));
  double chance = 0;
  std::string text = value.isText() ? cellText(value) : "";
  if (text.ends_with('%')) {
    text.pop_back();
    const Variant percent(text);
    if (!percent.isNumeric()) throw Fault("Non-numeric value for Chance.");
    chance = percent.toDouble() / 100;
  } else {
    chance = std::get<double>(parameterNumber(value, "Chance"));
  }
  if (!(chance >= 0 && chance <= 1)) throw Fault(chanceFault(chance));
  return chance;
}

const LawType& typeCalled(const std::string& name) {
  if (const LawType* const type = findLawType(name)) return *type;
  std::vector<std::string_view> names;
  names.reserve(lawTypes.size());
  for (const LawType& type : lawTypes) names.push_back(type.name);
  const std::string fault = "there is no type '" + name + "'";
  if (!nearest(name, names).empty()) throw Fault(fault + suggestion(name, names));
  std::string list;
  for (const std::string_view known : names) list.append(list.empty() ? "" : ", ").append(known);
  throw Fault(fault + "; there are " + list + '.');
}

void completeParameters(const LawType& type, std::vector<Operand>& parameters) {
  while (!parameters.empty() && isEmpty(parameters.back())) parameters.pop_back();
  const auto wanted = static_cast<std::size_t>(type.parameterCount());
  if (parameters.size() > wanted) {
    throw Fault(std::string(type.name) + " has " + std::to_string(wanted) + " parameters, " +
                std::to_string(parameters.size()) + " given.");
  }
  parameters.resize(wanted);
  for (std::size_t i = 0; i < wanted; ++i) {
    if (!isEmpty(parameters[i])) continue;
    const std::optional<double> usual = usualParameter(type, i);
    if (!usual) throw Fault(std::string(type.parameters[i]) + " is missing.");
    parameters[i] = Variant(*usual);
  }
}

/// Refuses fixed parameters that are wrong whatever the live ones will be.
void checkFixed(std::string_view type, std::span<const Number> parameters) {
  // A type with the same demands on each parameter.
  if (type == "PERT") type = "Triangular";
  if (type == "LognormalMean") type = "Johnson";
  const Family& family = *findFamily(type);
  Values values;
  values.p.fill(1);  // meets any demand
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (const auto* fixed = std::get_if<double>(&parameters[i])) values.p[i] = *fixed;
  }
  if (!family.meetsDemands(values)) {
    static_cast<void>(makeLaw(*findLawType(type), values.p));  // throws the sentence about it
  }
  std::optional<std::size_t> before;
  for (std::size_t i = family.ascending->first; i <= family.ascending->last; ++i) {
    if (!std::holds_alternative<double>(parameters[i])) continue;
    const auto name = [&](std::size_t at) { return std::string((*family.parameters)[at].name); };
    if (before && values.p[i] < values.p[*before])
      throw Fault(name(i) + " can not be less than " + name(*before) + '.');
    before = i;
  }
}

void checkName(const std::string& name) {
  if (name.empty()) throw Fault("the name is missing.");
  if (name.find_first_of("[]") != std::string::npos) {
    throw Fault("a name can not hold brackets, which stand around it in formulas.");
  }
}

}  // namespace

std::optional<double> usualParameter(const LawType& type, std::size_t index) {
  const std::string_view parameter = type.parameters[index];
  if (index > 0 && parameter == "Minimum") return 0;
  if (type.name == "Beta" && parameter == "Maximum") return 1;
  return {};
}

std::string chanceFault(double chance) {
  return "a chance of " + Variant(chance).toText() + " is not between 0 and 1.";
}

const Row* Model::find(std::string_view name) const {
  for (const Row& row : rows_) {
    if (row.kind != Row::Kind::total && sameLetters(row.name, name)) return &row;
  }
  return nullptr;
}

RowValue Model::above(std::string_view name) const {
  if (const Row* row = find(name)) return {static_cast<std::size_t>(row - rows_.data())};
  for (const std::string& other : names_) {
    if (sameLetters(other, name)) throw Fault("[" + other + "] is not a row above this one.");
  }
  std::vector<std::string_view> names(names_.begin(), names_.end());
  for (const Row& row : rows_) names.push_back(row.name);
  throw Fault("there is no row [" + std::string(name) + "]" + suggestion(name, names));
}

namespace {

/// Reserves memory for two more items, so that adding them cannot fail.
template <class Item>
void makeRoom(std::vector<Item>& list) {
  if (list.capacity() - list.size() < 2) list.reserve(2 * list.size() + 2);
}

}  // namespace

template <class Complete>
void Model::add(Row row, Complete complete) {
  const bool hasTotal = !rows_.empty() && rows_.back().kind == Row::Kind::total;
  const std::size_t position = rows_.size() - (hasTotal ? 1 : 0);
  if (row.place.empty()) row.place = "Row " + std::to_string(position + 1) + ", " + row.name;
  try {
    checkName(row.name);
    if (const Row* other = find(row.name)) {
      throw Fault("the name is that of " + other->place + ", too.");
    }
    complete(row);
  } catch (const std::bad_alloc&) {
    throw;  // no fault of the row
  } catch (const std::exception& error) {
    throw Fault(row.place + ": " + error.what());
  }
  Row total;
  total.kind = Row::Kind::total;
  total.name = total.place = "Total";
  makeRoom(rows_);
  makeRoom(inputs_);
  makeRoom(results_);
  // From here on nothing fails.
  if (hasTotal) {
    rows_.pop_back();
    results_.pop_back();
  }
  (row.isInput() ? inputs_ : results_).push_back(position);
  rows_.push_back(std::move(row));
  if (!results_.empty()) return;
  results_.push_back(rows_.size());
  rows_.push_back(std::move(total));
}

void Model::add(Input input, std::string place) {
  Row row;
  row.place = std::move(place);
  row.name = input.name;
  add(std::move(row), [&](Row& added) { completeInput(added, input); });
}

void Model::completeInput(Row& row, Input& input) const {
  const LawType& type = typeCalled(input.type);
  row.type = input.type;
  row.unit = input.unit;
  row.cell = input.cell;
  completeParameters(type, input.parameters);
  row.chance = chanceNumber(input.chance);

  const bool liveParameters = std::any_of(input.parameters.begin(), input.parameters.end(), isLive);
  const bool liveLimits = isLive(input.lower) || isLive(input.upper);
  if (liveParameters && type.name == "Histogram") {
    throw Fault("the data of a histogram can not change from trial to trial.");
  }
  if (liveParameters) {
    for (std::size_t i = 0; i < input.parameters.size(); ++i) {
      row.parameters.push_back(parameterNumber(input.parameters[i], type.parameters[i]));
    }
    checkFixed(type.name, row.parameters);
  }
  if (liveParameters || liveLimits) {
    row.lower = limitNumber(input.lower, "LTL");
    row.upper = limitNumber(input.upper, "UTL");
  }
  if (liveParameters) return;

  std::vector<Variant> parameters;
  for (const Operand& operand : input.parameters) parameters.push_back(std::get<Variant>(operand));
  const auto limit = [&](const Operand& operand) {
    return liveLimits ? Variant() : std::get<Variant>(operand);
  };
  row.law = makeLaw(type.name, parameters, limit(input.lower), limit(input.upper));
}

void Model::add(std::string name, Law law, double chance, std::string unit) {
  Row row;
  row.name = std::move(name);
  row.type = law.type();
  row.unit = std::move(unit);
  add(std::move(row), [&](Row& added) {
    if (!(chance >= 0 && chance <= 1)) throw Fault(chanceFault(chance));
    added.chance = chance;
    added.law = std::move(law);
  });
}

void Model::addFormula(std::string name, const std::string& formula, std::string unit,
                       std::string place) {
  Row row;
  row.place = std::move(place);
  row.kind = Row::Kind::formula;
  row.name = std::move(name);
  row.unit = std::move(unit);
  add(std::move(row), [&](Row& added) {
    added.formula =
        Formula::parse(formula, [this](std::string_view other) { return above(other).row; });
  });
}

void Model::addCell(std::string name, std::string cell, std::string unit, std::string place) {
  Row row;
  row.place = std::move(place);
  row.kind = Row::Kind::cell;
  row.name = std::move(name);
  row.unit = std::move(unit);
  row.cell = std::move(cell);
  add(std::move(row), [](Row&) {});
}

std::vector<std::string> Model::inputNames() const {
  std::vector<std::string> names;
  for (const std::size_t input : inputs_) names.push_back(rows_[input].name);
  return names;
}

void Model::check() const {
  if (inputs_.empty()) throw Fault("there is no input: no row has a type.");
  if (rows_.back().kind != Row::Kind::total) return;
  if (const Row* row = find("Total")) {
    throw Fault(row->place + ": without a formula Total is the sum of all inputs; " +
                "give this one another name.");
  }
}

}  // namespace palvex::simulation
