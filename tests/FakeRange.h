#pragma once

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
    if (sameMember(member, "Value")) return cells.empty() ? Variant{} : cells.front();
    return Object::doGet(member, arguments);
  }
};

inline std::shared_ptr<FakeRange> cell(Variant value) {
  return std::make_shared<FakeRange>(std::vector<Variant>{std::move(value)});
}

}  // namespace palvex
