// Memory that runs out: the object and the laws, each of their allocations failing in turn.

#include "Allocation.h"
#include "ManyLaws.h"
#include "Session.h"
#include "engine/LawTypes.h"
#include "runtime/MessageBox.h"

namespace palvex {
namespace {

using allocation::Outcome;
using allocation::outcomeOf;

/// What a host can see of an object.
std::vector<Outcome> stateOf(c_Distribution& d) {
  const std::vector<std::function<double()>> questions{
      [&] { return static_cast<double>(d.distType().size()); },
      [&] { return static_cast<double>(d.NumPoints()); },
      [&] { return d.GraphX(3) + d.GraphPDF(2) + d.GraphOL(1); },
      [&] { return d.param1 == Variant() ? 0 : d.utl.toObject()->get("Value").toDouble(); },
      [&] { return d.RandVal(0.3); },
      [&] { return d.pdf(1.5); },
      [&] { return d.mean(); }};
  std::vector<Outcome> state;
  for (const auto& question : questions) state.push_back(outcomeOf(question));
  return state;
}

TEST(Memory, AnObjectIsAsItWasWhenThereIsNone) {
  setMessageBox([](const std::string&) {});
  std::size_t allocations = 0;
  for (const Case& as : cases()) {
    for (const bool dynamic : {false, true}) {
      for (const auto& [name, call] : members()) {
        SCOPED_TRACE(as.type + (dynamic ? ", live: " : ": ") + name);
        allocations += allocation::failEach(
            [&] { return described(as, dynamic); }, call,
            [&, checks = std::string(name) == "ParamsOK"](c_Distribution& d, c_Distribution fresh) {
              if (checks) {
                EXPECT_THROW(static_cast<void>(d.law()), std::logic_error);
              } else {
                EXPECT_EQ(stateOf(d), stateOf(fresh));
              }
            });
      }
    }
  }
  setMessageBox({});
  EXPECT_GT(allocations, 1000U);
  std::printf("%zu allocations failed, twice each\n", allocations);
}

TEST(Memory, ALawIsMadeOrNotAndAnswersWithoutAny) {
  const auto nothing = [](auto&&...) {};
  for (const Case& as : cases()) {
    SCOPED_TRACE(as.type);
    allocation::failEach([] { return 0; },
                         [&](int) {
                           const Law law = makeLaw(as.type, as.parameters, 0.2, cell(2.5));
                           return law.mean() + law.between(0.5, {}).sd();
                         },
                         nothing);
  }
  for (const Law& whole : manyLaws()) {
    for (const Law& law : withLimits(whole)) {
      std::array<double, 3> block{0.1, 0.5, 0.9};
      const std::size_t before = allocation::made;
      double sum = 0;
      for (const double p : {-1.0, 0.0, 1e-300, 1e-9, 0.3, 0.999, 1.0, std::nan("")}) {
        const double x = law.quantile(p) + law.upperQuantile(p) * 1e-9;
        sum += law.density(x) + law.logDensity(x) + law.probability(x) + law.exceedance(x);
      }
      law.quantiles(block, block);
      EXPECT_EQ(allocation::made, before) << law.type() << sum;
    }
  }
}

}  // namespace
}  // namespace palvex
