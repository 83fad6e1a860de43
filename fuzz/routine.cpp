// Every published routine on any arguments: it ends, with a number or one of the run-time's errors.
// Probabilities stay within 0 and 1, and rise.

#include "Fuzz.h"
#include "Routines.h"
#include "engine/Family.h"
#include "numerics/m_RootFinding.h"

namespace palvex::fuzz {
namespace {

using script::Values;

/// Those that answer any numbers at all with a number or an error. Left out: searches that never
/// end by their published text, and what passes a NaN on.
std::vector<std::string> namesOfTotalRoutines() {
  std::vector<std::string> names;
  for (const auto& [name, routine] : script::routines()) {
    const bool odd = name.starts_with("cdf") || name.ends_with("sign") || name.starts_with("dm");
    if (routine.takesNumbers && !odd && name != "ipmpar") names.push_back(name);
  }
  return names;
}

std::string text(std::string text, const Values& given) {
  for (const Variant& value : given) text += ' ' + script::shown(value);
  return text;
}

/// The first answer, NaN for an error or a text.
double answer(const std::string& name, const Values& given) {
  Values found{0};
  const int error = faultNumber([&] { return found = script::call(name, given), 0; });
  const double first = error == 0 && found[0].isNumeric() ? found[0].toDouble() : nan;
  bool good = error == 0 || error == 5 || error == 6 || error == 11 || error == 13;
  for (const Variant& one : found) good = good && one == Variant(one);  // a NaN is not
  // The beta law's lower tail with a second shape of 1 has a minus sign.
  if (name.ends_with("CDF") && name != "BetaCDF") good = good && !(first < 0 || first > 1);
  if (name.ends_with("PDF") && !name.starts_with("Std")) good = good && !(first < 0);
  if (good) return first;
  fail(text(name, given) + ": error " + std::to_string(error) + ", " + script::shown(found[0]));
}

/// At a greater x, or p, of the lower tail of a law no routine answers with less.
void compareTwo(FuzzedDataProvider& data, const std::string& name, Values given) {
  palvex::Values law;
  for (std::size_t i = 1; i < given.size(); ++i) law.p.at(i - 1) = given[i].toDouble();
  if (!findFamily(name.substr(0, name.size() - 3))->isLawful(law)) return;
  if (name.starts_with("No") || name.starts_with("Lo") || name.starts_with("Ga"))
    given.back() = false;
  const bool isInverse = name.ends_with("INV");
  const auto any = [&] { return isInverse ? probability(data) : number(data); };
  const auto [low, high] = std::minmax({any(), any()});
  if (isInverse && low == 0) return;  // where some answer with 0, whatever the minimum
  given[0] = low;
  const double first = answer(name, given);
  given[0] = high;
  const double second = answer(name, given);
  const double slack = isInverse ? 1e-10 * std::abs(first) : 1e-14;
  if (first > second + slack) fail(text(name, given) + ": greater at " + script::shown(low));
}

/// A search on any values of a function; it may ask for more of them for ever.
void search(FuzzedDataProvider& data) {
  std::int16_t status = 0;
  std::array<double, 7> v{};
  for (double& one : v) one = number(data);
  auto& [x, low, high, a, b, c, d] = v;
  Boolean left;
  Boolean above;
  m_RootFinding::dstinv(low, high, a, b, c, d, x);
  const bool bounded = data.ConsumeBool();
  if (!bounded) m_RootFinding::dstzr(low, high, a, b);
  for (int i = 0; i < 20 && (i == 0 || status == 1); ++i) {
    if (bounded) m_RootFinding::dinvr(status, x, number(data), left, above);
    if (!bounded) m_RootFinding::dzror(status, x, number(data), low, high, left, above);
  }
}

}  // namespace

void run(FuzzedDataProvider& data) {
  static const std::vector<std::string> names = namesOfTotalRoutines();
  const auto which = data.ConsumeIntegralInRange<std::size_t>(0, names.size());
  if (which == names.size()) {
    static_cast<void>(faultNumber([&] { return search(data), 0; }));
    return;
  }
  const std::string& name = names[which];
  Values given;
  for (const bool fills : script::routines().at(name).fills)
    given.push_back(fills ? 0 : number(data));
  answer(name, given);
  const bool rises = name.ends_with("CDF") || name.ends_with("INV");
  if (rises && !name.starts_with("Beta")) compareTwo(data, name, given);
}

}  // namespace palvex::fuzz
