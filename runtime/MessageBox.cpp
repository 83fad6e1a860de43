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

void showMessage(const std::string& text) {
  if (installed()) {
    installed()(text);
  } else {
    std::fprintf(stderr, "%s\n", text.c_str());
  }
}

}  // namespace palvex
