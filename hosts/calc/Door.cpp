#include "hosts/calc/Door.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sal/types.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <com/sun/star/configuration/theDefaultProvider.hpp>
#include <com/sun/star/uno/XComponentContext.hpp>
#include <com/sun/star/util/XFlushable.hpp>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <osl/file.hxx>
#include <stdexcept>

#include "hosts/calc/Document.h"
#include "hosts/calc/Office.h"
#include "hosts/calc/Text.h"
#include "hosts/calc/Uno.h"
#include "hosts/calc/Workbook.h"
#include "palvex/version.h"

namespace palvex::calc {

namespace {

namespace fs = std::filesystem;

std::string urlOf(const fs::path& file) {
  rtl::OUString url;
  osl::FileBase::getFileURLFromSystemPath(wide(file.string()), url);
  return utf8(url);
}

/// The office installs handlers of its own for these signals when it starts; this restores the
/// former ones.
class OwnSignals {
 public:
  OwnSignals() {
    for (std::size_t i = 0; i < numbers.size(); ++i) sigaction(numbers[i], nullptr, &actions_[i]);
  }
  OwnSignals(const OwnSignals&) = delete;
  OwnSignals& operator=(const OwnSignals&) = delete;
  ~OwnSignals() {
    for (std::size_t i = 0; i < numbers.size(); ++i) sigaction(numbers[i], &actions_[i], nullptr);
  }

 private:
  static constexpr std::array numbers{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGSEGV,
                                      SIGFPE, SIGILL,  SIGBUS, SIGABRT, SIGPIPE};
  std::array<struct sigaction, numbers.size()> actions_{};
};

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// A new profile whose configuration knows the worksheet functions. In the extension's file they
/// stand as they are installed; a profile lists what is changed in it.
void writeProfile(const fs::path& profile, const fs::path& functions) {
  const std::string installed = contentOf(functions);
  const std::string_view begin = "<node oor:name=\"palvex.Functions\"";
  const std::string_view end = "</node>\n</oor:component-data>";
  const std::size_t from = installed.find(begin);
  const std::size_t to = installed.rfind(end);
  if (from == std::string::npos || to == std::string::npos)
    throw std::runtime_error("'" + functions.string() + "' is damaged");
  fs::create_directories(profile / "user");
  std::ofstream file(profile / "user" / "registrymodifications.xcu");
  file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
          "<oor:items xmlns:oor=\"http://openoffice.org/2001/registry\" "
          "xmlns:xs=\"http://www.w3.org/2001/XMLSchema\" "
          "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n"
          "<item oor:path=\"/org.openoffice.Office.CalcAddIns/AddInInfo\">"
       << installed.substr(from, to - from) << "</item>\n</oor:items>\n";
  if (!file.flush()) throw std::runtime_error("can not write to '" + profile.string() + "'");
}

/// The services of the office, and ours.
void announce(const Places& places) {
  const std::string program = urlOf(places.office);
  const std::string ours = urlOf(places.palvex);
  const auto set = [](const char* name, const std::string& value) {
    setenv(name, value.c_str(), 1);
  };
  set("URE_MORE_SERVICES", ours + "/palvex.components <" + program + "/services>*");
  set("URE_MORE_TYPES", ours + "/palvex.rdb <" + program + "/types>*");
}

template <class Function>
Function symbol(void* library, const char* name) {
  return reinterpret_cast<Function>(dlsym(library, name));
}

/// Starts the office inside this process, without a screen.
void start(const Places& places, const fs::path& profile) {
  announce(places);
  writeProfile(profile, fs::path(places.palvex) / "CalcAddIns.xcu");
  const OwnSignals signals;
  void* const merged = dlopen((places.office + "/libmergedlo.so").c_str(), RTLD_NOW | RTLD_NOLOAD);
  const auto hook = symbol<void* (*)(const char*, const char*)>(merged, "libreofficekit_hook_2");
  // comphelper::getProcessComponentContext(): the office's context, which has no public name.
  const auto get = symbol<Reference<XComponentContext> (*)()>(
      merged, "_ZN10comphelper26getProcessComponentContextEv");
  if (hook == nullptr || get == nullptr ||
      hook(places.office.c_str(), urlOf(profile).c_str()) == nullptr)
    throw std::runtime_error("LibreOffice in '" + places.office +
                             "' does not start inside a program");
  enter(get());
}

/// Removes a folder when this process has ended, in whatever way: a shell waits for the end of a
/// pipe that nobody else can write to.
class RemovedAfterwards {
 public:
  explicit RemovedAfterwards(const fs::path& folder) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return;  // then an orderly end has to do
    std::array<std::string, 5> words{"sh", "-c",
                                     "trap '' INT TERM HUP; read -r nothing; rm -rf -- \"$1\"",
                                     "sh", folder.string()};
    std::array<char*, words.size() + 1> arguments{};
    std::transform(words.begin(), words.end(), arguments.begin(),
                   [](std::string& word) { return word.data(); });
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
      posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_WRONLY, 0);
    if (posix_spawn(&shell_, "/bin/sh", &actions, nullptr, arguments.data(), environ) != 0)
      shell_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(ends[0]);
    pipe_ = ends[1];
  }
  RemovedAfterwards(const RemovedAfterwards&) = delete;
  RemovedAfterwards& operator=(const RemovedAfterwards&) = delete;
  ~RemovedAfterwards() {
    if (pipe_ != -1) close(pipe_);
    if (shell_ != -1) waitpid(shell_, nullptr, 0);
  }

 private:
  int pipe_ = -1;
  pid_t shell_ = -1;
};

/// At its end writes what the office has not yet saved of its configuration. Written later, that
/// would bring back a profile that has been removed.
class WrittenProfile {
 public:
  WrittenProfile() = default;
  WrittenProfile(const WrittenProfile&) = delete;
  WrittenProfile& operator=(const WrittenProfile&) = delete;
  ~WrittenProfile() {
    try {
      const auto configuration = css::configuration::theDefaultProvider::get(context());
      Reference<css::util::XFlushable>(configuration, css::uno::UNO_QUERY_THROW)->flush();
    } catch (const css::uno::Exception&) {
      // The profile may then stay behind.
    }
  }
};

class OpenFile final : public OpenWorkbook {
 public:
  OpenFile(const Places& places, const fs::path& file)
      : document_((start(places, profile_.path()), file)), table_(document_.get()) {}

  [[nodiscard]] const simulation::Sheet& table() const override { return table_; }
  [[nodiscard]] simulation::Settings settings(const simulation::Model& model) const override {
    return settingsOf(model, table_);
  }
  [[nodiscard]] std::unique_ptr<simulation::Workbook> cells(
      const simulation::Model& model) const override {
    return std::make_unique<Workbook>(document_.get(), model);
  }

 private:
  TemporaryFolder profile_;
  RemovedAfterwards removal_{profile_.path()};
  WrittenProfile written_;
  HiddenDocument document_;
  Table table_;
};

}  // namespace

}  // namespace palvex::calc

extern "C" SAL_DLLPUBLIC_EXPORT const char* palvex_calc_version() {
  return PALVEX_VERSION;
}

/// See OpenWorkbookFunction.
extern "C" SAL_DLLPUBLIC_EXPORT void palvex_open_workbook(
    std::unique_ptr<palvex::calc::OpenWorkbook>& opened, const palvex::calc::Places& places,
    const std::string& file, std::string& fault) try {
  opened = std::make_unique<palvex::calc::OpenFile>(places, file);
} catch (const css::uno::Exception& failure) {
  fault = palvex::calc::utf8(failure.Message);
} catch (const std::exception& failure) {
  fault = failure.what();
}
