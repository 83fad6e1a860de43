// The built program, run by the shell: what it prints, how it ends.

#include <fmt/core.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "engine/c_Distribution.h"

namespace {

namespace fs = std::filesystem;

struct Outcome {
  int exitCode;
  std::string out;
  std::string err;
};

std::string contents(const fs::path& path) {
  std::ostringstream all;
  all << std::ifstream(path, std::ios::binary).rdbuf();
  return all.str();
}

/// A folder of the test's own with the worksheet sheet.csv in it.
class Program : public testing::Test {
 protected:
  Program() {
    fs::create_directories(folder_);
    std::ofstream(folder_ / "sheet.csv") << "mean,10\n\"sd\",2\nbad,#N/A\nopen,-Infinity\n,word\n";
    std::ofstream(folder_ / "four.csv") << "a,b\n,4\n";
    std::ofstream(folder_ / "broken.csv") << "1\n\"2\n";
  }
  ~Program() override { fs::remove_all(folder_); }

  /// Runs a shell command in the folder; in it, `palvex` is the program.
  [[nodiscard]] Outcome run(const std::string& command) const {
    const std::string line = "cd '" + folder_.string() +
                             "' && palvex() { '" PALVEX_PROGRAM "' \"$@\"; }\n{ " + command +
                             "\n} >out 2>err </dev/null";
    const int status = std::system(line.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(folder_ / "out"),
            contents(folder_ / "err")};
  }

 private:
  fs::path folder_ = fs::path(testing::TempDir()) /
                     ("palvex_" + std::to_string(getpid()) + "_" +
                      testing::UnitTest::GetInstance()->current_test_info()->name());
};

struct Case {
  const char* arguments;
  int exitCode;
  const char* out;
  const char* err;
};

TEST_F(Program, AnswersExactly) {
  const std::vector<Case> cases{
      {"check Normal 10 2", 0,
       "parameter  given  value\nMean       10        10\nStd Dev    2          2\n", ""},
      {"check Normal =B1 '=b$2' --ltl =B4 --utl 12 --csv --sheet sheet.csv", 0,
       "parameter,given,value\nMean,=B1,10\nStd Dev,=b$2,2\nLTL,=B4,-Infinity\nUTL,12,12\n", ""},
      {"check Johnson 5 2 0 3 --csv", 0,
       "parameter,given,value,fitted\nMean,5,5,5\nStd Dev,2,2,2\nSkewness,0,0,0\nKurtosis,3,3,3\n"
       "Curve,,,Normal\ngamma,,,2\ndelta,,,0\nlambda,,,5\nxi,,,0\n",
       ""},
      {"check Johnson 0 1 2.084 11.55 --ltl =B1 --sheet sheet.csv", 0,
       "parameter  given  value  fitted\nMean       0          0\nStd Dev    1          1\n"
       "Skewness   2.084  2.084\nKurtosis   11.55  11.55\nLTL        =B1       10\n"
       "Curve                    none: the fit did not converge\n",
       ""},
      {"check Johnson 0 1 1 2", 1, "",
       "palvex: Impossible combination of skewness and kurtosis.  Kurtosis must be greater than (1 "
       "+ Skewness^2).\n"},
      {"guess Triangular 10 --csv", 0, "parameter,value\nMinimum,9\nLikely,10\nMaximum,11\n", ""},
      {"--version", 0, "palvex 0.1.0\n", ""},

      // The engine's sentences.
      {"check Normal 10 -2", 1, "",
       "palvex: Negative value for Std Dev.  Must be a non-negative real number.\n"},
      {"eval normal 10 2 --at 1", 1, "", "palvex: Unknown distribution type 'normal'.\n"},
      {"check Normal =B3 2 --sheet sheet.csv", 1, "", "palvex: Error in cell value for Mean.\n"},
      {"check Normal =A1:B2 2 --sheet sheet.csv", 1, "",
       "palvex: More than one cell selected for Mean.\n"},
      {"check Normal =B5 2 --sheet sheet.csv", 1, "",
       "palvex: Non-numeric value in cell referenced for Mean.\n"},
      {"check Normal '' 2", 1, "", "palvex: Non-numeric value for Mean.\n"},
      {"check Normal 0 1 --ltl none", 1, "", "palvex: Improper value for LTL.\n"},
      {"check Normal 0 1 --ltl 5 --utl 5", 1, "",
       "palvex: LTL value can not be equal to UTL value.\n"},
      {"eval Normal 5 0 --at 7", 1, "", "palvex: error 11: Division by zero\n  cdf: (7,5,0,0,0)\n"},

      // Wrong use, one line each.
      {"check Normal 10", 2, "", "palvex: Normal has 2 parameters (Mean, Std Dev), 1 given\n"},
      {"check Normal 10 2 3", 2, "", "palvex: Normal has 2 parameters (Mean, Std Dev), 3 given\n"},
      {"check Normal =B1 2", 2, "", "palvex: '=B1' needs a worksheet: --sheet FILE\n"},
      {"check Normal =B6 2 --sheet sheet.csv", 2, "",
       "palvex: '=B6' is outside the sheet, which ends at B5\n"},
      {"check Normal =C1 2 --sheet sheet.csv", 2, "",
       "palvex: '=C1' is outside the sheet, which ends at B5\n"},
      {"check Normal =B1+1 2 --sheet sheet.csv", 2, "",
       "palvex: '=B1+1' is no reference; write =B3 for a cell, =A2:A200 for several\n"},
      {"check Normal 1 2 --sheet none.csv", 2, "",
       "palvex: can not read 'none.csv': No such file or directory\n"},
      {"check Normal 1 2 --sheet .", 2, "", "palvex: can not read '.': Is a directory\n"},
      {"check Normal 1 2 --sheet broken.csv", 2, "",
       "palvex: broken.csv line 2: a quoted field is not closed\n"},
      {"eval Normal 10 2", 2, "", "palvex: eval: say where, with --at X... or --from A --to B\n"},
      {"eval Normal 10 2 --at ten", 2, "", "palvex: --at: 'ten' is not a number\n"},
      {"eval Normal 10 2 --from 1 --to 2 --steps 0", 2, "",
       "palvex: --steps: '0' is not a whole number from 1 to 1000000\n"},
      {"eval Normal 10 2 --from 1", 2, "", "palvex: --from requires --to\n"},
      {"guess Normal x", 2, "", "palvex: VALUE: 'x' is not a number\n"},
      {"guess Histogram 5", 2, "", "palvex: guess: a histogram is made from data\n"},
      {"draw Normal 0 1 -n 0", 2, "",
       "palvex: -n: '0' is not a whole number from 1 to 1000000000000\n"},
      {"draw Normal 0 1 --seed 1.5", 2, "",
       "palvex: --seed: '1.5' is not a whole number from 0 to 18446744073709551615\n"},
      {"plot Normal 10 2 -o n.pdf", 2, "",
       "palvex: plot: 'n.pdf' ends neither in .svg nor in .png\n"},
      {"plot Normal 10 2 --from 3 --to 3", 2, "", "palvex: plot: --from must be below --to\n"},
      {"plot 'Normal 10 2' 'Normal 10'", 2, "",
       "palvex: Normal has 2 parameters (Mean, Std Dev), 1 given\n"},
      {"plot 'Normal 10 2' 'Normal 10 2 --nonsense'", 2, "",
       "palvex: 'Normal 10 2 --nonsense': The following argument was not expected: --nonsense\n"},
      {"types --csv --json", 2, "", "palvex: --csv excludes --json\n"},
      {"types extra", 2, "", "palvex: The following argument was not expected: extra\n"},
      {"check Normal 10 2 --nonsense", 2, "",
       "palvex: The following argument was not expected: --nonsense\n"},
      {"", 2, "", "palvex: a command is missing; palvex --help lists them\n"},
      {"foo Normal", 2, "", "palvex: there is no command 'foo'; palvex --help lists them\n"},
  };
  for (const auto& [arguments, exitCode, out, err] : cases) {
    const Outcome result = run(std::string("palvex ") + arguments);
    EXPECT_EQ(result.exitCode, exitCode) << arguments;
    EXPECT_EQ(result.out, out) << arguments;
    EXPECT_EQ(result.err, err) << arguments;
  }
}

TEST_F(Program, EvaluatesAsTheEngineDoes) {
  palvex::c_Distribution normal;
  normal.distType("Normal");
  normal.param1 = 10;
  normal.param2 = 2;
  normal.ltl = 10;
  std::string cause;
  ASSERT_TRUE(normal.ParamsOK(cause));
  const auto rows = [&](const char* pattern, std::initializer_list<double> xs) {
    std::string text;
    for (const double x : xs) {
      text += fmt::format(fmt::runtime(pattern), x, normal.pdf(x), normal.cdf(x));
    }
    return text;
  };
  EXPECT_EQ(run("palvex eval Normal 10 2 --ltl 10 --at 11 -2.5 --csv").out,
            "x,density,probability\n" + rows("{},{},{}\n", {11, -2.5}));
  EXPECT_EQ(run("palvex eval Normal =B1 =B2 --ltl =B1 --sheet sheet.csv "
                "--from 9.5 --to 11.5 --steps 4 --csv")
                .out,
            "x,density,probability\n" + rows("{},{},{}\n", {9.5, 10, 10.5, 11, 11.5}));
  EXPECT_EQ(run("palvex eval Normal 10 2 --ltl 10 --at 12.5 --json").out,
            "[\n" + rows(" {{\"x\":{},\"density\":{},\"probability\":{}}}\n", {12.5}) + "]\n");
}

// u = (0xe169c58d6627e + 0.5) / 2^52 for the first trial of seed 0: the published Philox vector.
TEST_F(Program, DrawsTheSameValuesForTheSameSeed) {
  EXPECT_EQ(run("palvex draw Uniform 0 1 -n 1").out, "0.8805201978886142\n");
  const std::string five =
      run("palvex draw Lognormal 1 0.5 0 -n 5 --seed 18446744073709551615").out;
  const std::string some =
      run("palvex draw Lognormal 1 0.5 0 -n 10000 --seed 18446744073709551615").out;
  EXPECT_EQ(some.substr(0, five.size()), five);
  EXPECT_EQ(std::count(some.begin(), some.end(), '\n'), 10000);
  EXPECT_NE(run("palvex draw Lognormal 1 0.5 0 -n 5 --seed 1").out, five);

  EXPECT_EQ(run("palvex draw Uniform 0 2 -n 1 --csv -o d.csv; cat d.csv").out,
            "trial,uniform,value\n1,0.8805201978886142,1.7610403957772285\n");
  EXPECT_EQ(run("palvex draw Uniform 0 0.5 -n 1 --json").out, "[\n 0.4402600989443071\n]\n");
  const std::string json = run("palvex draw Uniform 0 1 -n 20000 --json").out;
  EXPECT_EQ(nlohmann::json::parse(json).size(), 20000u);
}

TEST_F(Program, DescribesWhatTheLimitsKeep) {
  EXPECT_EQ(run("palvex describe Uniform 0 8 --ltl 2 --utl =B2 --sheet four.csv").out,
            "quantity            value\n"
            "Type                Uniform\n"
            "Minimum             0\n"
            "Maximum             8\n"
            "LTL                 2\n"
            "UTL                 4\n"
            "Kept share          0.25\n"
            "Mean of the law     3\n"
            "Std Dev of the law  0.5773502692\n"
            "1 %                 2.02\n"
            "5 %                 2.1\n"
            "10 %                2.2\n"
            "25 %                2.5\n"
            "50 %                3\n"
            "75 %                3.5\n"
            "90 %                3.8\n"
            "95 %                3.9\n"
            "99 %                3.98\n");
  const std::vector<std::pair<const char*, const char*>> shares{
      {"Uniform 0 8 --ltl 4 --utl 2", "0.75"},       {"Normal 5 0 --ltl 5", "1"},
      {"Weibull 1 1 5 --ltl 7", "0.13533528"},  // e^-2
      {"Normal 0 1 --utl 0 --ltl -Infinity", "0.5"}, {"Normal 0 1 --ltl 10", "less than 1e-08"},
  };
  for (const auto& [distribution, share] : shares) {
    const Outcome described = run(std::string("palvex describe ") + distribution);
    EXPECT_NE(described.out.find(std::string("Kept share          ") + share + '\n'),
              std::string::npos)
        << distribution << '\n'
        << described.out << described.err;
  }
  EXPECT_EQ(run("palvex describe Normal 0 1").out.find("Kept share"), std::string::npos);
}

TEST_F(Program, HelpsOnEveryLevelWithExamples) {
  for (const char* command :
       {"", "demo", "types", "check", "eval", "describe", "draw", "guess", "plot"}) {
    const Outcome result = run(std::string("palvex ") + command + " --help");
    EXPECT_EQ(result.exitCode, 0) << command;
    EXPECT_NE(result.out.find("\nExamples:\n  palvex"), std::string::npos) << command;
  }
}

TEST_F(Program, TracesAnErrorWhenAsked) {
  const Outcome result = run("palvex eval Normal 5 0 --at 7 --trace");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.err.find("\n  palvex\n  in palvex.c_Distribution.cdf at line "),
            std::string::npos)
      << result.err;
}

TEST_F(Program, DemonstratesItsOwnSheet) {
  const Outcome demo = run("palvex demo");
  EXPECT_EQ(demo.exitCode, 0);
  EXPECT_NE(demo.out.find("Error in cell value for Mean."), std::string::npos);
  const Outcome saved =
      run("palvex demo --save e.csv && palvex check Normal =B5 =C5 --ltl =D5 --csv --sheet e.csv");
  EXPECT_EQ(saved.out, "parameter,given,value\nMean,=B5,620\nStd Dev,=C5,45\nLTL,=D5,550\n");
}

// The console examples of the documents, run as they stand there.
TEST_F(Program, DoesWhatTheDocumentsShow) {
  for (const char* document : {"README.md", "docs/terminal.md"}) {
    std::istringstream lines(contents(fs::path(PALVEX_SOURCE) / document));
    std::string commands = "run() { palvex \"$@\"; }\n";
    std::string shown;
    bool inside = false;
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("```")) {
        inside = line == "```console";
      } else if (inside && line.starts_with("$ ")) {
        const auto program = line.find("./run ") == 2 ? line.substr(4) : line.substr(2);
        commands += program.substr(0, program.find(" #")) + " 2>&1\n";
      } else if (inside) {
        shown += line + '\n';
      }
    }
    ASSERT_FALSE(shown.empty()) << document;
    EXPECT_EQ(run(commands + "true").out, shown) << document;
  }
}

TEST_F(Program, DrawsPictures) {
  const Outcome svg =
      run("palvex plot 'Normal 10 2 --ltl 8' 'Uniform =B1 13 --utl 12' --sheet sheet.csv");
  EXPECT_EQ(svg.exitCode, 0) << svg.err;
  for (const char* part : {"<svg ", ">Normal, kept from 8<", ">Mean 10, Std Dev 2<",
                           ">Uniform, kept up to 12<", ">Minimum 10, Maximum 13<", "</svg>\n"}) {
    EXPECT_NE(svg.out.find(part), std::string::npos) << part;
  }
  EXPECT_EQ(
      run("palvex plot Normal 10 2 -o n.svg && palvex plot Normal 10 2 | cmp - n.svg").exitCode, 0);
  // With rsvg-convert a PNG, without it one line.
  const Outcome png =
      run("if command -v rsvg-convert >tool; then palvex plot Normal 10 2 -o \"n'.png\" "
          "&& head -c 4 \"n'.png\" | tail -c 3; else printf PNG; fi");
  EXPECT_EQ(png.out, "PNG") << png.err;
  const Outcome without = run("mkdir empty; PATH=$PWD/empty; palvex plot Normal 10 2 -o n.png");
  EXPECT_EQ(without.exitCode, 3);
  EXPECT_EQ(without.err,
            "palvex: rsvg-convert did not make 'n.png'; is it installed? A file that ends in .svg "
            "needs no other program\n");
}

TEST_F(Program, SaysWhenResultsCanNotBeWritten) {
  const Outcome full = run("palvex types > /dev/full");
  EXPECT_EQ(full.exitCode, 3);
  EXPECT_EQ(full.err, "palvex: can not write the results: No space left on device\n");
  EXPECT_EQ(run("palvex demo --save none/x.csv").err,
            "palvex: can not write 'none/x.csv': No such file or directory\n");
  EXPECT_EQ(run("palvex draw Uniform 0 1 -n 100000 -o /dev/full").err,
            "palvex: can not write '/dev/full': No space left on device\n");
  // A reader that has seen enough ends the run at once and without a word.
  const Outcome piped =
      run("{ palvex draw Uniform 0 1 -n 1000000000; echo $? >code; } | head -n 1; cat code");
  EXPECT_EQ(piped.out, "0.8805201978886142\n3\n");
  EXPECT_EQ(piped.err, "");
}

}  // namespace
