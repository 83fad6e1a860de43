#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace palvex::simulation {

/// An expression of the values of other rows, which stand in it as [Name].
struct Formula {
  std::string text;               ///< as it was written
  std::string expression;         ///< `text` with [0], [1], ... in the names' places
  std::vector<std::size_t> rows;  ///< places in Model::rows that [0], [1], ... stand for

  /// @param rowOf  the row of a name; throws Fault for one that is not there
  /// @throws Fault when the text is no formula
  static Formula parse(const std::string& text,
                       const std::function<std::size_t(std::string_view name)>& rowOf);
};

/// A formula made ready to be worked out many times, on one thread.
class Calculator {
 public:
  /// @param formula  as Formula::parse made it
  explicit Calculator(const Formula& formula);
  /// @{
  /// References to operands stay valid.
  Calculator(Calculator&&) noexcept;
  Calculator& operator=(Calculator&&) noexcept;
  /// @}
  ~Calculator();

  /// The value of the formula's row number `i` (as in Formula::rows), to be set before a call.
  [[nodiscard]] double& operand(std::size_t i) { return operands_[i]; }
  /// @returns infinite or NaN where the formula has no value
  [[nodiscard]] double operator()() const;
  /// How many values the formula has: one, but for commas outside of a function's brackets.
  [[nodiscard]] int values() const;

 private:
  struct Parser;

  std::vector<double> operands_;
  std::unique_ptr<Parser> parser_;
};

}  // namespace palvex::simulation
