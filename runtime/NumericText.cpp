#include "runtime/NumericText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

namespace palvex {

namespace {

constexpr bool isBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool dropFront(std::string_view& text, std::string_view characters) {
  if (text.empty() || characters.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

bool dropBack(std::string_view& text, char character) {
  if (text.empty() || text.back() != character) return false;
  text.remove_suffix(1);
  return true;
}

/// "&H1F" or "&O17" without the "&".
std::optional<double> radixInteger(std::string_view text) {
  if (text.size() < 2) return {};
  const char kind = text.front();
  const int base = kind == 'H' || kind == 'h' ? 16 : kind == 'O' || kind == 'o' ? 8 : 0;
  if (base == 0) return {};
  unsigned long long value = 0;
  const auto [end, fault] =
      std::from_chars(text.data() + 1, text.data() + text.size(), value, base);
  if (fault != std::errc{} || end != text.data() + text.size()) return {};
  return static_cast<double>(value);
}

/// Digits with group separators, a decimal point and an exponent, rewritten as from_chars reads
/// them: plain digits, "." and "e".
std::optional<std::string> plainDecimal(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  std::size_t i = 0;
  std::size_t digits = 0;
  for (; i < text.size(); ++i) {
    if (isDigit(text[i])) {
      plain += text[i];
      ++digits;
    } else if (text[i] != ',' || i == 0 || i + 1 == text.size() || !isDigit(text[i + 1])) {
      break;  // a comma that stays has a digit on either side
    }
  }
  if (i < text.size() && text[i] == '.') {
    if (digits == 0) plain += '0';
    plain += '.';
    for (++i; i < text.size() && isDigit(text[i]); ++i, ++digits) plain += text[i];
    plain += '0';
  }
  if (digits == 0) return {};
  if (i < text.size() && std::string_view("eEdD").find(text[i]) != std::string_view::npos) {
    plain += 'e';
    ++i;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) plain += text[i++];
    if (i == text.size()) return {};
    for (; i < text.size() && isDigit(text[i]); ++i) plain += text[i];
    if (!isDigit(plain.back())) return {};
  }
  if (i != text.size()) return {};
  return plain;
}

/// Whether a decimal beyond the range of doubles is too small rather than too large: the power of
/// ten of its first digit that is not 0 is negative.
bool isTiny(std::string_view plain) {
  const std::size_t mark = std::min(plain.find('e'), plain.size());
  const std::string_view mantissa = plain.substr(0, mark);
  const auto point = static_cast<long long>(std::min(mantissa.find('.'), mantissa.size()));
  const auto digit = static_cast<long long>(mantissa.find_first_of("123456789"));
  std::string_view exponentText = plain.substr(std::min(mark + 1, plain.size()));
  if (exponentText.starts_with('+')) exponentText.remove_prefix(1);
  int exponent = 0;
  const auto fault =
      std::from_chars(exponentText.data(), exponentText.data() + exponentText.size(), exponent).ec;
  if (fault == std::errc::result_out_of_range) return exponentText.front() == '-';
  return point - digit - (digit < point ? 1 : 0) + exponent < 0;
}

}  // namespace

std::optional<double> defaultNumericText(std::string_view text) {
  text = trimmed(text);
  if (dropFront(text, "&")) return radixInteger(text);

  bool negative = false;
  if (text.size() >= 2 && text.front() == '(' && text.back() == ')') {
    text = trimmed(text.substr(1, text.size() - 2));
    negative = true;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) return {};
  }
  bool dollar = dropFront(text, "$");
  if (!negative && !text.empty() && (text.front() == '+' || text.front() == '-')) {
    negative = text.front() == '-';
    text.remove_prefix(1);
  }
  if (!dollar) dollar = dropFront(text, "$");
  if (!dollar) dropBack(text, '$');

  const std::optional<std::string> plain = plainDecimal(text);
  if (!plain) return {};
  double value = 0;
  const auto fault = std::from_chars(plain->data(), plain->data() + plain->size(), value).ec;
  if (fault == std::errc::result_out_of_range) {
    if (!isTiny(*plain)) return {};
    value = 0;
  }
  return negative ? -value : value;
}

namespace {
NumericTextRule installedRule = defaultNumericText;
}

std::optional<double> numericText(std::string_view text) {
  return installedRule(text);
}

void setNumericTextRule(NumericTextRule rule) {
  installedRule = rule;
}

std::string numberText(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
  if (value == 0) return "0";

  // -d.ddddE-308 is at most 24 characters long; plain notation stays within 21 + 1.
  std::array<char, 40> buffer;
  const double size = std::abs(value);
  const bool plain = size < 1e15 && size >= 1e-4;
  auto* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                  plain ? std::chars_format::fixed : std::chars_format::scientific)
                        .ptr;
  std::string text(buffer.data(), end);
  if (const std::size_t mark = text.find('e'); mark != std::string::npos) text[mark] = 'E';
  return text;
}

}  // namespace palvex
