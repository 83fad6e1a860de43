#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "Fault.h"
#include "runtime/Arithmetic.h"
#include "runtime/Cells.h"
#include "runtime/MessageBox.h"
#include "runtime/NumericText.h"
#include "runtime/Object.h"
#include "runtime/Variant.h"

namespace palvex {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double largest = std::numeric_limits<double>::max();

TEST(Variant, TellsItsKind) {
  EXPECT_TRUE(Variant{}.isEmpty());
  EXPECT_TRUE(Variant::missing().isMissing());
  EXPECT_TRUE(Variant("2.5").isText());
  EXPECT_TRUE(Variant::error(2042).isError());
  EXPECT_TRUE(Variant(std::make_shared<Object>()).isObject());
  EXPECT_TRUE(Variant::array(3).isArray());
  for (const Variant& v :
       {Variant(2), Variant(true), Variant(Boolean(false)), Variant("2.5"), Variant('a')}) {
    EXPECT_TRUE(v.isNumeric());
  }
  for (const Variant& v :
       {Variant{}, Variant::missing(), Variant("abc"), Variant(nan), Variant(infinity),
        Variant::error(2042), Variant::array(1), Variant(std::make_shared<Object>())}) {
    EXPECT_FALSE(v.isNumeric());
  }
  static_assert(!std::is_constructible_v<Variant, int*> &&
                !std::is_constructible_v<Variant, std::nullptr_t>);
}

TEST(Variant, ConvertsOrRaisesTypeMismatch) {
  EXPECT_EQ(Variant(true).toDouble(), -1);
  EXPECT_EQ(Variant{}.toDouble(), 0);
  EXPECT_EQ(Variant("1,234.5").toDouble(), 1234.5);
  EXPECT_EQ(Variant{}.toText(), "");
  EXPECT_EQ(Variant(true).toText() + Variant(false).toText(), "TrueFalse");
  EXPECT_EQ(Variant(1e20).toText(), "1E+20");
  EXPECT_EQ(Variant::error(2042).errorCode(), 2042);
  for (const Variant& v : {Variant("abc"), Variant::missing(), Variant::error(2042),
                           Variant::array(1), Variant(std::make_shared<Object>())}) {
    EXPECT_EQ(faultNumber([&] { return v.toDouble(); }), fault::typeMismatch);
    EXPECT_TRUE(v.isText() || faultNumber([&] { return v.toText(); }) == fault::typeMismatch);
  }
  EXPECT_EQ(faultNumber([] { return Variant(2).toObject(); }), fault::typeMismatch);
  EXPECT_EQ(faultNumber([] { return Variant(std::shared_ptr<Object>()).toObject(); }),
            fault::typeMismatch);
  EXPECT_EQ(faultNumber([] { return Variant(2042).errorCode(); }), fault::typeMismatch);
}

TEST(Variant, ComparesKindAndContent) {
  EXPECT_NE(Variant(2), Variant("2"));
  EXPECT_NE(Variant(-1), Variant(true));
  EXPECT_EQ(Variant::missing(), Variant::missing());
  EXPECT_EQ(Variant::array(2, 3), Variant::array(2, 3));
  EXPECT_NE(Variant::array(2, 3), Variant::array(3, 2));
}

TEST(Variant, ArraysAreOneBasedAndCheckedAndCopied) {
  Variant table = Variant::array(2, 3);
  table.at(2, 3) = "last";
  Variant copy = table;
  copy.at(2, 3) = 1;
  EXPECT_EQ(table.at(2, 3), Variant("last"));
  EXPECT_EQ(table.upperBound(1), 2);
  EXPECT_EQ(table.upperBound(2), 3);
  EXPECT_EQ(Variant::array(4).upperBound(), 4);
  for (const auto& [row, column] : {std::pair{0, 1}, {3, 1}, {1, 0}, {2, 4}})
    EXPECT_EQ(faultNumber([&, i = row, j = column] { return table.at(i, j); }), fault::subscript);
  EXPECT_EQ(faultNumber([&] { return table.at(1); }), fault::subscript);
  for (const int i : {0, 5})
    EXPECT_EQ(faultNumber([&] { return Variant::array(4).at(i); }), fault::subscript);
  for (const int dimension : {0, 3})
    EXPECT_EQ(faultNumber([&] { return table.upperBound(dimension); }), fault::subscript);
  EXPECT_EQ(faultNumber([] { return Variant::array(4).lowerBound(2); }), fault::subscript);
  EXPECT_EQ(faultNumber([] { return Variant::array(-1); }), fault::subscript);
  EXPECT_EQ(faultNumber([] { return Variant::array(-1, 1); }), fault::subscript);
  EXPECT_EQ(faultNumber([] { return Variant::array(1, 0); }), fault::subscript);
  EXPECT_EQ(faultNumber([] { return Variant(5).at(1); }), fault::typeMismatch);
}

TEST(NumericText, DefaultRule) {
  const struct {
    const char* text;
    std::optional<double> value;
  } cases[] = {
      {"2.5", 2.5},
      {" 7 ", 7},
      {"\t-.5\r\n", -0.5},
      {"+3.", 3},
      {"1,234", 1234},
      {"1,2,3.5", 123.5},
      {"1e5", 1e5},
      {"1D-3", 1e-3},
      {"2E+2", 200},
      {"&H1f", 31},
      {"&o17", 15},
      {"&hff", 255},
      {"&O7", 7},
      {"$5", 5},
      {"-$5", -5},
      {"$-5", -5},
      {"5$", 5},
      {"(5)", -5},
      {"($1,000)", -1000},
      {"1e-400", 0},
      {"0.000e999", 0},
      {"-0", 0},
      {"4.9e-324", 4.9406564584124654e-324},
      {"1.7976931348623157e308", largest},
      {"", {}},
      {" ", {}},
      {"inf", {}},
      {"nan", {}},
      {"-Infinity", {}},
      {"1e400", {}},
      {"1.8e308", {}},
      {"abc", {}},
      {"1 2", {}},
      {"--1", {}},
      {"1e", {}},
      {"e5", {}},
      {".", {}},
      {",1", {}},
      {"1,", {}},
      {"1,,2", {}},
      {"1.2,3", {}},
      {"&H", {}},
      {"&Hxyz", {}},
      {"&H1g", {}},
      {"&H10000000000000000", {}},
      {"&Z1", {}},
      {"\x01"
       "5",
       {}},
      {"1e+x", {}},
      {"(+5)", {}},
      {"(5", {}},
      {"(-5)", {}},
      {"$", {}},
      {"$5$", {}},
      {"0x10", {}},
      {"1e+", {}},
      {"()", {}},
      {"5 $", {}},
      {"1.5.2", {}},
  };
  for (const auto& [text, value] : cases)
    EXPECT_EQ(defaultNumericText(text), value) << '"' << text << '"';
}

TEST(NumericText, BeyondTheRangeIsJudgedByTheWholeNumber) {
  const std::string zeros(400, '0');
  EXPECT_EQ(defaultNumericText("1" + zeros + "e-5"), std::nullopt);
  EXPECT_EQ(defaultNumericText("0." + zeros + "1e+5"), 0);
  EXPECT_EQ(defaultNumericText("0." + zeros + "1e+401"), 1);
  EXPECT_EQ(defaultNumericText("1e-99999999999"), 0);
  EXPECT_EQ(defaultNumericText("1e99999999999"), std::nullopt);
}

TEST(NumericText, AnInstalledRuleReplacesTheDefault) {
  setNumericTextRule([](std::string_view text) -> std::optional<double> {
    if (text == "two and a half") return 2.5;
    return {};
  });
  const bool replaced = Variant("two and a half").isNumeric() && !Variant("2.5").isNumeric();
  setNumericTextRule(defaultNumericText);
  EXPECT_TRUE(replaced);
  EXPECT_TRUE(Variant("2.5").isNumeric());
}

TEST(NumberText, ShortestDigits) {
  const struct {
    double value;
    const char* text;
  } cases[] = {{0, "0"},
               {-0.0, "0"},
               {0.1, "0.1"},
               {-2.5, "-2.5"},
               {1e20, "1E+20"},
               {1e-7, "1E-07"},
               {1e15, "1E+15"},
               {999999999999999, "999999999999999"},
               {0.0001, "0.0001"},
               {1.5e-5, "1.5E-05"},
               {largest, "1.7976931348623157E+308"},
               {5e-324, "5E-324"},
               {1.0 / 3, "0.3333333333333333"}};
  for (const auto& [value, text] : cases) EXPECT_EQ(numberText(value), text);
}

TEST(Arithmetic, RaisesWhatTheRunTimeRaises) {
  const struct {
    const char* what;
    int fault;
    double (*compute)();
  } cases[] = {
      {"finite", 0, [] { return checked(largest); }},
      {"overflow", 6, [] { return checked(largest * 2); }},
      {"NaN", 6, [] { return checked(nan); }},
      {"1/0", 11, [] { return Divide(1, 0); }},
      {"0/0", 6, [] { return Divide(0, 0); }},
      {"overflowed/0", 6, [] { return Divide(HUGE_VAL, 0); }},
      {"1e300/1e-300", 6, [] { return Divide(1e300, 1e-300); }},
      {"ln 0", 5, [] { return Log(0); }},
      {"ln -1", 5, [] { return Log(-1); }},
      {"ln inf", 6, [] { return Log(infinity); }},
      {"ln NaN", 6, [] { return Log(nan); }},
      {"sqrt -1", 5, [] { return Sqr(-1); }},
      {"sqrt -inf", 6, [] { return Sqr(-infinity); }},
      {"sqrt -0", 0, [] { return Sqr(-0.0); }},
      {"sqrt inf", 6, [] { return Sqr(infinity); }},
      {"exp 710", 6, [] { return Exp(710); }},
      {"exp -800", 0, [] { return Exp(-800); }},
      {"exp -inf", 6, [] { return Exp(-infinity); }},
      {"-8^(1/3)", 5, [] { return Power(-8, 1.0 / 3); }},
      {"-8^3", 0, [] { return Power(-8, 3); }},
      {"0^-1", 5, [] { return Power(0, -1); }},
      {"0^0", 0, [] { return Power(0, 0); }},
      {"10^400", 6, [] { return Power(10, 400); }},
      {"1^inf", 6, [] { return Power(1, infinity); }},
  };
  for (const auto& c : cases) EXPECT_EQ(faultNumber(c.compute), c.fault) << c.what;
}

// Three traced routines, one calling the next; the innermost fails in one of two statements.
constexpr auto firstFault = __LINE__ + 3;
double innermost(double x, Line caller = Line::here()) try {
  if (x > 0) {
    return Divide(x, 0);
  }
  return Log(x);
} catch (RuntimeError& error) {
  error.leave("m_Test.innermost", caller);
}
constexpr auto secondFault = firstFault + 2;

double middle(double x, Line caller = Line::here()) try {
  return 2 * innermost(x);
} catch (RuntimeError& error) {
  error.leave("m_Test.middle", caller);
}
constexpr auto middleCall = __LINE__ - 4;

double outermost(double x, Line caller = Line::here()) try {
  return 1 + middle(x);
} catch (RuntimeError& error) {
  error.leave("m_Test.outermost", caller);
}
constexpr auto outermostCall = __LINE__ - 4;

TEST(RuntimeError, NamesTheFailingStatementOfEveryRoutineItPasses) {
  const auto trace = [](int line) {
    return "palvex\r\nin palvex.m_Test.innermost at line " + std::to_string(line) +
           "\r\nin palvex.m_Test.middle at line " + std::to_string(middleCall) +
           "\r\nin palvex.m_Test.outermost at line " + std::to_string(outermostCall);
  };
  const auto division = faultOf([] { return outermost(1); });
  ASSERT_TRUE(division);
  EXPECT_EQ(division->number(), fault::divisionByZero);
  EXPECT_EQ(division->description(), "Division by zero");
  EXPECT_EQ(division->source(), trace(firstFault));

  const auto logarithm = faultOf([] { return outermost(0); });
  ASSERT_TRUE(logarithm);
  EXPECT_EQ(logarithm->number(), fault::invalidCall);
  EXPECT_EQ(logarithm->source(), trace(secondFault));
}

TEST(RuntimeError, KeepsWhatItWasGiven) {
  constexpr auto made = __LINE__ + 1;
  const RuntimeError host(1004, "", "sheet");
  const auto left = faultOf([&] {
    try {
      throw host;
    } catch (RuntimeError& error) {
      error.addToDescription("more");
      error.leave("m_Test.routine");
    }
  });
  ASSERT_TRUE(left);
  EXPECT_EQ(host.source(), "sheet");
  EXPECT_EQ(host.description(), "");
  EXPECT_EQ(left->source(), "sheet\r\nin palvex.m_Test.routine at line " + std::to_string(made));
  EXPECT_EQ(left->description(), "\r\nmore");
  const std::string text = left->what();
  for (const char* part : {"1004", "more", "m_Test.routine"}) EXPECT_NE(text.find(part), text.npos);
  static_assert(std::is_nothrow_copy_constructible_v<RuntimeError>);
}

class Thrower : public Object {
 protected:
  Variant doGet(std::string_view member, const std::vector<Variant>&) override {
    if (member == "own") throw RuntimeError(1004, "the sheet is closed", "host");
    if (member == "standard") throw std::out_of_range("no such cell");
    if (member == "memory") throw std::bad_alloc();
    throw 42;
  }
};

TEST(Object, AnyFailureArrivesAsARuntimeError) {
  Thrower object;
  const auto own = faultOf([&] { return object.get("own"); });
  EXPECT_EQ(own->number(), 1004);
  EXPECT_EQ(own->source(), "host");
  EXPECT_EQ(faultOf([&] { return object.get("standard"); })->description(), "no such cell");
  EXPECT_THROW(static_cast<void>(object.get("memory")),
               std::bad_alloc);  // the object's is no fault
  EXPECT_EQ(faultNumber([&] { return object.get("other"); }), fault::invalidCall);
  Object bare;
  EXPECT_EQ(faultNumber([&] { return bare.get("Value"); }), fault::unknownMember);
  EXPECT_TRUE(sameMember("Count2", "count2"));
  EXPECT_FALSE(sameMember("Count", "Counts"));
  EXPECT_EQ(RuntimeError(1004).description(), "Application-defined or object-defined error");
}

TEST(Cells, AnswerAsARangeDoes) {
  const std::array numbers{1.0, 2.0, 3.0, 4.0, 5.0, 6.0};
  Cells cells(numbers, 3);
  cells.at(2, 1) = "four";
  EXPECT_EQ(cells.get("count"), Variant(6));
  EXPECT_EQ(cells.get("Value").at(2, 3), Variant(6));
  EXPECT_EQ(cells.get("Cells", {4}).toObject()->get("Value"), Variant("four"));
  EXPECT_EQ(cells.get("Cells", {1, 3}).toObject()->get("Value"), Variant(3));
  EXPECT_TRUE(cells.get("Address").isText() && cells.get("Application").isObject());
  EXPECT_EQ(Cells(4, 2).rows() * Cells(1, 3).columns(), 12);

  const struct {
    const char* member;
    std::vector<Variant> arguments;
    int fault;
  } wrong[] = {
      {"Cells", {0}, 9},   {"Cells", {7}, 9},       {"Cells", {3, 1}, 9}, {"Cells", {1, 4}, 9},
      {"Cells", {nan}, 9}, {"Cells", {1, 1, 1}, 5}, {"Cells", {"x"}, 13}, {"Cells", {}, 438},
      {"Value", {1}, 438}, {"Rows", {}, 438},
  };
  for (const auto& c : wrong)
    EXPECT_EQ(faultNumber([&] { return cells.get(c.member, c.arguments); }), c.fault) << c.member;
  for (const auto& [row, column] : {std::pair{0, 1}, {3, 1}, {1, 0}, {1, 4}})
    EXPECT_EQ(faultNumber([&, i = row, j = column] { return cells.at(i, j); }), 9);
  for (const auto& [rows, columns] : {std::pair{0, 1}, {1, 0}})
    EXPECT_EQ(faultNumber([m = rows, n = columns] { return Cells(m, n), 0; }), 9);
  for (const int columns : {0, 4})
    EXPECT_EQ(faultNumber([&] { return Cells(numbers, columns), 0; }), 9);
  EXPECT_EQ(faultNumber([&] { return Cells(std::span(numbers).first(0)), 0; }), 9);
}

}  // namespace
}  // namespace palvex
