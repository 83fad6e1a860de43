#include "hosts/terminal/Output.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>

#include "hosts/terminal/Faults.h"

namespace palvex::terminal {

namespace {

volatile std::sig_atomic_t interruptSeen = 0;

extern "C" void noteInterrupt(int /*signal*/) {
  interruptSeen = 1;
}

}  // namespace

Output::Output(const std::string& path)
    : path_(path), file_(path.empty() ? stdout : std::fopen(path.c_str(), "wb")) {
  if (file_ == nullptr) fail();
}

Output::~Output() {
  if (file_ != nullptr && file_ != stdout) static_cast<void>(std::fclose(file_));
}

void Output::write(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) fail();
}

void Output::close() {
  if (std::fflush(file_) != 0) fail();
  if (file_ == stdout) return;
  std::FILE* const file = file_;
  file_ = nullptr;
  if (std::fclose(file) != 0) fail();
}

bool Output::isTerminal() const {
  return isatty(fileno(file_)) != 0;
}

void Output::fail() const {
  if (errno == EPIPE) throw OutputError("");
  throw OutputError(fmt::format("can not write {}: {}",
                                path_.empty() ? "the results" : '\'' + path_ + '\'',
                                std::strerror(errno)));
}

void writeMessage(std::string_view text) noexcept {
  static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
}

void holdStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // The lowest free number is the next to be given out: this very one. Opened the wrong way
    // round, so that reading or writing still fails as on a closed stream.
    if (fcntl(stream, F_GETFD) == -1)
      static_cast<void>(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
}

void refuseToOverwriteInput(const std::string& output, const std::string& input) {
  std::error_code none;
  if (!output.empty() && !input.empty() && std::filesystem::equivalent(output, input, none))
    throw UsageError(fmt::format(
        "'{}' is the worksheet that is being read; --force writes over it all the same", output));
}

void refuseToOverwrite(const std::string& output) {
  std::error_code none;
  if (std::filesystem::is_regular_file(output, none))
    throw UsageError(fmt::format("there is a file '{}'; --force writes over it", output));
}

bool interrupted() noexcept {
  return interruptSeen != 0;
}

CatchInterrupt::CatchInterrupt() {
  interruptSeen = 0;
  struct sigaction action {};
  action.sa_handler = noteInterrupt;
  // Once only; and a write that waits for its reader goes on, or it would leave half a line.
  action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
  static_cast<void>(sigaction(SIGINT, &action, nullptr));
}

CatchInterrupt::~CatchInterrupt() {
  static_cast<void>(std::signal(SIGINT, SIG_DFL));
}

Progress::Progress(const Output& output, std::uint64_t total)
    : shown_(isatty(fileno(stderr)) != 0 && !output.isTerminal()), total_(total) {}

Progress::~Progress() {
  if (shown_) writeMessage(fmt::format("\r{:<40}\r", ""));
}

void Progress::report(std::uint64_t done) {
  if (!shown_ || Clock::now() < next_) return;
  next_ += std::chrono::milliseconds(300);
  const double share = static_cast<double>(done) / static_cast<double>(total_);
  writeMessage(fmt::format("\r{:3.0f} % of {}", 100 * share, total_));
}

}  // namespace palvex::terminal
