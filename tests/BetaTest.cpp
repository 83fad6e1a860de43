#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>

#include "Fault.h"
#include "families/m_Beta.h"

namespace palvex::m_Beta {
namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
const double nan = std::nan("");

Tails ratio(double a, double b, double x, double y) {
  Tails tails{};
  std::int16_t ierr = -1;
  bratio(a, b, x, y, tails.lower, tails.upper, ierr);
  EXPECT_EQ(ierr, 0) << a << ' ' << b << ' ' << x << ' ' << y;
  return tails;
}

/// Uniform and, in the exponent, log-uniform random numbers.
class Random {
 public:
  double uniform(double low, double high) {
    return std::uniform_real_distribution(low, high)(engine_);
  }
  double logUniform(double low, double high) {
    return std::exp(uniform(std::log(low), std::log(high)));
  }

 private:
  std::mt19937_64 engine_{708};
};

TEST(BetaRatio, AgreesWithArbitraryPrecision) {
  std::ifstream data(PALVEX_TEST_DATA "/beta_ratio.txt");
  std::string line;
  int points = 0;
  while (std::getline(data, line)) {
    ++points;
    std::istringstream fields(line);
    double a = 0, b = 0, u = 0;
    std::string side;
    std::array<double, 2> tail{}, conditioning{};
    fields >> a >> b >> u >> side >> tail[0] >> tail[1] >> conditioning[0] >> conditioning[1];
    ASSERT_TRUE(fields) << line;
    const Tails tails = side == "x" ? ratio(a, b, u, 1 - u) : ratio(a, b, 1 - u, u);
    for (const std::size_t i : {0u, 1u}) {
      const double k = conditioning[i];
      double allowed = k <= 100 ? 2e-14 : 1e-12 + 4e-16 * k;
      if (tail[i] < 1e-300) allowed = 1e-8;
      EXPECT_NEAR((i == 0 ? tails.lower : tails.upper) / tail[i], 1, allowed) << i << ' ' << line;
    }
  }
  EXPECT_GT(points, 3200);
}

TEST(BetaRatio, Identities) {
  Random random;
  for (int i = 0; i < 2000; ++i) {
    const double a = random.logUniform(1e-3, 300);
    const double b = random.logUniform(1e-3, 300);
    const double x = i % 2 == 0 ? random.uniform(0, 1) : random.logUniform(1e-9, 1);
    const double y = 1 - x;
    const Tails tails = ratio(a, b, x, y);
    SCOPED_TRACE(testing::Message() << a << ' ' << b << ' ' << x);
    EXPECT_NEAR(tails.lower + tails.upper, 1, 3e-16);
    if (tails.lower < 1e-290) continue;
    const Tails mirrored = ratio(b, a, y, x);
    EXPECT_NEAR(tails.lower, mirrored.upper, 1e-14 * tails.lower);

    const double power = std::exp(a * std::log(x) + b * std::log1p(-x) + std::lgamma(a + b) -
                                  std::lgamma(a) - std::lgamma(b));
    const double allowed = 1e-12 * (tails.lower + power / a);
    EXPECT_NEAR(tails.lower, ratio(a + 1, b, x, y).lower + power / a, allowed);
    EXPECT_NEAR(tails.lower, ratio(a, b + 1, x, y).lower - power / b, allowed + 1e-12 * power / b);
    EXPECT_NEAR(ratio(a + 1, b + 1, x, y).lower,
                x * ratio(a, b + 1, x, y).lower + y * ratio(a + 1, b, x, y).lower, 1e-12);
  }
}

TEST(BetaRatio, SymmetricInTheMiddle) {
  for (const double a : {1e-300, 1e-20, 1e-17, 0.01, 0.5, 1.0, 2.5, 39.0, 101.0, 1e6, 1e300, inf}) {
    const Tails tails = ratio(a, a, 0.5, 0.5);
    EXPECT_EQ(tails.lower, 0.5) << a;
    EXPECT_EQ(tails.upper, 0.5) << a;
  }
}

TEST(BetaRatio, ChecksInTheirOrder) {
  const struct {
    double a, b, x, y;
    int ierr;
    double w, w1;
  } cases[] = {
      {-1, 0, 2, 2, 1, 0, 0},
      {1, -1, 2, 2, 1, 0, 0},
      {nan, 1, 0.5, 0.5, 1, 0, 0},
      {0, 0, 2, 2, 2, 0, 0},
      {0, 1, -0.1, 2, 3, 0, 0},
      {1, 1, 1.1, 2, 3, 0, 0},
      {1, 1, nan, 0.5, 3, 0, 0},
      {1, 1, 0.5, 1.5, 4, 0, 0},
      {1, 1, 0.5, nan, 4, 0, 0},
      {0, 1, 0, 0.5, 5, 0, 0},
      {1, 1, 0.5, 0.5000000000000011, 5, 0, 0},
      {0, 1, 0, 1, 6, 0, 0},
      {2, 0, 1, 0, 7, 0, 0},
      {2, 0, 0, 1, 0, 0, 1},
      {0, 2, 1, 0, 0, 1, 0},
      {0, 2, 0.5, 0.5, 0, 1, 0},
      {2, 0, 0.5, 0.5, 0, 0, 1},
      {inf, 2, 0.9, 0.1, 0, 0, 1},
      {2, inf, 0.1, 0.9, 0, 1, 0},
      {inf, inf, 0.4, 0.6, 0, 0, 1},
      {inf, inf, 0.6, 0.4, 0, 1, 0},
      {1e-19, 3e-19, 0.3, 0.7, 0, 0.75, 0.25},
  };
  for (const auto& c : cases) {
    Tails tails{9, 9};
    std::int16_t ierr = -1;
    bratio(c.a, c.b, c.x, c.y, tails.lower, tails.upper, ierr);
    SCOPED_TRACE(testing::Message() << c.a << ' ' << c.b << ' ' << c.x << ' ' << c.y);
    EXPECT_EQ(ierr, c.ierr);
    EXPECT_EQ(tails.lower, c.w);
    EXPECT_EQ(tails.upper, c.w1);
  }
}

TEST(BetaRatio, AnyArgumentGivesTwoTails) {
  const std::vector<double> shapes{5e-324, 1e-300, 1e-100, 1e-17, 1e-15, 1e-8,  0.1,    0.5,
                                   1,      1.5,    7.99,   15,    39.5,  101,   1e4,    1e8,
                                   1e15,   1e17,   1e50,   1e100, 1e154, 1e300, 1.7e308};
  const std::vector<double> ends{5e-324, 1e-300, 1e-100, 1e-17, 1e-9, 0.01, 0.3, 0.499, 0.5};
  for (const double a : shapes) {
    for (const double b : shapes) {
      double previous = 0;
      for (const double x : ends) {
        const Tails tails = ratio(a, b, x, 1 - x);
        SCOPED_TRACE(testing::Message() << a << ' ' << b << ' ' << x);
        EXPECT_TRUE(tails.lower >= 0 && tails.lower <= 1);
        EXPECT_NEAR(tails.lower + tails.upper, 1, 3e-16);
        EXPECT_GE(tails.lower, previous * (1 - 1e-9));
        previous = tails.lower;
        const Tails mirrored = ratio(b, a, 1 - x, x);
        EXPECT_NEAR(mirrored.upper, tails.lower, 1e-9);
      }
    }
  }
}

TEST(BetaRatio, PreparedShapesGiveTheSameBits) {
  Random random;
  for (int i = 0; i < 300; ++i) {
    const double a = random.logUniform(1e-2, 1e4);
    const double b = random.logUniform(1e-2, 1e4);
    IncompleteBeta prepared(a, b);
    for (int j = 0; j < 20; ++j) {
      const double spread = std::sqrt(a * b / (a + b + 1)) / (a + b);
      double x = j % 2 == 0 ? random.uniform(0, 1) : a / (a + b) + random.uniform(-3, 3) * spread;
      x = std::clamp(x, 1e-9, 1 - 1e-9);
      const Tails kept = prepared(x, 1 - x);
      const Tails fresh = ratio(a, b, x, 1 - x);
      EXPECT_EQ(kept.lower, fresh.lower) << a << ' ' << b << ' ' << x;
      EXPECT_EQ(kept.upper, fresh.upper) << a << ' ' << b << ' ' << x;
    }
  }
}

TEST(Beta, Density) {
  EXPECT_NEAR(StdBetaPDF(0.25, 2, 3), 12 * 0.25 * 0.75 * 0.75, 1e-14);
  EXPECT_NEAR(StdBetaPDF(0.25, 0.5, 0.5), 1 / (M_PI * std::sqrt(0.1875)), 1e-14);
  EXPECT_EQ(StdBetaPDF(0, 2, 3), 0);
  EXPECT_EQ(faultNumber([] { return StdBetaPDF(0, 0.5, 2); }), 5);
  EXPECT_EQ(faultNumber([] { return StdBetaPDF(1, 2, 0.5); }), 5);
  EXPECT_EQ(faultNumber([] { return StdBetaPDF(nan, 2, 3); }), 6);
  EXPECT_EQ(faultNumber([] { return StdBetaPDF(0.5, inf, 3); }), 6);

  const struct {
    double x, alpha, beta, minimum, maximum;
    Variant ltl, utl;
    double density;
  } cases[] = {
      {3, 1, 1, 0, 10, "none", "none", 1},  // that of the unit interval, not 0.1
      {4, 2, 3, 2, 10, {}, {}, 12 * 0.25 * 0.75 * 0.75},
      {4, 2, 3, 2, 10, 4, 4, 12 * 0.25 * 0.75 * 0.75},
      {4, 2, 3, 2, 10, 4.1, {}, 0},
      {4, 2, 3, 2, 10, {}, "3.9", 0},
      {4, 2, 3, 2, 10, 5, 3, 0},
      {4, 2, 3, 2, 10, 8, 4, 12 * 0.25 * 0.75 * 0.75},
      {11, 2, 3, 2, 10, {}, {}, 0},
      {1, 2, 3, 2, 10, {}, {}, 0},
      {2, 2, 3, 2, 2, {}, {}, 0},
      {4, 0, 3, 2, 10, {}, {}, 0},
      {4, 2, nan, 2, 10, {}, {}, 0},
      {nan, 2, 3, 2, 10, {}, {}, 0},
  };
  for (const auto& c : cases) {
    EXPECT_NEAR(BetaPDF(c.x, c.alpha, c.beta, c.minimum, c.maximum, c.ltl, c.utl), c.density, 1e-14)
        << c.x << ' ' << c.alpha;
  }
  const auto fault = faultOf([] { return BetaPDF(2, 0.5, 3, 2, 10, {}, {}); });
  ASSERT_TRUE(fault);
  EXPECT_NE(fault->source().find("\r\nin palvex.m_Beta.StdBetaPDF at line "), std::string::npos);
  EXPECT_NE(fault->source().find("\r\nin palvex.m_Beta.BetaPDF at line "), std::string::npos);
  EXPECT_EQ(faultNumber([] { return BetaPDF(0, 2, 3, -1e308, 1e308, {}, {}); }), 6);
}

TEST(Beta, NoValueWithoutAMinimum) {
  using Double = std::numeric_limits<double>;
  for (const double minimum : {Double::quiet_NaN(), Double::infinity(), -Double::infinity()})
    EXPECT_EQ(faultNumber([&] { return BetaVAL(0.3, 2, 3, minimum, 1); }), fault::overflow);
}

TEST(Beta, CumulativeWithItsOddities) {
  const struct {
    double x, alpha, beta;
    bool upper;
    Variant result;
  } cases[] = {
      {0.5, 2, 1, false, -0.25},
      {0.5, 2, 1, true, 1.25},
      {0.5, 1, 2, false, 0.75},
      {0.5, 1, 2, true, 0.25},
      {0.25, 1, 1, false, 0.25},
      {3, 2, 1, false, -9.0},
      {3, 1, 2, false, -3.0},
      {0, 2, 3, false, 0.0},
      {1, 2, 3, true, 0.0},
      {-0.1, 2, 3, false, "input parameter -4 is out of range"},
      {1.1, 2, 3, true, "input parameter -4 is out of range"},
      {nan, 2, 3, false, "input parameter -4 is out of range"},
      {0.5, 0, 3, false, "input parameter -6 is out of range"},
      {0.5, nan, 3, false, "input parameter -6 is out of range"},
      {0.5, 2, -1, false, "input parameter -7 is out of range"},
      {0.5, inf, 3, false, 0.0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(BetaCDF(c.x, c.alpha, c.beta, c.upper), c.result)
        << c.x << ' ' << c.alpha << ' ' << c.beta;
  }
  EXPECT_NEAR(BetaCDF(0.5, 2, 3, false).toDouble(), 0.6875, 4e-16);
  EXPECT_NEAR(BetaCDF(0.5, 2, 3, true).toDouble(), 0.3125, 4e-16);
  EXPECT_EQ(faultNumber([] { return BetaCDF(2, 1, 2.5, false); }), 5);
  EXPECT_EQ(faultNumber([] { return BetaCDF(nan, 1, 2, false); }), 6);
  EXPECT_EQ(faultNumber([] { return BetaCDF(-0.5, 2.5, 1, false); }), 5);
}

/// Brent's zeroin on [0, 1] as its order is published, on the function itself.
struct Zeroin {
  double root = 0;
  int evaluations = 0;

  Zeroin(double p, double alpha, double beta, double tol) {
    double a = 0, fa = -p, b = 1, fb = 1 - p, c = b, fc = fb, d = 0, e = 0;
    for (;;) {
      if ((fb > 0) == (fc > 0) && fb != 0 && fc != 0) {
        c = a, fc = fa;
        d = e = b - a;
      }
      if (std::abs(fc) < std::abs(fb)) {
        a = b, b = c, c = a;
        fa = fb, fb = fc, fc = fa;
      }
      const double least = 0.5 * tol + 2.0e-12 * std::abs(b);
      const double half = 0.5 * (c - b);
      if (std::abs(half) <= least || fb == 0 || evaluations == 100) break;
      double p1 = 0, q1 = 0;
      const double s = fb / fa;
      if (a == c) {
        p1 = 2 * half * s;
        q1 = 1 - s;
      } else {
        const double q = fa / fc, r = fb / fc;
        p1 = s * (2 * half * q * (q - r) - (b - a) * (r - 1));
        q1 = (q - 1) * (r - 1) * (s - 1);
      }
      q1 = p1 > 0 ? -q1 : q1;
      p1 = std::abs(p1);
      const bool bisect = std::abs(e) < least || std::abs(fa) <= std::abs(fb) ||
                          2 * p1 >= 3 * half * q1 - std::abs(least * q1) ||
                          2 * p1 >= std::abs(e * q1);
      e = bisect ? half : d;
      d = bisect ? half : p1 / q1;
      a = b, fa = fb;
      b += std::abs(d) > least ? d : std::copysign(least, half);
      fb = BetaCDF(b, alpha, beta, false).toDouble() - p;
      ++evaluations;
    }
    root = b;
  }
};

TEST(Beta, PPFBETFollowsBrentsOrder) {
  Random random;
  double evaluations = 0;
  constexpr int draws = 3000;
  for (int i = 0; i < draws; ++i) {
    const double alpha = random.logUniform(0.05, 500);
    const double beta = random.logUniform(0.05, 500);
    const double p = random.uniform(0, 1);
    const double tol = i % 3 == 0 ? 1e-3 : 1e-8;
    const Zeroin model(p, alpha, beta, tol);
    std::int16_t ier = -1;
    double x = -1;
    PPFBET(p, alpha, beta, tol, ier, x);
    EXPECT_EQ(ier, 0);
    EXPECT_EQ(x, model.root) << p << ' ' << alpha << ' ' << beta;
    const double low = std::max(0.0, x - tol - 4e-12);
    const double high = std::min(1.0, x + tol + 4e-12);
    EXPECT_LE(BetaCDF(low, alpha, beta, false).toDouble(), p * (1 + 1e-13));
    EXPECT_GE(BetaCDF(high, alpha, beta, false).toDouble(), p * (1 - 1e-13));
    evaluations += model.evaluations;
  }
  EXPECT_LT(evaluations / draws, 15);
}

TEST(Beta, PPFBETCodes) {
  const struct {
    double p, alpha, beta, tol;
    int ier;
    double x;  // -1: not touched
  } cases[] = {
      {-0.1, 0, 3, 0, 3, -1},  {1.1, 2, 3, 1e-8, 3, -1},   {nan, 2, 3, 1e-8, 3, -1},
      {0.5, 0, 3, 0, 4, -1},   {0.5, 2, nan, 1e-8, 4, -1}, {0.5, 2, 3, 0.99e-8, 5, -1},
      {0.5, 2, 3, nan, 5, -1}, {0, 2, 3, 1e-8, 0, 0},      {1, 2, 3, 1e-8, 0, 1},
  };
  for (const auto& c : cases) {
    std::int16_t ier = -1;
    double x = -1;
    PPFBET(c.p, c.alpha, c.beta, c.tol, ier, x);
    EXPECT_EQ(ier, c.ier) << c.p << ' ' << c.alpha;
    EXPECT_EQ(x, c.x) << c.p << ' ' << c.alpha;
  }
}

TEST(Beta, Inverse) {
  const struct {
    double p, alpha, beta;
    bool upper;
    Variant result;
  } cases[] = {
      {0.25, 2, 1, false, 0.5},
      {0.75, 2, 1, true, 0.5},
      {0.75, 1, 2, false, 0.5},
      {0.25, 1, 1, false, 0.25},
      {0, 2, 3, false, 0.0},
      {1.5, 2, 3, false, "input error, p<0 OR p>1"},
      {1.5, 2, 3, true, "input error, p<0 OR p>1"},
      {nan, 2, 3, false, "input error, p<0 OR p>1"},
      {0.5, -2, 3, false, "P<=0 OR bayta<=0"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(BetaINV(c.p, c.alpha, c.beta, c.upper), c.result) << c.p << ' ' << c.alpha;
  }
  EXPECT_NEAR(BetaINV(0.6875, 2, 3, false).toDouble(), 0.5, 1e-8);
  EXPECT_NEAR(BetaINV(0.3125, 2, 3, true).toDouble(), 0.5, 1e-8);
  EXPECT_EQ(faultNumber([] { return BetaINV(-0.1, 3, 1, false); }), 5);
  EXPECT_EQ(faultNumber([] { return BetaINV(0.5, 0, 1, false); }), 11);
}

TEST(Beta, Values) {
  const auto quantile = [](double p) { return 2 + 8 * BetaINV(p, 2, 3, false).toDouble(); };
  const auto kept = [](double x) { return BetaCDF((x - 2) / 8, 2, 3, false).toDouble(); };
  const double f4 = kept(4);
  const double f6 = kept(6);
  const double split = f4 / (1 - f6 + f4);
  const struct {
    double p;
    Variant ltl, utl;
    double value;
  } cases[] = {
      {0.3, {}, {}, quantile(0.3)},
      {0, 4, 6, 2},
      {-1, {}, {}, 2},
      {nan, {}, {}, 2},
      {1, {}, {}, 10},
      {0.3, 4, {}, quantile(f4 + 0.3 * (1 - f4))},
      {0.3, "none", 6, quantile(0.3 * f6)},
      {0.3, 4, "6", quantile(f4 + 0.3 * (f6 - f4))},
      {0.3, 11, 6, quantile(0.3 * f6)},  // outside: cuts nothing
      {0.3, 4, 1, quantile(f4 + 0.3 * (1 - f4))},
      {0.9 * split, 6, 4, quantile(0.9 * f4)},
      {split + 0.4 * (1 - split), 6, 4, quantile(f6 + 0.4 * (1 - f6))},
  };
  for (const auto& c : cases) {
    EXPECT_NEAR(BetaVAL(c.p, 2, 3, 2, 10, c.ltl, c.utl), c.value, 1e-14) << c.p;
  }
  EXPECT_EQ(BetaVAL(0.5, 0, 3, 2, 10), 2);
  EXPECT_EQ(BetaVAL(0.5, 2, 3, 2, 2), 2);
  const auto fault = faultOf([] { return BetaVAL(1.5, 2, 3, 0, 1); });
  ASSERT_TRUE(fault);
  EXPECT_EQ(fault->number(), 13);
  EXPECT_NE(fault->source().find("\r\nin palvex.m_Beta.BetaVAL at line "), std::string::npos);
  EXPECT_EQ(faultNumber([] { return BetaVAL(0.5, 2, 3, -1e308, 1e308); }), 6);

  // Second shape 1: the negative probabilities of ordinary limits wrap the band.
  EXPECT_EQ(BetaVAL(0.25, 2, 1, 0, 1), 0.5);
  EXPECT_EQ(faultNumber([] { return BetaVAL(0.5, 3, 1, 0, 1, {}, 0.5); }), 5);
  const double lower = -0.25 * 0.25;
  const double upper = -0.75 * 0.75;
  const double c = upper / (1 - lower + upper);
  const double p = lower + (0.5 - c) * (1 - lower) / (1 - c);
  EXPECT_NEAR(BetaVAL(0.5, 2, 1, 0, 1, 0.25, 0.75), std::sqrt(p), 1e-15);
  EXPECT_EQ(faultNumber([] { return BetaVAL(0.5, 2, 1, 0, 1, 0, 1); }), 11);
}

struct Search {
  double p = 0.3, q = 0.7, x = 0.25, y = 0.75, a = 2, b = 3;
  std::int16_t status = 99;
  double bound = 99;

  void run(int which) { cdfbet(static_cast<std::int16_t>(which), p, q, x, y, a, b, status, bound); }
};

TEST(Beta, CdfbetChecksInTheirOrder) {
  const struct {
    int which;
    Search s;
    int status;
    double bound;
  } cases[] = {
      {0, {.p = -1}, -1, 1},
      {5, {.p = -1}, -1, 4},
      {2, {.p = -1, .q = 2}, -2, 0},
      {2, {.p = 2, .q = 2}, -2, 1},
      {2, {.q = -1}, -3, 0},
      {3, {.q = 2, .x = 2}, -3, 1},
      {1, {.p = 9, .x = -1}, -4, 0},
      {4, {.x = 2}, -4, 1},
      {1, {.x = 0.5, .y = -1}, -5, 0},
      {3, {.y = 2}, -5, 1},
      {2, {.x = 9, .y = 9, .a = 0}, -6, 0},
      {3, {.a = 0, .b = 0}, -7, 0},
      {1, {.a = -1, .b = 0}, -6, 0},
      {1, {.a = nan}, -6, 0},
      {2, {.p = 0.5, .q = 0.6}, 3, 1},
      {3, {.p = 0.5, .q = 0.6, .x = 0.5, .y = 0.6}, 3, 1},
      {1, {.x = 0.5, .y = 0.6}, 4, 1},
  };
  for (auto c : cases) {
    c.s.run(c.which);
    EXPECT_EQ(c.s.status, c.status);
    EXPECT_EQ(c.s.bound, c.bound) << c.status;
  }
}

TEST(Beta, CdfbetModes) {
  Search forward;
  forward.run(1);
  EXPECT_EQ(forward.status, 0);
  EXPECT_NEAR(forward.p, 1 - 0.75 * 0.75 * 0.75 * 1.75, 1e-15);
  EXPECT_NEAR(forward.q, 0.75 * 0.75 * 0.75 * 1.75, 1e-15);

  for (const auto& [p, q] : {std::pair{0.3, 0.7}, {0.7, 0.3}, {1e-20, 1.0}, {1.0, 1e-20}}) {
    Search s{.p = p, .q = q};
    s.run(2);
    EXPECT_EQ(s.status, 0);
    EXPECT_EQ(p <= q ? 1 - s.x : 1 - s.y, p <= q ? s.y : s.x);
    const Tails tails = ratio(2, 3, s.x, s.y);
    EXPECT_NEAR((p <= q ? tails.lower : tails.upper) / std::min(p, q), 1, 1e-7);
  }
  // The searches for a shape leave at the bound, or at 0 when the target is what a shape 0 gives.
  const struct {
    int which;
    Search s;
    int status;
    double bound, shape;
  } cases[] = {
      {3, {.p = 0.7, .q = 0.3}, 1, 1e-100, 1e-100},
      {3, {.p = 1, .q = 0}, 0, 99, 0},
      {4, {.p = 0.3, .q = 0.7}, 1, 1e-100, 1e-100},
      {4, {.p = 0, .q = 1}, 0, 99, 0},
  };
  for (auto c : cases) {
    c.s.run(c.which);
    EXPECT_EQ(c.s.status, c.status) << c.which;
    EXPECT_EQ(c.s.bound, c.bound) << c.which;
    EXPECT_EQ(c.which == 3 ? c.s.a : c.s.b, c.shape) << c.which;
  }
}

}  // namespace
}  // namespace palvex::m_Beta
