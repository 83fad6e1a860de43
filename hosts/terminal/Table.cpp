#include "hosts/terminal/Table.h"

#include <fmt/core.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

#include "hosts/terminal/Text.h"

namespace palvex::terminal {

namespace {

/// @param digits  significant digits of a number; 0 for the shortest form that reads back the same
std::string cellText(const Table::Cell& cell, int digits) {
  if (const auto* number = std::get_if<double>(&cell)) {
    return digits == 0 ? fmt::format("{}", *number) : fmt::format("{:.{}g}", *number, digits);
  }
  if (const auto* text = std::get_if<std::string>(&cell)) return *text;
  return "";
}

/// Characters of a UTF-8 text: all bytes but the continuing ones.
std::size_t width(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

std::string csvField(std::string text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  for (std::size_t at = 0; (at = text.find('"', at)) != std::string::npos; at += 2) {
    text.insert(at, 1, '"');
  }
  return text.insert(0, 1, '"').append(1, '"');
}

template <class Cells, class Field>
std::string csvLine(const Cells& cells, Field field) {
  std::string line;
  std::string_view separator;
  for (const auto& cell : cells) {
    line.append(separator).append(field(cell));
    separator = ",";
  }
  return line + '\n';
}

std::string jsonObject(const std::vector<std::string>& columns,
                       const std::vector<Table::Cell>& row) {
  using nlohmann::ordered_json;
  ordered_json object = ordered_json::object();
  for (std::size_t i = 0; i < row.size(); ++i) {
    if (const auto* number = std::get_if<double>(&row[i])) object[columns[i]] = *number;
    if (const auto* text = std::get_if<std::string>(&row[i])) object[columns[i]] = *text;
  }
  // Text from outside may be no UTF-8: its bad bytes become U+FFFD.
  return object.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

/// A cell as people see it.
std::string shown(const Table::Cell& cell, int digits) {
  return escaped(cellText(cell, digits));
}

void addAligned(std::string& line, bool apart, const std::string& text, std::size_t wide,
                bool toTheRight) {
  const std::string blanks(wide - width(text), ' ');
  if (apart) line += "  ";
  line += toTheRight ? blanks + text : text + blanks;
}

std::string endedLine(std::string line) {
  line.erase(line.find_last_not_of(' ') + 1);
  return line + '\n';
}

constexpr std::size_t partRows = 4096;

}  // namespace

std::string Table::text(Format format, int digits) const {
  std::vector<std::size_t> widths;
  const std::string names = head(format, digits, widths);
  return names + body(format, digits, widths, true) + tail(format);
}

void Table::widen(std::vector<std::size_t>& widths, int digits) const {
  widths.resize(columns_.size());
  for (std::size_t column = 0; column < columns_.size(); ++column) {
    widths[column] = std::max(widths[column], width(escaped(columns_[column])));
    for (const auto& row : rows_) {
      widths[column] = std::max(widths[column], width(shown(row[column], digits)));
    }
  }
}

bool Table::isNumeric(std::size_t column) const {
  return std::none_of(rows_.begin(), rows_.end(), [&](const std::vector<Cell>& row) {
    return std::holds_alternative<std::string>(row[column]);
  });
}

std::string Table::head(Format format, int digits, std::vector<std::size_t>& widths) const {
  switch (format) {
    case Format::csv:
      return csvLine(columns_, csvField);
    case Format::json:
      return "[";
    case Format::people:
      break;
  }
  widen(widths, digits);
  std::string line;
  for (std::size_t column = 0; column < columns_.size(); ++column) {
    addAligned(line, column > 0, escaped(columns_[column]), widths[column], isNumeric(column));
  }
  return endedLine(std::move(line));
}

std::string Table::body(Format format, int digits, std::vector<std::size_t>& widths,
                        bool isFirst) const {
  std::string all;
  if (format == Format::csv) {
    for (const auto& row : rows_) {
      all += csvLine(row, [](const Cell& cell) { return csvField(cellText(cell, 0)); });
    }
  } else if (format == Format::json) {
    for (const auto& row : rows_) {
      all.append(isFirst ? "\n " : ",\n ").append(jsonObject(columns_, row));
      isFirst = false;
    }
  } else {
    widen(widths, digits);
    std::vector<bool> numeric;  // a column of numbers stands to the right
    for (std::size_t column = 0; column < columns_.size(); ++column) {
      numeric.push_back(isNumeric(column));
    }
    for (const auto& row : rows_) {
      std::string line;
      for (std::size_t column = 0; column < columns_.size(); ++column) {
        addAligned(line, column > 0, shown(row[column], digits), widths[column], numeric[column]);
      }
      all += endedLine(std::move(line));
    }
  }
  return all;
}

std::string Table::tail(Format format) {
  return format == Format::json ? "\n]\n" : "";
}

void TableWriter::add(std::vector<Table::Cell> row) {
  part_.add(std::move(row));
  if (part_.rows_.size() == partRows) flush();
}

void TableWriter::flush() {
  if (isFirst_) output_.write(part_.head(format_, digits_, widths_));
  output_.write(part_.body(format_, digits_, widths_, isFirst_));
  part_.rows_.clear();
  isFirst_ = false;
}

void TableWriter::close() {
  if (isFirst_ || !part_.rows_.empty()) flush();
  output_.write(Table::tail(format_));
}

}  // namespace palvex::terminal
