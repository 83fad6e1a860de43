// The evaluation of a fitted Johnson curve; the transformations are Algorithm AS 100.

#include "families/m_Johnson.h"

#include <algorithm>
#include <cmath>

#include "families/m_Normal.h"
#include "numerics/PublishedConstants.h"
#include "numerics/m_MathUtil.h"

namespace palvex::m_Johnson {

namespace {

double normalDensity(double t, Line line = Line::here()) {
  return Exp(-checked(t * t, line) / 2, line) / std::sqrt(published::twoPi);
}

}  // namespace

Curve curveOf(std::string_view typeName) noexcept {
  if (typeName == "SL") return Curve::SL;
  if (typeName == "SU") return Curve::SU;
  if (typeName == "SB") return Curve::SB;
  if (typeName == "Normal") return Curve::normal;
  return Curve::none;
}

double density(double x, const JohnsonParams& params, Curve curve, const Limits& limits,
               Line caller) try {
  if (limits.cut(x)) return 0;
  return untruncatedDensity(x, params, curve);
} catch (RuntimeError& error) {
  error.leave("m_Johnson.JohnsonPDF", caller);
}

double untruncatedDensity(double x, const JohnsonParams& params, Curve curve, Line caller) try {
  const auto& [gamma, delta, lambda, xi, name, code, message] = params;
  switch (curve) {
    case Curve::SB: {
      if (lambda <= 0) return 0;
      const double u = Divide(x - xi, lambda);
      if (u <= 0 || u >= 1) return 0;
      return checked(delta / (u * (1 - u)) * normalDensity(gamma + delta * Log(u / (1 - u))));
    }
    case Curve::SU: {
      if (lambda <= 0) return 0;
      const double u = Divide(x - xi, lambda);
      const double root = std::sqrt(checked(u * u) + 1);
      return checked(delta / root * normalDensity(gamma + delta * Log(u + root)));
    }
    case Curve::SL:
      if (delta <= 0 || lambda <= 0 || x <= xi) return 0;
      return checked(Divide(delta, x - xi) *
                     normalDensity(gamma - delta * Log(lambda) + delta * Log(x - xi)));
    case Curve::normal:
      return m_Normal::density(x, lambda, gamma, {});
    case Curve::none:
      break;
  }
  return 0;
} catch (RuntimeError& error) {
  error.leave("m_Johnson.jPDF", caller);
}

bool densityHolds(double x, const JohnsonParams& params, Curve curve) noexcept {
  if (curve != Curve::SU) return true;
  const double u = (x - params.xi) / params.lambda;
  return u + std::sqrt(u * u + 1) > 0;
}

double cumulative(double x, const JohnsonParams& params, Curve curve, Line caller) try {
  const auto& [gamma, delta, lambda, xi, name, code, message] = params;
  switch (curve) {
    case Curve::SU:
      break;
    case Curve::SL:
      if (delta <= 0 || lambda <= 0) return 0;
      if (Divide(x - xi, lambda) <= 0) return 0;
      break;
    case Curve::SB: {
      if (lambda <= 0) return 0;
      const double u = Divide(x - xi, lambda);
      if (u <= 0) return 0;
      if (u >= 1) return 1;
      break;
    }
    case Curve::normal:
    case Curve::none:
      return 0;
  }
  return m_Normal::NormalCDF(JohnsontoNormal(x, delta, gamma, lambda, xi, code), false);
} catch (RuntimeError& error) {
  error.leave("m_Johnson.JohnsonCDF", caller);
}

double JohnsonINV(double p, const JohnsonParams& params, Line caller) try {
  const double z = m_Normal::NormalINV(p, false);
  return NormaltoJohnson(z, params.delta, params.gamma, params.lambda, params.xi, params.typeCode);
} catch (RuntimeError& error) {
  error.leave("m_Johnson.JohnsonINV", caller);
}

Band band(const JohnsonParams& params, Curve curve, const Limits& limits, Line caller) try {
  return keptBand(limits, [&](double limit) { return cumulative(limit, params, curve); });
} catch (RuntimeError& error) {
  error.leave("m_Johnson.JohnsonVal", caller);
}

double value(double p, const JohnsonParams& params, const Band& band, Line caller) try {
  return JohnsonINV(band.probability(std::clamp(p, 0.0, 1.0)), params);
} catch (RuntimeError& error) {
  error.leave("m_Johnson.JohnsonVal", caller);
}

double JohnsontoNormal(double x, double delta, double gamma, double lambda, double xi,
                       std::int16_t typeCode, Line caller) try {
  if (typeCode == 4) return gamma == 0 ? 0 : Divide(x - lambda, gamma);
  std::int16_t fault = 0;
  double z = 0;
  SNV(x, typeCode, gamma, delta, lambda, xi, fault, z);
  return fault == 0 ? z : 0;
} catch (RuntimeError& error) {
  error.leave("m_Johnson.JohnsontoNormal", caller);
}

double NormaltoJohnson(double z, double delta, double gamma, double lambda, double xi,
                       std::int16_t typeCode, Line caller) try {
  if (typeCode == 4) return gamma == 0 ? 0 : checked(z * gamma + lambda);
  std::int16_t fault = 0;
  double x = 0;
  AJV(z, typeCode, gamma, delta, lambda, xi, fault, x);
  return fault == 0 ? x : 0;
} catch (RuntimeError& error) {
  error.leave("m_Johnson.NormaltoJohnson", caller);
}

void SNV(double x, std::int16_t typeCode, double gamma, double delta, double lambda, double xi,
         std::int16_t& fault, double& result, Line caller) try {
  result = 0;
  fault = 0;
  switch (typeCode) {
    case 1: {
      const double w = checked((x - xi) * lambda);
      if (w > 0) {
        result = checked((Log(w) * delta + gamma) * lambda);
      } else {
        fault = 2;
      }
      break;
    }
    case 2: {
      double w = Divide(x - xi, lambda);
      // Far below, sqrt(w^2 + 1) + w would cancel; there it is -1/(2 w) to four digits.
      w = w <= -63 ? -0.5 / w : std::sqrt(checked(w * w) + 1) + w;
      result = checked(Log(w) * delta + gamma);
      break;
    }
    case 3: {
      const double w = checked(x - xi);
      const double v = lambda - w;
      if (w > 0 && v > 0) {
        result = checked(Log(Divide(w, v)) * delta + gamma);
      } else {
        fault = 2;
      }
      break;
    }
    default:
      fault = 1;
  }
} catch (RuntimeError& error) {
  error.leave("m_Johnson.SNV", caller);
}

void AJV(double z, std::int16_t typeCode, double gamma, double delta, double lambda, double xi,
         std::int16_t& fault, double& result, Line caller) try {
  result = 0;
  fault = 0;
  switch (typeCode) {
    case 1:
      result = checked(lambda * Exp(Divide(lambda * z - gamma, delta)) + xi);
      break;
    case 2: {
      const double w = Exp(Divide(z - gamma, delta));
      result = checked(lambda * (0.5 * (w - Divide(1, w))) + xi);
      break;
    }
    case 3: {
      const double w = Divide(z - gamma, delta);
      const double e = std::exp(-std::abs(w));
      result = checked(0.5 * lambda * (m_MathUtil::fsign((1 - e) / (1 + e), w) + 1) + xi);
      break;
    }
    default:
      fault = 1;
  }
} catch (RuntimeError& error) {
  error.leave("m_Johnson.AJV", caller);
}

}  // namespace palvex::m_Johnson
