#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "families/Truncation.h"
#include "families/m_Beta.h"
#include "families/m_Gamma.h"
#include "families/m_Histogram.h"
#include "families/m_Johnson.h"
#include "laws/AnyLaw.h"
#include "laws/Moments.h"
#include "laws/Support.h"
#include "runtime/Limits.h"

namespace palvex {

/// The sentence about a Johnson fit that failed and gave no reason.
inline constexpr const char* noCurve = "No Johnson curve was found for these moments.";

/// What validation derives from the parameters and the worksheet, once for many evaluations.
struct Fitted {
  m_Histogram::Arrays histogram;                    ///< of worksheet data
  m_Johnson::JohnsonParams johnson;                 ///< of four moments
  m_Johnson::Curve curve = m_Johnson::Curve::none;  ///< the one of johnson.typeName
};

/// The numbers that an evaluation works with.
struct Values {
  std::array<double, 4> p{};  ///< the parameters
  Fitted fitted;              ///< what the type needs of it
  /// What a family works out from its parameters alone when an evaluation first needs it; empty it
  /// whenever a parameter changes.
  std::variant<std::monostate, m_Beta::Shapes, m_Gamma::IncompleteGamma> prepared;
};

/// What validation asks of a numeric parameter; beside it, how the message about it ends.
enum class Demand {
  real,               // "."
  statedReal,         // ".  Must be a real number."
  nonNegative,        // ".  Must be a non-negative real number."
  positive,           // ".  Must be a positive real number."
  positiveNoArticle,  // ".  Must be positive real number."
  worksheetData,      // judged by the tabulation
};

/// One parameter of a type: its display name, what it must be, and the value that centres the type
/// on a number x (see c_Distribution::GuessParamValue).
class Parameter {
 public:
  /// @param guessed  x -> the value that centres the type on x
  constexpr Parameter(std::string_view displayName, Demand asked, double (*guessed)(double x))
      : name(displayName), demand(asked), guess(guessed) {}

  std::string_view name;                ///< as a host shows it
  Demand demand = Demand::real;         ///< what validation asks
  double (*guess)(double x) = nullptr;  ///< x -> the value that centres the type on x

 private:
  friend class Parameters;
  constexpr Parameter() = default;
};

/// The parameters of a type, in their order.
class Parameters {
 public:
  /// @param given  one to four parameters
  constexpr Parameters(std::initializer_list<Parameter> given) : count_(given.size()) {
    std::size_t i = 0;
    for (const Parameter& one : given) rows_.at(i++) = one;
  }
  /// How many there are.
  [[nodiscard]] constexpr std::size_t size() const noexcept { return count_; }
  /// @param i  from 0
  [[nodiscard]] constexpr const Parameter& operator[](std::size_t i) const { return rows_.at(i); }
  /// The first one.
  [[nodiscard]] constexpr const Parameter* begin() const noexcept { return rows_.data(); }
  /// Behind the last one.
  [[nodiscard]] constexpr const Parameter* end() const noexcept { return rows_.data() + count_; }

 private:
  std::array<Parameter, 4> rows_{Parameter{}, Parameter{}, Parameter{}, Parameter{}};
  std::size_t count_;
};

/// A field that a row of a table must not leave out: without it the row does not compile. It serves
/// as the T that it holds.
template <class T>
class Cell {
 public:
  template <std::convertible_to<T> Given>
  /// Implicit, so that a row of the table reads as its contents.
  constexpr Cell(Given given) noexcept : value_(given) {}
  /// What the cell holds, wherever a T is expected.
  constexpr operator T() const noexcept { return value_; }
  /// What it holds.
  constexpr const T& operator*() const noexcept { return value_; }
  /// A member of what it holds.
  constexpr const T* operator->() const noexcept { return &value_; }

 private:
  T value_;
};

/// The textbook law of a type (see laws/), in the form in which c_Distribution uses it.
struct LawOfType {
  /// The law between limits, for parameters that validation lets pass.
  /// @throws std::invalid_argument for limits that keep no probability, and for a fit without a
  /// curve
  std::shared_ptr<const laws::AnyLaw> (*between)(std::string_view type, const Values&,
                                                 const Limits&);
  /// The density that the family reports, without limits and in a form that never fails; infinite
  /// at a pole. Null for a family whose own form never fails.
  std::function<double(double x)> (*density)(const Values&);
  /// Where the law has values, without limits.
  Support (*support)(const Values&);
  /// Whether limits that reach into the support keep nothing all the same. Null for a law without
  /// gaps.
  bool (*keepsNothing)(const Values&, const Limits&);
  /// Mean and standard deviation of what the limits keep, for parameters within their demands and a
  /// support with a width: in closed form, or nothing where that would lose digits.
  std::optional<laws::Moments> (*moments)(const Values&, const Limits&);
  /// The same by numerical integration, which holds everywhere.
  laws::Moments (*integratedMoments)(const Values&, const Limits&);
};

/// The parameters `first` to `last`, counted from 0, of which none may be less than the one before.
struct Ascending {
  std::size_t first;  ///< place of the first one
  std::size_t last;   ///< place of the last one; `first` where nothing ascends
};

/// A type of distribution: all that the object knows of it. A cell that a type has no use for is
/// null.
struct Family {
  /// As a host chooses it: "Normal".
  std::string_view name;
  /// Names, demands and guesses.
  Cell<Parameters> parameters;
  /// Whether evaluations work on what validation fitted, and not on the parameters.
  Cell<bool> readsFit;
  /// Which parameters must not decrease.
  Cell<Ascending> ascending;
  /// What validation does once the parameters have passed: fits the curve. Answers with a fault in
  /// one sentence, or "".
  Cell<std::string (*)(Values&, Line)> fit;
  /// For worksheet data, in place of the parameters' checks: tabulates the data range of param1 in
  /// the layout of param2. Answers like `fit`.
  Cell<std::string (*)(const Variant& param1, const Variant& param2, Values&, Line)> tabulate;
  /// What c_Distribution::pdf answers.
  Cell<double (*)(Values&, double x, const Limits&, const Variant& priorX, Line)> density;
  /// Whether the terms of `density` stay in the range of doubles at x, so that it does not raise.
  /// Null where they leave it for absurd parameters only.
  Cell<bool (*)(Values&, double x)> densityHolds;
  /// What c_Distribution::cdf answers: the limits play no part.
  Cell<double (*)(Values&, double x, Line)> cumulative;
  /// First half of a draw: the band of probabilities that the limits keep.
  Cell<Band (*)(Values&, const Limits&, Line)> band;
  /// Second half of a draw: the value at position p of the band.
  Cell<double (*)(Values&, const Band&, double p, Line)> value;
  /// Whether the value at p is the same whatever the limits, which then are not consulted at all.
  /// Null where the limits always count.
  Cell<bool (*)(const Values&, double p)> ignoresLimits;
  /// The textbook law, for Law, the plot range and the moments.
  Cell<LawOfType> law;

  /// Whether each parameter meets its demand.
  [[nodiscard]] bool meetsDemands(const Values& values) const;
  /// Whether there is a law with these values.
  [[nodiscard]] bool isLawful(const Values& values) const;
  /// Whether validation looks at the parameters together, too.
  [[nodiscard]] bool relatesParameters() const {
    return ascending->first < ascending->last || fit != nullptr;
  }
  /// The fault of the parameters together in one sentence, or ""; fits what is to be fitted.
  std::string fitTo(Values& values, Line line) const;
};

/// The ten types, in the order in which a host lists them.
extern const std::array<Family, 10> families;

/// The layouts of a histogram's worksheet data.
inline constexpr auto dataConfigurations = m_Histogram::layouts;

/// The row of a type's name, exact to the letter case, or null.
[[nodiscard]] const Family* findFamily(std::string_view name) noexcept;

}  // namespace palvex
