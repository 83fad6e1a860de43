#pragma once

#include <com/sun/star/uno/Sequence.hxx>
#include <com/sun/star/uno/XComponentContext.hpp>
#include <string>

namespace css = com::sun::star;

namespace palvex::calc {

/// Keeps the component context of the office, from which everything else in it is reached. The
/// engine shows its messages in the office's boxes from then on. Only the first call counts.
void enter(const css::uno::Reference<css::uno::XComponentContext>& context);
[[nodiscard]] const css::uno::Reference<css::uno::XComponentContext>& context();

/// The sequence of one item.
template <class Item>
css::uno::Sequence<Item> only(const Item& item) {
  return css::uno::Sequence<Item>(&item, 1);
}

/// Shows a text, and waits until the user has read it. Without a screen it returns at once.
void showMessageBox(const std::string& text);

}  // namespace palvex::calc
