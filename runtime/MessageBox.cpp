#include "runtime/MessageBox.h"

#include <cstdio>
#include <utility>

namespace palvex {

namespace {

MessageBox& installed() {
  static MessageBox box;
  return box;
}

}  // namespace

void setMessageBox(MessageBox box) {
  installed() = std::move(box);
}

void showMessage(std::string_view text) {
  if (installed()) {
    installed()(text);
  } else {
    std::fprintf(stderr, "%.*s\n", static_cast<int>(text.size()), text.data());
  }
}

}  // namespace palvex
