#include "hosts/terminal/Worksheet.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "hosts/terminal/Text.h"
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

// Cells that are no numbers: NaNs whose lower bits tell an error value's code, or the index of a
// text.
constexpr std::uint64_t kindMask = 0xFFFF'0000'0000'0000;
constexpr std::uint64_t emptyCell = 0x7FFC'0000'0000'0000;
constexpr std::uint64_t errorCell = 0x7FFD'0000'0000'0000;
constexpr std::uint64_t textCell = 0x7FFE'0000'0000'0000;

constexpr std::int32_t mostRows = std::numeric_limits<std::int32_t>::max() - 1;

/// The character that separates the fields of a text's first lines: the one that occurs equally
/// often in each of them, else the most frequent one of the first line; a comma where there is
/// none.
char separatorOf(std::string_view text) {
  constexpr std::size_t mostLines = 10;
  constexpr std::string_view candidates = ";\t,";
  std::vector<std::array<std::size_t, candidates.size()>> lines;
  std::array<std::size_t, candidates.size()> counts{};
  bool quoted = false;
  bool blank = true;
  for (const char c : text) {
    if (c == '"') quoted = !quoted;
    if ((c == '\n' || c == '\r') && !quoted) {
      if (!blank) lines.push_back(counts);
      if (lines.size() == mostLines) break;
      counts = {};
      blank = true;
      continue;
    }
    blank = false;
    const std::size_t which = candidates.find(c);
    if (which != std::string_view::npos && !quoted) ++counts[which];
  }
  // A last line without an end does not count, unless it is the only one.
  if (lines.empty()) lines.push_back(counts);

  const auto& first = lines.front();
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    const auto same = [&](const auto& line) { return line[i] == first[i]; };
    if (first[i] > 0 && std::all_of(lines.begin(), lines.end(), same)) return candidates[i];
  }
  const auto most = std::max_element(first.rbegin(), first.rend());  // a comma in case of doubt
  return candidates[static_cast<std::size_t>(first.rend() - most - 1)];
}

struct FileCloser {
  void operator()(std::FILE* file) const {
    if (file != stdin) static_cast<void>(std::fclose(file));
  }
};

}  // namespace

/// One pass over the text, which comes in parts of any length.
class CsvReader {
 public:
  CsvReader(Worksheet& sheet, const std::string& name) : sheet_(sheet), name_(name) {}

  /// The next part; the first one shows what separates the fields.
  void read(std::string_view part) {
    if (std::exchange(atStart_, false)) {
      constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
      if (part.starts_with(byteOrderMark)) part.remove_prefix(byteOrderMark.size());
      separator_ = separatorOf(part);
      plainEnds_ = {separator_, '\r', '\n'};
    }
    const std::string_view good = part.substr(0, part.find('\0'));
    for (std::string_view rest = good; !rest.empty();) rest = step(rest);
    if (good.size() < part.size()) fail("this is no UTF-8 text; save the sheet as CSV in UTF-8");
  }

  void end() {
    if (state_ == State::quoted || state_ == State::quotedAfterReturn)
      fail("a quoted field is not closed", openedAt_);
    if (state_ != State::rowStart && state_ != State::afterReturn) endRow();
    if (sheet_.rows_ == 0) throw SheetError(fmt::format("'{}' is empty", name_));
  }

 private:
  enum class State {
    rowStart,
    fieldStart,
    plain,
    quoted,
    quotedAfterReturn,
    quoteSeen,    // the end of a quoted field, or the first one of a doubled quote
    afterReturn,  // a line feed belongs to the carriage return before it
  };

  /// Reads on to where the state changes, and returns what is left.
  std::string_view step(std::string_view rest) {
    switch (state_) {
      case State::rowStart:
      case State::fieldStart:
        place_ = {sheet_.rows_ + 1, ++column_};
        wanted_ = sheet_.wants(place_);
        openedAt_ = line_;
        state_ = rest.front() == '"' ? State::quoted : State::plain;
        return rest.substr(state_ == State::quoted ? 1 : 0);
      case State::plain: {
        const std::size_t length = std::min(rest.find_first_of(plainEnds_), rest.size());
        take(rest.substr(0, length));
        rest.remove_prefix(length);
        if (rest.empty()) return rest;
        endField(rest.front());
        return rest.substr(1);
      }
      case State::quotedAfterReturn:
        state_ = State::quoted;
        return rest.substr(rest.front() == '\n' ? 1 : 0);
      case State::quoted: {
        const std::size_t length = std::min(rest.find_first_of("\"\r\n"), rest.size());
        take(rest.substr(0, length));
        rest.remove_prefix(length);
        if (rest.empty()) return rest;
        if (rest.front() == '"') {
          state_ = State::quoteSeen;
        } else {
          take("\n");
          ++line_;
          if (rest.front() == '\r') state_ = State::quotedAfterReturn;
        }
        return rest.substr(1);
      }
      case State::quoteSeen:
        if (rest.front() == '"') {
          take("\"");
          state_ = State::quoted;
        } else if (plainEnds_.find(rest.front()) != std::string::npos) {
          endField(rest.front());
        } else {
          fail("text after a closing quote");
        }
        return rest.substr(1);
      case State::afterReturn:
        state_ = State::rowStart;
        return rest.substr(rest.front() == '\n' ? 1 : 0);
    }
    return {};
  }

  void take(std::string_view part) {
    if (wanted_) field_ += part;
  }

  void endField(char by) {
    if (by == separator_) {
      keepField();
      state_ = State::fieldStart;
    } else {
      endRow();
      state_ = by == '\r' ? State::afterReturn : State::rowStart;
      ++line_;
    }
  }

  void endRow() {
    if (state_ == State::fieldStart) ++column_;  // nothing comes after the last separator
    keepField();
    if (sheet_.rows_ == mostRows) fail("too many rows");
    ++sheet_.rows_;
    sheet_.columns_ = std::max(sheet_.columns_, column_);
    column_ = 0;
  }

  void keepField() {
    if (!wanted_) return;
    wanted_ = false;
    sheet_.keep(place_, cellFrom(std::exchange(field_, {})));
  }

  std::uint64_t cellFrom(std::string field) {
    if (field.empty()) return emptyCell;
    for (const auto& [text, code] : errorValues) {
      if (field == text) return errorCell | static_cast<std::uint64_t>(code);
    }
    if (const auto number = defaultNumericText(field)) {
      const bool doubtful = separator_ == ';' && field.find(',') != std::string::npos;
      if (doubtful || !commasMarkThousands(field)) {
        fail(fmt::format("the comma in '{}' ({}{}) may be a decimal comma; write a decimal point",
                         field, columnName(place_.column), place_.row),
             openedAt_);
      }
      return std::bit_cast<std::uint64_t>(*number);
    }
    sheet_.texts_.push_back(std::move(field));
    return textCell | (sheet_.texts_.size() - 1);
  }

  [[noreturn]] void fail(std::string_view why) const { fail(why, line_); }
  [[noreturn]] void fail(std::string_view why, std::size_t line) const {
    throw SheetError(fmt::format("{} line {}: {}", name_, line, why));
  }

  Worksheet& sheet_;
  const std::string& name_;
  State state_ = State::rowStart;
  bool atStart_ = true;
  char separator_ = ',';
  std::string plainEnds_;
  std::string field_;
  bool wanted_ = false;
  Place place_{0, 0};
  std::int32_t column_ = 0;
  std::size_t line_ = 1;
  std::size_t openedAt_ = 1;
};

std::span<const Block> Worksheet::everything() {
  constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
  static constexpr std::array<Block, 1> all{{{{1, 1}, {most, most}}}};
  return all;
}

Worksheet Worksheet::fromCsv(std::string_view text, const std::string& name,
                             std::span<const Block> wanted) {
  Worksheet sheet(wanted);
  CsvReader reader(sheet, name);
  reader.read(text);
  reader.end();
  return sheet;
}

Worksheet Worksheet::fromFile(const std::string& path, std::span<const Block> wanted) {
  const auto fail = [&path] {
    throw SheetError(fmt::format("can not read '{}': {}", path, std::strerror(errno)));
  };
  const std::unique_ptr<std::FILE, FileCloser> file(path == "-" ? stdin
                                                                : std::fopen(path.c_str(), "rb"));
  if (!file) fail();
  Worksheet sheet(wanted);
  const std::string name = path == "-" ? "standard input" : path;
  CsvReader reader(sheet, name);
  std::vector<char> buffer(std::size_t{1} << 18);
  while (const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), file.get())) {
    reader.read({buffer.data(), got});
  }
  if (std::ferror(file.get()) != 0) fail();
  reader.end();
  return sheet;
}

bool Worksheet::wants(const Place& place) {
  // Columns are reached one after the other.
  if (place.column == static_cast<std::int32_t>(kept_.size()) + 1) {
    Column column{1, 0, {}};
    bool any = false;
    for (const auto& [first, last] : wanted_) {
      if (last.column < place.column) continue;
      any = true;
      if (first.column > place.column) continue;
      const bool none = column.last < column.first;
      column.first = none ? first.row : std::min(column.first, first.row);
      column.last = none ? last.row : std::max(column.last, last.row);
    }
    if (any) kept_.push_back(std::move(column));
  }
  const auto index = static_cast<std::size_t>(place.column - 1);
  return index < kept_.size() && kept_[index].first <= place.row && place.row <= kept_[index].last;
}

void Worksheet::keep(const Place& place, std::uint64_t cell) {
  auto& [first, last, cells] = kept_[static_cast<std::size_t>(place.column - 1)];
  cells.resize(static_cast<std::size_t>(place.row - first), emptyCell);  // of shorter rows
  cells.push_back(cell);
}

bool Worksheet::contains(const Block& block) const {
  return block.last.row <= rows() && block.last.column <= columns();
}

Block Worksheet::ended(Block block) const {
  if (block.last.row == Block::endOfSheet) block.last.row = std::max(rows(), block.first.row);
  return block;
}

Variant Worksheet::at(const Place& place) const {
  const auto column = static_cast<std::size_t>(place.column - 1);
  if (column >= kept_.size()) return {};
  const auto& [first, last, cells] = kept_[column];
  const std::int64_t row = std::int64_t{place.row} - first;
  if (row < 0 || row >= static_cast<std::int64_t>(cells.size())) return {};
  const std::uint64_t cell = cells[static_cast<std::size_t>(row)];
  switch (cell & kindMask) {
    case emptyCell:
      return {};
    case errorCell:
      return Variant::error(static_cast<std::int32_t>(cell & ~kindMask));
    case textCell:
      return texts_[static_cast<std::size_t>(cell & ~kindMask)];
    default:
      return std::bit_cast<double>(cell);
  }
}

}  // namespace palvex::terminal
