#include "hosts/terminal/Table.h"

#include <fmt/core.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

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

}  // namespace

std::string Table::text(Format format, int digits) const {
  switch (format) {
    case Format::csv:
      return csv();
    case Format::json:
      return json();
    case Format::people:
      break;
  }
  return forPeople(digits);
}

std::string Table::forPeople(int digits) const {
  std::vector<std::string> lines(rows_.size() + 1);
  for (std::size_t column = 0; column < columns_.size(); ++column) {
    std::vector<std::string> texts{columns_[column]};
    bool numbers = true;  // a column of numbers stands to the right
    for (const auto& row : rows_) {
      texts.push_back(cellText(row[column], digits));
      numbers = numbers && !std::holds_alternative<std::string>(row[column]);
    }
    std::size_t widest = 0;
    for (const std::string& text : texts) widest = std::max(widest, width(text));
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const std::string blanks(widest - width(texts[i]), ' ');
      if (column > 0) lines[i] += "  ";
      lines[i] += numbers ? blanks + texts[i] : texts[i] + blanks;
    }
  }
  std::string all;
  for (std::string& line : lines) {
    line.erase(line.find_last_not_of(' ') + 1);
    all += line + '\n';
  }
  return all;
}

std::string Table::csv() const {
  std::string all;
  const auto addLine = [&all](const auto& cells, auto text) {
    std::string_view separator;
    for (const auto& cell : cells) {
      all.append(separator).append(csvField(text(cell)));
      separator = ",";
    }
    all += '\n';
  };
  addLine(columns_, [](const std::string& name) { return name; });
  for (const auto& row : rows_) {
    addLine(row, [](const Cell& cell) { return cellText(cell, 0); });
  }
  return all;
}

std::string Table::json() const {
  using nlohmann::ordered_json;
  std::string all = "[";
  for (const auto& row : rows_) {
    ordered_json object = ordered_json::object();
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (const auto* number = std::get_if<double>(&row[i])) object[columns_[i]] = *number;
      if (const auto* text = std::get_if<std::string>(&row[i])) object[columns_[i]] = *text;
    }
    // Text from outside may be no UTF-8: its bad bytes become U+FFFD.
    all.append(all.size() > 1 ? ",\n " : "\n ");
    all.append(object.dump(-1, ' ', false, ordered_json::error_handler_t::replace));
  }
  return all + "\n]\n";
}

}  // namespace palvex::terminal
