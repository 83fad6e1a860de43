#include "numerics/m_RootFinding.h"

#include <cmath>

#include "numerics/m_MathUtil.h"
#include "runtime/Arithmetic.h"

namespace palvex::m_RootFinding {

using m_MathUtil::dmax1;
using m_MathUtil::dmin1;
using m_MathUtil::sign;

namespace {

struct Settings {
  double small, big;
  double absstp, relstp, stpmul;
  double abstol, reltol;
  double xxlo, xxhi;
};

/// Algorithm R: b is the best point, the root lies between b and c, a was b before, d was a before.
struct ZeroFinder {
  double a, b, c, d;
  double fa, fb, fc, fd;
  double mb, w, tol;
  std::int16_t ext;  // interpolation steps since c last moved
  bool first;

  void newBracket() noexcept;
  void makeBest() noexcept;
  [[nodiscard]] bool converged();
  void step();
};

thread_local Settings settings;
thread_local std::int16_t label;  // 0: never set
thread_local ZeroFinder finder;

/// The point at which a call resumes.
std::int16_t resumePoint(Line line = Line::here()) {
  if (label == 0) raise(fault::typeMismatch, line);
  return label;
}

void request(std::int16_t resumeAt, std::int16_t& status) noexcept {
  label = resumeAt;
  status = 1;
}

void fail(std::int16_t& status, Boolean& qleft, Boolean& qhi, bool left, bool high) noexcept {
  status = -1;
  qleft = left;
  qhi = high;
}

void ZeroFinder::newBracket() noexcept {
  c = a;
  fc = fa;
  ext = 0;
}

void ZeroFinder::makeBest() noexcept {
  if (!(std::abs(fc) < std::abs(fb))) return;
  if (c != a) {
    d = a;
    fd = fa;
  }
  a = b;
  fa = fb;
  b = c;
  fb = fc;
  c = a;
  fc = fa;
}

bool ZeroFinder::converged() {
  tol = ftol(b);
  mb = checked(c + b) * 0.5 - b;
  return std::abs(mb) <= tol;
}

/// Moves b by the step that the last points suggest.
void ZeroFinder::step() {
  if (ext > 3) {
    w = mb;
  } else {
    tol = sign(tol, mb);
    double p = checked((b - a) * fb);
    double q = 0;
    if (first) {
      q = checked(fa - fb);
      first = false;
    } else {
      const double fdb = Divide(fd - fb, d - b);
      const double fda = Divide(fd - fa, d - a);
      p = checked(fda * p);
      q = checked(fdb * fa - fda * fb);
    }
    if (p < 0) {
      p = -p;
      q = -q;
    }
    if (ext == 3) p = checked(p * 2);
    if (p == 0 || p <= checked(q * tol)) {
      w = tol;
    } else {
      w = p < checked(mb * q) ? p / q : mb;
    }
  }
  d = a;
  fd = fa;
  a = b;
  fa = fb;
  b = checked(b + w);
}

}  // namespace

void dstinv(const Variant& small, const Variant& big, const Variant& absstp, const Variant& relstp,
            const Variant& stpmul, const Variant& abstol, const Variant& reltol, Line caller) try {
  settings.small = small.toDouble();
  settings.big = big.toDouble();
  settings.absstp = absstp.toDouble();
  settings.relstp = relstp.toDouble();
  settings.stpmul = stpmul.toDouble();
  settings.abstol = abstol.toDouble();
  settings.reltol = reltol.toDouble();
} catch (RuntimeError& error) {
  error.leave("m_RootFinding.dstinv", caller);
}

void dinvr(std::int16_t& status, double& x, double fx, Boolean& qleft, Boolean& qhi,
           Line caller) try {
  // A call starts with every working value at 0 or false, whatever earlier calls made of them.
  constexpr double origin = 0;  // the start value, and both ends of the interval searched
  const auto bracket = [&] {
    double xlo = 0;
    double xhi = 0;
    dzror(status, x, fx, xlo, xhi, qleft, qhi);
    if (status == 1) return request(6, status);
    x = xlo;
    status = 0;
  };

  if (status < 1) {
    if (!qxmon(settings.small, x, settings.big)) return;
    x = settings.small;
    return request(1, status);
  }
  switch (resumePoint()) {
    case 1:
      x = settings.big;
      return request(2, status);
    case 2:
      // f at small counts as 0 here, so that no value of f at big excludes a root between.
      x = origin;
      return request(3, status);
    case 3:
      if (fx == 0) {
        status = 0;
      } else if (fx > 0) {
        x = dmin1(origin, settings.big);
        request(4, status);
      } else {
        x = dmax1(origin, settings.small);
        request(5, status);
      }
      return;
    case 4:  // upwards, f taken to fall
      if (!(fx <= 0)) {
        if (origin >= settings.big) {
          x = settings.big;
          return fail(status, qleft, qhi, false, true);
        }
        x = origin;
        return request(4, status);
      }
      dstzr(origin, origin, settings.abstol, settings.reltol);
      status = 0;
      return bracket();
    case 5:  // downwards
      if (!(fx >= 0)) {
        if (origin <= settings.small) {
          x = settings.small;
          return fail(status, qleft, qhi, true, false);
        }
        x = origin;
        return request(5, status);
      }
      dstzr(origin, origin, settings.abstol, settings.reltol);
      status = 0;
      return bracket();
    case 6:
      if (status == 1) return bracket();
      x = origin;
      status = 0;
      return;
    default:
      return;
  }
} catch (RuntimeError& error) {
  error.leave("m_RootFinding.dinvr", caller);
}

void dstzr(double xlo, double xhi, double abstol, double reltol) noexcept {
  settings.xxlo = xlo;
  settings.xxhi = xhi;
  settings.abstol = abstol;
  settings.reltol = reltol;
}

void dzror(std::int16_t& status, double& x, double fx, double& xlo, double& xhi, Boolean& qleft,
           Boolean& qhi, Line caller) try {
  if (status < 1) {
    xlo = settings.xxlo;
    xhi = settings.xxhi;
    finder.b = xlo;
    x = finder.b;
    return request(1, status);
  }
  switch (resumePoint()) {
    case 1:
      finder.fb = fx;
      finder.a = settings.xxhi;
      x = finder.a;
      return request(2, status);
    case 2:
      if (finder.fb < 0 && fx < 0) return fail(status, qleft, qhi, fx < finder.fb, false);
      if (finder.fb > 0 && fx > 0) return fail(status, qleft, qhi, fx > finder.fb, true);
      finder.fa = fx;
      finder.first = true;
      finder.newBracket();
      break;
    case 3:
      finder.fb = fx;
      if (checked(finder.fc * finder.fb) >= 0) {
        finder.newBracket();
      } else {
        finder.ext = finder.w == finder.mb ? std::int16_t{0} : std::int16_t(finder.ext + 1);
      }
      break;
    default:
      return;
  }

  finder.makeBest();
  xlo = finder.b;
  if (finder.converged()) {
    xhi = finder.c;
    const bool crosses = (finder.fc >= 0 && finder.fb <= 0) || (finder.fc < 0 && finder.fb >= 0);
    status = crosses ? std::int16_t{0} : std::int16_t{-1};
    return;
  }
  finder.step();
  xlo = finder.b;
  x = finder.b;
  request(3, status);
} catch (RuntimeError& error) {
  error.leave("m_RootFinding.dzror", caller);
}

double ftol(double zx, Line caller) try {
  return 0.5 * dmax1(settings.abstol, checked(settings.reltol * std::abs(zx)));
} catch (RuntimeError& error) {
  error.leave("m_RootFinding.ftol", caller);
}

bool qxmon(double zx, double zy, double zz) noexcept {
  return zx <= zy && zy <= zz;
}

}  // namespace palvex::m_RootFinding
