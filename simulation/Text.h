#pragma once

#include <span>
#include <string>
#include <string_view>

#include "runtime/Variant.h"

namespace palvex::simulation {

/// `text` without blanks around it.
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// `text` with the letters of the Latin alphabet in lower case, the form in which names are
/// compared.
[[nodiscard]] std::string folded(std::string_view text);

/// Whether the two differ in the case of letters of the Latin alphabet only.
[[nodiscard]] bool sameLetters(std::string_view a, std::string_view b);

/// How many letters are to be inserted, left out, replaced or swapped with their neighbour to make
/// one text of the other (F. J. Damerau, Comm. ACM 7 (1964) 171-176), without regard to letter
/// case.
[[nodiscard]] std::size_t lettersAway(std::string_view first, std::string_view second);

/// The one of `names` that `word` was probably meant to be: at most a third of its letters changed,
/// added, left out or swapped with their neighbour, or at least three letters of its beginning; ""
/// for none.
[[nodiscard]] std::string_view nearest(std::string_view word,
                                       std::span<const std::string_view> names);

/// "; did you mean X?" with the nearest of the names, or ".".
[[nodiscard]] std::string suggestion(std::string_view word,
                                     std::span<const std::string_view> names);

/// The content of a cell as a trimmed text; "an error value" for one.
[[nodiscard]] std::string cellText(const Variant& cell);

}  // namespace palvex::simulation
