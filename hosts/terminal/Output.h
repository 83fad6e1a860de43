#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace palvex::terminal {

/// Where results go: standard output or a file. What can not be written raises OutputError.
class Output {
 public:
  /// @param path  a file to make or overwrite; "" for standard output
  explicit Output(const std::string& path = "");
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output();

  void write(std::string_view text);
  /// Ends the output. To be called when all is written: only then is it known to have arrived.
  void close();
  [[nodiscard]] bool isTerminal() const;

 private:
  [[noreturn]] void fail() const;

  std::string path_;
  std::FILE* file_;
};

/// A line on standard error that shows how far a long run is; only for a person at a terminal whose
/// results do not go to the same screen.
class Progress {
 public:
  Progress(const Output& output, std::uint64_t total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  void report(std::uint64_t done);

 private:
  using Clock = std::chrono::steady_clock;

  bool shown_;
  std::uint64_t total_;
  Clock::time_point next_ = Clock::now() + std::chrono::milliseconds(300);
};

}  // namespace palvex::terminal
