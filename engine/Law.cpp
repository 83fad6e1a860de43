#include "engine/Law.h"

#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

#include "engine/Family.h"
#include "engine/LawTypes.h"
#include "engine/c_Distribution.h"
#include "laws/Beta.h"
#include "laws/Exponential.h"
#include "laws/Gamma.h"
#include "laws/Histogram.h"
#include "laws/Johnson.h"
#include "laws/Kept.h"
#include "laws/Lognormal.h"
#include "laws/Normal.h"
#include "laws/Triangular.h"
#include "laws/Uniform.h"
#include "laws/Weibull.h"
#include "runtime/Object.h"

namespace palvex {

namespace {

using Parameters = std::array<double, 4>;
using SharedLaw = std::shared_ptr<const laws::AnyLaw>;

template <class TheLaw>
SharedLaw shared(std::string_view type, TheLaw law, const Limits& limits) {
  return std::make_shared<const laws::Kept<TheLaw>>(type, std::move(law), limits);
}

SharedLaw sharedJohnson(std::string_view type, const Fitted& fitted, const Limits& limits) {
  const m_Johnson::JohnsonParams& curve = fitted.johnson;
  if (!curve.message.empty()) throw std::invalid_argument(curve.message);
  const bool isNormal = fitted.curve == m_Johnson::Curve::normal;
  if (fitted.curve == m_Johnson::Curve::none || (!isNormal && !(curve.delta > 0))) {
    throw std::invalid_argument("No Johnson curve was found for these moments.");
  }
  return shared(type, laws::Johnson(curve, fitted.curve), limits);
}

/// The law of a type for parameters that meet its demands, and what was fitted to them.
SharedLaw lawOf(const Family& family, const Parameters& p, const Fitted& fitted,
                const Limits& limits) {
  using Maker = SharedLaw (*)(std::string_view, const Parameters&, const Fitted&, const Limits&);
  struct Row {
    std::string_view type;
    Maker make;
  };
  static constexpr std::array<Row, 10> rows{{
      {"Normal", [](auto type, auto& p, auto&, auto& limits) {
         return shared(type, laws::Normal(p[0], p[1]), limits);
       }},
      {"Uniform", [](auto type, auto& p, auto&, auto& limits) {
         return shared(type, laws::Uniform(p[0], p[1]), limits);
       }},
      {"Triangular", [](auto type, auto& p, auto&, auto& limits) {
         return shared(type, laws::Triangular(p[0], p[1], p[2]), limits);
       }},
      {"Lognormal", [](auto type, auto& p, auto&, auto& limits) {
         return shared(type, laws::Lognormal(p[0], p[1], p[2]), limits);
       }},
      {"Exponential", [](auto type, auto& p, auto&, auto& limits) {
         return shared(type, laws::Exponential(p[0], p[1]), limits);
       }},
      {"Weibull", [](auto type, auto& p, auto&, auto& limits) {
         return shared(type, laws::Weibull(p[0], p[1], p[2]), limits);
       }},
      {"Beta", [](auto type, auto& p, auto&, auto& limits) {
         return shared(type, laws::Beta(p[0], p[1], p[2], p[3]), limits);
       }},
      {"Gamma", [](auto type, auto& p, auto&, auto& limits) {
         return shared(type, laws::Gamma(p[0], p[1], p[2]), limits);
       }},
      {"Johnson", [](auto type, auto&, auto& fitted, auto& limits) {
         return sharedJohnson(type, fitted, limits);
       }},
      {"Histogram", [](auto type, auto&, auto& fitted, auto& limits) {
         return shared(type, laws::Histogram(fitted.histogram), limits);
       }},
  }};
  for (const Row& row : rows) {
    if (row.type == family.name) return row.make(row.type, p, fitted, limits);
  }
  throw std::invalid_argument("Incorrect distribution type.");
}

/// Throws what ParamsOK says about parameters that it does not let pass.
[[noreturn]] void refuse(std::string_view type, const Parameters& p) {
  c_Distribution distribution;
  distribution.distType(type);
  distribution.param1 = p[0];
  distribution.param2 = p[1];
  distribution.param3 = p[2];
  distribution.param4 = p[3];
  std::string cause;
  distribution.ParamsOK(cause);
  throw std::invalid_argument(cause);
}

bool meets(double value, Demand demand) {
  switch (demand) {
    case Demand::nonNegative:
      return value >= 0 && std::isfinite(value);
    case Demand::positive:
    case Demand::positiveNoArticle:
      return value > 0 && std::isfinite(value);
    default:
      return std::isfinite(value);
  }
}

/// The law of a type other than Histogram from unchecked parameters.
SharedLaw checkedLaw(std::string_view type, std::span<const double> given, const Limits& limits) {
  const Family* const family = findFamily(type);
  if (family == nullptr || family->tabulate != nullptr) {
    throw std::invalid_argument("Incorrect distribution type.");
  }
  Parameters p{};
  std::copy_n(given.begin(), std::min(given.size(), p.size()), p.begin());
  for (std::size_t i = 0; i < given.size(); ++i) {
    if (!meets(p[i], family->demands[i])) refuse(type, p);
  }
  Fitted fitted;
  if (family->fit != nullptr) {
    try {
      const std::string fault = family->fit(p, fitted, Line::here());
      if (!fault.empty()) throw std::invalid_argument(fault);
    } catch (const RuntimeError&) {
      throw std::invalid_argument("No Johnson curve was found for these moments.");
    }
  }
  return lawOf(*family, p, fitted, limits);
}

template <class... Numbers>
SharedLaw checkedLaw(std::string_view type, Numbers... numbers) {
  const std::array<double, sizeof...(numbers)> given{numbers...};
  return checkedLaw(type, given, Limits{});
}

// ---- the types set by what people know ----

/// The parameters of the beta law that PERT stands for.
Parameters pertAsBeta(double minimum, double likely, double maximum) {
  static_cast<void>(checkedLaw("Triangular", minimum, likely, maximum));
  const double halfWidth = maximum / 2 - minimum / 2;
  if (halfWidth == 0) return {3, 3, minimum, maximum};
  return {1 + 4 * ((likely / 2 - minimum / 2) / halfWidth),
          1 + 4 * ((maximum / 2 - likely / 2) / halfWidth), minimum, maximum};
}

/// The parameters of the lognormal law with this mean and standard deviation.
Parameters asLognormal(double mean, double sd, double minimum) {
  if (!std::isfinite(mean)) throw std::invalid_argument("Non-numeric value for Mean.");
  const auto words = [](const char* fault) {
    return std::string(fault) + " for Std Dev.  Must be a positive real number.";
  };
  if (!std::isfinite(sd)) throw std::invalid_argument(words("Non-numeric value"));
  if (sd < 0) throw std::invalid_argument(words("Negative value"));
  if (sd == 0) throw std::invalid_argument(words("Value of zero"));
  if (!std::isfinite(minimum)) throw std::invalid_argument("Non-numeric value for Minimum.");
  if (!(mean > minimum)) throw std::invalid_argument("Mean must be greater than Minimum.");
  const double ratio = sd / (mean - minimum);
  const double variance = std::log1p(ratio * ratio);
  return {std::log(mean - minimum) - variance / 2, std::sqrt(variance), minimum};
}

// ---- worksheet data in memory ----

/// Cells as the histogram's builder reads them from a worksheet.
class Cells : public Object {
 public:
  explicit Cells(Variant values) : values_(std::move(values)) {}

 protected:
  Variant getMember(std::string_view member, const std::vector<Variant>&) override {
    if (member == "value") return values_;
    raise(fault::unknownMember);
  }

 private:
  Variant values_;
};

SharedLaw histogramOf(const Variant& values, std::string_view layout) {
  Fitted fitted;
  const std::string fault = m_Histogram::CreateHistogramArrays(
      std::make_shared<Cells>(values), layout, fitted.histogram.density, fitted.histogram.table);
  if (!fault.empty()) throw std::invalid_argument(fault);
  return lawOf(*findFamily("Histogram"), {}, fitted, {});
}

}  // namespace

}  // namespace palvex
