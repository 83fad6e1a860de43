#include "hosts/calc/Office.h"

#include <com/sun/star/awt/MessageBoxButtons.hpp>
#include <com/sun/star/awt/Toolkit.hpp>
#include <com/sun/star/awt/XMessageBox.hpp>
#include <com/sun/star/frame/Desktop.hpp>
#include <mutex>

#include "hosts/calc/Text.h"
#include "hosts/calc/Uno.h"
#include "runtime/MessageBox.h"

namespace palvex::calc {

namespace {

/// Never destroyed: at the end of the process the office is gone before its libraries' variables.
Reference<XComponentContext>& known() {
  static auto* const reference = new Reference<XComponentContext>;
  return *reference;
}

}  // namespace

void enter(const Reference<XComponentContext>& context) {
  static std::once_flag once;
  std::call_once(once, [&] {
    known() = context;
    setMessageBox(showMessageBox);
  });
}

const Reference<XComponentContext>& context() {
  return known();
}

void showMessageBox(const std::string& text) {
  Reference<css::awt::XWindowPeer> parent;
  if (const auto frame = css::frame::Desktop::create(context())->getCurrentFrame(); frame.is())
    parent.set(frame->getContainerWindow(), UNO_QUERY);
  const auto box = css::awt::Toolkit::create(context())->createMessageBox(
      parent, css::awt::MessageBoxType_INFOBOX, css::awt::MessageBoxButtons::BUTTONS_OK, "palvex",
      wide(text));
  box->execute();
}

}  // namespace palvex::calc
