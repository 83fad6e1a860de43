#pragma once

#include <stdexcept>

namespace palvex::terminal {

/// How the program ends; `palvex --help` lists these for its users.
enum class ExitCode {
  good = 0,
  fault = 1,          // the engine refused the distribution, or an evaluation raised an error
  usage = 2,          // the command line, the worksheet file or a reference into it is wrong
  output = 3,         // the results could not be written
  interrupted = 130,  // ended by Ctrl-C, as shells expect it
};

/// A sentence of the engine about the distribution that it was given.
struct Refusal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A command line that makes no sense, in one line.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The user has asked to end; what was written is whole.
struct Interruption {};

/// Results that could not be written; the text is empty where the reader just went away, which
/// needs no message.
struct OutputError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace palvex::terminal
