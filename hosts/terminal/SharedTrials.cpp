#include "hosts/terminal/SharedTrials.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "hosts/terminal/Faults.h"
#include "simulation/Trials.h"

namespace palvex::terminal {

namespace {

constexpr const char* shareVariable = "PALVEX_SHARE";  // "I/N": helper I (from 0) of N
constexpr std::uint64_t shareTrials = 256;             // helpers take turns after so many
constexpr int helperPipe = 3;

/// Numbers and texts in a row, as both sides of a pipe write and read them.
class Record {
 public:
  void add(std::string_view bytes) { bytes_.append(bytes); }
  template <class Value>
  void addValue(const Value& value) {
    bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
  [[nodiscard]] const std::string& bytes() const { return bytes_; }
  void clear() { bytes_.clear(); }

 private:
  std::string bytes_;
};

enum class Answer : char { done, value, fault };

/// Passes everything on to a workbook, and notes what it answers.
class Recorder final : public simulation::Workbook {
 public:
  explicit Recorder(std::unique_ptr<simulation::Workbook> cells) : cells_(std::move(cells)) {}

  void put(std::size_t row, double value) override {
    noting([&] {
      cells_->put(row, value);
      record_.addValue(Answer::done);
    });
  }
  double read(std::size_t cell) override {
    return noting([&] { return noted(cells_->read(cell)); });
  }
  double result(std::size_t row) override {
    return noting([&] { return noted(cells_->result(row)); });
  }

  [[nodiscard]] Record& record() { return record_; }

 private:
  double noted(double value) {
    record_.addValue(Answer::value);
    record_.addValue(value);
    return value;
  }
  template <class Work>
  std::invoke_result_t<const Work&> noting(const Work& work) {
    try {
      return work();
    } catch (const std::exception& fault) {
      const std::string_view text = fault.what();
      record_.addValue(Answer::fault);
      record_.addValue(text.size());
      record_.add(text);
      throw;
    }
  }

  std::unique_ptr<simulation::Workbook> cells_;
  Record record_;
};

/// Reads `size` bytes; false where the pipe ends before.
bool readAll(int pipe, char* to, std::size_t size) {
  while (size > 0) {
    const ssize_t count = ::read(pipe, to, size);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    to += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

/// Writes all bytes; false when nobody reads any more.
bool writeAll(int pipe, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(pipe, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

/// Answers what helpers have noted, trial by trial.
class Replay final : public simulation::Workbook {
 public:
  Replay(std::vector<int> pipes, std::uint64_t trials)
      : pipes_(std::move(pipes)), parts_((trials + shareTrials - 1) / shareTrials) {}

  void put(std::size_t, double) override { expect(Answer::done); }
  double read(std::size_t) override {
    expect(Answer::value);
    return take<double>();
  }
  double result(std::size_t row) override { return read(row); }

 private:
  void expect(Answer wanted) {
    if (position_ == part_.size()) nextPart();
    const auto answer = take<Answer>();
    if (answer == Answer::fault) {
      const auto size = take<std::size_t>();
      throw simulation::Fault(std::string(bytes(size)));
    }
    if (answer != wanted) throw HelperLost{};
  }

  /// The parts come from the helpers in turn, and after the last one from the beginning.
  void nextPart() {
    const int pipe = pipes_[next_ % pipes_.size()];
    next_ = (next_ + 1) % parts_;
    std::size_t size = 0;
    bool whole = readAll(pipe, reinterpret_cast<char*>(&size), sizeof size);
    if (whole) part_.resize(size);
    whole = whole && readAll(pipe, part_.data(), size);
    if (!whole) throw HelperLost{};
    position_ = 0;
  }

  std::string_view bytes(std::size_t size) {
    if (size > part_.size() - position_) throw HelperLost{};
    return std::string_view(part_).substr(std::exchange(position_, position_ + size), size);
  }
  template <class Value>
  Value take() {
    Value value{};
    std::memcpy(&value, bytes(sizeof value).data(), sizeof value);
    return value;
  }

  std::vector<int> pipes_;
  std::uint64_t parts_;
  std::uint64_t next_ = 0;
  std::string part_;
  std::size_t position_ = 0;
};

class Counted final : public simulation::Workbook {
 public:
  Counted(std::unique_ptr<simulation::Workbook> cells, std::size_t first,
          std::function<void()> begun)
      : cells_(std::move(cells)), first_(first), begun_(std::move(begun)) {}

  void put(std::size_t row, double value) override {
    if (row == first_) begun_();
    cells_->put(row, value);
  }
  double read(std::size_t cell) override { return cells_->read(cell); }
  double result(std::size_t row) override { return cells_->result(row); }

 private:
  std::unique_ptr<simulation::Workbook> cells_;
  std::size_t first_;
  std::function<void()> begun_;
};

/// The command line of this process.
std::vector<std::string> commandLine() {
  std::ifstream file("/proc/self/cmdline", std::ios::binary);
  const std::string all(std::istreambuf_iterator<char>(file), {});
  std::vector<std::string> words;
  for (std::size_t from = 0; from < all.size();) {
    const std::size_t to = std::min(all.find('\0', from), all.size());
    words.push_back(all.substr(from, to - from));
    from = to + 1;
  }
  return words;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> all;
  all.reserve(texts.size() + 1);
  for (std::string& text : texts) all.push_back(text.data());
  all.push_back(nullptr);
  return all;
}

/// Starts this program once more, with its pipe as helperPipe and silent.
int spawn(const std::string& share, int pipe) {
  std::vector<std::string> words = commandLine();
  std::vector<std::string> variables{std::string(shareVariable) + '=' + share};
  for (char** variable = environ; *variable != nullptr; ++variable)
    variables.emplace_back(*variable);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, pipe, helperPipe);
  pid_t id = 0;
  const int error = posix_spawn(&id, "/proc/self/exe", &actions, nullptr, pointers(words).data(),
                                pointers(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw Refusal(fmt::format("can not start a process: {}", std::strerror(error)));
  return id;
}

}  // namespace

Helpers::Helpers(unsigned count) {
  for (unsigned i = 0; i < count; ++i) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw Refusal("can not make a pipe");
    processes_.push_back({spawn(fmt::format("{}/{}", i, count), ends[1]), ends[0]});
    close(ends[1]);
  }
}

Helpers::~Helpers() {
  for (const Process& process : processes_) close(process.pipe);
  for (const Process& process : processes_) waitpid(process.id, nullptr, 0);
}

std::unique_ptr<simulation::Workbook> Helpers::workbook(std::uint64_t trials) const {
  std::vector<int> pipes;
  for (const Process& process : processes_) pipes.push_back(process.pipe);
  return std::make_unique<Replay>(std::move(pipes), trials);
}

bool isHelper() {
  if (std::getenv(shareVariable) == nullptr) return false;
  signal(SIGINT, SIG_IGN);
  return true;
}

void help(const simulation::Model& model, const simulation::Settings& settings,
          std::unique_ptr<simulation::Workbook> cells) {
  const char* const given = std::getenv(shareVariable);
  const std::string_view share = given == nullptr ? "" : given;
  std::uint64_t index = 0;
  std::uint64_t count = 1;
  const char* const end = share.data() + share.size();
  const auto [slash, error] = std::from_chars(share.data(), end, index);
  if (error != std::errc() ||
      std::from_chars(std::min(slash + 1, end), end, count).ec != std::errc() || index >= count)
    throw UsageError(fmt::format("{}: '{}' is not 0/2", shareVariable, share));

  signal(SIGPIPE, SIG_IGN);  // the end comes as a failed write
  const simulation::Simulation simulation(model, settings);
  Recorder recorder(std::move(cells));
  simulation::Trials trials(model, simulation.sampler(), simulation.copula(), &recorder);
  // The same trials are asked for again when a percentile was missed.
  for (std::uint64_t part = index;; part += count) {
    if (part * shareTrials >= settings.trials) part = index;
    if (part * shareTrials >= settings.trials) return;
    const std::uint64_t first = part * shareTrials;
    trials.work(first, std::min(shareTrials, settings.trials - first));
    const std::size_t size = recorder.record().bytes().size();
    Record head;
    head.addValue(size);
    if (!writeAll(helperPipe, head.bytes()) || !writeAll(helperPipe, recorder.record().bytes()))
      return;
    recorder.record().clear();
  }
}

std::unique_ptr<simulation::Workbook> counted(std::unique_ptr<simulation::Workbook> cells,
                                              const simulation::Model& model,
                                              std::function<void()> begun) {
  return std::make_unique<Counted>(std::move(cells), model.inputs().front(), std::move(begun));
}

}  // namespace palvex::terminal
