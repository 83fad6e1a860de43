#include "hosts/calc/Document.h"

#include <array>
#include <com/sun/star/beans/PropertyValue.hpp>
#include <com/sun/star/document/MacroExecMode.hpp>
#include <com/sun/star/document/UpdateDocMode.hpp>
#include <com/sun/star/frame/Desktop.hpp>
#include <com/sun/star/frame/XStorable.hpp>
#include <com/sun/star/util/XCloseable.hpp>
#include <com/sun/star/util/XProtectable.hpp>
#include <cstdlib>
#include <osl/file.hxx>
#include <system_error>

#include "hosts/calc/Office.h"
#include "hosts/calc/Text.h"
#include "hosts/calc/Uno.h"
#include "simulation/Fault.h"

namespace palvex::calc {

namespace {

css::beans::PropertyValue property(const char* name, const Any& value) {
  return {OUString::createFromAscii(name), 0, value, css::beans::PropertyState_DIRECT_VALUE};
}

OUString urlOf(const std::filesystem::path& file) {
  OUString url;
  osl::FileBase::getFileURLFromSystemPath(wide(std::filesystem::absolute(file).string()), url);
  return url;
}

}  // namespace

HiddenDocument::HiddenDocument(const std::filesystem::path& file) {
  const std::array how{
      property("Hidden", Any(true)), property("ReadOnly", Any(true)),
      property("MacroExecutionMode", Any(css::document::MacroExecMode::NEVER_EXECUTE)),
      property("UpdateDocMode", Any(css::document::UpdateDocMode::NO_UPDATE))};
  const Reference<css::lang::XComponent> loaded =
      css::frame::Desktop::create(context())->loadComponentFromURL(
          urlOf(file), "_blank", 0, Sequence<css::beans::PropertyValue>(how.data(), how.size()));
  document_.set(loaded, UNO_QUERY);
  if (document_.is()) return;
  if (loaded.is()) loaded->dispose();
  throw simulation::Fault("'" + file.filename().string() +
                          "' is no spreadsheet that Calc can open.");
}

HiddenDocument::~HiddenDocument() {
  try {
    Reference<css::util::XCloseable>(document_, UNO_QUERY_THROW)->close(true);
  } catch (const css::uno::Exception&) {
    // Closed already, with the office.
  }
}

TemporaryFolder::TemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "palvex-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr)
    throw std::system_error(errno, std::generic_category(), "no temporary folder");
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void storeCopy(const Document& document, const std::filesystem::path& file) {
  const auto filter = property("FilterName", Any(OUString("calc8")));
  Reference<css::frame::XStorable>(document, UNO_QUERY_THROW)
      ->storeToURL(urlOf(file), only(filter));
}

bool isProtected(const Reference<css::uno::XInterface>& object) {
  const Reference<css::util::XProtectable> protectable(object, UNO_QUERY);
  return protectable.is() && protectable->isProtected();
}

}  // namespace palvex::calc
