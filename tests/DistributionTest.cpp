#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "FakeRange.h"
#include "Fault.h"
#include "engine/c_Distribution.h"
#include "families/m_Normal.h"
#include "runtime/MessageBox.h"

namespace palvex {
namespace {

const std::vector<std::string> typeNames{"Normal",      "Uniform",  "Triangular", "Lognormal",
                                         "Exponential", "Weibull",  "Beta",       "Gamma",
                                         "Johnson",     "Histogram"};

/// A Normal distribution that has passed its validation.
struct Checked : c_Distribution {
  Checked(const Variant& mean, const Variant& sd, const Variant& lower = {},
          const Variant& upper = {}) {
    distType("Normal");
    param1 = mean;
    param2 = sd;
    ltl = lower;
    utl = upper;
    std::string cause;
    EXPECT_TRUE(ParamsOK(cause)) << cause;
  }
};

TEST(Distribution, StartsEmpty) {
  const c_Distribution d;
  EXPECT_TRUE(d.param1.isEmpty() && d.param4.isEmpty() && d.ltl.isEmpty() && d.utl.isEmpty());
  EXPECT_FALSE(d.Active || d.Dynamic);
  EXPECT_EQ(d.distType() + d.graphMax + d.graphMin + d.numberFormat, "");
  EXPECT_EQ(d.NumParams(), 0);
  EXPECT_EQ(d.ParamName(1), "");
  EXPECT_EQ(d.NumPoints(), 0);
  EXPECT_EQ(d.GraphX(1), 0);
  EXPECT_EQ(d.ScaleFactor(), 1);
  EXPECT_EQ(d.NegInfinity(), "-Infinity");
  EXPECT_EQ(d.PosInfinity(), "+Infinity");
}

TEST(Distribution, ListsItsTypesAndTheirParameters) {
  c_Distribution d;
  const Variant list = d.ValidDistributions();
  ASSERT_EQ(list.upperBound(), 10);
  for (std::int32_t i = 1; i <= 10; ++i) {
    EXPECT_EQ(list.at(i), Variant(typeNames[static_cast<std::size_t>(i - 1)]));
  }
  const Variant layouts = d.DataConfigurations();
  ASSERT_EQ(layouts.upperBound(), 3);
  EXPECT_EQ(layouts.at(1), Variant("Raw Data"));
  EXPECT_EQ(layouts.at(2), Variant("Data and Counts (2 cols)"));
  EXPECT_EQ(layouts.at(3), Variant("Bins and Counts (3 cols)"));

  const struct {
    const char* type;
    std::vector<std::string> parameters;
  } cases[] = {{"Normal", {"Mean", "Std Dev"}},
               {"Uniform", {"Minimum", "Maximum"}},
               {"Triangular", {"Minimum", "Likely", "Maximum"}},
               {"Exponential", {"Lambda", "Minimum"}},
               {"Weibull", {"Shape", "Scale", "Minimum"}},
               {"Lognormal", {"Location", "Scale", "Minimum"}},
               {"Gamma", {"Shape", "Scale", "Minimum"}},
               {"Beta", {"Alpha", "Beta", "Minimum", "Maximum"}},
               {"Johnson", {"Mean", "Std Dev", "Skewness", "Kurtosis"}},
               {"Histogram", {"Data Range", "Data Config"}}};
  for (const auto& [type, parameters] : cases) {
    d.distType(type);
    EXPECT_EQ(d.NumParams(), static_cast<std::int16_t>(parameters.size())) << type;
    for (std::int32_t i = -1; i <= 6; ++i) {
      const bool named = i >= 1 && i <= static_cast<std::int32_t>(parameters.size());
      EXPECT_EQ(d.ParamName(i), named ? parameters[static_cast<std::size_t>(i - 1)] : "")
          << type << i;
    }
  }
}

TEST(Distribution, RefusesAnUnknownTypeWithAMessage) {
  std::vector<std::string> shown;
  setMessageBox([&](std::string_view text) { shown.emplace_back(text); });
  c_Distribution d;
  d.distType("Weibull");
  d.distType("weibull");
  d.distType("");
  setMessageBox({});
  EXPECT_EQ(d.distType(), "Weibull");
  EXPECT_EQ(shown, (std::vector<std::string>{"Unknown distribution type 'weibull'.",
                                             "Unknown distribution type ''."}));
}

TEST(Distribution, ScaleFactorStaysPositive) {
  c_Distribution d;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const auto& [given, kept] :
       {std::pair{0.5, 0.5}, {0.0, 1.0}, {2.0, 2.0}, {-3.0, 1.0}, {nan, 1.0}}) {
    d.ScaleFactor(given);
    EXPECT_EQ(d.ScaleFactor(), kept);
  }
}

TEST(Distribution, GraphArraysKeepTheirContents) {
  c_Distribution d;
  EXPECT_TRUE(d.ResizeArrays(5).isEmpty());
  d.GraphX(3, 2.5);
  d.GraphPDF(5, 7);
  d.GraphOL(1, -1);
  d.ResizeArrays(8);
  EXPECT_EQ(d.GraphX(3), 2.5);
  EXPECT_EQ(d.GraphX(7), 0);
  using Sizes = std::initializer_list<std::int16_t>;
  for (const std::int16_t none : Sizes{0, -1, -32768}) d.ResizeArrays(none);
  EXPECT_EQ(d.NumPoints(), 8);
  for (const std::int16_t outside : Sizes{9, 0, -5, 32767}) {
    d.GraphX(outside, 1);
    EXPECT_EQ(d.GraphX(outside), 0);
  }
  d.ResizeArrays(4);
  d.ResizeArrays(32767);
  EXPECT_EQ(d.NumPoints(), 32767);
  EXPECT_EQ(d.GraphPDF(5), 0);  // dropped, not hidden
  EXPECT_EQ(d.GraphOL(1), -1);
}

// ---- values: cached or live ----

TEST(Values, AreThoseOfTheLastValidation) {
  c_Distribution d;
  d.distType("Normal");
  d.param1 = 3;
  d.param2 = 1;
  d.ltl = 2;
  EXPECT_EQ(d.RandVal(0.5), 0);  // nothing validated yet: mean and standard deviation 0
  std::string cause;
  ASSERT_TRUE(d.ParamsOK(cause));
  const double median = d.RandVal(0.5);
  EXPECT_GT(median, 3);
  d.param1 = 5;
  d.ltl = {};
  EXPECT_EQ(d.RandVal(0.5), median);
  EXPECT_EQ(d.pdf(1.9), 0);
  ASSERT_TRUE(d.ParamsOK(cause));
  EXPECT_EQ(d.RandVal(0.5), 5);
  EXPECT_GT(d.pdf(1.9), 0);
}

TEST(Values, OfCellsAreReadAtValidation) {
  const auto mean = cell(7);
  const auto lower = cell("-Infinity");
  Checked d(mean, cell(2), lower, cell(9));
  const int reads = mean->reads + lower->reads;
  mean->cells[0] = 100;
  lower->cells[0] = 8;
  EXPECT_EQ(d.RandVal(0), 7 - 38.5 * 2);
  EXPECT_EQ(d.pdf(9.5), 0);
  EXPECT_EQ(mean->reads + lower->reads, reads);
}

TEST(Values, AreReadAtEveryCallWhenDynamic) {
  Checked d(1, 1);
  d.Dynamic = true;
  const struct {
    Variant mean;
    double read;
  } cases[] = {{2.5, 2.5},
               {"2.5", 2.5},
               {"abc", 0},
               {{}, 0},
               {true, -1},
               {cell(7), 7},
               {cell("7"), 7},
               {cell("seven"), 0},
               {cell({}), 0},
               {cell(Variant::error(2042)), 0},
               {std::make_shared<Object>(), 0},
               {Variant::error(2042), 0},
               {Variant::array(2), 0}};
  for (const auto& [mean, read] : cases) {
    d.param1 = mean;
    EXPECT_EQ(d.RandVal(0.5), read);
  }
  const auto watched = cell(1);
  const auto limit = cell("none");
  d.param1 = watched;
  d.utl = limit;
  EXPECT_EQ(d.RandVal(0.5), 1);
  EXPECT_EQ(watched->reads, 4);  // what makes it a range, and its value
  watched->cells[0] = 4;
  EXPECT_EQ(d.RandVal(0.5), 4);
  limit->cells[0] = 0;
  EXPECT_LT(d.RandVal(0.5), 0);
  EXPECT_EQ(d.pdf(0.5), 0);
  d.Dynamic = false;
  EXPECT_EQ(d.RandVal(0.5), 1);  // the caches again
}

TEST(Values, ARangeIsWhatAnswersAsOne) {
  for (const char* member : {"Application", "Address", "Value"}) {
    const auto broken = cell(7);
    c_Distribution d;
    d.Dynamic = true;
    d.distType("Normal");
    d.param1 = broken;
    d.param2 = 1;
    broken->failingRead[member] = 1;
    EXPECT_EQ(d.RandVal(0.5), 0) << member;  // no range: reads as 0
    EXPECT_EQ(d.RandVal(0.5), 7) << member;  // it answers again
  }
}

// ---- evaluation ----

TEST(Evaluation, HandsTheLimitsToTheFamily) {
  using m_Normal::NormalPDF;
  using m_Normal::NormalVAL;
  const struct {
    Variant lower, upper;
  } cases[] = {{{}, {}},    {2, {}},           {{}, 12},         {"2", "12"},          {12, 2},
               {"12", "2"}, {"-Infinity", 12}, {2, "+Infinity"}, {cell("2"), cell(12)}};
  for (const auto& [lower, upper] : cases) {
    Checked d(10, 4, lower, upper);
    const Variant l = lower.isObject() ? Variant(2) : lower;
    const Variant u = upper.isObject() ? Variant(12) : upper;
    for (const bool dynamic : {false, true}) {
      d.Dynamic = dynamic;
      for (const double x : {1.0, 2.0, 7.0, 12.0, 13.0}) {
        EXPECT_EQ(d.pdf(x), NormalPDF(x, 10, 4, l, u));
        EXPECT_EQ(d.pdf(x, true), NormalPDF(x, 10, 4, "none", "none"));
        EXPECT_EQ(d.cdf(x), m_Normal::NormalCDF((x - 10) / 4, false));
      }
      for (const double p : {0.0, 0.25, 0.5, 1.0})
        EXPECT_EQ(d.RandVal(p), NormalVAL(p, 10, 4, l, u));
    }
  }
}

TEST(Evaluation, WithoutATypeIsZero) {
  c_Distribution d;
  for (const bool dynamic : {false, true}) {
    d.Dynamic = dynamic;
    EXPECT_EQ(d.pdf(1), 0);
    EXPECT_EQ(d.cdf(1), 0);
    EXPECT_EQ(d.RandVal(0.5), 0);
  }
}

TEST(Evaluation, NoTruncationDoesNotReadTheLimits) {
  Checked d(0, 1);
  d.Dynamic = true;
  const auto lower = cell(0);
  d.ltl = lower;
  EXPECT_EQ(d.pdf(-1, true), d.pdf(1, true));
  EXPECT_EQ(lower->reads, 0);
}

TEST(Evaluation, AFaultCarriesTheRecordOfTheCall) {
  c_Distribution d;
  d.distType("Normal");
  d.Dynamic = true;
  d.param1 = 2;
  d.param3 = "0.1";
  d.ltl = "-Infinity";
  d.utl = "3";
  const auto sd = cell(0);
  d.param2 = sd;
  const struct {
    const char* what;
    int number;
    const char* record;
    const char* routine;
    std::function<double()> call;
  } cases[] = {
      {"x is not the mean", 11, "Division by zero\r\ncdf: (3,2,0,0.1,0)", "cdf",
       [&] { return d.cdf(3); }},
      {"x is the mean", 6, "Overflow\r\ncdf: (2,2,0,0.1,0)", "cdf", [&] { return d.cdf(2); }},
      {"x is too far from the mean", 6, "Overflow\r\ncdf: (1.7E+308,-1E+308,0,0.1,0)", "cdf",
       [&] {
         d.param1 = -1e308;
         return d.cdf(1.7e308);
       }},
      {"density", 6, "Overflow\r\npdf: (-1E+200,2,1,0.1,0)", "pdf",
       [&] {
         d.param1 = 2;
         sd->cells[0] = 1;
         return d.pdf(-1e200);
       }},
      {"draw", 5, "Invalid procedure call or argument\r\nRandVal: (2,2,1,0.1,-Infinity,3)",
       "RandVal", [&] { return d.RandVal(2); }},
      {"draw with an error value as limit", 5,
       "Invalid procedure call or argument\r\nRandVal: (2,2,1,0.1,Error 2042,)", "RandVal",
       [&] {
         d.ltl = Variant::error(2042);
         d.utl = Variant::array(1);
         return d.RandVal(2);
       }},
      {"cached", 5, "Invalid procedure call or argument\r\nRandVal: (-1,2,1,0.1,,5)", "RandVal",
       [&] {
         std::string cause;
         d.ltl = {};
         d.utl = 5;
         EXPECT_TRUE(d.ParamsOK(cause));
         d.Dynamic = false;
         d.param1 = 77;
         return d.RandVal(-1);
       }},
  };
  for (const auto& c : cases) {
    const auto fault = faultOf(c.call);
    ASSERT_TRUE(fault) << c.what;
    EXPECT_EQ(fault->number(), c.number) << c.what;
    EXPECT_EQ(fault->description(), c.record) << c.what;
    const std::string last = fault->source().substr(fault->source().rfind("\r\n"));
    EXPECT_TRUE(
        last.starts_with(std::string("\r\nin palvex.c_Distribution.") + c.routine + " at line "))
        << last;
    EXPECT_GT(std::stoi(last.substr(last.rfind(' '))), 0) << c.what;
  }
}

TEST(Evaluation, AHostsOwnFaultPassesThrough) {
  c_Distribution d;
  d.distType("Normal");
  d.Dynamic = true;
  d.param1 = 1;
  const auto sd = cell(2);
  d.param2 = sd;
  sd->failingRead["Value"] = 2;  // recognised as a range, then silent
  const auto fault = faultOf([&] { return d.RandVal(0.5); });
  ASSERT_TRUE(fault);
  EXPECT_EQ(fault->number(), 1004);
  EXPECT_TRUE(fault->source().starts_with("host\r\nin palvex.c_Distribution.RandVal at line "));
  EXPECT_EQ(fault->description(), "the sheet is closed\r\nRandVal: (0.5,1,2,0,,)");
}

// ---- validation of one parameter and of the limits; the types' own rules are elsewhere ----

TEST(Validation, JudgesAParameter) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto twoCells = std::make_shared<FakeRange>(std::vector<Variant>{1, 2});
  const std::string demand = "Std Dev.  Must be a non-negative real number.";
  const struct {
    const char* what;
    Variant sd;
    std::string cause;
  } cases[] = {
      {"number", 2, ""},
      {"zero", 0, ""},
      {"text", "2", ""},
      {"Boolean", false, ""},
      {"empty counts as 0", {}, ""},
      {"cell", cell(2), ""},
      {"blank cell", cell({}), ""},
      {"negative", -1, "Negative value for " + demand},
      {"negative cell", cell(-2), "Negative value in cell referenced for " + demand},
      {"text that is no number", "abc", "Non-numeric value for " + demand},
      {"infinity text", "+Infinity", "Non-numeric value for " + demand},
      {"cell with text", cell("abc"), "Non-numeric value in cell referenced for " + demand},
      {"two cells", twoCells, "More than one cell selected for " + demand},
      {"error cell", cell(Variant::error(2042)), "Error in cell value for " + demand},
      {"NaN", nan, "Non-numeric value for " + demand},
      {"missing", Variant::missing(), "Non-numeric value for " + demand},
      {"error value", Variant::error(2007), "Non-numeric value for " + demand},
      {"array", Variant::array(1), "Non-numeric value for " + demand},
      {"object that is no range", std::make_shared<Object>(), "Non-numeric value for " + demand},
  };
  for (const auto& [what, sd, cause] : cases) {
    c_Distribution d;
    d.distType("Normal");
    d.param2 = sd;
    std::string said = "before";
    EXPECT_EQ(d.ParamsOK(said), cause.empty()) << what;
    EXPECT_EQ(said, cause) << what;
  }
}

TEST(Validation, JudgesTheLimits) {
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    const char* what;
    Variant lower, upper;
    std::string cause;
  } cases[] = {
      {"none", {}, {}, ""},
      {"ordinary", 1, "2", ""},
      {"reversed", 2, 1, ""},
      {"infinities", "-Infinity", "+Infinity", ""},
      {"infinities in cells", cell("-Infinity"), cell("+Infinity"), ""},
      {"equal numbers", 5, "5.0", "LTL value can not be equal to UTL value."},
      {"equal texts", "-Infinity", "-Infinity", "LTL value can not be equal to UTL value."},
      {"text", "abc", 5, "Improper value for LTL."},
      {"the word none", "none", 5, "Improper value for LTL."},
      {"text in a cell", 5, cell("abc"), "Improper value in cell referenced for UTL."},
      {"error cell", cell(Variant::error(2042)), 5, "Error in cell value for LTL."},
      {"error value", Variant::error(2042), 5, "Improper value for LTL."},
      {"infinite number", 5, infinity, "Improper value for UTL."},
      {"letter case", "-infinity", 5, "Improper value for LTL."},
      {"two cells", std::make_shared<FakeRange>(std::vector<Variant>{1, 2}), 5,
       "More than one cell selected for LTL."},
      {"missing", Variant::missing(), 5, "Improper value for LTL."},
  };
  for (const auto& [what, lower, upper, cause] : cases) {
    c_Distribution d;
    d.distType("Normal");
    d.param1 = 3;
    d.param2 = 1;
    d.ltl = lower;
    d.utl = upper;
    std::string said;
    EXPECT_EQ(d.ParamsOK(said), cause.empty()) << what;
    EXPECT_EQ(said, cause) << what;
  }
}

TEST(Validation, AnswersOrRaisesWhicheverReadOfARangeFails) {
  // However many reads succeed before the range falls silent, the caller gets a sentence or a
  // numbered error with its trace.
  for (const char* member : {"Application", "Address", "count", "Cells", "Value"}) {
    for (int nth = 1; nth <= 12; ++nth) {
      const auto range = cell(2);
      c_Distribution d;
      d.distType("Normal");
      d.param2 = range;
      d.ltl = range;
      range->failingRead[member] = nth;
      std::string cause;
      const auto fault = faultOf([&] { return d.ParamsOK(cause); });
      if (fault) {
        EXPECT_EQ(fault->number(), 1004);
        EXPECT_NE(fault->source().find("\r\nin palvex.c_Distribution.ParamsOK at line "),
                  std::string::npos);
      }
    }
  }
  const auto silent = cell(2);
  c_Distribution d;
  d.distType("Normal");
  d.param2 = silent;
  silent->failingRead["count"] = 1;
  std::string cause;
  const auto fault = faultOf([&] { return d.ParamsOK(cause); });
  ASSERT_TRUE(fault);
  EXPECT_TRUE(fault->source().starts_with("host\r\nin palvex.c_Distribution.BadParam at line "));
}

TEST(Validation, SurvivesARangeThatChangesTheObject) {
  struct Hostile : FakeRange {
    Hostile(c_Distribution& d, std::string_view when) : FakeRange({2}), victim(&d), member(when) {}
    Variant doGet(std::string_view asked, const std::vector<Variant>& arguments) override {
      if (sameMember(asked, member)) victim->param2 = victim->ltl = victim->param1 = 7;
      return FakeRange::doGet(asked, arguments);
    }
    c_Distribution* victim;
    std::string_view member;
  };
  for (const char* member : {"Application", "Address", "count", "Cells", "Value"}) {
    for (const char* type : {"Normal", "Histogram"}) {
      c_Distribution d;
      d.distType(type);
      d.param1 = std::make_shared<Hostile>(d, member);
      d.param2 = std::make_shared<Hostile>(d, member);
      d.ltl = std::make_shared<Hostile>(d, member);
      std::string cause;
      static_cast<void>(faultOf([&] { return d.ParamsOK(cause); }));
      d.ltl = std::make_shared<Hostile>(d, member);
      d.Dynamic = true;
      static_cast<void>(faultOf([&] { return d.RandVal(0.5); }));
      if (d.distType() == "Normal") {
        EXPECT_EQ(d.param1, Variant(7)) << member;
      }
    }
  }
}

/// A cell that does something each time that its value is read.
struct Busy : FakeRange {
  Busy(Variant value, std::function<void()> what)
      : FakeRange({std::move(value)}), action(std::move(what)) {}
  Variant doGet(std::string_view asked, const std::vector<Variant>& arguments) override {
    if (sameMember(asked, "Value")) action();
    return FakeRange::doGet(asked, arguments);
  }
  std::function<void()> action;
};

TEST(Validation, EndsWithTheTypeThatItBeganWith) {
  for (const char* from : {"Beta", "Johnson", "Lognormal", "Histogram"}) {
    for (const char* to : {"Histogram", "Normal", "Johnson"}) {
      c_Distribution d;
      d.distType(from);
      const auto cells = std::make_shared<Busy>(0.5, [&] { d.distType(to); });
      d.param1 = cells;
      d.param2 = *from == 'H' ? Variant("Raw Data") : Variant(2);
      d.param4 = 3;
      std::string cause;
      EXPECT_TRUE(d.ParamsOK(cause)) << from << ' ' << to << ' ' << cause;
      d.distType(from);
      d.Dynamic = true;
      for (const auto& call : std::initializer_list<std::function<double()>>{
               [&] { return d.pdf(1); }, [&] { return d.cdf(.5); }, [&] { return d.RandVal(.5); },
               [&] { return d.mean(); }, [&] { return d.CalcMean(); }, [&] { return d.XMin(); }}) {
        d.distType(from);
        EXPECT_EQ(faultNumber(call), 0) << from << ' ' << to;
      }
    }
  }
}

TEST(Validation, KeepsNothingThatADrawInItsMiddlePrepared) {
  for (const char* type : {"Beta", "Gamma"}) {
    c_Distribution plain;
    c_Distribution d;
    std::string cause;
    for (c_Distribution* one : {&plain, &d}) {
      one->distType(type);
      one->param1 = 3;
      one->param2 = 2;
      one->param4 = 1;
      one->ltl = .1;
    }
    const auto draw = [&] {
      static_cast<void>(faultOf([&] { return d.RandVal(.5) + d.pdf(.5); }));
    };
    d.param2 = std::make_shared<Busy>(2, draw);
    d.ltl = std::make_shared<Busy>(.1, draw);
    ASSERT_TRUE(plain.ParamsOK(cause) && d.ParamsOK(cause)) << cause;
    EXPECT_EQ(d.RandVal(.5), plain.RandVal(.5)) << type;
    EXPECT_EQ(d.pdf(.5), plain.pdf(.5)) << type;
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

TEST(Validation, ATraceNamesALineOfEachRoutine) {
  // Wherever a cell falls silent, each routine of the trace shows a line of its own.
  const std::map<std::string, std::function<void(c_Distribution&)>> calls{
      {"pdf", [](auto& d) { d.pdf(1); }},
      {"cdf", [](auto& d) { d.cdf(1); }},
      {"liveValue", [](auto& d) { d.RandVal(.5); }},
      {"StDev", [](auto& d) { d.StDev(); }},
      {"XMin", [](auto& d) { d.XMin(); }},
      {"XMax", [](auto& d) { d.XMax(); }},
      {"CreateGraphData", [](auto& d) { d.CreateGraphData(0, 1); }},
      {"ParamsOK", [](auto& d) {
         std::string cause;
         d.ParamsOK(cause);
       }}};
  std::set<std::string> routines;
  for (const auto& [member, call] : calls) {
    for (int nth = 1; nth <= 12; ++nth) {
      const auto range = cell(2);
      range->failingRead["Value"] = nth;
      c_Distribution d;
      d.distType("Normal");
      d.param2 = d.ltl = range;
      d.Dynamic = true;
      const auto fault = faultOf([&] {
        call(d);
        return 0;
      });
      if (!fault || fault->number() != 1004) continue;
      std::istringstream trace(fault->source());
      for (std::string line; std::getline(trace, line);) {
        const std::size_t at = line.find(" at line ");
        if (at == std::string::npos) continue;
        std::string routine = line.substr(25, at - 25);  // behind "in palvex.c_Distribution."
        routines.insert(routine);
        if (routine == "RandVal") routine = "liveValue";
        EXPECT_TRUE(membersAt(std::stoi(line.substr(at + 9))).contains(routine)) << line;
      }
    }
  }
  EXPECT_EQ(routines.size(), 10U);  // those of the calls, BadParam and SetStaticParams
}

TEST(Validation, LaterFaultsLeaveTheEarlierCachesRefreshed) {
  Checked d(1, 1, -5, {});
  d.param1 = 2;
  d.ltl = "abc";
  std::string cause;
  EXPECT_FALSE(d.ParamsOK(cause));
  EXPECT_EQ(d.cdf(2), 0.5);  // the parameters passed and are cached
  EXPECT_EQ(d.pdf(-6), 0);   // the limits did not
  d.param2 = -1;
  d.param1 = 3;
  EXPECT_FALSE(d.ParamsOK(cause));
  EXPECT_EQ(d.cdf(2), 0.5);
}

}  // namespace
}  // namespace palvex
