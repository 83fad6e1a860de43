#pragma once

#include <array>
#include <optional>

namespace palvex::m_Beta {

/// A lower and an upper tail, which add to 1; the smaller one is the accurate one.
struct Tails {
  double lower;
  double upper;
};

/// x^a y^b / Beta(a, b) for y = 1 - x, with everything in it that depends on the shapes alone.
/// 1/Beta is scale_ exp(-logScale_), or for shapes from 8 on part of a form around the mean.
class BetaPower {
 public:
  BetaPower(double a, double b);

  /// x^a y^b / Beta(a, b)
  /// @param lambda  a - (a + b) x, of use for shapes from 8 on
  [[nodiscard]] double operator()(double x, double y, double lambda) const;
  /// For a shape below 8: x^a / (a Beta(a, b)), y^b / (b Beta(a, b)), and factor x^a y^b / Beta(a,
  /// b) for a factor that may be large where the power underflows.
  [[nodiscard]] double head(double x, double y) const;
  [[nodiscard]] double mirroredHead(double x, double y) const;
  [[nodiscard]] double scaled(double x, double y, double factor) const;

 private:
  [[nodiscard]] double exponent(double x, double y) const;

  double a_;
  double b_;
  double inverseA_;
  double inverseB_;
  bool aroundMean_;
  double scale_;
  double logScale_ = 0;
  double meanX_ = 0;  // a/(a + b)
  double meanY_ = 0;
};

/// I_x(a, b) for a >= 15 and b <= 1 as an asymptotic series of incomplete gamma ratios (bgrat).
class LargeShape {
 public:
  LargeShape(double a, double b);

  /// w + I_x(a, b), to the precision of the sum.
  [[nodiscard]] double addedTo(double w, double x, double y);

 private:
  double coefficient(std::size_t n);

  static constexpr std::size_t terms = 30;
  double b_;
  double nu_;
  double inverseGamma_;
  double logScale_;
  std::size_t known_ = 0;
  std::array<double, terms + 1> d_{};
};

/// Continued fraction of I_x(a, b) / (x^a y^b / Beta(a, b)) for a, b > 1 and x up to the mean
/// (bfrac). Its coefficients depend on the shapes alone but for x, x^2 and the distance from the
/// mean.
class ContinuedFraction {
 public:
  ContinuedFraction(double a, double b)
      : a_(a), b_(b), inverseMean_(1 + b / a), firstShare_(a / (a + 1)) {}

  /// @param lambda  a - (a + b) x, >= 0
  [[nodiscard]] double operator()(double x, double lambda);

 private:
  /// What steps n and n + 1 take from the shapes: a numerator is alpha (x / mean)^2, a denominator
  /// constant + slope x + share lambda.
  using Pair = std::array<double, 2>;
  struct Steps {
    Pair alpha;
    Pair constant;
    Pair slope;
    Pair share;
  };
  [[nodiscard]] Steps steps(double n) const;

  static constexpr int keptPairs = 20;
  double a_;
  double b_;
  double inverseMean_;
  double firstShare_;
  int known_ = 0;
  std::array<Steps, keptPairs> steps_;  // the first known_ ones
};

/// I_x(a, b) for a, b >= 15 and x little below the mean, as an asymptotic expansion (basym).
class AroundMean {
 public:
  AroundMean(double a, double b);

  /// @param lambda  a - (a + b) x, >= 0
  [[nodiscard]] double operator()(double lambda);

 private:
  void extend();

  static constexpr std::size_t terms = 22;
  double a_;
  double b_;
  double h_;   // the quotient of the shapes that is below 1
  double r1_;  // (b - a)/max(a, b)
  double w0_;
  double scale_;
  std::size_t known_ = 1;
  double powerOfH_ = 1;
  double sumOfPowers_ = 1;
  double powerOfW0_;
  std::array<double, terms> a0_{};
  std::array<double, terms> c_{};
  std::array<double, terms> d_{};
  std::array<double, terms> coefficient_{};  // d_n w0^n
};

/// The incomplete beta ratio I_x(a, b) of two shapes. What depends on the shapes alone is worked
/// out once, when an evaluation first needs it; the results are the same bit for bit as those of a
/// fresh object. After A. R. DiDonato, A. H. Morris, Algorithm 708, ACM Trans. Math. Softw. 18
/// (1992) 360-373, with its choice of method but for shapes above 1, where the continued fraction
/// takes the place of the series: at most 75 steps where the other shape is below 40.
///
/// For K the greatest of |v f'(v)/f| over x, a and b, the relative error of each tail is at most
/// 5e-14 where K <= 100, 1e-12 + 4e-16 K elsewhere, 1e-8 for tails below 1e-280, for shapes from
/// 1e-3 to 1e6. Seen where K <= 100: 1.4e-14 with a shape up to 1 (series and bgrat), 2.6e-14 for
/// the continued fraction, 1.6e-14 around the mean of shapes above 100; elsewhere a third of the
/// bound.
class IncompleteBeta {
 public:
  /// @param a, b  > 0, infinity included
  IncompleteBeta(double a, double b) : a_(a), b_(b), sides_{Side{a, b}, Side{b, a}} {}

  /// Both tails at x. Never NaN, never endless.
  /// @param x  0 < x < 1
  /// @param y  1 - x
  [[nodiscard]] Tails operator()(double x, double y);

  [[nodiscard]] double a() const noexcept { return a_; }
  [[nodiscard]] double b() const noexcept { return b_; }

 private:
  /// I_x(a, b) or, for the other side, I_y(b, a).
  struct Side {
    double a;
    double b;
    std::optional<BetaPower> power = {};
    std::optional<LargeShape> large = {};
    std::optional<ContinuedFraction> fraction = {};
    std::optional<AroundMean> aroundMean = {};
  };
  static Tails smallShapes(Side& side, double x, double y);
  static Tails largeShapes(Side& side, double x, double y, double lambda);

  double a_;
  double b_;
  std::array<Side, 2> sides_;
};

}  // namespace palvex::m_Beta
