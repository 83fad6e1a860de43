#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace palvex {

/// A rule that says which texts are numbers: the value of a numeric text, nothing for any other.
using NumericTextRule = std::optional<double> (*)(std::string_view text);

/// The default rule, the same in every locale. A number is written with blanks around it; a sign; a
/// leading or trailing "$"; digits with an optional "." and with "," between the digits of the
/// integer part; an exponent with e, E, d or D; or as "(5)" for -5; or as a hexadecimal or octal
/// integer, "&HFF" or "&O17". A value below the smallest double is 0; one beyond the largest is no
/// number, nor are "", "inf" and "nan".
std::optional<double> defaultNumericText(std::string_view text);

/// The value of `text` by the installed rule.
std::optional<double> numericText(std::string_view text);

/// Installs a platform's own rule, for the whole process; to be called before threads start.
void setNumericTextRule(NumericTextRule rule);

/// A number as text: the shortest digits that read back as the same double, "." as the decimal
/// point; with an exponent ("1E+20", "1E-07") from 1E+15 on and below 0.0001.
std::string numberText(double value);

}  // namespace palvex
