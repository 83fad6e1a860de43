// The gamma distribution.

#include "families/m_Gamma.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "numerics/Power.h"
#include "numerics/m_GammaRatio.h"
#include "numerics/m_RootFinding.h"

namespace palvex::m_Gamma {

namespace {

constexpr double lowestShape = 1e-100;
constexpr double greatestShape = 1e100;

enum Quantity : std::int16_t { probabilities = 1, argument = 2, theShape = 3, theScale = 4 };

/// x scale; infinite only for an infinite x.
double scaled(double x, double scale, Line line = Line::here()) {
  return std::isinf(x) && scale > 0 ? x : checked(x * scale, line);
}

/// A fault of an argument of cdfgam: its status and the bound that is violated.
struct Refusal {
  std::int16_t status;
  double bound;
};

Refusal judge(std::int16_t which, double p, double q, double x, double shape, double scale) {
  if (which < 1) return {-1, 1};
  if (which > 4) return {-1, 4};
  if (which != probabilities) {
    if (p < 0) return {-2, 0};
    if (p > 1) return {-2, 1};
    if (q <= 0) return {-3, 0};
    if (q > 1) return {-3, 1};
  }
  if (which != argument && x < 0) return {-4, 0};
  if (which != theShape && shape <= 0) return {-5, 0};
  if (which != theScale && scale <= 0) return {-6, 0};
  constexpr double tolerance = 3 * std::numeric_limits<double>::epsilon();
  if (which != probabilities && !(std::abs(((p + q) - 0.5) - 0.5) <= tolerance)) {
    return {3, 1};
  }
  return {0, 0};
}

/// cdfgam with which = 3.
Refusal searchShape(double p, double q, double z, double& shape) {
  shape = 5;
  m_RootFinding::dstinv(lowestShape, greatestShape, 0.5, 0.5, 5, 1e-50, 1e-8);
  std::int16_t status = 0;
  double fx = 0;
  Boolean qleft;
  Boolean qhi;
  m_RootFinding::dinvr(status, shape, fx, qleft, qhi);
  while (status == 1) {
    double cum = 0;
    double ccum = 0;
    cumgam(z, shape, cum, ccum);
    fx = p <= q ? cum - p : ccum - q;
    m_RootFinding::dinvr(status, shape, fx, qleft, qhi);
  }
  if (status != -1) return {0, 0};
  return qleft ? Refusal{1, lowestShape} : Refusal{2, greatestShape};
}

/// cdfgam with which = 1, once its arguments are found good.
std::int16_t probabilitiesAt(double x, const IncompleteGamma& shape, double scale, double& p,
                             double& q) {
  cumgam(scaled(x, scale), shape, p, q);
  return p + q > 1.5 ? 10 : 0;
}

}  // namespace

void cumgam(double x, const IncompleteGamma& a, double& cum, double& ccum, Line caller) try {
  refuseNaN(x);
  refuseNaN(a.a());
  cum = 0;
  ccum = 1;
  if (x <= 0) return;
  ccum = 0;  // the answer where the ratio fails
  gratio(a, x, cum, ccum, 0);
} catch (RuntimeError& error) {
  error.leave("m_Gamma.cumgam", caller);
}

void cdfgam(std::int16_t which, double& p, double& q, double& x, double& shape, double& scale,
            std::int16_t& status, double& bound, Line caller) try {
  Refusal refusal = judge(which, p, q, x, shape, scale);
  if (refusal.status == 0) {
    if (which == probabilities) {
      refusal.status = probabilitiesAt(x, IncompleteGamma(shape), scale, p, q);
    } else if (which == theShape) {
      refusal = searchShape(p, q, scaled(x, scale), shape);
    } else {
      double z = 0;
      std::int16_t ierr = 0;
      gaminv(shape, z, -1, p, q, ierr);
      if (ierr < 0) {
        refusal.status = 10;
      } else if (which == argument) {
        x = Divide(z, scale);
      } else {
        scale = Divide(z, x);
      }
    }
  }
  status = refusal.status;
  bound = refusal.bound;
} catch (RuntimeError& error) {
  error.leave("m_Gamma.cdfgam", caller);
}

std::int16_t cdfgam(double x, const IncompleteGamma& shape, double scale, double& p, double& q,
                    Line caller) try {
  const Refusal refusal = judge(probabilities, p, q, x, shape.a(), scale);
  return refusal.status != 0 ? refusal.status : probabilitiesAt(x, shape, scale, p, q);
} catch (RuntimeError& error) {
  error.leave("m_Gamma.cdfgam", caller);
}

Variant statusText(std::int16_t status) {
  switch (status) {
    case 1:
      return "answer appears to be lower than lowest search bound";
    case 2:
      return "answer appears to be  higher than greatest search bound";
    case -1:
    case -2:
      return "probability is out of range";
    case -4:
      return "upper_limit is out of range";
    case -5:
      return "deg_freedom is out of range";
    default:
      return {};
  }
}

std::string_view failureText(std::int16_t ierr) {
  switch (ierr) {
    case -2:
      return "input error, dShape <=0";
    case -3:
      return "no solution obtained. the ratio q/dShape is too large.";
    case -4:
      return "input error, p + q <> 1";
    case -6:
      return "20 iterations were performed. the most recent value obtained "
             "for x is given.  this cannot occur if x0 <=0";
    case -7:
      return "iteration failed. no value is given for x.";
    case -8:
      return "a value for x has been obtained, but the routine is not certain "
             "of its accuracy. iteration cannot be performed in this case.";
    default:
      return "";
  }
}

double density(double x, double shape, double scale, double location, const Limits& limits,
               Line caller) try {
  refuseNaN(x);
  if (!(shape > 0 && scale > 0 && x > location)) return 0;
  if (limits.cut(x)) return 0;
  const double z = Divide(x - location, scale);
  const double product = checked(Power(z, shape - 1) * std::exp(-z));
  return Exp(Log(product) - gamln(shape));
} catch (RuntimeError& error) {
  error.leave("m_Gamma.GammaPDF", caller);
}

bool densityHolds(double x, double shape, double scale, double location) noexcept {
  if (x <= location) return true;
  const double z = (x - location) / scale;
  const double product = powerOf(z, shape - 1) * std::exp(-z);
  return product > 0 && std::isfinite(product);
}

Variant GammaCDF(double x, const IncompleteGamma& shape, double rate, Boolean upper,
                 Line caller) try {
  double p = 0;
  double q = 0;
  const std::int16_t status = cdfgam(x, shape, rate, p, q);
  if (status != 0) return statusText(status);
  return upper ? q : p;
} catch (RuntimeError& error) {
  error.leave("m_Gamma.GammaCDF", caller);
}

double GammaINV(double p, const IncompleteGamma& shape, double rate, Boolean upper,
                Line caller) try {
  double x = 0;
  std::int16_t ierr = 0;
  const double complement = 1 - p;
  gaminv(shape, x, -1, upper ? complement : p, upper ? p : complement, ierr);
  if (ierr < 0) throw RuntimeError(fault::typeMismatch, std::string(failureText(ierr)));
  return Divide(x, rate);
} catch (RuntimeError& error) {
  error.leave("m_Gamma.GammaINV", caller);
}

Band band(const IncompleteGamma& shape, double scale, double location, const Limits& limits,
          Line caller) try {
  if (!(shape.a() > 0 && scale > 0)) return {};
  return keptBand(limits, [&](double limit) {
    return GammaCDF(Divide(limit - location, scale), shape, 1, false).toDouble();
  });
} catch (RuntimeError& error) {
  error.leave("m_Gamma.GammaVAL", caller);
}

double value(double p, const IncompleteGamma& shape, double scale, double location,
             const Band& band, Line caller) try {
  if (!(shape.a() > 0 && scale > 0)) return checked(location);
  return checked(GammaINV(band.probability(p), shape, 1, false) * scale + location);
} catch (RuntimeError& error) {
  error.leave("m_Gamma.GammaVAL", caller);
}

}  // namespace palvex::m_Gamma
