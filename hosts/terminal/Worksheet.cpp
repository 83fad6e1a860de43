#include "hosts/terminal/Worksheet.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include "runtime/NumericText.h"

namespace palvex::terminal {

namespace {

constexpr std::array<std::pair<std::string_view, std::int32_t>, 7> errorValues{{
    {"#NULL!", 2000},
    {"#DIV/0!", 2007},
    {"#VALUE!", 2015},
    {"#REF!", 2023},
    {"#NAME?", 2029},
    {"#NUM!", 2036},
    {"#N/A", 2042},
}};

Variant cellFrom(std::string field) {
  if (field.empty()) return {};
  for (const auto& [text, code] : errorValues) {
    if (field == text) return Variant::error(code);
  }
  if (const auto number = defaultNumericText(field)) return *number;
  return field;
}

/// One pass over the text, field by field.
class CsvReader {
 public:
  CsvReader(std::string_view text, const std::string& name) : rest_(text), name_(name) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (rest_.starts_with(byteOrderMark)) rest_.remove_prefix(byteOrderMark.size());
  }

  std::vector<Worksheet::Row> read() {
    if (rest_.find('\0') != std::string_view::npos) fail("this is no UTF-8 text");
    std::vector<Worksheet::Row> rows;
    for (; !rest_.empty(); ++line_) rows.push_back(readRow());
    return rows;
  }

 private:
  Worksheet::Row readRow() {
    Worksheet::Row row;
    do {
      row.push_back(cellFrom(rest_.starts_with('"') ? readQuoted() : readPlain()));
    } while (take(','));
    if (!rest_.empty() && !takeLineBreak()) fail("text after a closing quote");
    return row;
  }

  std::string readPlain() {
    std::string field(rest_.substr(0, rest_.find_first_of(",\r\n")));
    rest_.remove_prefix(field.size());
    return field;
  }

  std::string readQuoted() {
    const std::size_t openedAt = line_;
    rest_.remove_prefix(1);
    std::string field;
    for (;;) {
      const std::string_view part = rest_.substr(0, rest_.find_first_of("\"\r\n"));
      field += part;
      rest_.remove_prefix(part.size());
      if (rest_.empty()) fail("a quoted field is not closed", openedAt);
      if (take('"')) {
        if (!take('"')) return field;
        field += '"';
      } else {
        takeLineBreak();
        field += '\n';
        ++line_;
      }
    }
  }

  bool take(char c) {
    if (!rest_.starts_with(c)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  bool takeLineBreak() {
    const bool carriageReturn = take('\r');
    return take('\n') || carriageReturn;
  }

  [[noreturn]] void fail(std::string_view why) const { fail(why, line_); }
  [[noreturn]] void fail(std::string_view why, std::size_t line) const {
    throw SheetError(fmt::format("{} line {}: {}", name_, line, why));
  }

  std::string_view rest_;
  const std::string& name_;
  std::size_t line_ = 1;
};

struct FileCloser {
  void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};

}  // namespace

Worksheet::Worksheet(std::vector<Row> cells) : cells_(std::move(cells)) {
  for (const Row& row : cells_) {
    columns_ = std::max(columns_, static_cast<std::int32_t>(row.size()));
  }
}

Worksheet Worksheet::fromCsv(std::string_view text, const std::string& name) {
  return Worksheet(CsvReader(text, name).read());
}

Worksheet Worksheet::fromFile(const std::string& path) {
  const auto fail = [&path] {
    throw SheetError(fmt::format("can not read '{}': {}", path, std::strerror(errno)));
  };
  const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
  if (!file) fail();
  std::string text;
  std::array<char, 65536> buffer;
  while (const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), file.get())) {
    text.append(buffer.data(), got);
  }
  if (std::ferror(file.get()) != 0) fail();
  return fromCsv(text, path);
}

bool Worksheet::contains(const Block& block) const {
  return block.last.row <= rows() && block.last.column <= columns();
}

const Variant& Worksheet::at(const Place& place) const {
  static const Variant blank;
  const Row& row = cells_.at(static_cast<std::size_t>(place.row - 1));
  const auto column = static_cast<std::size_t>(place.column - 1);
  return column < row.size() ? row[column] : blank;
}

}  // namespace palvex::terminal
