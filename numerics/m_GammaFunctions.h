#pragma once

#include <array>
#include <cstdint>

#include "runtime/RuntimeError.h"

/// The gamma function, the incomplete gamma ratios and their inverse.
///
/// An argument outside a stated domain fails in the arithmetic: error 5, 6 or 11, with the routine
/// in the trace.
namespace palvex::m_Gamma {

// The complete gamma functions: A. R. DiDonato, A. H. Morris, Algorithm 654, ACM Trans. Math.
// Softw. 13 (1987) 318-319.

/// The gamma function of a. 0 where it cannot be computed: a = 0, a negative integer, |a| >= 1000,
/// a result beyond the double range. Error 6 for a NaN. Relative error 6e-15 for 0 < a < 15, 3e-16
/// (1 + |ln gamma(a)|) beyond. For a negative a above -15 it is up to 3e-6: reduction by the floor
/// leaves an argument outside the interval of the approximation.
double gamma(double a, Line caller = Line::here());

/// ln gamma(a) for a > 0. Relative error 1.6e-14 on (2.25, 10), where one factor more than needed
/// is split off when the fraction of a - 1.25 exceeds one half; 2.4e-15 elsewhere.
double gamln(double a, Line caller = Line::here());

/// ln gamma(1 + a) for -0.2 <= a <= 1.25. Relative error 2.5e-15, also around its zeros at 0 and 1;
/// 4e-14 down to a = -0.25.
double gamln1(double a, Line caller = Line::here());

/// 1/gamma(1 + a) - 1 for -0.5 <= a <= 1.5. Relative error 2.5e-15, also around its zeros at 0
/// and 1.
double gam1(double a, Line caller = Line::here());

/// exp(-x) x^a / gamma(a) for a > 0, x > 0; 0 for a >= 20 when x/a underflows.
/// Relative error 6e-15 plus 2.3e-16 times a |ln x| + x for a < 20, and times a rlog(x/a) + |x - a|
/// beyond: x/a is rounded.
double rcomp(double a, double x, Line caller = Line::here());

// The incomplete gamma ratios and their inverse: Algorithm 654 as well; theory in A. R. DiDonato,
// A. H. Morris, ACM Trans. Math. Softw. 12 (1986) 377-393.

/// P(a, x), Q(a, x) and exp(-x) x^a / gamma(a), which is x times the density.
struct Ratio {
  double p;        ///< P(a, x)
  double q;        ///< Q(a, x) = 1 - P(a, x)
  double density;  ///< exp(-x) x^a / gamma(a)
};

/// The incomplete gamma ratios of one shape, with all that depends on the shape alone. The routines
/// below take one of these or a plain shape, with the same results bit for bit; with a prepared one
/// they take less time. No call changes it: threads may share it.
class IncompleteGamma {
 public:
  /// @param a  any number; the members are meaningful for a > 0 and finite
  explicit IncompleteGamma(double a) noexcept;

  /// The shape.
  [[nodiscard]] double a() const noexcept { return a_; }
  /// 1/gamma(1 + a) - 1 for a < 1.
  [[nodiscard]] double gam1() const noexcept { return gam1_; }

  /// The ratios at x >= 0, with the accuracy of `gratio`.
  [[nodiscard]] Ratio operator()(double x) const;
  /// exp(-x) x^a / gamma(a) at x >= 0: relative error 2e-14 as long as |x - a| <= 100, however
  /// large its logarithm is.
  [[nodiscard]] double power(double x) const;
  /// Natural logarithm of the power at x > 0, also where the power itself overflows or underflows.
  [[nodiscard]] double logPower(double x) const noexcept;
  /// The x with P(a, x) = p and Q(a, x) = q: by `gaminv`, or by a bracketed search where that fails
  /// or is not certain. Relative error 1e-13 max(1, K), K being the condition number in the smaller
  /// of p and q, for shapes from 1e-3 to 1e7 and probabilities from 1e-300 on. 0 where it is below
  /// the normal doubles; infinite for q = 0; NaN for what is no shape or probability.
  /// @param p, q  >= 0, p + q = 1
  [[nodiscard]] double quantile(double p, double q) const noexcept;

 private:
  [[nodiscard]] Ratio smallShape(double x) const;
  [[nodiscard]] Ratio temme(double x, double y, double bell) const;

  double a_;
  double gam1_ = 0;
  double factor_ = 0;  // the power is factor_ exp(-x) x^a, or factor_ exp(-a rlog(x/a)) from 30 on
  std::array<double, 14> temme_{};  // Temme's expansion in sqrt(2 rlog(x/a)), from 30 on
};

/// P(a, x) into `ans` and Q(a, x) = 1 - P into `qans`: the probability below and above x of the
/// gamma distribution with shape a.
///
/// Each has the relative error 2e-14 where its condition number in x is at most 100 (6e-15 is the
/// largest error found), and 5e-13 for shapes from 1e-3 to 1e7 and tails down to 1e-300; tails
/// below 1e-304 are 0. A product a x that underflows gives the limits (0, 1) for x <= a and (1, 0)
/// for x > a.
/// @param shape  >= 0
/// @param x      >= 0; shape and x not both 0 and not both infinite. An argument
///               outside its range, or NaN, gives ans = 2 and leaves qans as it is
/// @param ind    the accuracy asked for: 0 full, 1 six digits, others three. All get the full one.
void gratio(const IncompleteGamma& shape, double x, double& ans, double& qans, std::int16_t ind);
/// The same for a plain shape, for a single evaluation.
inline void gratio(double a, double x, double& ans, double& qans, std::int16_t ind) {
  gratio(IncompleteGamma(a), x, ans, qans, ind);
}

/// The x with P(a, x) = p and Q(a, x) = q.
///
/// Relative error 3e-15 (1 + K), K being the larger of the quantile's condition numbers in a and in
/// the smaller of p and q.
/// @param shape  as in gratio
/// @param x      receives the solution; 0 where there is none
/// @param x0     where to start when > 0; otherwise the routine finds a start itself
/// @param p,q    probabilities with p + q = 1; error 5 when one is negative
/// @param ierr   the number of iterations, or why there is no solution: -2 a <= 0 (or NaN), -3 x
///              would underflow, -4 p + q is not 1, -6 20 iterations were not enough (the latest x
///              is given), -7 the iteration left the positive numbers, -8 x is given, but not
///              certain: p or q below 2.2e-298, or x beyond the double range
void gaminv(const IncompleteGamma& shape, double& x, double x0, double p, double q,
            std::int16_t& ierr, Line caller = Line::here());
/// The same for a plain shape, for a single evaluation.
inline void gaminv(double a, double& x, double x0, double p, double q, std::int16_t& ierr,
                   Line caller = Line::here()) {
  gaminv(IncompleteGamma(a), x, x0, p, q, ierr, caller);
}

}  // namespace palvex::m_Gamma
