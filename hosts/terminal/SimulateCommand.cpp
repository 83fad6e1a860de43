#include <fmt/format.h>
#include <unistd.h>

#include <filesystem>
#include <limits>
#include <optional>

#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/CsvSheet.h"
#include "hosts/terminal/Faults.h"
#include "hosts/terminal/Output.h"
#include "hosts/terminal/Report.h"
#include "hosts/terminal/SharedTrials.h"
#include "hosts/terminal/SimulateOutput.h"
#include "hosts/terminal/WorkbookFile.h"
#include "palvex/simulation.h"

namespace palvex::terminal {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view exampleRegister =
    R"(# A register of a small project to start from. Save it, change it, and simulate it:
#   palvex simulate --example > register.csv
#   palvex simulate register.csv -n 100000
# A row with a Type is an input and one with a Formula a result of rows above; columns that palvex
# does not know (Note and Past delays here) are yours. A row that begins with # is a comment.
#
Name,Type,Param1,Param2,Param3,Param4,LTL,UTL,Chance,Formula,Unit,Note,Past delays
Day rate,Normal,620,45,,,550,,,,EUR,nobody works for less than 550,0
Design,PERT,20,25,40,,,,,,days,"minimum, likely, maximum",0
Build,Triangular,60,75,120,,,,,,days,,3
Test,PERT,15,20,45,,,,,,days,,5
Commissioning,Triangular,5,8,=[Test],,,,,,days,takes at most as long as the test,0
Delivery delay,Histogram,=M8:M17,Raw Data,,,0,,,,days,as in ten earlier projects,8
Licences,Uniform,18000,26000,,,,,,,EUR,,2
Redesign,LognormalMean,15,10,,,,60,25%,,days,a risk: one in four,12
Bad ground,Triangular,20000,35000,90000,,,,0.1,,EUR,a risk: one in ten,1
Duration,,,,,,,,,[Design] + [Redesign] + [Build] + [Delivery delay] + [Test] + [Commissioning],days,,4
Labour,,,,,,,,,[Duration] * 4 * [Day rate],EUR,a team of four,
Cost,,,,,,,,,[Labour] + [Licences] + [Bad ground],EUR,,
#
# Packages that run late together: save the rows below (without the #) as correlations.csv and add
#   --correlations correlations.csv
#,Design,Build,Test
#Design,1,0.5,0.3
#Build,0.5,1,0.6
#Test,0.3,0.6,1
)";

/// A line on standard error that shows how far a run is and how long it will take, for a person.
class TimeLeft {
 public:
  TimeLeft() : shown_(isatty(fileno(stderr)) != 0) {}
  TimeLeft(const TimeLeft&) = delete;
  TimeLeft& operator=(const TimeLeft&) = delete;
  ~TimeLeft() {
    if (shown_) writeMessage(fmt::format("\r{:<60}\r", ""));
  }

  void report(std::uint64_t done, std::uint64_t all) {
    const Clock::time_point now = Clock::now();
    if (!shown_ || now < next_ || done == 0) return;
    next_ = now + std::chrono::milliseconds(300);
    const double share = static_cast<double>(done) / static_cast<double>(all);
    const double seconds = std::chrono::duration<double>(now - start_).count();
    writeMessage(fmt::format("\r{:<60}", fmt::format("{:3.0f} % of {} trials, {} left", 100 * share,
                                                     all, duration(seconds / share - seconds))));
  }

 private:
  using Clock = std::chrono::steady_clock;

  static std::string duration(double seconds) {
    if (seconds < 90) return fmt::format("{:.0f} s", seconds);
    if (seconds < 5400) return fmt::format("{:.0f} min", seconds / 60);
    return fmt::format("{:.1f} h", seconds / 3600);
  }

  bool shown_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point next_ = start_ + std::chrono::milliseconds(300);
};

struct SimulateOptions : ResultOptions {
  std::string file;
  bool example = false;
  std::string trials;
  std::string seed;
  std::string sampling;
  std::string correlationsFile;
  bool repairCorrelations = false;
  std::string percentiles = "5,10,50,80,90,95";
  std::string until;
  std::string threads;
  std::string jobs;
  std::string trialsFile;
  std::string reportFile;
  bool skipFailures = false;
};

constexpr std::uint64_t mostTrials = 1'000'000'000'000;
constexpr std::string_view usualTrials = "10000";
constexpr std::string_view usualSeed = "1";
constexpr std::string_view usualSampling = "random";
constexpr std::string_view usualTrialsUntil = "100000000";  // at most, with --until

std::vector<double> percentsOf(const std::string& list) {
  std::vector<double> percents;
  for (std::size_t from = 0; from <= list.size();) {
    const std::size_t to = std::min(list.find(',', from), list.size());
    percents.push_back(numberArgument("--percentiles", list.substr(from, to - from)));
    if (!(percents.back() >= 0 && percents.back() <= 100)) {
      throw UsageError(fmt::format("--percentiles: {} is not between 0 and 100", percents.back()));
    }
    from = to + 1;
  }
  return percents;
}

simulation::Sampling samplingOf(const std::string& name) {
  if (name == "random") return simulation::Sampling::random;
  if (name == "lhs") return simulation::Sampling::lhs;
  throw UsageError(fmt::format("--sampling: '{}' is neither random nor lhs", name));
}

double shareOf(const std::string& text) {
  const std::optional<double> share = numberIn(text);
  if (!share || !(*share > 0)) {
    throw UsageError(fmt::format("--until: '{}' is not a share such as 1%", text));
  }
  return *share;
}

/// An option as it was given, or its default.
std::string given(const std::string& option, std::string_view usual) {
  return option.empty() ? std::string(usual) : option;
}

simulation::Settings settingsOf(const SimulateOptions& options) {
  simulation::Settings settings;
  const std::string_view usual = options.until.empty() ? usualTrials : usualTrialsUntil;
  settings.trials = countArgument("-n", given(options.trials, usual), 1, mostTrials);
  settings.seed = countArgument("--seed", given(options.seed, usualSeed), 0,
                                std::numeric_limits<std::uint64_t>::max());
  settings.sampling = samplingOf(given(options.sampling, usualSampling));
  settings.percents = percentsOf(options.percentiles);
  settings.skipFailures = options.skipFailures;
  settings.describeTrials = !options.trialsFile.empty();
  if (!options.until.empty()) settings.until = shareOf(options.until);
  return settings;
}

void refuseToWriteOver(const std::string& output, const std::string& input) {
  std::error_code none;
  if (!output.empty() && !input.empty() && fs::equivalent(output, input, none)) {
    throw UsageError(fmt::format("'{}' is being read and can not be written, too", output));
  }
}

/// Whether two names lead to one file, which need not be there yet.
bool isSameFile(const std::string& one, const std::string& other) {
  std::error_code none;
  return fs::weakly_canonical(one, none) == fs::weakly_canonical(other, none) &&
         !fs::is_other(one, none);
}

simulation::Correlations correlationsOf(const SimulateOptions& options,
                                        const simulation::Model& model) {
  try {
    auto correlations = simulation::Correlations::fromSheet(
        CsvSheet(Worksheet::fromFile(options.correlationsFile)));
    if (options.repairCorrelations) {
      if (const auto change = correlations.repair()) {
        writeMessage(fmt::format(
            "palvex: correlations repaired; the largest change: {} with {} from {:.4g} to {:.4g}\n",
            change->first, change->second, change->before, change->after));
      }
    }
    static_cast<void>(simulation::Copula(correlations, model.inputNames()));
    return correlations;
  } catch (const simulation::Contradiction& fault) {
    throw Refusal(fmt::format("{}: {} --repair-correlations takes the nearest that do not.",
                              options.correlationsFile, fault.what()));
  } catch (const simulation::Fault& fault) {
    throw Refusal(fmt::format("{}: {}", options.correlationsFile, fault.what()));
  }
}

void writeExample() {
  Output output;
  output.write(exampleRegister);
  output.close();
}

/// A word of a command line, quoted for a shell where it must be.
std::string quoted(const std::string& word) {
  constexpr std::string_view plain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./,:%+-";
  if (!word.empty() && word.find_first_not_of(plain) == std::string::npos) return word;
  std::string safe = "'";
  for (const char c : word) safe += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return safe + "'";
}

/// The command line that gives the same figures again, whatever the table or the usual values say
/// by then.
std::string commandLine(const SimulateOptions& options, const simulation::Settings& settings) {
  std::string line = "palvex simulate " + quoted(options.file);
  const auto add = [&](std::string_view name, const std::string& value) {
    if (!value.empty()) line += fmt::format(" {} {}", name, quoted(value));
  };
  add("-n", options.until.empty() ? std::to_string(settings.trials) : options.trials);
  add("--until", options.until);
  add("--seed", std::to_string(settings.seed));
  add("--sampling", settings.sampling == simulation::Sampling::lhs ? "lhs" : options.sampling);
  add("--correlations", options.correlationsFile);
  if (options.repairCorrelations) line += " --repair-correlations";
  add("--percentiles", options.percentiles);
  if (options.skipFailures) line += " --skip-failures";
  return line;
}

/// A line about a run that ended early; "" for any other.
std::string remark(const simulation::Results& results) {
  std::string text;
  if (results.cancelled) {
    text = fmt::format("ended by Ctrl-C after {} of {} trials", results.trials + results.failures,
                       results.asked);
  } else if (results.settled) {
    text = fmt::format("settled after {} trials", results.trials + results.failures);
  } else {
    return "";
  }
  if (results.sampling == simulation::Sampling::lhs) text += "; the strata are not complete";
  return "palvex: " + text + '\n';
}

/// A workbook's simulation: the table, and the cells that its trials write and read.
class WorkbookRun {
 public:
  /// @param helping  this process works for another one
  WorkbookRun(const SimulateOptions& options, bool helping)
      // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): a unique_ptr takes it
      : helpers_(helping ? nullptr : helpersFor(options)),
        workbook_(openWorkbook(options.file)),
        model_(simulation::Model::fromWorkbook(workbook_->table())) {}

  [[nodiscard]] const simulation::Model& model() const { return model_; }

  /// Takes trials, seed and sampling from the table where no option gives them.
  void complete(simulation::Settings& settings, const SimulateOptions& options) const {
    const simulation::Settings table = workbook_->settings(model_);
    if (options.trials.empty() && options.until.empty()) settings.trials = table.trials;
    if (options.seed.empty()) settings.seed = table.seed;
    if (options.sampling.empty()) settings.sampling = table.sampling;
  }

  [[nodiscard]] std::unique_ptr<simulation::Workbook> cells(std::uint64_t trials) const {
    return helpers_ ? helpers_->workbook(trials) : workbook_->cells(model_);
  }

 private:
  static std::unique_ptr<Helpers> helpersFor(const SimulateOptions& options) {
    const std::uint64_t jobs = countArgument("--jobs", given(options.jobs, "1"), 1, 64);
    return jobs == 1 ? nullptr : std::make_unique<Helpers>(static_cast<unsigned>(jobs));
  }

  std::unique_ptr<Helpers> helpers_;
  std::unique_ptr<calc::OpenWorkbook> workbook_;
  simulation::Model model_;
};

void simulate(const SimulateOptions& options, const Role& role) {
  if (options.example) return writeExample();
  if (options.file.empty()) throw UsageError("simulate: FILE is missing; --example writes one");
  simulation::Settings settings = settingsOf(options);
  simulation::RunOptions run;
  if (!options.threads.empty()) {
    run.threads = static_cast<unsigned>(countArgument("--threads", options.threads, 1, 1024));
  }
  refuseToWriteOver(options.trialsFile, options.file);
  refuseToWriteOver(options.trialsFile, options.correlationsFile);
  refuseToWriteOver(options.reportFile, options.file);
  refuseToWriteOver(options.reportFile, options.correlationsFile);
  if (!options.reportFile.empty() && isSameFile(options.reportFile, options.trialsFile))
    throw UsageError("--report and --trials name the same file");

  if (!options.jobs.empty() && !role.alone) {
    throw UsageError("--jobs: the processes of MPI share the trials already");
  }
  const bool helping = isHelper();
  std::optional<WorkbookRun> workbook;
  if (isWorkbook(options.file)) {
    workbook.emplace(options, helping);
    workbook->complete(settings, options);
    run.threads = 1;
  } else if (!options.jobs.empty()) {
    throw UsageError("--jobs is for workbooks; --threads shares the trials of a CSV table");
  }
  const simulation::Model model =
      workbook ? workbook->model()
               : simulation::Model::fromSheet(CsvSheet(Worksheet::fromFile(options.file)));
  if (!options.correlationsFile.empty()) settings.correlations = correlationsOf(options, model);
  if (helping && workbook) return help(model, settings, workbook->cells(settings.trials));

  std::optional<Output> report;
  if (role.writes && !options.reportFile.empty()) report.emplace(options.reportFile);
  std::optional<Output> trials;
  if (role.writes && !options.trialsFile.empty()) {
    trials.emplace(options.trialsFile);
    trials->write(trialsHead(model));
    run.onTrials = [&trials](std::string_view text) { trials->write(text); };
  }
  simulation::Results results;
  {
    const CatchInterrupt catching;
    TimeLeft timeLeft;
    run.cancelled = interrupted;
    run.progress = [&timeLeft](std::uint64_t done, std::uint64_t all) {
      timeLeft.report(done, all);
    };
    std::uint64_t begun = 0;
    if (workbook) {
      run.openWorkbook = [&] {
        return counted(workbook->cells(settings.trials), model,
                       [&] { timeLeft.report(++begun, settings.trials); });
      };
    }
    try {
      results = role.simulate(model, settings, run);
    } catch (const HelperLost&) {
      throw Refusal("a process that shares the trials has ended early");
    }
  }
  if (results.trials == 0 && results.cancelled) {
    writeMessage("palvex: ended by Ctrl-C before the first block of trials was done\n");
    throw Interruption{};
  }
  if (results.trials == 0) throw Refusal("every trial failed: there are no results.");
  if (trials) trials->close();
  if (report) {
    report->write(
        reportOf(model, results, {options.file, commandLine(options, settings), PALVEX_VERSION}));
    report->close();
  }
  Output output;
  output.write(resultsText(results, options.format));
  output.close();
  writeMessage(remark(results));
  if (results.cancelled) throw Interruption{};
}

}  // namespace

void addSimulate(CLI::App& program, const Role& role) {
  CLI::App* command = program.add_subcommand(
      "simulate", "Simulate a table of uncertain figures: what may their total be?");
  command->footer(
      "FILE is a table: a CSV file, or the sheet 'palvex' of a workbook (.ods, .xlsx, ...) whose\n"
      "formulas LibreOffice Calc works out; there a column Cell says which cell receives a draw,\n"
      "or is read as a result. The first row names the columns, in any order: Name, Type, Param1\n"
      "to Param4, LTL, UTL, Chance, Formula, Unit. A row with a Type (see: palvex types) is an\n"
      "input,\n"
      "drawn once a trial; Chance is the probability that it happens at all. A row with a "
      "Formula,\n"
      "such as [Price] * max([Days], 10), is a result of rows above. Without any there is one, "
      "the\n"
      "Total of all inputs. A parameter may be a cell (=B3) or a row above (=[Name]).\n"
      "The same seed gives the same results, whatever the number of threads. Ctrl-C ends with the\n"
      "results so far.\n\n"
      "Examples:\n"
      "  palvex simulate --example > register.csv\n"
      "  palvex simulate register.csv\n"
      "  palvex simulate register.csv -n 1e6 --sampling lhs --percentiles 10,50,80,90\n"
      "  palvex simulate register.csv --correlations correlations.csv --json\n"
      "  palvex simulate register.csv --until 0.5% --trials trials.csv\n"
      "  palvex simulate estimate.ods --jobs 2 --json");
  const auto options = std::make_shared<SimulateOptions>();
  command->add_option("FILE", options->file,
                      "The table, a CSV file or a workbook; - for standard input");
  command->add_flag("--example", options->example, "Write a table to start from, and end");
  command
      ->add_option("-n", options->trials,
                   "How many trials (default: 10000; with --until at most 100000000)")
      ->type_name("N");
  command
      ->add_option("--seed", options->seed, "Seed of the random numbers, 0 or greater (default: 1)")
      ->type_name("S");
  command
      ->add_option(
          "--sampling", options->sampling,
          "random (default), or lhs: each of N equal parts of an input's distribution once")
      ->type_name("HOW");
  command
      ->add_option("--correlations", options->correlationsFile,
                   "Rank correlations between inputs: a CSV table with their names in its first "
                   "row and column")
      ->type_name("FILE");
  command->add_flag("--repair-correlations", options->repairCorrelations,
                    "Take the nearest correlations that do not contradict each other");
  command->add_option("--percentiles", options->percentiles, "Which percentiles")
      ->type_name("LIST")
      ->capture_default_str();
  command
      ->add_option("--until", options->until,
                   "Stop when the 95 % interval of each percentile is narrower than this share of "
                   "its value, such as 1%")
      ->type_name("SHARE");
  command->add_option("--threads", options->threads, "How many threads (default: all)")
      ->type_name("N");
  command
      ->add_option("--jobs", options->jobs,
                   "For a workbook: how many processes share the trials (default: 1)")
      ->type_name("N");
  command
      ->add_option("--trials", options->trialsFile, "Write the values of each trial to a CSV file")
      ->type_name("FILE");
  command
      ->add_option("--report", options->reportFile,
                   "Write a page with pictures for whoever decides: one HTML file")
      ->type_name("FILE");
  command->add_flag("--skip-failures", options->skipFailures,
                    "Leave trials that fail out, and count them");
  options->ResultOptions::addTo(*command);
  command->callback([options, role] { simulate(*options, role); });
}

}  // namespace palvex::terminal
