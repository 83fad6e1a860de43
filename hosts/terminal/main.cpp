// palvex: the engine on the command line. The worksheet is a CSV file, the random numbers are the
// program's own.

#include <fmt/core.h>

#include <csignal>
#include <new>

#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Faults.h"
#include "hosts/terminal/Worksheet.h"
#include "runtime/RuntimeError.h"

namespace palvex::terminal {

namespace {

/// One line on standard error.
ExitCode complain(ExitCode code, std::string_view what) {
  fmt::print(stderr, "palvex: {}\n", what);
  return code;
}

/// `text` with the automation line breaks "\r\n" as line breaks of a terminal, the later lines
/// indented.
std::string indented(std::string_view text) {
  std::string lines;
  for (const char c : text) {
    if (c != '\r') lines += c;
    if (c == '\n') lines += "  ";
  }
  return lines;
}

ExitCode complain(const RuntimeError& error, bool withTrace) {
  std::string what = fmt::format("error {}: {}", error.number(), indented(error.description()));
  if (withTrace) what += fmt::format("\n  {}", indented(error.source()));
  return complain(ExitCode::fault, what);
}

void build(CLI::App& program, bool& trace) {
  program.name("palvex");
  program.set_version_flag("--version", "palvex " PALVEX_VERSION);
  program.add_flag("--trace", trace, "With an error, also show the routines that it passed");
  program.require_subcommand(1);
  program.footer(
      "Give a command's name and --help for its options and examples.\n\n"
      "Examples:\n"
      "  palvex demo\n"
      "  palvex types\n"
      "  palvex eval Normal 10 2 --at 8 10 12\n\n"
      "Exit code: 0 good; 1 the distribution is at fault, or an evaluation failed; 2 a wrong\n"
      "option, file or reference; 3 the results could not be written.");
  program.fallthrough();
  for (const auto add :
       {addDemo, addTypes, addCheck, addEval, addDescribe, addDraw, addGuess, addPlot})
    add(program);
}

/// What is wrong with a command line that names none of the commands.
std::string withoutCommand(const CLI::App& program) {
  const std::vector<std::string> words = program.remaining();
  return (words.empty() ? "a command is missing"
                        : fmt::format("there is no command '{}'", words.front())) +
         "; palvex --help lists them";
}

ExitCode run(int argc, char** argv) {
  bool trace = false;
  CLI::App program("Probability distributions: check, evaluate and draw from them.");
  build(program, trace);
  try {
    program.parse(argc, argv);
    return ExitCode::good;
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {  // --help or --version
      program.exit(error);
      return ExitCode::good;
    }
    const bool hasCommand = !program.get_subcommands().empty();
    return complain(ExitCode::usage, hasCommand ? error.what() : withoutCommand(program));
  } catch (const UsageError& error) {
    return complain(ExitCode::usage, error.what());
  } catch (const SheetError& error) {
    return complain(ExitCode::usage, error.what());
  } catch (const Refusal& refusal) {
    return complain(ExitCode::fault, refusal.what());
  } catch (const RuntimeError& error) {
    return complain(error, trace);
  } catch (const OutputError& error) {
    if (*error.what() == '\0') return ExitCode::output;
    return complain(ExitCode::output, error.what());
  } catch (const std::bad_alloc&) {
    return complain(ExitCode::fault, "out of memory");
  }
}

}  // namespace

}  // namespace palvex::terminal

int main(int argc, char** argv) {
#ifdef SIGPIPE
  // A reader that goes away shall be seen as a failed write.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
#endif
  return static_cast<int>(palvex::terminal::run(argc, argv));
}
