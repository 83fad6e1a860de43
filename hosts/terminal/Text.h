#pragma once

#include <span>
#include <string>
#include <string_view>

/// Texts from outside, as people may safely be shown them, and what they may have meant.
namespace palvex::terminal {

/// `text` with control characters written out ("\n", "\x1b"), so that no terminal obeys them and
/// no line breaks, and with each byte that is no UTF-8 as "\xff".
[[nodiscard]] std::string escaped(std::string_view text);

/// `text`, escaped, as the content of an element of HTML or SVG.
[[nodiscard]] std::string markup(std::string_view text);

/// Whether the two differ in the case of ASCII letters only.
[[nodiscard]] bool sameLetters(std::string_view a, std::string_view b);

/// The one of `names` that `word` was probably meant to be: at most a third of its letters changed,
/// added, left out or swapped with their neighbour, or its beginning; "" for none.
[[nodiscard]] std::string_view nearest(std::string_view word,
                                       std::span<const std::string_view> names);

/// Whether each comma in a number stands where thousands are marked: "1,250" or "12,345,678.5", not
/// "2,5" or "0,125". True without a comma.
[[nodiscard]] bool commasMarkThousands(std::string_view number);

}  // namespace palvex::terminal
