#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/Family.h"
#include "engine/Law.h"
#include "runtime/Limits.h"
#include "runtime/Object.h"
#include "runtime/Variant.h"

namespace palvex {

/// One continuous distribution: a type chosen by name, up to four parameters and two truncation
/// limits.
///
/// A parameter or limit is a number, a text that reads as a number, or a worksheet range (any
/// object with the members "Application", "Address" and "Value"). A limit may also be the text of
/// NegInfinity or PosInfinity, or stay empty: no limit on that side.
///
/// Usual order: set distType, param1.., ltl, utl and Dynamic; call ParamsOK; then pdf, cdf, RandVal
/// as often as wanted. With Dynamic false these work on the values of the last ParamsOK, allocate
/// nothing and ask the host nothing; with Dynamic true they read the live values at every call.
///
/// Before the first ParamsOK, Dynamic being false, every parameter counts as 0 and there are no
/// limits: a Normal then answers 0 for every draw, for example. After a ParamsOK that answered
/// false, the values are those of the checks that it passed, and may be partly new: do not evaluate
/// then. A new distType keeps the values of the old one until the next ParamsOK. A Johnson curve or
/// a histogram is that of the last ParamsOK that got so far, also with Dynamic true, where only the
/// limits are live. `law` refuses in all these states.
///
/// A copy is a distribution of its own, but ranges are the host's objects, which both refer to.
///
/// The computing members raise RuntimeError, and any member std::bad_alloc where there is no
/// memory: the object is then as it was, but for a ParamsOK, which leaves it as one that answered
/// false. Distinct objects may be used on distinct threads at once.
class c_Distribution {
 public:
  /// Without a type; see the states above.
  c_Distribution() = default;
  /// @{
  /// All or nothing: without memory for the copy this object stays as it was.
  c_Distribution(const c_Distribution& other) = default;
  c_Distribution& operator=(const c_Distribution& other) { return *this = c_Distribution(other); }
  /// @}
  /// @{
  /// The other object may then only be assigned to or destroyed.
  c_Distribution(c_Distribution&& other) noexcept = default;
  c_Distribution& operator=(c_Distribution&& other) noexcept = default;
  /// @}

  /// @{
  /// The parameters in the type's order, see ParamName; those beyond NumParams are not looked at.
  /// A histogram's first one is the range of its data, the second one the layout of that, one of
  /// DataConfigurations.
  Variant param1;
  Variant param2;
  Variant param3;
  Variant param4;
  /// @}
  Variant ltl;           ///< lower truncation limit
  Variant utl;           ///< upper truncation limit; below `ltl` the two outer pieces are kept
  bool Active = false;   ///< a flag for the host; the object never reads it
  bool Dynamic = false;  ///< true: every evaluation reads the live parameters and limits
  /// @{
  /// A text for the host, which the object never reads.
  std::string graphMax;
  std::string graphMin;
  std::string numberFormat;
  /// @}

  // ---- catalogue ----

  /// The names of the ten types, a 1-based array of texts.
  [[nodiscard]] Variant ValidDistributions() const;
  /// The three layouts of a histogram's data, a 1-based array of texts.
  [[nodiscard]] Variant DataConfigurations() const;
  /// The type's name, "" before the first valid assignment.
  [[nodiscard]] std::string distType() const;
  /// Sets the type. A name that is not in ValidDistributions (exact to the letter case) is refused
  /// with a message box, and the type stays as it was.
  void distType(std::string_view name);
  /// How many parameters the type has; 0 without a type.
  [[nodiscard]] std::int16_t NumParams() const;
  /// The display name of parameter 1..NumParams; "" for any other number.
  [[nodiscard]] std::string ParamName(std::int32_t paramNumber) const;
  /// "-Infinity", the text that says that there is no lower limit.
  [[nodiscard]] std::string NegInfinity() const { return "-Infinity"; }
  /// "+Infinity", the text that says that there is no upper limit.
  [[nodiscard]] std::string PosInfinity() const { return "+Infinity"; }

  /// A starting value for parameter paramIndex (from 1) that centres the distribution on the number
  /// of a worksheet cell; 0 for a parameter that the type does not have, for a histogram and
  /// without a type. Error 6 where the value leaves the double range.
  [[nodiscard]] double GuessParamValue(std::int16_t paramIndex, double cellValue) const;

  // ---- validation ----

  /// Checks the parameters and limits; on success fixes the values that evaluations use while
  /// Dynamic is false.
  /// @param errCause  receives one sentence about the first fault, "" when there is none
  /// @returns whether there is no fault
  /// @throws RuntimeError when a range that was recognised does not answer, or on an arithmetic
  /// fault
  bool ParamsOK(std::string& errCause);

  /// The law itself, between the limits, of what ParamsOK has let pass; with Dynamic true of the
  /// values as they are now.
  /// @throws std::logic_error unless ParamsOK last let the parameters pass
  /// @throws std::invalid_argument for a law that has no probability between its limits, a Johnson
  ///         fit without a curve, and live values that ParamsOK would not let pass
  /// @throws RuntimeError when a live cell does not answer
  [[nodiscard]] Law law() const;

  // ---- evaluation; 0 without a type ----
  // The results differ from the law's in places: see docs/departures.md, and `law`.

  /// The density at x, 0 where the limits cut x away; not rescaled by the probability that they
  /// keep.
  /// @param noTruncation  true: as if there were no limits
  /// @param priorX        for a histogram: the point drawn before x, so that no bin in between is
  /// lost
  double pdf(double x, bool noTruncation = false, const Variant& priorX = Variant::missing());
  /// The probability of a value up to x. The limits play no part.
  double cdf(double x);
  /// The value at the position rndP of the truncated distribution's cumulative scale: a random draw
  /// when rndP is a uniform random number of [0, 1].
  double RandVal(double rndP) { return Dynamic ? liveDraw(rndP) : keptDraw(rndP); }

  // ---- moments: of what the limits keep, in proportion; 0 without a type ----
  // Error 11 when the limits leave no probability in double precision, 5 for parameters that no
  // distribution has, 6 for a result beyond the double range.

  /// The mean, by the family's closed form; by integration where that would lose digits (a narrow
  /// band, a far tail).
  double mean() const;
  /// The standard deviation; or, with a number xMean, sqrt(E (X - xMean)^2).
  double StDev(const Variant& xMean = Variant::missing()) const;
  /// The mean by numerical integration, an independent check of `mean`. Where the values crowd so
  /// near an end that no double lies between, as with a lognormal median below the smallest one, it
  /// raises error 6 or 11 though `mean` still answers.
  double CalcMean() const;
  /// sqrt(E (X - mean)^2) by numerical integration: the standard deviation for the mean of
  /// CalcMean.
  double CalcStdev(double mean) const;

  // ---- graph data ----

  /// Where a graph of the distribution begins: at a lower limit or a finite end of the values,
  /// otherwise `numSD` standard deviations (4 for a number <= 0) below the mean. Of a distribution
  /// with one value only, 1 below it. Always below XMax.
  double XMin(double numSD = defaultNumSD) const;
  /// Where a graph ends, likewise. Both raise error 6 where that is beyond the range of doubles.
  double XMax(double numSD = defaultNumSD) const;
  /// Fills the three series with equally spaced points from `graphXmin` to `graphXmax`, both
  /// included: NumPoints of them, 101 when there are none yet. GraphPDF is ScaleFactor times the
  /// density, GraphOL the same as if there were no limits. Where a density is infinite, it is taken
  /// half a step inside.
  /// @param noTruncation  true: GraphPDF as if there were no limits, too
  /// Error 5 unless graphXmin < graphXmax. On any error the series stay as they are.
  void CreateGraphData(double graphXmin, double graphXmax, bool noTruncation = false);

  /// A multiplier for graphs, 1 at first.
  [[nodiscard]] double ScaleFactor() const { return scaleFactor_; }
  /// A value that is not above 0 stores 1.
  void ScaleFactor(double value) { scaleFactor_ = value > 0 ? value : 1; }
  /// The number of graph points.
  [[nodiscard]] std::int16_t NumPoints() const;
  /// Gives the three series `size` points, keeping what they hold; nothing happens for a size below
  /// 1. Returns an empty variant. On an error the series stay as they are.
  Variant ResizeArrays(std::int16_t size);
  /// @{
  /// Point i = 1..NumPoints of a series: 0 for any other i, where an assignment does nothing.
  [[nodiscard]] double GraphX(std::int16_t i) const { return point(graphX_, i); }
  void GraphX(std::int16_t i, double value) { setPoint(graphX_, i, value); }
  [[nodiscard]] double GraphPDF(std::int16_t i) const { return point(graphPDF_, i); }
  void GraphPDF(std::int16_t i, double value) { setPoint(graphPDF_, i, value); }
  [[nodiscard]] double GraphOL(std::int16_t i) const { return point(graphOL_, i); }
  void GraphOL(std::int16_t i, double value) { setPoint(graphOL_, i, value); }
  /// @}

 private:
  friend Law makeLaw(std::string_view type, std::span<const Variant> parameters, const Variant& ltl,
                     const Variant& utl);

  using Series = std::vector<double>;
  /// What validation lets pass as a parameter or limit.
  struct Permission {
    bool infinity = false;
    bool negative = true;
    bool zero = true;
  };

  static double point(const Series& series, std::int16_t i);
  static void setPoint(Series& series, std::int16_t i, double value);

  // Values of parameters and limits (Values.cpp).
  static Boolean IsRange(const Variant& v);
  static double liveParameter(const Variant& parameter, Line caller = Line::here());
  static Variant liveLimit(const Variant& limit, Line caller = Line::here());
  [[nodiscard]] std::array<const Variant*, 4> parameters() const {
    return {&param1, &param2, &param3, &param4};
  }
  [[nodiscard]] Values liveValues(std::size_t count, Line caller) const;
  [[nodiscard]] Limits liveLimits(Line caller = Line::here()) const;
  [[nodiscard]] Limits currentLimits(Line caller = Line::here()) const {
    return Dynamic ? liveLimits(caller) : staticLimits_;
  }
  /// The result of `evaluate` for the values that count now: the kept ones, or live ones. A fitted
  /// curve or histogram has no live values.
  template <class Object, class Evaluate>
  static auto with(Object& object, const Family& family, Evaluate&& evaluate,
                   Line caller = Line::here()) {
    if (!object.Dynamic || family.readsFit) return evaluate(object.kept_);
    return withLive(object, family, evaluate, caller);
  }
  /// A function of its own, so that an evaluation of kept values does not set up the live ones.
  template <class Evaluate>
  [[gnu::noinline]] static auto withLive(const c_Distribution& object, const Family& family,
                                         Evaluate& evaluate, Line caller) {
    Values live = object.liveValues(family.parameters->size(), caller);
    return evaluate(live);
  }
  void dropPrepared() {
    kept_.prepared = {};
    band_.reset();
  }
  void setStaticParam(std::size_t i, double value);
  void SetStaticParams(const Family& family, Line caller = Line::here());
  void SetStaticLimits(Line caller = Line::here());

  // Evaluation (Evaluation.cpp).
  double keptDraw(double rndP);
  double liveDraw(double rndP);
  [[nodiscard]] std::string parameterRecord(std::size_t count) const;
  /// Add the record of a call to an error's description. When memory is short it is left out.
  void addCall(RuntimeError& error, std::string_view member, double argument) const noexcept;
  void addDraw(RuntimeError& error, double rndP, const Variant& lower,
               const Variant& upper) const noexcept;

  // Moments (Moments.cpp).
  enum class Method { closedForm, integration };
  [[nodiscard]] laws::Moments keptMoments(Method method, Line caller = Line::here()) const;
  [[nodiscard]] static laws::Moments momentsOf(const Family& family, const Values& values,
                                               const Limits& limits, Method method,
                                               Line caller = Line::here());

  // Graph (Graph.cpp).
  static constexpr double defaultNumSD = 4;
  [[nodiscard]] std::pair<double, double> plotRange(double numSD, Line caller = Line::here()) const;
  [[nodiscard]] std::pair<double, double> plotRange(const Family& family, const Values& values,
                                                    double deviations) const;

  // Validation (Validation.cpp).
  std::string checkAndFit(const Family* family, Line caller = Line::here());
  std::string checkAndKeepLimits(const Family& family, Line caller = Line::here());
  /// How the sentence about a bad parameter or limit begins, "" for a good one. Takes a copy,
  /// because the host may change the original while it answers.
  static std::string BadParam(Variant param, const Permission& allowed, Line caller = Line::here());
  static Boolean CellValueError(Object& range);
  [[nodiscard]] bool AllTruncated(const Family& family, Line caller = Line::here()) const;

  const Family* family_ = nullptr;

  bool paramsOk_ = false;  // what ParamsOK last answered, for this type
  Values kept_;            // for Dynamic false
  Variant staticLtl_;
  Variant staticUtl_;
  Limits staticLimits_;       // the numeric ones of staticLtl_ and staticUtl_
  std::optional<Band> band_;  // what staticLimits_ keep; empty until a draw asks for it

  double scaleFactor_ = 1;
  Series graphX_;
  Series graphPDF_;
  Series graphOL_;
};

}  // namespace palvex
