#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "families/m_Beta.h"
#include "families/m_Gamma.h"
#include "families/m_Histogram.h"
#include "families/m_Johnson.h"
#include "laws/Moments.h"
#include "laws/Support.h"
#include "runtime/Limits.h"

namespace palvex {

/// What validation derives from the parameters and the worksheet, once for many evaluations.
struct Fitted {
  m_Histogram::Arrays histogram;
  m_Johnson::JohnsonParams johnson;
  m_Johnson::Curve curve = m_Johnson::Curve::none;  // the one of johnson.typeName
};

/// What a family works out from its parameters alone when an evaluation first needs it, kept as
/// long as the parameters stand.
using Prepared = std::variant<std::monostate, m_Beta::Shapes, m_Gamma::IncompleteGamma>;

/// What a family computes on: the current parameters, what was fitted at the last validation, and
/// the place of what is prepared for these parameters, null where they stand for one call only.
struct Values {
  const std::array<double, 4>& p;
  const Fitted& fitted;
  Prepared* prepared = nullptr;
};

/// What validation asks of a numeric parameter; the wording of the message goes with it.
enum class Demand {
  real,               // "."
  statedReal,         // ".  Must be a real number."
  nonNegative,        // ".  Must be a non-negative real number."
  positive,           // ".  Must be a positive real number."
  positiveNoArticle,  // ".  Must be positive real number."
};

/// One family of distributions as the distribution object uses it: a row of the dispatch.
struct Family {
  std::string_view name;
  std::array<Demand, 4> demands;
  /// How many parameters an evaluation reads; 0 for a family that works on what was fitted.
  std::size_t parametersRead;
  /// What validation does once each parameter has passed: compares parameters, fits the curve.
  /// Answers with a fault in one sentence, or "". Null when there is nothing to do.
  std::string (*fit)(const std::array<double, 4>& p, Fitted& fitted, Line);
  /// For a family of worksheet data, in place of the parameters' checks: tabulates the data range
  /// of param1 in the layout of param2. Answers like `fit`. Null for the others.
  std::string (*tabulate)(const Variant& param1, const Variant& param2, Fitted& fitted,
                          Line) = nullptr;
  double (*density)(const Values&, double x, const Limits&, const Variant& priorX, Line);
  /// The same density without limits in a form that never fails, for graphs; infinite at a pole.
  /// Null where `density` holds everywhere.
  double (*stableDensity)(const Values&, double x) = nullptr;
  /// Whether the terms of `density` stay in the range of doubles at x, so that it does not raise.
  /// Null for a family whose terms leave it for absurd parameters only.
  bool (*densityHolds)(const Values&, double x) = nullptr;
  double (*cumulative)(const Values&, double x, Line);
  /// The two halves of a draw: the kept band, and the value at position p of it.
  Band (*band)(const Values&, const Limits&, Line);
  double (*value)(const Values&, const Band&, double p, Line);
  /// Whether the value at p is the same whatever the limits, which then are not consulted at all.
  /// Null for a family whose limits always count.
  bool (*ignoresLimits)(const Values&, double p);
  Support (*support)(const Values&);
  /// Whether limits that reach into the support keep nothing all the same. Null for a family
  /// without gaps.
  bool (*keepsNothing)(const Values&, const Limits&) = nullptr;
  /// Mean and standard deviation of what the limits keep, for parameters within their demands and a
  /// support with a width: in closed form, or nothing where that would lose digits; and by
  /// numerical integration.
  std::optional<laws::Moments> (*moments)(const Values&, const Limits&);
  laws::Moments (*integratedMoments)(const Values&, const Limits&);
};

/// The row of a type's name, or null for a name without a family.
[[nodiscard]] const Family* findFamily(std::string_view name) noexcept;

}  // namespace palvex
