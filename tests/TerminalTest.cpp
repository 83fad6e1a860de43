// The worksheet of the terminal program: its reader, its ranges, its numbers.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "hosts/terminal/Range.h"
#include "hosts/terminal/Text.h"
#include "hosts/terminal/Worksheet.h"

namespace palvex::terminal {
namespace {

Variant get(const Variant& range, const char* member, const std::vector<Variant>& arguments = {}) {
  return range.toObject()->get(member, arguments);
}

Variant range(const Worksheet& sheet, const char* reference) {
  return std::make_shared<Range>(std::make_shared<const Worksheet>(sheet),
                                 parseReference(reference).value());
}

int faultOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const RuntimeError& error) {
    return error.number();
  }
  return 0;
}

TEST(Worksheet, ReadsCommaSeparatedValues) {
  using Row = std::vector<Variant>;
  struct Case {
    const char* text;
    std::vector<Row> rows;
  };
  const std::vector<Case> cases{
      {"1", {{1}}},
      {"1,2\n3,4\n", {{1, 2}, {3, 4}}},
      {"1,2\r\n3,4\r\n", {{1, 2}, {3, 4}}},
      {"1\r2\n\n3", {{1}, {2}, {{}}, {3}}},
      {"\xEF\xBB\xBF"
       "7,x",
       {{7, "x"}}},
      {"a,,\n,b", {{"a", {}, {}}, {{}, "b"}}},
      {"\"1,500\",\"say \"\"yes\"\"\",\"two\r\nlines\"\n2",
       {{1500, "say \"yes\"", "two\nlines"}, {2}}},
      {"a;b\n1.5;\"2;3\"\n", {{"a", "b"}, {1.5, "2;3"}}},
      {"a, b\tc\n1\t2\n", {{"a, b", "c"}, {1, 2}}},
      {"a; b,c\n1,2\n", {{"a; b", "c"}, {1, 2}}},
      {"\"\",\" \"", {{{}, " "}}},
      {"-1e3,(5),$2.50,1e999,5\"", {{-1000, -5, 2.5, "1e999", "5\""}}},
      {"#NULL!,#DIV/0!,#VALUE!,#REF!\n#NAME?,#NUM!,#N/A,#NA",
       {{Variant::error(2000), Variant::error(2007), Variant::error(2015), Variant::error(2023)},
        {Variant::error(2029), Variant::error(2036), Variant::error(2042), "#NA"}}},
  };
  for (const auto& [text, rows] : cases) {
    const Worksheet sheet = Worksheet::fromCsv(text, "sheet");
    ASSERT_EQ(sheet.rows(), static_cast<std::int32_t>(rows.size())) << text;
    for (std::int32_t i = 1; i <= sheet.rows(); ++i) {
      const Row& row = rows[static_cast<std::size_t>(i - 1)];
      for (std::int32_t j = 1; j <= sheet.columns(); ++j) {
        const auto at = static_cast<std::size_t>(j - 1);
        EXPECT_EQ(sheet.at({i, j}), at < row.size() ? row[at] : Variant{}) << text << i << ',' << j;
      }
    }
  }
}

TEST(Worksheet, NamesTheLineOfWhatItCanNotRead) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"1\n2,\"open\n3\n", "s.csv line 2: a quoted field is not closed"},
      {"\"two\r\nlines\",\"x", "s.csv line 2: a quoted field is not closed"},
      {"1\r\n\"a\"b,2", "s.csv line 2: text after a closing quote"},
      {std::string("1\0,2", 4),
       "s.csv line 1: this is no UTF-8 text; save the sheet as CSV in UTF-8"},
      {"1\n2,\"0,5\"",
       "s.csv line 2: the comma in '0,5' (B2) may be a decimal comma; write a decimal point"},
      {"1;2\n1,250;3\n",
       "s.csv line 2: the comma in '1,250' (A2) may be a decimal comma; write a decimal point"},
      {"", "'s.csv' is empty"},
      {"\xEF\xBB\xBF", "'s.csv' is empty"},
  };
  for (const auto& [text, message] : cases) {
    try {
      Worksheet::fromCsv(text, "s.csv");
      ADD_FAILURE() << "read: " << text;
    } catch (const SheetError& error) {
      EXPECT_EQ(error.what(), message);
    }
  }
}

TEST(Worksheet, KeepsWhatIsWantedOnly) {
  const std::vector<Block> wanted{{{2, 2}, {2, 2}}, {{3, 2}, {Block::endOfSheet, 2}}};
  const Worksheet sheet = Worksheet::fromCsv("1,2,\"0,5\"\n3,4,5\n6,7\n\n8,9\n", "sheet", wanted);
  const std::vector<Variant> second{{}, 4, 7, {}, 9};
  for (std::int32_t row = 1; row <= 5; ++row) {
    EXPECT_EQ(sheet.at({row, 1}), Variant{}) << row;
    EXPECT_EQ(sheet.at({row, 2}), second[static_cast<std::size_t>(row - 1)]) << row;
    EXPECT_EQ(sheet.at({row, 3}), Variant{}) << row;
  }
  EXPECT_EQ(absoluteAddress(sheet.ended(wanted[1])), "$B$3:$B$5");
}

TEST(Text, IsEscapedAndCommasAreJudged) {
  EXPECT_EQ(escaped("a\x1b[31m\n\t\x7f\xc2\x9b"), "a\\x1b[31m\\n\\t\\x7f\\xc2\\x9b");
  EXPECT_EQ(escaped("\xc3\xa9 \xe2\x86\x92 \xed\xa0\x80 \xff \xc3"),
            "\xc3\xa9 \xe2\x86\x92 \\xed\\xa0\\x80 \\xff \\xc3");
  for (const char* good : {"1", "-1,250", "$12,345,678.5e3", "(1,000)"})
    EXPECT_TRUE(commasMarkThousands(good)) << good;
  for (const char* bad : {"2,5", "0,125", "1234,567", "1,2500", "1,250,5", ",5"})
    EXPECT_FALSE(commasMarkThousands(bad)) << bad;
}

TEST(Reference, ReadsAddressesInEitherForm) {
  const std::vector<std::pair<const char*, const char*>> good{
      {"B3", "$B$3"},
      {"$b$3", "$B$3"},
      {"a2:A200", "$A$2:$A$200"},
      {"C9:$A1", "$A$1:$C$9"},
      {"Z1:AA1", "$Z$1:$AA$1"},
      {"XFD1048576", "$XFD$1048576"},
      {"A1:A1", "$A$1"},
      {"ZZ1:AAA1", "$ZZ$1:$AAA$1"},
      {"C:$c", "$C$1:$C$2147483647"},
      {"B3:C", "$B$3:$C$2147483647"},
  };
  for (const auto& [text, address] : good) {
    const auto block = parseReference(text);
    ASSERT_TRUE(block) << text;
    EXPECT_EQ(absoluteAddress(*block), address);
  }
  for (const char* text : {"", "B", "3", "3B", "B0", "B3:", ":B3", "B3+1", " B3", "B-3", "$$B3",
                           "B3:C4:D5", "ABCDEF1", "A1234567890", "Sheet1!A1"}) {
    EXPECT_FALSE(parseReference(text)) << text;
  }
}

TEST(Range, HasTheMembersOfAWorksheetRange) {
  const Worksheet sheet = Worksheet::fromCsv("1,2,3\n4,x\n#N/A,8,9\n", "sheet");

  const Variant cell = range(sheet, "B2");
  EXPECT_EQ(get(cell, "value"), Variant("x"));
  EXPECT_EQ(get(cell, "ADDRESS"), Variant("$B$2"));
  EXPECT_EQ(get(cell, "Count"), Variant(1));
  EXPECT_TRUE(get(cell, "Application").isObject());

  const Variant block = range(sheet, "B1:C3");
  EXPECT_EQ(get(block, "Address"), Variant("$B$1:$C$3"));
  EXPECT_EQ(get(block, "Count"), Variant(6));
  const Variant values = get(block, "Value");
  EXPECT_EQ(values.upperBound(1), 3);
  EXPECT_EQ(values.upperBound(2), 2);
  EXPECT_EQ(values.at(1, 2), Variant(3));
  EXPECT_TRUE(values.at(2, 2).isEmpty());  // beyond the end of its row
  EXPECT_EQ(values.at(3, 1), Variant(8));

  EXPECT_EQ(get(get(block, "Cells", {3}), "Address"), Variant("$B$2"));  // row by row
  EXPECT_EQ(get(get(block, "Cells", {6}), "Value"), Variant(9));
  EXPECT_EQ(get(get(block, "Cells", {3, 1}), "Value"), Variant(8));
  EXPECT_EQ(get(get(block, "Cells"), "Count"), Variant(6));
  EXPECT_EQ(get(range(sheet, "A3"), "Value"), Variant::error(2042));
}

TEST(Range, RaisesForWhatItDoesNotHave) {
  const Worksheet sheet = Worksheet::fromCsv("1,2\n3,4\n", "sheet");
  const Variant block = range(sheet, "A1:B2");
  struct Case {
    const char* member;
    std::vector<Variant> arguments;
    int fault;
  };
  const std::vector<Case> cases{
      {"Rows", {}, fault::unknownMember},       {"Value", {1}, fault::unknownMember},
      {"Cells", {0}, fault::subscript},         {"Cells", {5}, fault::subscript},
      {"Cells", {1e300}, fault::subscript},     {"Cells", {std::nan("")}, fault::subscript},
      {"Cells", {1, 3}, fault::subscript},      {"Cells", {"x"}, fault::typeMismatch},
      {"Cells", {1, 1, 1}, fault::invalidCall},
  };
  for (const auto& [member, arguments, expected] : cases) {
    EXPECT_EQ(faultOf([&, &m = member, &a = arguments] { static_cast<void>(get(block, m, a)); }),
              expected)
        << member;
  }
}

}  // namespace
}  // namespace palvex::terminal
