#pragma once

// Test cases as lines of text files in tests/data: what is called, and what it answers.
//
//   pdf 3 True -> 0.25            an answer; a number within 1e-14 of it, "~1e-9" after it: within
//   1e-9 RandVal 2 ! 5 m.f 'text'      an error: its number, then the routines of its trace from
//   the
//                                 innermost and its description, each only if it matters
//   # ...                         a comment, as is what follows a lone # in a line
//
// Values: numbers, inf, nan, True, False, _ (empty), - (missing), #2042 (a worksheet error value),
// object, array; words and 'texts' with \r, \n and \'; {7} (a cell), {3: 1 2 3 4 5 6} (a block of
// three columns), { 1 2 } (two cells whose "Value" is no array); $name, a range kept under a name.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "FakeRange.h"
#include "Fault.h"

namespace palvex::script {

using Values = std::vector<Variant>;
using Ranges = std::map<std::string, std::shared_ptr<FakeRange>>;

/// A text for messages.
inline std::string shown(const Variant& value) {
  if (value.isMissing()) return "missing";
  if (value.isError()) return '#' + std::to_string(value.errorCode());
  return value.isObject() ? "object" : value.isArray() ? "array" : value.toText();
}

class Row {
 public:
  explicit Row(const std::string& line) {
    for (std::size_t i = 0; i < line.size();) {
      const char c = line[i];
      if (c == ' ') {
        ++i;
      } else if (c == '#' && (i + 1 == line.size() || line[i + 1] == ' ')) {
        break;
      } else if (c == '\'') {
        parts_.push_back({"", true});
        for (++i; line.at(i) != '\''; ++i) {
          const bool escape = line[i] == '\\';
          if (escape) ++i;
          parts_.back().text += !escape          ? line[i]
                                : line[i] == 'r' ? '\r'
                                : line[i] == 'n' ? '\n'
                                                 : line[i];
        }
        ++i;
      } else {
        const std::size_t end = std::min(line.find(' ', i), line.find('}', i + 1));
        const std::size_t length = c == '{' || c == '}' ? 1 : std::min(end, line.size()) - i;
        parts_.push_back({line.substr(i, length), false});
        i += length;
      }
    }
  }

  [[nodiscard]] bool empty() const { return next_ == parts_.size(); }
  [[nodiscard]] bool at(std::string_view word) const {
    return !empty() && !parts_[next_].quoted && parts_[next_].text == word;
  }
  /// Takes the word if it stands next.
  bool skip(std::string_view word) { return at(word) && ++next_ != 0; }
  std::string word() { return parts_.at(next_++).text; }

  Variant value(const Ranges& ranges = {}) {
    const auto& [text, quoted] = parts_.at(next_++);
    if (quoted) return text;
    if (text == "_") return {};
    if (text == "-") return Variant::missing();
    if (text == "True" || text == "False") return text == "True";
    if (text == "inf" || text == "-inf") return std::copysign(HUGE_VAL, text[0] == '-' ? -1 : 1);
    if (text == "nan") return std::nan("");
    if (text == "object") return std::make_shared<Object>();
    if (text == "array") return Variant::array(2);
    if (text[0] == '#') return Variant::error(std::stoi(text.substr(1)));
    if (text[0] == '$') return ranges.at(text.substr(1));
    if (text == "{") {
      const bool columns = !empty() && parts_[next_].text.back() == ':';
      const auto count = columns ? std::stoi(word()) : 0;
      Values cells;
      while (!skip("}")) cells.push_back(value(ranges));
      return block(count, cells);
    }
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (*end == '\0' && std::isfinite(number)) return number;  // "Infinity" is a text
    return text;
  }

  /// The values up to the end, an arrow or an exclamation mark.
  Values values(const Ranges& ranges = {}) {
    Values found;
    while (!empty() && !at("->") && !at("!") && !at("=")) found.push_back(value(ranges));
    return found;
  }

 private:
  struct Part {
    std::string text;
    bool quoted;
  };
  std::vector<Part> parts_;
  std::size_t next_ = 0;
};

/// Expects of a call, which answers with values, what the rest of the line says.
template <class Call>
void expectOutcome(Row& line, Call&& call) {
  Values found;
  const auto fault = faultOf([&] { return found = call(), 0; });
  if (line.skip("!")) {
    ASSERT_TRUE(fault) << "no error, but " << (found.empty() ? "nothing" : shown(found[0]));
    EXPECT_EQ(fault->number(), line.value().toDouble());
    std::string routines;
    bool traced = false;
    while (!line.empty()) {
      const std::string text = line.word();
      if (text.find("m_") == 0 || text.find("c_") == 0) {
        routines += (traced ? " " : "") + text;
        traced = true;
      } else {
        EXPECT_EQ(fault->description(), text);
      }
    }
    if (traced) {
      EXPECT_EQ(routinesOf(*fault), routines);
    }
    return;
  }
  ASSERT_FALSE(fault) << fault->what();
  if (!line.skip("->")) return;
  for (std::size_t i = 0; !line.empty(); ++i) {
    ASSERT_LT(i, found.size());
    const Variant expected = line.value();
    double tolerance = 1e-14;
    if (!line.empty()) {
      Row rest = line;
      const std::string next = rest.word();
      if (next[0] == '~') {
        tolerance = std::stod(next.substr(1));
        line = rest;
      }
    }
    if (found[i] == expected || expected == Variant("*")) continue;
    const auto number = [](const Variant& v) {
      return v.isNumeric() && v == Variant(v.toDouble());
    };
    ASSERT_TRUE(number(found[i]) && number(expected))
        << "answer " << i + 1 << ": " << shown(found[i]) << ", not " << shown(expected);
    EXPECT_NEAR(found[i].toDouble(), expected.toDouble(), tolerance * std::abs(expected.toDouble()))
        << "answer " << i + 1;
  }
}

inline double relativeError(double value, double reference) {
  return std::abs(value - reference) / std::abs(reference);
}

/// The rows of a table in tests/data, its fields separated by commas: numbers, texts, nothing.
inline std::vector<Values> table(const std::string& name) {
  std::ifstream file(std::string(PALVEX_TEST_DATA) + "/" + name);
  EXPECT_TRUE(file) << name;
  std::vector<Values> rows;
  for (std::string line; std::getline(file, line);) {
    rows.emplace_back();
    for (std::size_t at = 0, end = 0; at <= line.size(); at = end + 1) {
      end = std::min(line.find(',', at), line.size());
      const std::string field = line.substr(at, end - at);
      char* rest = nullptr;
      const double number = std::strtod(field.c_str(), &rest);
      rows.back().push_back(field.empty() ? Variant{} : *rest != 0 ? Variant(field) : number);
    }
  }
  return rows;
}

/// Hands each line of a file of tests/data, apart from comments, to `run`.
template <class Run>
void forEachLine(const std::string& file, Run&& run) {
  std::ifstream lines(std::string(PALVEX_TEST_DATA) + "/" + file);
  ASSERT_TRUE(lines) << file;
  int number = 0;
  for (std::string text; std::getline(lines, text);) {
    ++number;
    SCOPED_TRACE(file + ':' + std::to_string(number) + ": " + text);
    Row line(text);
    if (!line.empty()) run(line);
  }
}

}  // namespace palvex::script
