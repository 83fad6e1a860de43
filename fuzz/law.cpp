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

  const auto [x, y] = std::minmax({number(data), number(data)});
  for (const double at : {x, y, lower, upper}) {
    if (std::isnan(at)) continue;
    expect(law.density(at) >= 0 && !std::isnan(law.logDensity(at)), "density", at);
    expect(std::abs(law.probability(at) + law.exceedance(at) - 1) < 1e-12, "tails", at);
  }
  expect(!(law.probability(x) > law.probability(y) + 1e-14), "falling probability", x);
  expect(!(law.exceedance(y) > law.exceedance(x) + 1e-14), "rising exceedance", x);

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
  expect(q - 1e-13 * std::abs(q) <= law.quantile(high), "falling quantile", low);
  // Of the doubles about a quantile one has the probability, unless this is too small a double.
  if (low * law.keptProbability() < std::numeric_limits<double>::min() || std::isinf(q)) return;
  expect(law.probability(std::nextafter(q, -infinity)) <= low + 1e-12, "too great", low);
  expect(law.probability(std::nextafter(q, infinity)) >= low - 1e-12, "too small", low);
} catch (const std::invalid_argument&) {  // no law, and why
}

}  // namespace palvex::fuzz
