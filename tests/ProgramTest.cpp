// The built program, run by the shell: what it prints, how it ends.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

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
    std::ofstream(folder_ / "semicolons.csv") << "\xEF\xBB\xBFname;low; high, or so\n1.5;2;x\n";
    std::ofstream(folder_ / "tabs.csv") << "a, b\tb\n1.5\t2\n";
    std::ofstream(folder_ / "comma.csv") << "a;b\n1,5;2\n";
    std::ofstream(folder_ / "empty.csv") << "";
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

// Each command of data/terminal/transcripts.txt, as it stands there.
TEST_F(Program, AnswersAsTheTranscriptsShow) {
  std::ifstream transcripts(PALVEX_TEST_DATA "/terminal/transcripts.txt");
  std::string command;
  Outcome expected{};
  std::size_t commands = 0;
  const auto compare = [&] {
    if (command.empty()) return;
    const Outcome result = run(command);
    EXPECT_EQ(result.exitCode, expected.exitCode) << command;
    EXPECT_EQ(result.out, expected.out) << command;
    EXPECT_EQ(result.err, expected.err) << command;
    ++commands;
  };
  for (std::string line; std::getline(transcripts, line);) {
    if (line.starts_with('#')) continue;
    if (line.starts_with("$ ")) {
      compare();
      command = line.substr(2);
      expected = {};
    } else if (line.starts_with("! ")) {
      expected.err += line.substr(2) + '\n';
    } else if (line.starts_with("= ")) {
      expected.exitCode = std::stoi(line.substr(2));
    } else {
      expected.out += line + '\n';
    }
  }
  compare();
  EXPECT_GT(commands, 50U);
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

TEST_F(Program, HelpsOnEveryLevelWithExamples) {
  for (const char* command :
       {"", "demo", "types", "check", "eval", "quantile", "describe", "draw", "guess", "plot"}) {
    const Outcome result = run(std::string("palvex ") + command + " --help");
    EXPECT_EQ(result.exitCode, 0) << command;
    EXPECT_NE(result.out.find("\nExamples:\n  palvex"), std::string::npos) << command;
  }
}

TEST_F(Program, TracesAnErrorWhenAsked) {
  const Outcome result = run("palvex eval Normal 5 0 --at 7 --members --trace");
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
  for (const char* document :
       {"README.md", "docs/terminal.md", "docs/types.md", "docs/departures.md"}) {
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
  EXPECT_EQ(
      without.err,
      "palvex: PNG needs the program rsvg-convert (Debian: librsvg2-bin); a file that ends in "
      ".svg needs no other program\n");
}

TEST_F(Program, SaysWhenResultsCanNotBeWritten) {
  const Outcome full = run("palvex types > /dev/full");
  EXPECT_EQ(full.exitCode, 3);
  EXPECT_EQ(full.err, "palvex: can not write the results: No space left on device\n");
  EXPECT_EQ(run("palvex demo --save none/x.csv").err,
            "palvex: can not write 'none/x.csv': No such file or directory\n");
  for (const char* command : {"--help", "--version", "draw --help"})
    EXPECT_EQ(run(std::string("palvex ") + command + " >/dev/full").exitCode, 3) << command;
  EXPECT_EQ(run("palvex types >&-").exitCode, 3);
  EXPECT_EQ(run("palvex check Normal 10 -2 2>&-").exitCode, 1);
  EXPECT_EQ(run("palvex check Normal 10 -2 2>/dev/full").exitCode, 1);
  EXPECT_EQ(run("palvex draw Uniform 0 1 -n 100000 -o /dev/full").err,
            "palvex: can not write '/dev/full': No space left on device\n");
  // A reader that has seen enough ends the run at once and without a word.
  const Outcome piped =
      run("{ palvex draw Uniform 0 1 -n 1000000000; echo $? >code; } | head -n 1; cat code");
  EXPECT_EQ(piped.out, "0.8805201978886142\n3\n");
  EXPECT_EQ(piped.err, "");
}

TEST_F(Program, EndsWithWholeLinesWhenInterrupted) {
  // To the program itself: a shell would wait for the function that wraps it.
  for (const char* format : {"", "--csv", "--json"}) {
    const Outcome result =
        run(std::string("rm -f draws; '" PALVEX_PROGRAM "' draw Uniform 0 1 -n 1e12 ") + format +
            " >draws & until [ -s draws ]; do sleep 0.02; done; kill -INT $!; wait $!; code=$?; "
            "tail -n 1 draws "
            "| tail -c 1 | od -An -c; tail -n 1 draws; exit $code");
    EXPECT_EQ(result.exitCode, 130) << format;
    EXPECT_TRUE(result.out.starts_with("  \\n\n")) << result.out;
    EXPECT_EQ(result.out.ends_with("\n]\n"), std::string(format) == "--json") << result.out;
  }
}

}  // namespace
