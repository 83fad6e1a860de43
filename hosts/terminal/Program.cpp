#include "hosts/terminal/Program.h"

#include <fmt/core.h>

#include <algorithm>
#include <new>
#include <sstream>

#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Faults.h"
#include "hosts/terminal/Output.h"
#include "hosts/terminal/Text.h"
#include "hosts/terminal/Worksheet.h"
#include "runtime/RuntimeError.h"
#include "simulation/Text.h"

namespace palvex::terminal {

namespace {

/// One line on standard error.
ExitCode complain(ExitCode code, std::string_view what) {
  writeMessage(fmt::format("palvex: {}\n", escaped(what)));
  return code;
}

/// `text`, whose automation line breaks are "\r\n", in lines of a terminal, the later ones
/// indented.
std::string indented(std::string_view text) {
  std::string lines;
  while (true) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    lines += escaped(line);
    if (end == std::string_view::npos) return lines;
    lines += "\n  ";
    text.remove_prefix(end + 1);
  }
}

ExitCode complain(const RuntimeError& error, bool withTrace) {
  std::string what =
      fmt::format("palvex: error {}: {}\n", error.number(), indented(error.description()));
  if (withTrace) what += fmt::format("  {}\n", indented(error.source()));
  writeMessage(what);
  return ExitCode::fault;
}

void build(CLI::App& program, bool& trace, const Role& role) {
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
      "option, file or reference; 3 the results could not be written; 130 ended by Ctrl-C.");
  program.fallthrough();
  for (const auto add :
       {addDemo, addTypes, addCheck, addEval, addQuantile, addDescribe, addDraw, addGuess, addPlot})
    add(program);
  addSimulate(program, role);
}

std::vector<std::string> commandsOf(const CLI::App& program) {
  std::vector<std::string> names;
  for (const CLI::App* command : program.get_subcommands({})) names.push_back(command->get_name());
  return names;
}

/// What is wrong with a command line that names none of the commands.
std::string withoutCommand(const CLI::App& program) {
  const std::vector<std::string> words = program.remaining();
  if (words.empty()) return "a command is missing; palvex --help lists them";
  const std::vector<std::string> commands = commandsOf(program);
  const std::vector<std::string_view> names(commands.begin(), commands.end());
  const std::string_view near = simulation::nearest(words.front(), names);
  return fmt::format("there is no command '{}'; {}palvex --help lists them", words.front(),
                     near.empty() ? "" : fmt::format("did you mean {}? ", near));
}

/// The words of the command line, last one first, as the parser takes them; "help draw" is "draw
/// --help".
std::vector<std::string> wordsOf(int argc, char** argv, const CLI::App& program) {
  std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  if (!words.empty() && words.front() == "help") {
    words.erase(words.begin());
    const auto commands = commandsOf(program);
    const bool isKnown = words.empty() || std::find(commands.begin(), commands.end(),
                                                    words.front()) != commands.end();
    if (isKnown) words.insert(words.begin() + (words.empty() ? 0 : 1), "--help");
  }
  std::reverse(words.begin(), words.end());
  return words;
}

/// Writes what --help or --version ask for.
void answer(const CLI::App& program, const CLI::ParseError& request) {
  std::ostringstream text;
  program.exit(request, text, text);
  Output output;
  output.write(text.str());
  output.close();
}

ExitCode complain(const OutputError& error) {
  if (*error.what() == '\0') return ExitCode::output;
  return complain(ExitCode::output, error.what());
}

}  // namespace

ExitCode runProgram(int argc, char** argv, const Role& role) {
  holdStandardStreams();
  settleSignals();
  bool trace = false;
  CLI::App program("Probability distributions: check, evaluate and draw from them.");
  build(program, trace, role);
  try {
    program.parse(wordsOf(argc, argv, program));
    return ExitCode::good;
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {  // --help or --version
      try {
        answer(program, error);
        return ExitCode::good;
      } catch (const OutputError& failure) {
        return complain(failure);
      }
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
    return complain(error);
  } catch (const Interruption&) {
    return ExitCode::interrupted;
  } catch (const std::bad_alloc&) {
    return complain(ExitCode::fault, "out of memory");
  } catch (const std::exception& error) {
    return complain(ExitCode::fault, error.what());
  }
}

}  // namespace palvex::terminal
