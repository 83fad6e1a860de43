#include "hosts/terminal/Output.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "hosts/terminal/Faults.h"

namespace palvex::terminal {

namespace fs = std::filesystem;

namespace {

volatile std::sig_atomic_t interruptSeen = 0;

/// The names of files that are not finished yet, for a signal that ends the program.
std::array<std::atomic<const char*>, 4> unfinished;
static_assert(std::atomic<const char*>::is_always_lock_free);

void replaceUnfinished(const char* before, const char* after) {
  for (std::atomic<const char*>& name : unfinished) {
    const char* expected = before;
    if (name.compare_exchange_strong(expected, after)) return;
  }
}

extern "C" void endWithoutTraces(int signal) {
  for (const std::atomic<const char*>& name : unfinished) {
    if (const char* const file = name) static_cast<void>(unlink(file));
  }
  static_cast<void>(std::signal(signal, SIG_DFL));
  static_cast<void>(std::raise(signal));
}

extern "C" void noteInterrupt(int signal) {
  if (interruptSeen != 0) endWithoutTraces(signal);
  interruptSeen = 1;
}

[[noreturn]] void failToWrite(const std::string& path) {
  if (errno == EPIPE) throw OutputError("");
  throw OutputError(fmt::format("can not write {}: {}",
                                path.empty() ? "the results" : '\'' + path + '\'',
                                std::strerror(errno)));
}

/// The file that a symbolic link leads to.
std::string target(const std::string& path) {
  std::error_code error;
  const fs::path resolved = fs::canonical(path, error);
  return error ? path : resolved.string();
}

std::string asideOf(const std::string& path) {
  std::error_code none;
  const bool isOther = fs::exists(path, none) && !fs::is_regular_file(path, none);
  return isOther ? path : fmt::format("{}.part-{}", path, getpid());
}

}  // namespace

FileAside::FileAside(const std::string& path) : path_(target(path)), aside_(asideOf(path_)) {
  if (aside_ == path_) return;
  replaceUnfinished(nullptr, aside_.c_str());
  std::error_code none;
  const fs::file_status replaced = fs::status(path_, none);
  if (!fs::exists(replaced)) return;
  const std::ofstream made(aside_);  // whoever may not read the old one may not read the new one
  fs::permissions(aside_, replaced.permissions(), none);
}

FileAside::~FileAside() {
  if (aside_ == path_) return;
  static_cast<void>(unlink(aside_.c_str()));
  replaceUnfinished(aside_.c_str(), nullptr);
}

void FileAside::finish() {
  if (aside_ != path_ && std::rename(aside_.c_str(), path_.c_str()) != 0) failToWrite(path_);
}

Output::Output(const std::string& path) : path_(path), file_(stdout) {
  if (path.empty()) return;
  aside_.emplace(path);
  file_ = std::fopen(aside_->name().c_str(), "wb");
  if (file_ == nullptr) failToWrite(path_);
}

Output::~Output() {
  if (file_ != nullptr && file_ != stdout) static_cast<void>(std::fclose(file_));
}

void Output::write(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) failToWrite(path_);
}

void Output::close() {
  if (std::fflush(file_) != 0) failToWrite(path_);
  if (file_ == stdout) return;
  std::FILE* const file = file_;
  file_ = nullptr;
  if (std::fclose(file) != 0) failToWrite(path_);
  aside_->finish();
}

bool Output::isTerminal() const {
  return isatty(fileno(file_)) != 0;
}

void writeMessage(std::string_view text) noexcept {
  static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
}

void holdStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // open() returns the lowest free descriptor, which is this one. It is opened the wrong way
    // round, so that reading or writing still fails as on a closed stream.
    if (fcntl(stream, F_GETFD) == -1)
      static_cast<void>(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
}

void settleSignals() {
  for (const int signal : {SIGPIPE, SIGXFSZ}) static_cast<void>(std::signal(signal, SIG_IGN));
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    // A signal that the caller ignores stays ignored.
    if (std::signal(signal, endWithoutTraces) == SIG_IGN)
      static_cast<void>(std::signal(signal, SIG_IGN));
  }
}

void refuseToOverwriteInput(const std::string& output, const std::string& input) {
  std::error_code none;
  if (!output.empty() && !input.empty() && fs::equivalent(output, input, none))
    throw UsageError(fmt::format(
        "'{}' is the worksheet that is being read; --force writes over it all the same", output));
}

void refuseToOverwrite(const std::string& output) {
  std::error_code none;
  if (fs::is_regular_file(output, none))
    throw UsageError(fmt::format("there is a file '{}'; --force writes over it", output));
}

bool interrupted() noexcept {
  return interruptSeen != 0;
}

CatchInterrupt::CatchInterrupt() {
  interruptSeen = 0;
  struct sigaction action {};
  action.sa_handler = noteInterrupt;
  action.sa_flags = SA_RESTART;  // a write that waits goes on, or it would leave half a line
  static_cast<void>(sigaction(SIGINT, &action, nullptr));
}

CatchInterrupt::~CatchInterrupt() {
  static_cast<void>(std::signal(SIGINT, endWithoutTraces));
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
