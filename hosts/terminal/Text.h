#pragma once

#include <string>
#include <string_view>

/// Texts from outside, and how they may safely be shown.
namespace palvex::terminal {

/// `text` with control characters written out ("\n", "\x1b"), so that no terminal obeys them and
/// no line breaks, and with each byte that is no UTF-8 as "\xff".
[[nodiscard]] std::string escaped(std::string_view text);

/// `text`, escaped, as the content of an element of HTML or SVG.
[[nodiscard]] std::string markup(std::string_view text);

/// Whether each comma in a number stands where thousands are marked: "1,250" or "12,345,678.5", not
/// "2,5" or "0,125". True without a comma.
[[nodiscard]] bool commasMarkThousands(std::string_view number);

}  // namespace palvex::terminal
