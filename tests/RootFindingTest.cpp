#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <thread>
#include <vector>

#include "Fault.h"
#include "numerics/m_RootFinding.h"

namespace palvex::m_RootFinding {
namespace {

using Function = std::function<double(double)>;

struct Search {
  std::vector<double> requests;
  std::int16_t status = 0;
  double x = 0;
  double xhi = 0;
  Boolean qleft, qhi;
};

constexpr std::size_t patience = 8;

Search searchBounded(double small, double big, double start, const Function& f) {
  dstinv(small, big, 0.5, 0.5, 5, 1e-50, 1e-8);
  Search s;
  s.x = start;
  double fx = 0;
  for (dinvr(s.status, s.x, fx, s.qleft, s.qhi); s.status == 1;
       dinvr(s.status, s.x, fx, s.qleft, s.qhi)) {
    s.requests.push_back(s.x);
    if (s.requests.size() == patience) break;
    fx = f(s.x);
  }
  return s;
}

Search searchBracket(double low, double high, double reltol, const Function& f) {
  dstzr(low, high, 1e-50, reltol);
  Search s;
  double fx = 0;
  double xlo = 0;
  for (dzror(s.status, s.x, fx, xlo, s.xhi, s.qleft, s.qhi); s.status == 1;
       dzror(s.status, s.x, fx, xlo, s.xhi, s.qleft, s.qhi)) {
    s.requests.push_back(s.x);
    if (s.requests.size() == 1000) break;
    fx = f(s.x);
  }
  s.x = xlo;
  return s;
}

TEST(RootFinding, ToleranceAndMonotoneTriple) {
  dstzr(0, 1, 1e-50, 1e-8);
  EXPECT_EQ(ftol(-4), 2e-8);
  EXPECT_EQ(ftol(0), 0.5e-50);
  EXPECT_TRUE(qxmon(1, 1, 1));
  EXPECT_FALSE(qxmon(2, 1, 3));
  EXPECT_FALSE(qxmon(1, 3, 2));
}

// The whole behaviour of the bounded search: f at both bounds, then at 0 whatever the start was.
// Below zero there the search goes down from 0, above zero up, with steps of 0; a sign change hands
// [0, 0] to the zero finder, which the shared label never resumes, so that f is asked for at 0 for
// ever.
TEST(RootFinding, BoundedSearchRequests) {
  const Function rising = [](double x) { return x - 2; };
  const Function falling = [](double x) { return 2 - x; };
  const Function positiveOutsideZero = [](double x) { return x == 0 ? -1.0 : 1.0; };
  const Function negativeOutsideZero = [](double x) { return x == 0 ? 1.0 : -1.0; };
  const Function identity = [](double x) { return x; };
  constexpr double lo = 1e-100;
  constexpr double hi = 1e100;
  const struct {
    const char* name;
    double small, big, start;
    const Function& f;
    std::vector<double> requests;  // the last one repeated until patience ends when status is 1
    std::int16_t status;
    bool qleft, qhi;
    double x;
  } cases[] = {
      {"rising", lo, hi, 5, rising, {lo, hi, 0, lo}, -1, true, false, lo},
      {"other start", lo, hi, 7e9, rising, {lo, hi, 0, lo}, -1, true, false, lo},
      {"falling", lo, hi, 5, falling, {lo, hi, 0, 0}, 1, false, false, 0},
      {"zero at 0", lo, hi, 5, identity, {lo, hi, 0}, 0, false, false, 0},
      {"crossing at small", lo, hi, 5, positiveOutsideZero, {lo, hi, 0, lo, 0}, 1, false, false, 0},
      {"0 inside, down", -5, 5, 1, rising, {-5, 5, 0, 0}, 1, false, false, 0},
      {"0 inside, up", -5, 5, 1, falling, {-5, 5, 0, 0}, 1, false, false, 0},
      {"negative bounds", -5, -1, -3, falling, {-5, -1, 0, -1}, -1, false, true, -1},
      {"crossing at big", -5, -1, -3, negativeOutsideZero, {-5, -1, 0, -1, 0}, 1, false, false, 0},
      {"negative, down", -5, -1, -3, rising, {-5, -1, 0, 0}, 1, false, false, 0},
      {"start on a bound", -5, 5, 5, identity, {-5, 5, 0}, 0, false, false, 0},
      {"start below", lo, hi, 0, rising, {}, 0, false, false, 0},
      {"start above", -5, 5, 6, rising, {}, 0, false, false, 6},
      {"start NaN", -5, 5, std::nan(""), rising, {}, 0, false, false, std::nan("")},
  };
  for (auto c : cases) {
    SCOPED_TRACE(c.name);
    if (c.status == 1) c.requests.resize(patience, c.requests.back());
    const Search s = searchBounded(c.small, c.big, c.start, c.f);
    EXPECT_EQ(s.requests, c.requests);
    EXPECT_EQ(s.status, c.status);
    EXPECT_EQ(bool{s.qleft}, c.qleft);
    EXPECT_EQ(bool{s.qhi}, c.qhi);
    if (std::isnan(c.x)) {
      EXPECT_TRUE(std::isnan(s.x));
    } else {
      EXPECT_EQ(s.x, c.x);
    }
  }
}

TEST(RootFinding, LabelIsShared) {
  searchBounded(1e-100, 1e100, 5, [](double x) { return x == 0 ? -1.0 : 1.0; });
  std::int16_t status = 1;
  double x = 7;
  double xlo = 8;
  double xhi = 9;
  Boolean qleft, qhi;
  dzror(status, x, 1, xlo, xhi, qleft, qhi);  // the bounded search left its point 6
  EXPECT_EQ(status, 1);
  EXPECT_EQ(x, 7);
  EXPECT_EQ(xlo, 8);
  EXPECT_EQ(xhi, 9);

  dstinv(-5, 5, 0.5, 0.5, 5, 1e-50, 1e-8);
  dstzr(1, 2, 1e-50, 1e-8);
  status = 0;
  dzror(status, x, 0, xlo, xhi, qleft, qhi);  // leaves point 1
  EXPECT_EQ(x, 1);
  dinvr(status, x, 0, qleft, qhi);
  EXPECT_EQ(x, 5);  // point 1 of the bounded search: f at big

  dinvr(status, x, -1, qleft, qhi);  // point 2
  dinvr(status, x, -1, qleft, qhi);  // point 3, downwards
  dinvr(status, x, 1, qleft, qhi);   // point 5, bracket
  status = 2;
  dinvr(status, x, 1, qleft, qhi);  // point 6 with another status than 1 ends the search
  EXPECT_EQ(status, 0);
  EXPECT_EQ(x, 0);
}

TEST(RootFinding, ResumeWithoutStart) {
  std::thread([] {
    std::int16_t status = 1;
    double x = 0, xlo = 0, xhi = 0;
    Boolean qleft, qhi;
    const auto fault = faultOf([&] { dinvr(status, x, 0, qleft, qhi); });
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->number(), 13);
    EXPECT_NE(fault->source().find("\r\nin palvex.m_RootFinding.dinvr at line "),
              std::string::npos);
    EXPECT_EQ(faultNumber([&] { dzror(status, x, 0, xlo, xhi, qleft, qhi); }), 13);
    EXPECT_EQ(faultNumber([&] { dstinv("none", 1, 1, 1, 1, 1, 1); }), 13);
  }).join();
}

struct Point {
  double x, f;
  bool operator==(const Point&) const = default;
};

/// Algorithm R called with its function: a, b, c, d as the publication names them.
struct Model {
  std::vector<double> requests;
  double root = 0, other = 0;
  bool crosses = false;

  Model(double low, double high, double reltol, const Function& f) {
    const auto at = [&](double x) {
      requests.push_back(x);
      return Point{x, f(x)};
    };
    Point b = at(low);
    Point a = at(high);
    if (b.f * a.f > 0) return;
    Point c = a;
    Point d{};
    int kept = 0;  // interpolations since c moved
    bool secant = true;
    for (;;) {
      if (std::abs(c.f) < std::abs(b.f)) {
        if (c.x != a.x) d = a;
        a = b;
        b = c;
        c = a;
      }
      double tolerance = 0.5 * std::max(1e-50, reltol * std::abs(b.x));
      const double half = (c.x + b.x) / 2 - b.x;
      if (std::abs(half) <= tolerance) break;
      double step = half;
      if (kept <= 3) {
        if (half < 0) tolerance = -tolerance;
        double p = (b.x - a.x) * b.f;
        double q = a.f - b.f;
        if (!secant) {
          const double nearSlope = (d.f - b.f) / (d.x - b.x);
          const double farSlope = (d.f - a.f) / (d.x - a.x);
          p *= farSlope;
          q = nearSlope * a.f - farSlope * b.f;
        }
        secant = false;
        if (p < 0) p = -p, q = -q;
        if (kept == 3) p += p;
        if (p == 0 || p <= q * tolerance) {
          step = tolerance;
        } else if (p < half * q) {
          step = p / q;
        }
      }
      d = a;
      a = b;
      b = at(b.x + step);
      if (c.f * b.f >= 0) {
        c = a;
        kept = 0;
      } else {
        kept = step == half ? 0 : kept + 1;
      }
    }
    root = b.x;
    other = c.x;
    crosses = (c.f >= 0) == (b.f <= 0) || b.f == 0;
  }
};

TEST(RootFinding, BracketRequestsFollowAlgorithmR) {
  const struct {
    const char* name;
    double low, high;
    Function f;
  } cases[] = {
      {"linear", -1, 4, [](double x) { return 3 * x - 2; }},
      {"falling", 0, 2, [](double x) { return std::cos(x); }},
      {"flat", -1, 1.5, [](double x) { return std::pow(x, 5) + 1e-9; }},
      {"steep", 0, 1, [](double x) { return std::exp(20 * x) - 1000; }},
      {"step", -1, 2, [](double x) { return x < 0.3 ? -1.0 : 1.0; }},
      {"underflowing product", -1, 1.5, [](double x) { return std::pow(x, 5); }},
      {"zero at the low end", 0, 1, [](double x) { return x; }},
      {"zero at the high end", 0, 1, [](double x) { return 1 - x; }},
      {"many decades", 1e-100, 1e3, [](double x) { return std::log(x) + 50; }},
  };
  for (const auto& c : cases) {
    for (const double reltol : {1e-8, 1e-15}) {
      SCOPED_TRACE(c.name);
      const Search s = searchBracket(c.low, c.high, reltol, c.f);
      const Model model(c.low, c.high, reltol, c.f);
      EXPECT_EQ(s.requests, model.requests);
      EXPECT_EQ(s.status, model.crosses ? 0 : -1);
      EXPECT_EQ(s.x, model.root);
      EXPECT_EQ(s.xhi, model.other);
      EXPECT_LE(c.f(s.x) * c.f(s.xhi), 0);
      EXPECT_LE(std::abs(s.x - s.xhi), 2 * ftol(s.x));
    }
  }
}

TEST(RootFinding, BracketWithoutCrossing) {
  const struct {
    double atLow, atHigh;
    bool qleft, qhi;
  } cases[] = {
      {-1, -2, true, false}, {-2, -1, false, false}, {1, 2, true, true}, {2, 1, false, true}};
  for (const auto& c : cases) {
    const Search s =
        searchBracket(0, 1, 1e-8, [&](double x) { return x == 0 ? c.atLow : c.atHigh; });
    EXPECT_EQ(s.requests, (std::vector<double>{0, 1}));
    EXPECT_EQ(s.status, -1);
    EXPECT_EQ(bool{s.qleft}, c.qleft);
    EXPECT_EQ(bool{s.qhi}, c.qhi);
  }
}

TEST(RootFinding, BracketFaults) {
  constexpr double huge = std::numeric_limits<double>::max();
  const auto number = [](double low, double high, const Function& f) {
    return faultNumber([&] { searchBracket(low, high, 1e-8, f); });
  };
  EXPECT_EQ(number(huge / 2, huge, [](double x) { return x == huge ? 1 : -1; }), 6);
  EXPECT_EQ(number(0, 1, [](double) { return std::nan(""); }), 6);
  EXPECT_EQ(number(0, 1, [](double x) { return x == 0 ? -HUGE_VAL : 1; }), 6);
}

}  // namespace
}  // namespace palvex::m_RootFinding
