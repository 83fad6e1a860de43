// The incomplete beta ratio with its checks, and the searches for one of its arguments (DCDFLIB).

#include <cmath>
#include <limits>

#include "families/m_Beta.h"
#include "numerics/m_RootFinding.h"

namespace palvex::m_Beta {

namespace {

constexpr double sumTolerance = 3 * std::numeric_limits<double>::epsilon();

bool isProbability(double p) {
  return p >= 0 && p <= 1;
}

/// Whether u + v differs from 1 by more than rounding.
bool missesOne(double u, double v) {
  return std::abs(((u + v) - 0.5) - 0.5) > sumTolerance;
}

Tails tailsAt(double x, double y, IncompleteBeta& ratio) {
  if (x <= 0) return {0, 1};
  if (y <= 0) return {1, 0};
  return ratio(x, y);
}

/// 0, or the status of the first of x, y, a, b that is out of range, unless it is the one sought.
std::int16_t rangeFault(std::int16_t which, double x, double y, double a, double b) {
  if (which != 2 && !isProbability(x)) return -4;
  if (which != 2 && !isProbability(y)) return -5;
  if (which != 3 && !(a > 0)) return -6;
  if (which != 4 && !(b > 0)) return -7;
  return 0;
}

}  // namespace

void bratio(double a, double b, double x, double y, double& w, double& w1, std::int16_t& ierr) {
  w = 0;
  w1 = 0;
  ierr = 0;
  if (!(a >= 0 && b >= 0)) {
    ierr = 1;
  } else if (a == 0 && b == 0) {
    ierr = 2;
  } else if (!isProbability(x)) {
    ierr = 3;
  } else if (!isProbability(y)) {
    ierr = 4;
  } else if (missesOne(x, y)) {
    ierr = 5;
  } else if (x == 0 && a == 0) {
    ierr = 6;
  } else if (x != 0 && y == 0 && b == 0) {
    ierr = 7;
  }
  if (ierr != 0) return;

  Tails both{0, 1};
  if (x != 0 && (y == 0 || a == 0)) {
    both = {1, 0};
  } else if (x != 0 && b != 0) {
    both = IncompleteBeta(a, b)(x, y);
  }
  w = both.lower;
  w1 = both.upper;
}

void cumbet(double x, double y, double a, double b, double& cum, double& ccum) {
  if (x <= 0 || y <= 0) {
    cum = x <= 0 ? 0 : 1;
    ccum = 1 - cum;
    return;
  }
  std::int16_t ierr = 0;
  bratio(a, b, x, y, cum, ccum, ierr);
}

std::int16_t cdfbet(double x, double y, IncompleteBeta& ratio, Tails& tails) noexcept {
  if (const auto fault = rangeFault(1, x, y, ratio.a(), ratio.b()); fault != 0) return fault;
  tails = tailsAt(x, y, ratio);
  return 0;
}

void cdfbet(std::int16_t which, double& p, double& q, double& x, double& y, double& a, double& b,
            std::int16_t& status, double& bound, Line caller) try {
  constexpr double absoluteTolerance = 1e-50;
  constexpr double relativeTolerance = 1e-8;
  constexpr double lowestShape = 1e-100;
  constexpr double highestShape = 1e100;
  const auto refuse = [&](int code, double violated) {
    status = static_cast<std::int16_t>(code);
    bound = violated;
  };
  if (which < 1) return refuse(-1, 1);
  if (which > 4) return refuse(-1, 4);
  if (which != 1 && !isProbability(p)) return refuse(-2, p > 1 ? 1 : 0);
  if (which != 1 && !isProbability(q)) return refuse(-3, q > 1 ? 1 : 0);
  if (const auto fault = rangeFault(which, x, y, a, b); fault != 0) {
    return refuse(fault, (fault == -4 && x > 1) || (fault == -5 && y > 1) ? 1 : 0);
  }
  if (which != 1 && missesOne(p, q)) return refuse(3, 1);
  if (which != 2 && missesOne(x, y)) return refuse(4, 1);

  status = 0;
  if (which == 1) {
    cumbet(x, y, a, b, p, q);
    return;
  }
  const bool byLower = p <= q;
  const auto excess = [&] {
    double cum = 0;
    double ccum = 0;
    cumbet(x, y, a, b, cum, ccum);
    return byLower ? cum - p : ccum - q;
  };
  double fx = 0;
  Boolean qleft;
  Boolean qhi;
  double lowest = 0;
  double highest = 1;
  if (which == 2) {
    double& sought = byLower ? x : y;
    double& other = byLower ? y : x;
    double low = 0;
    double high = 0;
    m_RootFinding::dstzr(0, 1, absoluteTolerance, relativeTolerance);
    for (;;) {
      m_RootFinding::dzror(status, sought, fx, low, high, qleft, qhi);
      other = 1 - sought;
      if (status != 1) break;
      fx = excess();
    }
  } else {
    double& sought = which == 3 ? a : b;
    lowest = lowestShape;
    highest = highestShape;
    sought = 5;
    m_RootFinding::dstinv(lowestShape, highestShape, 0.5, 0.5, 5, absoluteTolerance,
                          relativeTolerance);
    for (;;) {
      m_RootFinding::dinvr(status, sought, fx, qleft, qhi);
      if (status != 1) break;
      fx = excess();
    }
  }
  if (status == -1) refuse(qleft ? 1 : 2, qleft ? lowest : highest);
} catch (RuntimeError& error) {
  error.leave("m_Beta.cdfbet", caller);
}

}  // namespace palvex::m_Beta
