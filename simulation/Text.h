#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/Variant.h"

namespace palvex::simulation {

/// Without the blanks around it.
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// With the letters of the Latin alphabet in lower case: what tells two names apart.
[[nodiscard]] std::string folded(std::string_view text);

/// How many letters are to be inserted, left out, replaced or swapped with their neighbour to make
/// one text of the other (Damerau, optimal string alignment), without regard to letter case.
[[nodiscard]] std::size_t lettersAway(std::string_view first, std::string_view second);

/// The name that `text` was probably meant to be: the nearest one, if it is near.
[[nodiscard]] std::optional<std::string> nearest(std::string_view text,
                                                 std::span<const std::string> names);

/// "; did you mean X?" with the nearest of the names, or nothing.
[[nodiscard]] std::string suggestion(std::string_view text, std::span<const std::string> names);

/// The content of a cell as a trimmed text; "an error value" for one.
[[nodiscard]] std::string cellText(const Variant& cell);

}  // namespace palvex::simulation
