#pragma once

#include <functional>
#include <string_view>

namespace palvex {

/// Shows a finished text to the user.
using MessageBox = std::function<void(std::string_view text)>;

/// Installs what shows a message, for the whole process; to be called before threads start.
/// An empty function restores the default, which writes the text to standard error.
void setMessageBox(MessageBox box);

/// Shows `text` through the installed message box.
void showMessage(std::string_view text);

}  // namespace palvex
