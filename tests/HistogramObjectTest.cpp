#include <gtest/gtest.h>

#include "FakeRange.h"
#include "Fault.h"
#include "engine/c_Distribution.h"

namespace palvex {
namespace {

class HistogramObject : public ::testing::Test {
 protected:
  HistogramObject() {
    d.distType("Histogram");
    d.param1 = data;
    d.param2 = "Bins and Counts (3 cols)";
  }

  std::string faultText() {
    std::string cause;
    const bool fine = d.ParamsOK(cause);
    EXPECT_EQ(fine, cause.empty());
    return cause;
  }

  std::shared_ptr<FakeRange> data = block(3, {0, 1, 1, 2, 3, 3});
  c_Distribution d;
};

TEST_F(HistogramObject, ChangedDataAreSeenAfterTheNextCheck) {
  EXPECT_EQ(faultNumber([&] { return d.pdf(.5); }), 9);  // no data before the first
  ASSERT_EQ(faultText(), "");
  EXPECT_EQ(d.pdf(.5), .25);
  EXPECT_EQ(d.cdf(2), .25);
  EXPECT_EQ(d.RandVal(.625), 2.5);
  data->cells[2] = 9;
  for (const bool live : {false, true}) {
    d.Dynamic = live;
    EXPECT_EQ(d.cdf(2), .25) << live;
    EXPECT_EQ(d.RandVal(.625), 2.5) << live;
  }
  d.Dynamic = false;
  ASSERT_EQ(faultText(), "");
  EXPECT_EQ(d.cdf(2), .75);
  data->cells[2] = "many";
  EXPECT_EQ(faultText(), "Non-numeric value in the data range.");
  EXPECT_EQ(d.cdf(2), .75);
}

TEST_F(HistogramObject, ParametersThatAreNoData) {
  for (const Variant& noRange : {Variant{}, Variant(3), Variant("Raw Data")}) {
    d.param1 = noRange;
    EXPECT_EQ(faultText(), "Please select the cells for the Data Range.");
  }
  d.param1 = data;
  d.param2 = cell("Bins and Counts (3 cols)");
  EXPECT_EQ(faultText(), "");
  for (const Variant& noLayout :
       {Variant("bins and counts (3 cols)"), Variant{}, Variant(2),
        Variant(std::make_shared<Object>()), Variant(std::shared_ptr<Object>())}) {
    d.param2 = noLayout;
    EXPECT_EQ(faultText(), "Unrecognized data configuration type");
  }
}

TEST_F(HistogramObject, ChecksAndDrawsAskTheHostOnlyForWhatTheyNeed) {
  d.ltl = .5;
  ASSERT_EQ(faultText(), "");
  EXPECT_EQ(data->reads, 4);  // three to recognise the range, one for the data
  EXPECT_EQ(d.RandVal(0), .5);
  EXPECT_EQ(d.pdf(.25), 0);
  EXPECT_EQ(d.pdf(.25, true), .25);
  EXPECT_EQ(data->reads, 4);
}

TEST_F(HistogramObject, LimitsThatKeepNothing) {
  data->cells = {-2, -1, 0, 0, 1, 1, 2, 3, 3, 3, 4, 0};
  const std::string nothing = "Truncation limits exclude all distribution values.  Please adjust.";
  const struct {
    Variant ltl, utl;
    bool keeps;
  } cases[] = {{{}, -1, false},
               {{}, -.5, false},
               {{}, 0, true},
               {3.5, {}, false},
               {2.5, {}, true},
               {1, 1.9, false},
               {1.2, 2, true},
               {1.9, 1.2, true},
               {5, -3, false},
               {3, {}, false},
               {.5, -3, true},
               {5, .5, true},
               {"-Infinity", "+Infinity", true}};
  for (const auto& c : cases) {
    d.ltl = c.ltl;
    d.utl = c.utl;
    EXPECT_EQ(faultText(), c.keeps ? "" : nothing) << c.ltl.toText() << ".." << c.utl.toText();
  }
}

}  // namespace
}  // namespace palvex
