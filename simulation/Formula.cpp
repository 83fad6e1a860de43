#include "simulation/Formula.h"

#include <muParser.h>

#include <charconv>
#include <cstring>
#include <limits>
#include <regex>
#include <string_view>
#include <system_error>

#include "simulation/Fault.h"
#include "simulation/Text.h"

namespace palvex::simulation {

namespace {

std::string operandName(std::size_t i) {
  return '[' + std::to_string(i) + ']';
}

/// Reads an unsigned number where one stands. The parser's own reader uses streams, which report a
/// lack of memory as a text that is no number.
int readNumber(const char* text, int* position, double* value) {
  if (std::string_view(".0123456789").find(*text) == std::string_view::npos) return 0;
  const auto [end, fault] = std::from_chars(text, text + std::strlen(text), *value);
  if (fault != std::errc()) return 0;
  *position += static_cast<int>(end - text);
  return 1;
}

/// A lone "=" would assign to an operand.
bool assigns(std::string_view expression) {
  for (std::size_t at = 0; (at = expression.find('=', at)) != std::string_view::npos; ++at) {
    if (expression.substr(at).starts_with("==")) {
      ++at;
    } else if (at == 0 ||
               std::string_view("<>!").find(expression[at - 1]) == std::string_view::npos) {
      return true;
    }
  }
  return false;
}

/// What the parser says is wrong, in the words of the formula as it was written: with the rows'
/// names, and without positions, which count in another text.
std::string complaint(const mu::Parser::exception_type& error, const Formula& formula,
                      const std::vector<std::string>& names) {
  std::string text = std::regex_replace(
      error.GetMsg(), std::regex(R"( (found )?at (expression )?position -?\d+)"), "");
  for (std::size_t i = 0; i < formula.rows.size(); ++i) {
    const std::string operand = operandName(i);
    for (std::size_t at = 0; (at = text.find(operand, at)) != std::string::npos;) {
      text.replace(at, operand.size(), '[' + names[i] + ']');
      at += names[i].size() + 2;
    }
  }
  while (!text.empty() && (text.back() == '.' || text.back() == '!')) text.pop_back();
  return text;
}

}  // namespace

struct Calculator::Parser {
  mu::Parser parser;
};

Formula Formula::parse(const std::string& text,
                       const std::function<std::size_t(std::string_view name)>& rowOf) {
  Formula formula;
  formula.text = text;
  std::vector<std::string> names;
  std::string_view rest = trimmed(text);
  if (rest.starts_with('=')) rest.remove_prefix(1);  // as on a worksheet
  for (;;) {
    const std::size_t opened = rest.find('[');
    const std::string_view plain = rest.substr(0, opened);
    if (plain.find(']') != std::string_view::npos)
      throw Fault("the formula has a ] without its [.");
    formula.expression += plain;
    if (opened == std::string_view::npos) break;
    const std::size_t closed = rest.find(']', opened);
    if (closed == std::string_view::npos) throw Fault("the formula has a [ without its ].");
    const std::string_view name = trimmed(rest.substr(opened + 1, closed - opened - 1));
    const std::size_t row = rowOf(name);
    std::size_t i = 0;
    while (i < formula.rows.size() && formula.rows[i] != row) ++i;
    if (i == formula.rows.size()) {
      formula.rows.push_back(row);
      names.emplace_back(name);
    }
    formula.expression += operandName(i);
    rest.remove_prefix(closed + 1);
  }

  if (assigns(formula.expression)) {
    throw Fault("the formula does not parse: write == to compare.");
  }
  try {
    if (Calculator(formula).values() != 1) throw Fault("the formula has more than one value.");
  } catch (const mu::Parser::exception_type& error) {
    throw Fault("the formula does not parse: " + complaint(error, formula, names) + '.');
  }
  return formula;
}

Calculator::Calculator(const Formula& formula)
    : operands_(formula.rows.size(), 1), parser_(std::make_unique<Parser>()) {
  mu::Parser& parser = parser_->parser;
  // With brackets as letters an operand is one name, and never part of a longer good one.
  parser.DefineNameChars("0123456789_abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ[]");
  parser.AddValIdent(readNumber);
  for (std::size_t i = 0; i < operands_.size(); ++i) {
    parser.DefineVar(operandName(i), &operands_[i]);
  }
  parser.SetExpr(formula.expression);
}

Calculator::Calculator(Calculator&&) noexcept = default;
Calculator& Calculator::operator=(Calculator&&) noexcept = default;
Calculator::~Calculator() = default;

double Calculator::operator()() const try {
  return parser_->parser.Eval();
} catch (const mu::Parser::exception_type&) {
  return std::numeric_limits<double>::quiet_NaN();
}

int Calculator::values() const {
  int count = 0;
  static_cast<void>(parser_->parser.Eval(count));
  return count;
}

}  // namespace palvex::simulation
