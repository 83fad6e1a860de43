// Memory that runs out: the object and the laws, each of their allocations failing in turn.

#include "Allocation.h"
#include "FakeRange.h"
#include "ManyLaws.h"
#include "engine/LawTypes.h"
#include "engine/c_Distribution.h"
#include "runtime/MessageBox.h"

namespace palvex {
namespace {

using allocation::Outcome;
using allocation::outcomeOf;

struct Case {
  std::string type;
  std::vector<Variant> parameters;
};

/// Each type with a parameter in a cell; a text that is too long for a string's own room; a fault.
std::vector<Case> cases() {
  return {{"Normal", {cell(1), "0000000000000000002"}},
          {"Normal", {cell(1), cell(-2)}},
          {"Uniform", {0, cell(3)}},
          {"Triangular", {0, 1, cell(3)}},
          {"Lognormal", {0, cell(0.5), 0}},
          {"Exponential", {cell(2), 0}},
          {"Weibull", {2, cell(1), 0}},
          {"Beta", {2, cell(3), 0, 3}},
          {"Gamma", {cell(2), 1, 0}},
          {"Johnson", {cell(1), 1, 0.5, 4}},
          {"Johnson", {cell(1), 0.5, 0.5, 2.5}},
          {"Histogram", {block(2, {1, 4, 2, 5, 3, 1}), "Data and Counts (2 cols)"}}};
}

c_Distribution described(const Case& as, bool dynamic) {
  c_Distribution d;
  d.distType(as.type);
  const std::array members{&d.param1, &d.param2, &d.param3, &d.param4};
  for (std::size_t i = 0; i < as.parameters.size(); ++i) *members[i] = as.parameters[i];
  d.ltl = "000000000000000000000.2";
  d.utl = cell(2.5);
  d.Dynamic = dynamic;
  std::string cause;
  d.ParamsOK(cause);
  d.ResizeArrays(3);
  d.GraphX(3, 0.5);
  return d;
}

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

struct Member {
  const char* name;
  std::function<double(c_Distribution&)> call;
};

const std::vector<Member>& members() {
  static const c_Distribution other = described(cases().back(), false);
  static const std::vector<Member> all{
      {"ParamsOK",
       [](c_Distribution& d) {
         std::string cause;
         return d.ParamsOK(cause) ? -1 : static_cast<double>(cause.size());
       }},
      {"RandVal", [](c_Distribution& d) { return d.RandVal(0.3); }},
      {"RandVal without an answer", [](c_Distribution& d) { return d.RandVal(2); }},
      {"pdf", [](c_Distribution& d) { return d.pdf(1.5); }},
      {"pdf without an answer", [](c_Distribution& d) { return d.pdf(NAN); }},
      {"cdf", [](c_Distribution& d) { return d.cdf(1.5); }},
      {"mean, StDev", [](c_Distribution& d) { return d.mean() + d.StDev() + d.StDev(3); }},
      {"CalcMean, CalcStdev", [](c_Distribution& d) { return d.CalcMean() + d.CalcStdev(1); }},
      {"XMin, XMax", [](c_Distribution& d) { return d.XMin() + d.XMax(); }},
      {"CreateGraphData", [](c_Distribution& d) { return d.CreateGraphData(0, 3), 0; }},
      {"ResizeArrays", [](c_Distribution& d) { return d.ResizeArrays(50).isEmpty(); }},
      {"the catalogue",
       [](c_Distribution& d) {
         return d.ValidDistributions().upperBound() + d.DataConfigurations().upperBound() +
                d.GuessParamValue(1, 5) + static_cast<double>(d.ParamName(1).size());
       }},
      {"an unknown type", [](c_Distribution& d) { return d.distType("none of the types"), 0; }},
      {"law", [](c_Distribution& d) { return d.law().mean(); }},
      {"a copy",
       [](c_Distribution& d) {
         c_Distribution copy = d;
         return copy.RandVal(0.3);
       }},
      {"an assignment", [](c_Distribution& d) { return (d = other).RandVal(0.3); }}};
  return all;
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
  EXPECT_GT(allocations, 4000U);
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
