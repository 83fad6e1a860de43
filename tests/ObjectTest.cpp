// The distribution object on the scripts of tests/data/object, and what a script can not show.

#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "Object.h"
#include "engine/c_Distribution.h"
#include "families/m_Johnson.h"
#include "runtime/MessageBox.h"

namespace palvex::script {
namespace {

using D = c_Distribution;

double real(const Values& given, std::size_t i) {
  return given.at(i).toDouble();
}
std::int16_t whole(const Values& given, std::size_t i) {
  return static_cast<std::int16_t>(real(given, i));
}
const Variant& optional(const Values& given, std::size_t i) {
  return i < given.size() ? given[i] : Variant::missing();
}
double spread(const Values& given) {
  return given.empty() || given[0].isMissing() ? 4 : real(given, 0);
}
bool flag(const Values& given, std::size_t i) {
  return optional(given, i) == Variant(true);
}

const std::map<std::string, Variant D::*> variants{{"param1", &D::param1}, {"param2", &D::param2},
                                                   {"param3", &D::param3}, {"param4", &D::param4},
                                                   {"ltl", &D::ltl},       {"utl", &D::utl}};
const std::map<std::string, std::string D::*> texts{
    {"graphMax", &D::graphMax}, {"graphMin", &D::graphMin}, {"numberFormat", &D::numberFormat}};
const std::map<std::string, bool D::*> flags{{"Active", &D::Active}, {"Dynamic", &D::Dynamic}};

using Call = Variant (*)(D&, const Values&);
const std::map<std::string, Call> calls{
    {"ValidDistributions", [](D& d, auto& a) { return d.ValidDistributions().at(whole(a, 0)); }},
    {"DataConfigurations", [](D& d, auto& a) { return d.DataConfigurations().at(whole(a, 0)); }},
    {"ScaleFactor", [](D& d, auto&) -> Variant { return d.ScaleFactor(); }},
    {"distType", [](D& d, auto&) -> Variant { return d.distType(); }},
    {"GraphX", [](D& d, auto& a) -> Variant { return d.GraphX(whole(a, 0)); }},
    {"GraphPDF", [](D& d, auto& a) -> Variant { return d.GraphPDF(whole(a, 0)); }},
    {"GraphOL", [](D& d, auto& a) -> Variant { return d.GraphOL(whole(a, 0)); }},
    {"ResizeArrays", [](D& d, auto& a) { return d.ResizeArrays(whole(a, 0)); }},
    {"NumPoints", [](D& d, auto&) -> Variant { return d.NumPoints(); }},
    {"GuessParamValue",
     [](D& d, auto& a) -> Variant { return d.GuessParamValue(whole(a, 0), real(a, 1)); }},
    {"RandVal", [](D& d, auto& a) -> Variant { return d.RandVal(real(a, 0)); }},
    {"CalcMean", [](D& d, auto&) -> Variant { return d.CalcMean(); }},
    {"CalcStdev", [](D& d, auto& a) -> Variant { return d.CalcStdev(real(a, 0)); }},
    {"mean", [](D& d, auto&) -> Variant { return d.mean(); }},
    {"StDev", [](D& d, auto& a) -> Variant { return d.StDev(optional(a, 0)); }},
    {"XMin", [](D& d, auto& a) -> Variant { return d.XMin(spread(a)); }},
    {"XMax", [](D& d, auto& a) -> Variant { return d.XMax(spread(a)); }},
    {"pdf", [](D& d, auto& a) -> Variant { return d.pdf(real(a, 0), flag(a, 1), optional(a, 2)); }},
    {"cdf", [](D& d, auto& a) -> Variant { return d.cdf(real(a, 0)); }},
    {"CreateGraphData",
     [](D& d, auto& a) {
       d.CreateGraphData(real(a, 0), real(a, 1), flag(a, 2));
       return Variant{};
     }},
    {"ParamsOK",
     [](D& d, auto&) -> Variant {
       std::string cause = "before";
       const bool fine = d.ParamsOK(cause);
       EXPECT_EQ(fine, cause.empty());
       return cause;
     }},
    {"NegInfinity", [](D& d, auto&) -> Variant { return d.NegInfinity(); }},
    {"PosInfinity", [](D& d, auto&) -> Variant { return d.PosInfinity(); }},
    {"ParamName", [](D& d, auto& a) -> Variant { return d.ParamName(whole(a, 0)); }},
    {"NumParams", [](D& d, auto&) -> Variant { return d.NumParams(); }},
};
const std::map<std::string, void (*)(D&, const Values&)> assignments{
    {"distType", [](D& d, auto& a) { d.distType(a.at(0).toText()); }},
    {"ScaleFactor", [](D& d, auto& a) { d.ScaleFactor(real(a, 0)); }},
    {"GraphX", [](D& d, auto& a) { d.GraphX(whole(a, 0), real(a, 1)); }},
    {"GraphPDF", [](D& d, auto& a) { d.GraphPDF(whole(a, 0), real(a, 1)); }},
    {"GraphOL", [](D& d, auto& a) { d.GraphOL(whole(a, 0), real(a, 1)); }},
};

class Engine : public Target {
 public:
  Values call(const std::string& member, const Values& given) override {
    if (const auto found = variants.find(member); found != variants.end())
      return {d.*found->second};
    if (const auto found = texts.find(member); found != texts.end()) return {d.*found->second};
    if (const auto found = flags.find(member); found != flags.end()) return {d.*found->second};
    return {calls.at(member)(d, given)};
  }
  void put(const std::string& member, const Values& given) override {
    if (const auto found = variants.find(member); found != variants.end())
      d.*found->second = given.at(0);
    else if (const auto text = texts.find(member); text != texts.end())
      d.*text->second = given.at(0).toText();
    else if (const auto truth = flags.find(member); truth != flags.end())
      d.*truth->second = given.at(0) == Variant(true);
    else
      assignments.at(member)(d, given);
  }
  D d;
};

TEST(Object, AnswersAsTheScriptsShow) {
  for (const auto& file : std::filesystem::directory_iterator(PALVEX_TEST_DATA "/object")) {
    runScript("object/" + file.path().filename().string(),
              [] { return std::make_unique<Engine>(); });
  }
}

TEST(Object, RefusesAnUnknownTypeWithAMessage) {
  std::vector<std::string> shownTexts;
  setMessageBox([&](std::string_view text) { shownTexts.emplace_back(text); });
  D d;
  d.distType("Weibull");
  d.distType("weibull");
  d.distType("");
  setMessageBox({});
  testing::internal::CaptureStderr();
  d.distType("W");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Unknown distribution type 'W'.\n");
  EXPECT_EQ(d.distType(), "Weibull");
  EXPECT_EQ(shownTexts, (std::vector<std::string>{"Unknown distribution type 'weibull'.",
                                                  "Unknown distribution type ''."}));
}

TEST(Object, ACopyIsADistributionOfItsOwn) {
  for (const Values& description : {Values{"Beta", 2.5, 1.5, 0, 9},
                                    {"Gamma", 2.5, 1.5},
                                    {"Johnson", 2.5, 1.5, 0, 9},
                                    {"Histogram", block(1, {1, 2, 4}), "Raw Data"}}) {
    Engine e;
    e.describe(description);
    ASSERT_EQ(e.call("ParamsOK", {}), Values{""});
    const double drawn = e.d.RandVal(0.3);
    std::vector<D> many{e.d};  // with what the draw prepared
    e.d.param1 = description[1].isObject() ? Variant(block(1, {5, 6})) : Variant(3.5);
    ASSERT_EQ(e.call("ParamsOK", {}), Values{""});
    EXPECT_NE(e.d.RandVal(0.3), drawn);
    const D moved = std::move(many[0]);
    many.assign(2, moved);
    EXPECT_EQ(many[1].RandVal(0.3), drawn);
    EXPECT_GT(moved.mean(), 1);
  }
}

/// A cell that does something each time that one of its members is read.
struct Busy : FakeRange {
  Busy(Variant value, std::string_view when, std::function<void()> what)
      : FakeRange({std::move(value)}), member(when), action(std::move(what)) {}
  Variant doGet(std::string_view asked, const std::vector<Variant>& arguments) override {
    if (sameMember(asked, member)) action();
    return FakeRange::doGet(asked, arguments);
  }
  std::string_view member;
  std::function<void()> action;
};
constexpr const char* rangeMembers[] = {"Application", "Address", "count", "Cells", "Value"};

TEST(Object, SurvivesARangeThatChangesItMeanwhile) {
  for (const char* member : rangeMembers) {
    for (const char* type : {"Normal", "Histogram"}) {
      Engine e;
      const auto hostile =
          std::make_shared<Busy>(2, member, [&] { e.d.param2 = e.d.ltl = e.d.param1 = 7; });
      e.describe({type, hostile, hostile, {}, {}, hostile});
      static_cast<void>(faultOf([&] { return e.call("ParamsOK", {}); }));
      e.d.ltl = hostile;
      e.d.Dynamic = true;
      static_cast<void>(faultOf([&] { return e.d.RandVal(0.5); }));
      EXPECT_TRUE(e.d.distType() != "Normal" || e.d.param1 == Variant(7)) << member;
    }
  }
  // A call ends with the type that it began with.
  for (const char* from : {"Beta", "Johnson", "Lognormal", "Histogram"}) {
    for (const char* to : {"Histogram", "Normal", "Johnson"}) {
      Engine e;
      const auto changing = std::make_shared<Busy>(0.5, "Value", [&] { e.d.distType(to); });
      e.describe({from, changing, *from == 'H' ? Variant("Raw Data") : Variant(2), {}, 3});
      EXPECT_EQ(e.call("ParamsOK", {}), Values{""}) << from << ' ' << to;
      e.d.Dynamic = true;
      for (const char* member : {"pdf", "cdf", "RandVal", "mean", "CalcMean", "XMin"}) {
        e.d.distType(from);
        const auto call = [&] { return e.call(member, *member == 'X' ? Values{} : Values{0.5}); };
        EXPECT_EQ(faultNumber(call), 0) << from << ' ' << to << ' ' << member;
      }
    }
  }
  // Nothing is kept that a draw in the middle of a validation prepared.
  for (const char* type : {"Beta", "Gamma"}) {
    Engine plain;
    Engine e;
    const auto draw = [&] {
      static_cast<void>(faultOf([&] { return e.d.RandVal(.5) + e.d.pdf(.5); }));
    };
    const auto drawing = [&](double value) { return std::make_shared<Busy>(value, "Value", draw); };
    plain.describe({type, 3, 2, {}, 1, .1});
    e.describe({type, 3, drawing(2), {}, 1, drawing(.1)});
    ASSERT_EQ(plain.call("ParamsOK", {}), e.call("ParamsOK", {}));
    EXPECT_EQ(e.d.RandVal(.5), plain.d.RandVal(.5)) << type;
    EXPECT_EQ(e.d.pdf(.5), plain.d.pdf(.5)) << type;
  }
}

/// The members of the object whose definitions hold this line of their source file.
std::set<std::string> membersAt(int line) {
  std::set<std::string> members;
  const std::filesystem::path engine = std::filesystem::path(PALVEX_TEST_DATA) / "../../engine";
  for (const auto& file : std::filesystem::directory_iterator(engine)) {
    std::ifstream source(file.path());
    std::string text, member;
    for (int n = 1; n <= line && std::getline(source, text); ++n) {
      const std::size_t name = text.find("c_Distribution::");
      if (name != std::string::npos && text[0] != ' ')
        member = text.substr(name + 16, text.find('(', name) - name - 16);
    }
    members.insert(member);
  }
  return members;
}

// Whichever read of a range fails, the caller gets a sentence or a numbered error, in whose trace
// each routine shows a line of its own.
TEST(Object, ATraceNamesALineOfEachRoutine) {
  const std::map<std::string, Values> given{
      {"pdf", {1}}, {"cdf", {1}}, {"RandVal", {.5}},           {"StDev", {}},
      {"XMin", {}}, {"XMax", {}}, {"CreateGraphData", {0, 1}}, {"ParamsOK", {}}};
  std::set<std::string> routines;
  for (const auto& [member, arguments] : given) {
    for (const char* failing : rangeMembers) {
      for (int nth = 1; nth <= 12; ++nth) {
        const auto range = cell(2);
        range->failingRead[failing] = nth;
        Engine e;
        e.describe({"Normal", {}, range, {}, {}, range});
        e.d.Dynamic = true;
        const auto fault = faultOf([&, &m = member, &a = arguments] { return e.call(m, a); });
        if (!fault || fault->number() != 1004) continue;
        EXPECT_TRUE(routinesOf(*fault).ends_with("c_Distribution." + member)) << fault->source();
        std::istringstream trace(fault->source());
        for (std::string line; std::getline(trace, line);) {
          const std::size_t at = line.find(" at line ");
          if (at == std::string::npos) continue;
          std::string routine = line.substr(25, at - 25);  // behind "in palvex.c_Distribution."
          routines.insert(routine);
          if (routine == "RandVal") routine = "liveDraw";
          EXPECT_TRUE(membersAt(std::stoi(line.substr(at + 9))).contains(routine)) << line;
        }
      }
    }
  }
  EXPECT_EQ(routines.size(), 10U);  // those of the calls, BadParam and SetStaticParams
}

TEST(Object, FittedCurvesEndWhereTheyHaveNoValue) {
  // The ends of the fitted curve, cut exactly there and one double inside.
  const auto kept = [](const Values& moments, const Variant& lower, const Variant& upper) {
    Engine e;
    e.describe({"Johnson", moments[0], moments[1], moments[2], moments[3], lower, upper});
    const Variant sentence = e.call("ParamsOK", {}).at(0);
    EXPECT_TRUE(sentence == Variant("") ||
                sentence.toText().starts_with("Truncation limits exclude"));
    return sentence == Variant("");
  };
  m_Johnson::JohnsonParams c;
  CalcJohnson(5, 2, 0.5, 2.5, c);
  const Values bounded{5, 2, 0.5, 2.5};
  const double top = c.xi + c.lambda;
  EXPECT_FALSE(kept(bounded, top, {}));
  EXPECT_TRUE(kept(bounded, std::nextafter(top, 0), {}));
  EXPECT_FALSE(kept(bounded, {}, c.xi));
  EXPECT_TRUE(kept(bounded, {}, std::nextafter(c.xi, 9)));
  EXPECT_FALSE(kept(bounded, top, c.xi));  // reversed: both pieces are empty
  EXPECT_TRUE(kept(bounded, top, c.xi + 0.1));
  for (const double side : {1.0, -1.0}) {
    const Values lognormal{0, 2, side * 1.75, 8.898357624544985};
    CalcJohnson(0, 2, side * 1.75, 8.898357624544985, c);
    ASSERT_EQ(c.typeName, "SL");
    const double inside = std::nextafter(c.xi, side * 100);
    EXPECT_FALSE(side > 0 ? kept(lognormal, {}, c.xi) : kept(lognormal, c.xi, {}));
    EXPECT_TRUE(side > 0 ? kept(lognormal, {}, inside) : kept(lognormal, inside, {}));
    EXPECT_TRUE(side > 0 ? kept(lognormal, c.xi, {}) : kept(lognormal, {}, c.xi));
  }
}

}  // namespace
}  // namespace palvex::script
