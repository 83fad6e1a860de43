#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "FakeRange.h"
#include "Fault.h"
#include "families/m_Histogram.h"
#include "laws/Histogram.h"

namespace palvex::m_Histogram {
namespace {

const Variant none = "none";
const std::string raw = "Raw Data";
const std::string counts = "Data and Counts (2 cols)";
const std::string given = "Bins and Counts (3 cols)";
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct Built {
  std::string fault;
  Arrays arrays;
};

Built build(const Variant& range, const Variant& configuration) {
  Built built;
  auto& [density, table] = built.arrays;
  built.fault = CreateHistogramArrays(range, configuration, density, table);
  return built;
}

/// A gap between 1 and 2, an empty bin from 4 to 5, and empty bins outside.
Arrays gappy() {
  return build(block(3, {4, 5, 0, 0, 1, 2, -3, -1, 0, 2, 4, 4, 5, 6, 2, 7, 8, 0}), given).arrays;
}

TEST(Histogram, LayoutsBecomeBins) {
  const struct {
    const char* what;
    std::shared_ptr<FakeRange> range;
    std::string layout;
    Table table;
  } cases[] = {
      // Sturges: 3 bins; Freedman and Diaconis: 3 / (2 1.5 / 4^(1/3)) = 1.6, so 2.
      {"raw", block(1, {4, 1, 3, 2}), raw, {{1, 2, .25}, {2, 3, .5}, {3, 4, 1}}},
      {"raw, several columns with blanks",
       block(3, {4, "", 3, {}, 2, "1"}),
       raw,
       {{1, 2, .25}, {2, 3, .5}, {3, 4, 1}}},
      {"one value, often", block(1, {7, 7, 7}), raw, {{7, 7, 1}}},
      {"neighbouring doubles", block(1, {1, 1 + 0x1p-52}), raw, {{1, 1 + 0x1p-52, 1}}},
      {"values and counts",
       block(2, {4, 1, 1, 2, 2, 1}),
       counts,
       {{.5, 1.5, .5}, {1.5, 3, .75}, {3, 5, 1}}},
      {"equal values merge, outer empty ones go, inner ones stay",
       block(2, {9, 0, 4, 1, 1, 1, 2, {}, {}, "", 1, 2, 0, 0}),
       counts,
       {{.5, 1.5, .75}, {1.5, 3, .75}, {3, 5, 1}}},
      {"one value that counts", block(2, {9, 0, 4, 3}), counts, {{4, 4, 1}}},
      {"given bins in any order, with a gap",
       block(3, {5, 6, 3, 0, 2, 1, 2, 3, ""}),
       given,
       {{0, 2, .25}, {2, 3, .25}, {5, 6, 1}}},
      {"cells without an array",
       std::make_shared<FakeRange>(std::vector<Variant>{4, 1, 1, 1}),
       counts,
       {{-.5, 2.5, .5}, {2.5, 5.5, 1}}},
      {"a single cell", cell(3), raw, {{3, 3, 1}}},
  };
  for (const auto& c : cases) {
    const Built built = build(c.range, c.layout);
    EXPECT_EQ(built.fault, "") << c.what;
    EXPECT_EQ(built.arrays.table, c.table) << c.what;
    const auto& [density, table] = built.arrays;
    ASSERT_EQ(density.size(), 3 * table.size()) << c.what;
    double before = 0;
    for (std::size_t i = 0; i < table.size(); ++i) {
      const auto& [lower, upper, cumulative] = table[i];
      EXPECT_EQ(density[3 * i], lower) << c.what;
      EXPECT_EQ(density[3 * i + 1], upper) << c.what;
      const double expected = lower == upper ? 1 : (cumulative - before) / (upper - lower);
      EXPECT_DOUBLE_EQ(density[3 * i + 2], expected) << c.what;
      before = cumulative;
    }
  }
}

TEST(Histogram, RawDataChooseTheNumberOfBins) {
  std::vector<Variant> values;
  for (int i = 0; i < 100; ++i) values.emplace_back(i);
  const auto bins = [&] { return build(block(1, values), raw).arrays.table.size(); };
  EXPECT_EQ(bins(), 8);  // Sturges; the other rule has 5
  values.emplace_back(1000);
  EXPECT_EQ(bins(), 47);  // Freedman and Diaconis: 1000 / (2 50 / 101^(1/3)) = 46.6
  values.emplace_back(1e9);
  EXPECT_EQ(bins(), 1000);
  values.assign(100, 5);
  values.emplace_back(6);
  EXPECT_EQ(bins(), 8);  // no spread between the quartiles: Sturges
}

TEST(Histogram, BadDataGiveOneSentence) {
  const Variant errorCell = Variant::error(2042);
  const std::string noNumber = "Non-numeric value in the data range.";
  const std::string negative = "Counts can not be negative.";
  const std::string edges = "Upper bin edge must be greater than lower bin edge.";
  const struct {
    std::shared_ptr<FakeRange> range;
    Variant layout;
    std::string fault;
  } cases[] = {
      {block(1, {errorCell}), "raw data", "Unrecognized data configuration type"},
      {block(1, {1}), {}, "Unrecognized data configuration type"},
      {block(1, {1}), cell(raw + " "), "Unrecognized data configuration type"},
      {block(3, {1, 2, 3}), counts, "Data range must have 2 columns."},
      {block(2, {errorCell, 2}), given, "Data range must have 3 columns."},
      {cell(1), counts, "Data range must have 2 columns."},
      {block(1, {{}, ""}), raw, "No data"},
      {cell({}), raw, "No data"},
      {block(2, {{}, ""}), counts, "No data"},
      {block(1, {1, errorCell, "x"}), raw, "Error in cell value for Data Range."},
      {block(1, {1, "x", errorCell}), raw, noNumber},
      {block(1, {1, nan}), raw, noNumber},
      {block(1, {1, infinity}), raw, noNumber},
      {block(1, {1, Variant::missing()}), raw, noNumber},
      {block(1, {1, cell(1)}), raw, noNumber},
      {block(2, {{}, 1}), counts, noNumber},
      {block(2, {1, "many"}), counts, noNumber},
      {block(2, {1, -1, "x", 1}), counts, negative},
      {block(2, {1, infinity}), counts, negative},
      {block(3, {1, 1, 1}), given, edges},
      {block(3, {2, 1, 1, 0, 1, -1}), given, edges},
      {block(3, {0, 1, -1, 2, 1, 1}), given, negative},
      {block(3, {0, 2, 1, 1, 3, 1}), given, "Overlap in histogram bins."},
      {block(3, {0, 2, 1, 0, 1, 1}), given, "Overlap in histogram bins."},
      {block(3, {0, 1, 0, 2, 3, {}}), given, "No data"},
      {block(2, {0, 0, 1, 0}), counts, "No data"},
  };
  for (const auto& c : cases) EXPECT_EQ(build(c.range, c.layout).fault, c.fault);
  EXPECT_EQ(build(block(1, {1, 2}), cell(raw)).fault, "");
}

TEST(Histogram, AFailedBuildLeavesTheArrays) {
  Arrays arrays = gappy();
  DensityArray& density = arrays.density;
  Table& table = arrays.table;
  EXPECT_NE(CreateHistogramArrays(block(1, {1, "x"}), raw, density, table), "");
  // Edges, widths and densities beyond the doubles are arithmetic faults.
  const auto fails = [&](const Variant& range, const std::string& layout) {
    return faultNumber([&] { return CreateHistogramArrays(range, layout, density, table); });
  };
  EXPECT_EQ(fails(block(1, {-1e308, 1e308}), raw), 6);
  EXPECT_EQ(fails(block(2, {0, 1, 1.7e308, 1}), counts), 6);
  EXPECT_EQ(fails(block(3, {0, 5e-324, 1}), given), 6);
  EXPECT_EQ(fails(block(2, {0, 1e308, 1, 1e308}), counts), 6);
  EXPECT_EQ(fails(1, raw), 13);
  auto silent = block(1, {1});
  silent->failingRead = {{"Value", 1}};
  const auto fault = faultOf([&] { return CreateHistogramArrays(silent, raw, density, table); });
  ASSERT_TRUE(fault);
  EXPECT_EQ(fault->number(), 1004);
  EXPECT_TRUE(
      fault->source().starts_with("host\r\nin palvex.m_Histogram.CreateHistogramArrays at line "));
  EXPECT_EQ(density, gappy().density);
  EXPECT_EQ(table, gappy().table);
}

TEST(Histogram, ManyCellsAreReadAtOnce) {
  std::vector<Variant> values;
  std::mt19937_64 random(7);
  for (int i = 0; i < 100'000; ++i) values.emplace_back(std::normal_distribution{10., 2.}(random));
  const auto range = block(1, values);
  const Arrays arrays = build(range, raw).arrays;
  EXPECT_EQ(range->reads, 1);
  EXPECT_NEAR(HistogramCDF(10, arrays.table), .5, .01);
}

TEST(Histogram, DensityAndProbability) {
  const Arrays a = gappy();
  const struct {
    double x, density, probability;
  } cases[] = {{-infinity, 0, 0}, {-2, 0, 0},    {0, .25, 0},     {.5, .25, .125},
               {1, 0, .25},       {1.5, 0, .25}, {2, .25, .25},   {3, .25, .5},
               {4, 0, .75},       {4.5, 0, .75}, {5, .25, .75},   {5.5, .25, .875},
               {6, 0, 1},         {8, 0, 1},     {infinity, 0, 1}};
  for (const auto& c : cases) {
    EXPECT_EQ(HistogramPDF(c.x, a.density, none, none), c.density) << c.x;
    EXPECT_EQ(HistogramCDF(c.x, a.table), c.probability) << c.x;
  }
  const Arrays last = build(block(3, {0, 1, 1, 1, 3, 1}), given).arrays;
  EXPECT_EQ(HistogramPDF(1, last.density, none, none), .25);  // a left edge belongs to its bin
  EXPECT_EQ(HistogramPDF(3, last.density, none, none), .25);  // so does the last right edge
}

TEST(Histogram, QuantilesAndDraws) {
  const Table table = gappy().table;
  const struct {
    double p;
    Variant ltl, utl;
    double value;
  } cases[] = {
      {0, none, none, 0},     {-1, none, none, 0},
      {.125, none, none, .5}, {.25, none, none, 1},  // the left end of a flat stretch
      {.5, none, none, 3},    {.75, none, none, 4},
      {1, none, none, 6},     {2, none, none, 6},
      {.5, 2, 4, 3},          {0, 1.5, none, 2},  // not in the gap
      {1, 1.5, none, 6},      {1, none, 1.5, 1},
      {0, 4.5, none, 5},      {.5, 5, 1, .99999999999999978},  // reversed: two equal pieces
      {.25, 5, 1, .5},        {.75, 5, 1, 5.5},
      {1, 5, 1, 6},           {.5, 1.8, 1.2, 3},  // nothing lies between: all is kept
  };
  for (const auto& c : cases)
    EXPECT_DOUBLE_EQ(HistogramVAL(c.p, table, c.ltl, c.utl), c.value) << c.p;
  EXPECT_EQ(faultNumber([&] { return HistogramVAL(0, table, 2, -2); }), 6);  // none below -2
}

TEST(Histogram, OneValueIsAPointMass) {
  const auto [density, table] = build(cell(3), raw).arrays;
  EXPECT_EQ(HistogramPDF(3, density, none, none), 1);
  EXPECT_EQ(HistogramPDF(3, density, none, none, 2), 1);
  EXPECT_EQ(HistogramPDF(3, density, 4, none), 0);
  EXPECT_EQ(HistogramPDF(std::nextafter(3, 4), density, none, none), 0);
  EXPECT_EQ(HistogramCDF(std::nextafter(3, 2), table), 0);
  EXPECT_EQ(HistogramCDF(3, table), 1);
  for (const double p : {0., .5, 1.}) EXPECT_EQ(HistogramVAL(p, table, 5, 4), 3);
}

TEST(Histogram, ADrawStaysOnItsSideOfAGap) {
  // The probability that belongs to p rounds to just beyond the piece that the limits keep.
  const Table two = build(block(3, {0, 1, 3, 2, 3, 2}), given).arrays.table;
  const Table three = build(block(3, {0, 1, 1, 2, 3, 5, 4, 5, 4}), given).arrays.table;
  EXPECT_EQ(HistogramVAL(1, two, .1, 1.5), 1);
  EXPECT_EQ(HistogramVAL(1.5, two, .1, 1.5), 1);
  EXPECT_EQ(HistogramVAL(.2, three, 4, 1), 1);
}

TEST(Histogram, ThePriorPointKeepsNarrowBinsVisible) {
  // A spike of density 50 in [1, 1.01), 0.25 before and 0.125 after it, a gap, 0.0625 at the end.
  const auto density =
      build(block(3, {0, 1, 4, 1, 1.01, 8, 1.01, 2.01, 2, 4, 6, 2}), given).arrays.density;
  const struct {
    double x;
    Variant prior, ltl, utl;
    double shown;
  } cases[] = {
      {2, .5, none, none, 50},     {2, {}, none, none, .125},
      {2, 3, none, none, .125},                            // a prior point that is not before x
      {2, 1.01, none, none, .125},                         // the spike ends there
      {3, .5, none, none, 50},                             // x in a gap
      {2, .5, 1.5, none, .125},                            // the spike is cut away
      {1.0, .5, none, 1.0, 50},    {2, .5, none, 1.5, 0},  // x is cut away
      {5, .5, 4.5, 1.5, 50},                               // reversed, the spike in the lower piece
      {2, .5, 1.5, 1.5, 50},                               // equal limits cut nothing
      {5, 1.5, 4.5, 1.75, .125},   {5, 1.5, 4.5, 1.5, .0625},
      {7, .5, none, none, 0},  // outside the data
  };
  for (const auto& c : cases)
    EXPECT_NEAR(HistogramPDF(c.x, density, c.ltl, c.utl, c.prior), c.shown, 1e-12)
        << c.x << " after " << c.prior.toText();
}

TEST(Histogram, RandomDataHoldTheIdentities) {
  std::mt19937_64 random(3);
  std::uniform_real_distribution<double> uniform;
  for (int round = 0; round < 300; ++round) {
    const std::int32_t columns = 1 + round % 3;
    const auto rows = static_cast<int>(random() % 60) + 2;
    const double scale = std::pow(10, 40 * uniform(random) - 20);
    std::vector<Variant> cells;
    double edge = -uniform(random) * rows;
    for (int i = 0; i < rows; ++i) {
      const double lower = edge += random() % 2 == 0 ? 0 : uniform(random);
      const double upper = edge += uniform(random) + .001;
      const double count = i < 2 ? 1 : static_cast<double>(random() % 4);
      if (columns == 1) cells.insert(cells.end(), {upper * scale});
      if (columns == 2) cells.insert(cells.end(), {upper * scale, count});
      if (columns == 3) cells.insert(cells.end(), {lower * scale, upper * scale, count});
    }
    const auto layout = layouts[static_cast<std::size_t>(columns - 1)];
    const auto [fault, arrays] = build(block(columns, cells), layout);
    ASSERT_EQ(fault, "");
    const auto& [density, table] = arrays;
    double area = 0;
    for (std::size_t i = 0; i < table.size(); ++i) {
      area += density[3 * i + 2] * (table[i][1] - table[i][0]);
      EXPECT_TRUE(i == 0 || table[i][0] >= table[i - 1][1]);
    }
    EXPECT_NEAR(area, 1, 1e-13);
    const double least = HistogramINV(0, table);
    const double greatest = HistogramINV(1, table);
    for (int i = 0; i < 50; ++i) {
      const double p = uniform(random);
      EXPECT_NEAR(HistogramCDF(HistogramINV(p, table), table), p, 1e-11);
      const double a = least + (greatest - least) * uniform(random);
      const double b = least + (greatest - least) * uniform(random);
      if (a == b || laws::Histogram(density).keepsNothing({a, b})) continue;
      const double drawn = HistogramVAL(p, table, a, b);
      const double slack = 1e-13 * (greatest - least);
      if (a < b) {
        EXPECT_GE(drawn, a - slack);
        EXPECT_LE(drawn, b + slack);
      } else {
        EXPECT_TRUE(drawn <= b + slack || drawn >= a - slack);
      }
    }
  }
}

TEST(Histogram, FaultsOfTheEvaluation) {
  const Arrays a = gappy();
  const auto expectFault = [](int number, const char* routine, auto&& call) {
    const auto fault = faultOf(call);
    ASSERT_TRUE(fault) << routine;
    EXPECT_EQ(fault->number(), number) << routine;
    EXPECT_NE(fault->source().find("in palvex.m_Histogram." + std::string(routine) + " at line "),
              std::string::npos);
  };
  expectFault(9, "HistogramPDF", [] { return HistogramPDF(0, {}, none, none); });
  expectFault(9, "HistogramCDF", [] { return HistogramCDF(0, {}); });
  expectFault(9, "HistogramINV", [] { return HistogramINV(0, {}); });
  expectFault(9, "HistogramVAL", [] { return HistogramVAL(0, {}); });
  expectFault(6, "HistogramPDF", [&] { return HistogramPDF(nan, a.density, none, none); });
  expectFault(6, "HistogramCDF", [&] { return HistogramCDF(nan, a.table); });
  expectFault(6, "HistogramINV", [&] { return HistogramINV(nan, a.table); });
  expectFault(6, "HistogramVAL", [&] { return HistogramVAL(nan, a.table, 1, none); });
}

}  // namespace
}  // namespace palvex::m_Histogram
