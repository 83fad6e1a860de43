// CSV files, tables of models in them with any formulas, and their simulation: figures that fit
// together, or a sentence about what is wrong.

#include "hosts/terminal/Table.h"

#include "Fuzz.h"
#include "hosts/terminal/CsvSheet.h"
#include "simulation/Simulation.h"

namespace palvex::fuzz {
namespace {

using namespace simulation;
using terminal::Table;
using terminal::Worksheet;

/// What is written as a table is read back.
void readBack(FuzzedDataProvider& data) {
  constexpr std::string_view letters = "ab,\"\n #";
  std::array<std::string, 3> texts{};
  Table table({"text", "number"});
  const double value = std::ldexp(data.ConsumeIntegral<std::int64_t>(), -30);
  for (std::string& text : texts) {
    text = data.ConsumeRandomLengthString(10);
    for (char& c : text) c = letters[static_cast<unsigned char>(c) % letters.size()];
    text.insert(text.begin(), 'x');
    table.add({text, value});
  }
  const std::string csv = table.text(terminal::Format::csv);
  const Worksheet sheet = Worksheet::fromCsv(csv, "table");
  for (int i = 0; i < 3; ++i) {
    if (sheet.at({i + 2, 1}) != Variant(texts.at(static_cast<std::size_t>(i))) ||
        sheet.at({i + 2, 2}) != Variant(value))
      fail("read back otherwise: " + csv);
  }
}

std::string formula(FuzzedDataProvider& data) {
  constexpr std::array tokens{
      "[A]", "[B]", "[ C ]", "[d]", "[",  "]",  "1",    "2.5",  "1e9",  "0x1F", "-",     "+",
      "*",   "/",   "^",     "(",   ")",  ",",  "?",    ":",    "<",    ">=",   "==",    "!=",
      "=",   "&&",  "||",    "!",   "\"", "_e", "min(", "max(", "sum(", "ln(",  "sqrt(", "if(",
      "sin", "_pi", "1e",    ".",   " ",  "%",  "#",    "e",    "abs(", "avg(", "rint(", "0b1"};
  std::string text = data.ConsumeRandomLengthString(6);
  for (int i = data.ConsumeIntegralInRange(1, 12); i > 0; --i) text += oneOf(data, tokens);
  return text;
}

/// A table of a model with a few rows, for the most part as people write it.
std::string modelText(FuzzedDataProvider& data) {
  constexpr std::array cells{"1",    "2",    "5",      "0.5", "-3",        "10",       "",
                             "",     "=[A]", "=[B]",   "=C2", "=D3",       "=A:A",     "=C2:E3",
                             "25%",  "x",    "#N/A",   "=[",  "-Infinity", "Raw Data", "+Infinity",
                             "=[c]", "=B3",  "1e-300", "'",   "1 000",     "0x1",      "=[ b ]"};
  Table table(
      {"Name", "Type", "Param1", "Param2", "Param3", "Param4", "LTL", "UTL", "Chance", "Formula"});
  const int rows = data.ConsumeIntegralInRange(1, 5);
  for (int i = 0; i < rows; ++i) {
    const LawType& type = oneOf(data, lawTypes);
    const bool isFormula = i > 0 && data.ConsumeIntegralInRange(0, 2) == 0;
    std::vector<Table::Cell> row(10);
    row[0] = std::string(1, static_cast<char>('A' + i));
    if (isFormula) row[9] = formula(data);
    if (!isFormula) row[1] = std::string(type.name);
    for (std::size_t j = 2; j < 9 && !isFormula; ++j) {
      const int filled = data.ConsumeIntegralInRange(0, 3);
      if (static_cast<int>(j) - 2 >= type.parameterCount() && filled < 3) continue;
      row[j] = filled < 2 ? Table::Cell(number(data)) : Table::Cell(oneOf(data, cells));
    }
    table.add(row);
  }
  return table.text(terminal::Format::csv);
}

/// Any rank correlations of a model's inputs, made possible.
Correlations correlationsOf(FuzzedDataProvider& data, const Model& model) {
  const std::size_t n = model.inputs().size();
  Correlations correlations{model.inputNames(), std::vector<double>(n * n, 1)};
  std::vector<double>& ranks = correlations.ranks;
  for (std::size_t i = 1; i < n; ++i) {
    for (std::size_t j = 0; j < i; ++j)
      ranks[i * n + j] = ranks[j * n + i] = data.ConsumeIntegral<std::int8_t>() / 128.0;
  }
  correlations.repair();
  return correlations;
}

void simulate(FuzzedDataProvider& data, const Model& model) {
  Settings settings;
  settings.trials = data.ConsumeIntegralInRange<std::uint64_t>(1, 40);
  settings.sampling = data.ConsumeBool() ? Sampling::lhs : Sampling::random;
  settings.skipFailures = true;
  if (data.ConsumeBool()) settings.correlations = correlationsOf(data, model);
  Simulation simulation(model, settings);
  Worker worker(simulation);
  while (const auto task = simulation.next()) simulation.add(worker.work(*task).value());
  const Results results = simulation.results();
  if (results.trials + results.failures != settings.trials) fail("trials were lost");
  for (const ResultStatistics& result : results.results) {
    for (const auto& [percent, value, low, high] : result.percentiles) {
      const bool inside = result.moments.smallest <= low && low <= value && value <= high &&
                          high <= result.moments.greatest;
      if (!inside && results.trials > 0) fail("a percentile outside of its interval");
    }
  }
}

}  // namespace

void run(FuzzedDataProvider& data) try {
  const int kind = data.ConsumeIntegralInRange(0, 3);
  if (kind == 0) return readBack(data);
  const std::string text = kind == 1 ? data.ConsumeRandomLengthString(300) : modelText(data);
  const terminal::CsvSheet sheet(Worksheet::fromCsv(text, "table"));
  if (kind == 1 && data.ConsumeBool()) return void(Correlations::fromSheet(sheet));
  simulate(data, Model::fromSheet(sheet));
} catch (const Fault&) {                 // no model, and why
} catch (const terminal::SheetError&) {  // no sheet, and why
}

}  // namespace palvex::fuzz
