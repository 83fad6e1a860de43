#include "hosts/terminal/Output.h"

#include <fmt/core.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "hosts/terminal/Faults.h"

namespace palvex::terminal {

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

Progress::Progress(const Output& output, std::uint64_t total)
    : shown_(isatty(fileno(stderr)) != 0 && !output.isTerminal()), total_(total) {}

Progress::~Progress() {
  if (shown_) fmt::print(stderr, "\r{:<40}\r", "");
}

void Progress::report(std::uint64_t done) {
  if (!shown_ || Clock::now() < next_) return;
  next_ += std::chrono::milliseconds(300);
  const double share = static_cast<double>(done) / static_cast<double>(total_);
  fmt::print(stderr, "\r{:3.0f} % of {}", 100 * share, total_);
}

}  // namespace palvex::terminal
