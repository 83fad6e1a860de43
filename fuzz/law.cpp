// Laws of any parameters between any limits: what holds for every law, or the sentence of a fault.

#include <vector>

#include "Fuzz.h"
#include "engine/LawTypes.h"

namespace palvex::fuzz {

void run(FuzzedDataProvider& data) try {
  const LawType& type = oneOf(data, lawTypes);
  const bool isHistogram = type.name == "Histogram";
  std::vector<double> given(isHistogram ? data.ConsumeIntegralInRange<std::size_t>(0, 9) : 4);
  for (double& one : given) one = number(data);
  Limits limits;
  if (data.ConsumeBool()) limits.lower = number(data);
  if (data.ConsumeBool()) limits.upper = number(data);
  const Law law = isHistogram ? Law::histogram(given).between(limits.lower, limits.upper)
                              : makeLaw(type, given, limits);
  const auto expect = [&](bool holds, const std::string& what, double x) {
    if (holds) return;
    std::string text = std::string(type.name);
    for (const double one : given) text += ' ' + Variant(one).toText();
    text += " in [" + Variant(limits.lower.value_or(nan)).toText() + ", " +
            Variant(limits.upper.value_or(nan)).toText() + "]: ";
    fail(text + what + " at " + Variant(x).toText());
  };

  const auto [lower, upper, lowerIncluded, upperIncluded] = law.support();
  expect(lower <= upper, "support", lower);
  expect(law.keptProbability() > 0 && law.keptProbability() <= 1, "kept", law.keptProbability());
  expect(!std::isnan(law.mean()) && law.sd() >= 0, "moments", law.mean());

  // The probabilities of the whole law have their digits; those of a narrow band are differences.
  const Law whole = law.between({}, {});
  const auto tail = [&](const std::optional<double>& limit) {
    return limit ? std::min(whole.probability(*limit), whole.exceedance(*limit)) : 0;
  };
  const double slack =
      1e-12 + 4e-15 * (tail(limits.lower) + tail(limits.upper)) / law.keptProbability();

  const auto [x, y] = std::minmax({number(data), number(data)});
  for (const double at : {x, y, lower, upper}) {
    if (std::isnan(at)) continue;
    expect(law.density(at) >= 0 && !std::isnan(law.logDensity(at)), "density", at);
    expect(std::abs(law.probability(at) + law.exceedance(at) - 1) < slack, "tails", at);
  }
  expect(!(law.probability(x) > law.probability(y) + slack), "falling probability", x);
  expect(!(law.exceedance(y) > law.exceedance(x) + slack), "rising exceedance", x);

  const std::array p{probability(data), probability(data), number(data)};
  std::array<double, 3> block{};
  law.quantiles(p, block);
  for (std::size_t i = 0; i < p.size(); ++i) {
    const double q = law.quantile(p.at(i));
    expect(same(q, block.at(i)), "quantile of a block", p.at(i));
    const bool isProbability = p.at(i) >= 0 && p.at(i) <= 1;
    expect(isProbability ? lower <= q && q <= upper : std::isnan(q), "quantile", p.at(i));
  }
  const auto [low, high] = std::minmax({p[0], p[1]});
  const double q = law.quantile(low);
  const double later = law.quantile(high);
  expect(!(q > later + 1e-13 * std::abs(later)), "falling quantile", low);
  const auto usual = [](double parameter) { return parameter >= 1e-3 && parameter <= 1e5; };
  if ((type.name == "Gamma" || type.name == "Weibull") && !usual(given[0])) return;
  if (type.name == "Beta" && !(usual(given[0]) && usual(given[1]))) return;
  // One of the doubles about a quantile has the probability, unless this is too small a double.
  if (std::min(low, 1 - low) * law.keptProbability() < 1e-300 || std::isinf(q)) return;
  const auto [start, end, startIncluded, endIncluded] = whole.support();
  const bool isNormal = type.name == "Normal" || type.name == "Johnson";  // which lie about a mean
  const double origin = isNormal ? given[0] : std::isinf(end) ? start : 0;
  const double away = 1e-12 * (std::abs(q) + std::abs(origin)) + std::numeric_limits<double>::min();
  expect(law.probability(q - away) <= low + slack, "too great a quantile", low);
  expect(law.probability(q + away) >= low - slack, "too small a quantile", low);
} catch (const std::invalid_argument&) {  // no law, and why
}

}  // namespace palvex::fuzz
