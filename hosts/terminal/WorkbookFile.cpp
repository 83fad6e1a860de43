#include "hosts/terminal/WorkbookFile.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "hosts/terminal/Faults.h"
#include "palvex/version.h"

namespace palvex::terminal {

namespace {

namespace fs = std::filesystem;

constexpr const char* officeLibrary = "libmergedlo.so";
constexpr const char* calcLibrary = "libpalvex-calc.so";

std::optional<fs::path> firstWith(const std::vector<fs::path>& folders, const char* file) {
  std::error_code none;
  for (const fs::path& folder : folders) {
    if (fs::exists(folder / file, none)) return fs::canonical(folder, none);
  }
  return {};
}

/// A folder that an environment variable names instead of the usual ones.
std::optional<fs::path> named(const char* variable) {
  const char* const value = std::getenv(variable);
  return value == nullptr || *value == '\0' ? std::nullopt : std::optional<fs::path>(value);
}

/// LibreOffice's folder of programs: where `soffice` leads to, and the usual places.
std::vector<fs::path> officeFolders() {
  if (const auto given = named("PALVEX_LIBREOFFICE")) return {*given / "program", *given};
  std::vector<fs::path> folders;
  std::error_code none;
  const char* const path = std::getenv("PATH");
  std::string_view rest = path == nullptr ? "" : path;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(':'), rest.size());
    const fs::path program = fs::path(rest.substr(0, end)) / "soffice";
    if (fs::exists(program, none)) folders.push_back(fs::canonical(program, none).parent_path());
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  folders.insert(folders.end(), {"/usr/lib/libreoffice/program", "/opt/libreoffice/program"});
  return folders;
}

/// Where libpalvex-calc.so is, with the files of the extension: as installed beside this program,
/// or as built beside it.
std::vector<fs::path> calcFolders() {
  if (const auto given = named("PALVEX_CALC")) return {*given};
  std::error_code none;
  const fs::path here = fs::canonical("/proc/self/exe", none).parent_path();
  return {here / PALVEX_CALC_FOLDER, here / "../calc/extension/palvex"};
}

/// A library, loaded until the end of the process.
void* load(const fs::path& library, int scope) {
  void* const loaded = dlopen(library.c_str(), RTLD_NOW | scope);
  if (loaded == nullptr)
    throw Refusal(fmt::format("can not load '{}': {}", library.string(), dlerror()));
  return loaded;
}

template <class Function>
Function symbol(void* library, const char* name) {
  return reinterpret_cast<Function>(dlsym(library, name));
}

}  // namespace

bool isWorkbook(const std::string& path) {
  constexpr std::array<std::string_view, 9> extensions{".ods",  ".ots", ".fods", ".xlsx", ".xlsm",
                                                       ".xltx", ".xls", ".xlsb", ".sxc"};
  std::string extension = fs::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

std::unique_ptr<calc::OpenWorkbook> openWorkbook(const std::string& path) {
  std::error_code none;
  if (!fs::is_regular_file(path, none)) throw Refusal(fmt::format("can not read '{}'", path));
  const auto office = firstWith(officeFolders(), officeLibrary);
  if (!office) {
    throw Refusal(
        "a workbook is simulated by LibreOffice Calc, which is not installed here: "
        "apt-get install libreoffice-calc");
  }
  const auto folder = firstWith(calcFolders(), calcLibrary);
  if (!folder) {
    throw Refusal(
        "a workbook needs libpalvex-calc.so, which is not here: install the package palvex-calc, "
        "or in palvex's sources apt-get install libreoffice-calc libreoffice-dev and "
        "scripts/calc build");
  }
  load(*office / officeLibrary, RTLD_GLOBAL);  // with it come the libraries that the next one needs
  void* const library = load(*folder / calcLibrary, RTLD_LOCAL);
  const auto version = symbol<calc::VersionFunction>(library, calc::versionName);
  const auto open = symbol<calc::OpenWorkbookFunction>(library, calc::openWorkbookName);
  if (version == nullptr || open == nullptr || std::string_view(version()) != PALVEX_VERSION) {
    throw Refusal(fmt::format("'{}' belongs to another version of palvex than this program, {}",
                              (*folder / calcLibrary).string(), PALVEX_VERSION));
  }
  std::unique_ptr<calc::OpenWorkbook> opened;
  std::string fault;
  open(opened, {office->string(), folder->string()}, path, fault);
  if (opened == nullptr) throw Refusal(fmt::format("{}: {}", path, fault));
  return opened;
}

}  // namespace palvex::terminal
