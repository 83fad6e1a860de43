#pragma once

// Scripts that drive a distribution object by its members' names, however it is reached: in C++,
// late bound or through its vtable. Each line of a script is one of
//
//   new A title                         a fresh object
//   check Normal 10 2 _ _ 5 _ -> ''     a fresh object of that type with these parameters and
//   limits,
//                                       and what ParamsOK says of it
//   param1 = 3      GraphX 2 = 0.5      an assignment
//   pdf 3 True -> 0.25                  a member's answer; of ParamsOK the sentence, '' for true
//   let c {7}       set c 1 8           a range under a name, $c as a value; a new content of a
//   cell fail c Value 2                      the second read from now of this member raises error
//   1004 reads c -> 4                        how many members of the range were read since the last
//   time

#include <functional>
#include <memory>
#include <string>

#include "Script.h"

namespace palvex::script {

class Target {
 public:
  Target() = default;
  Target(const Target&) = delete;
  Target& operator=(const Target&) = delete;
  virtual ~Target() = default;
  /// The result of a member, none for one without. ParamsOK answers with its sentence.
  virtual Values call(const std::string& member, const Values& arguments) = 0;
  /// Assigns the last value; indices stand before it.
  virtual void put(const std::string& member, const Values& arguments) = 0;

  /// Sets the type, the parameters and the limits.
  void describe(const Values& given) {
    const char* members[] = {"distType", "param1", "param2", "param3", "param4", "ltl", "utl"};
    for (std::size_t i = 0; i < given.size(); ++i) {
      if (!given[i].isEmpty()) put(members[i], {given[i]});
    }
  }
};

inline void runScript(const std::string& file,
                      const std::function<std::unique_ptr<Target>()>& make) {
  std::unique_ptr<Target> object;
  Ranges ranges;
  int lines = 0;
  forEachLine(file, [&](Row& row) {
    ++lines;
    const std::string word = row.word();
    if (word == "new") {
      object = make();
    } else if (word == "let") {
      const std::string name = row.word();
      ranges[name] = std::dynamic_pointer_cast<FakeRange>(row.value(ranges).toObject());
    } else if (word == "set") {
      FakeRange& range = *ranges.at(row.word());
      const auto index = static_cast<std::size_t>(row.value().toDouble());
      range.cells.at(index - 1) = row.value(ranges);
    } else if (word == "fail") {
      FakeRange& range = *ranges.at(row.word());
      const std::string member = row.word();
      range.failingRead[member] = static_cast<int>(row.value().toDouble());
    } else if (word == "reads") {
      FakeRange& range = *ranges.at(row.word());
      expectOutcome(row, [&] { return Values{std::exchange(range.reads, 0)}; });
    } else {
      if (word == "check") object = make();
      const Values given = row.values(ranges);
      if (row.skip("=")) {
        Values values = given;
        values.push_back(row.value(ranges));
        expectOutcome(row, [&] { return object->put(word, values), Values{}; });
      } else if (word == "check") {
        object->describe(given);
        expectOutcome(row, [&] { return object->call("ParamsOK", {}); });
      } else {
        expectOutcome(row, [&] { return object->call(word, given); });
      }
    }
  });
  EXPECT_GT(lines, 0);
}

}  // namespace palvex::script
