#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "runtime/Object.h"

namespace palvex {

/// A worksheet range for tests: its cells can be changed, its reads are counted, and one read of a
/// member can be made to fail.
class FakeRange : public Object {
 public:
  explicit FakeRange(std::vector<Variant> cellValues) : cells(std::move(cellValues)) {}

  std::vector<Variant> cells;
  std::int32_t columns = 0;                // when set, "Value" is an array of all cells
  int reads = 0;                           // of any member
  std::map<std::string, int> failingRead;  // member -> which read of it (from 1) raises 1004

 protected:
  Variant doGet(std::string_view member, const std::vector<Variant>& arguments) override {
    ++reads;
    if (const auto failing = failingRead.find(std::string(member)); failing != failingRead.end()) {
      if (--failing->second == 0) throw RuntimeError(1004, "the sheet is closed", "host");
    }
    if (sameMember(member, "Application")) return std::make_shared<Object>();
    if (sameMember(member, "Address")) return "$A$1";
    if (sameMember(member, "Count")) return cells.size();
    if (sameMember(member, "Cells")) {
      const auto index = static_cast<std::size_t>(arguments.at(0).toDouble());
      return std::make_shared<FakeRange>(std::vector<Variant>{cells.at(index - 1)});
    }
    if (sameMember(member, "Value") && columns > 0) return array();
    if (sameMember(member, "Value")) return cells.empty() ? Variant{} : cells.front();
    return Object::doGet(member, arguments);
  }

 private:
  [[nodiscard]] Variant array() const {
    const auto count = static_cast<std::int32_t>(cells.size());
    Variant values = Variant::array(count / columns, columns);
    for (std::int32_t i = 0; i < count; ++i)
      values.at(i / columns + 1, i % columns + 1) = cells[static_cast<std::size_t>(i)];
    return values;
  }
};

inline std::shared_ptr<FakeRange> cell(Variant value) {
  return std::make_shared<FakeRange>(std::vector<Variant>{std::move(value)});
}

/// A block of cells, row by row.
inline std::shared_ptr<FakeRange> block(std::int32_t columns, std::vector<Variant> cells) {
  auto range = std::make_shared<FakeRange>(std::move(cells));
  range->columns = columns;
  return range;
}

}  // namespace palvex
