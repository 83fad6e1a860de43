#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace palvex::terminal {

/// A file that appears under its name only when it is whole: it is written beside it and renamed.
/// Until then the old file stays. An unfinished one is removed with the object or at the end of the
/// program.
class FileAside {
 public:
  explicit FileAside(const std::string& path);
  FileAside(const FileAside&) = delete;
  FileAside& operator=(const FileAside&) = delete;
  ~FileAside();

  /// Where to write; a device or a pipe is written at once.
  [[nodiscard]] const std::string& name() const { return aside_; }
  /// To be called when the file is whole and closed: gives it its name. @throws OutputError
  void finish();

 private:
  std::string path_;
  std::string aside_;
};

/// Where results go: standard output or a file. What can not be written raises OutputError.
class Output {
 public:
  /// @param path  a file to make or to replace when all is written; "" for standard output
  explicit Output(const std::string& path = "");
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output();

  void write(std::string_view text);
  /// Ends the output. To be called when all is written: only then is it known to have arrived.
  void close();
  [[nodiscard]] bool isTerminal() const;

 private:
  std::string path_;
  std::optional<FileAside> aside_;
  std::FILE* file_;
};

/// Writes to standard error; does nothing where that is closed or full.
void writeMessage(std::string_view text) noexcept;

/// Gives the standard streams that the caller closed a place of their own, so that no file that is
/// opened later takes it and receives what was meant for them. To be called first of all.
void holdStandardStreams();

/// What a signal does to the program: a reader that goes away and a limit of file sizes show as
/// failed writes, and what ends the program first removes unfinished files. To be called early.
void settleSignals();

/// @throws UsageError when `output` is the very file `input`, which is to be read
void refuseToOverwriteInput(const std::string& output, const std::string& input);

/// @throws UsageError when there is a file of this name
void refuseToOverwrite(const std::string& output);

/// Whether the user has asked to end (Ctrl-C) since a `CatchInterrupt` was made.
[[nodiscard]] bool interrupted() noexcept;

/// While it lives, the first Ctrl-C does not end the program but makes `interrupted` true, so that
/// a long run can end with whole lines; the second one ends it at once.
class CatchInterrupt {
 public:
  CatchInterrupt();
  CatchInterrupt(const CatchInterrupt&) = delete;
  CatchInterrupt& operator=(const CatchInterrupt&) = delete;
  ~CatchInterrupt();
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
