#pragma once

#include <functional>
#include <string>

namespace palvex {

/// Shows a finished text to the user.
using MessageBox = std::function<void(const std::string& text)>;

/// Installs what shows a message, for the whole process; to be called before threads start.
/// An empty function restores the default, which writes the text to standard error.
void setMessageBox(MessageBox box);

/// Shows `text` through the installed message box.
void showMessage(const std::string& text);

}  // namespace palvex
