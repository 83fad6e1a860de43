#include "families/m_Normal.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "numerics/Polynomial.h"
#include "numerics/PublishedConstants.h"

namespace palvex::m_Normal {

double density(double x, double mean, double sd, const Limits& limits, Line caller) try {
  if (limits.cut(x)) return 0;
  if (sd <= 0) return x == mean ? 1 : 0;
  const double square = checked((x - mean) * (x - mean));
  return checked(Exp(-Divide(square, checked(2 * (sd * sd)))) * 1 /
                 (std::sqrt(published::twoPi) * sd));
} catch (RuntimeError& error) {
  error.leave("m_Normal.NormalPDF", caller);
}

double NormalCDF(double x, Boolean upper, Line caller) try {
  constexpr std::array a{2.23525203546068, 161.028231068556, 1067.68948546037, 18154.9812533436,
                         0.0656823379182074};
  constexpr std::array b{47.2025819046882, 976.098551737777, 10260.932208619, 45507.7893350267};
  constexpr std::array c{0.398941512088135, 8.88314979438838, 93.5066561321779,
                         597.2702763948,    2494.53758529037, 6848.19045053628,
                         11602.6514376473,  9842.71483838398, 1.07655767737202E-08};
  constexpr std::array d{22.2666880443281, 235.387901782625, 1519.37759940755, 6485.55829826676,
                         18615.5716408851, 34900.952721146,  38912.0032860933, 19685.42967686};
  constexpr std::array p{0.215898534057957,   0.127401161160247,    0.0222352778706498,
                         0.00142161919322789, 2.91128749511688E-05, 0.0230734417649402};
  constexpr std::array q{1.28426009614491, 0.468238212480865, 0.0659881378689286,
                         0.00378239633202758, 7.29751555083966E-05};
  constexpr double halfEpsilon = 1.11022302462516E-16;

  const double y = std::abs(x);
  if (y <= 0.66291) {  // about the quartile 0.67449: the border of the published approximation
    const double square = y > halfEpsilon ? x * x : 0;
    double numerator = a[4] * square;
    double denominator = square;
    for (std::size_t i = 0; i < 3; ++i) {
      numerator = (numerator + a[i]) * square;
      denominator = (denominator + b[i]) * square;
    }
    const double part = x * (numerator + a[3]) / (denominator + b[3]);
    return upper ? 0.5 - part : 0.5 + part;
  }

  const bool isLargerTail = upper ? x < 0 : x > 0;
  if (!(y < 40)) {  // exp(-40^2/2) = 10^-347 is below the smallest double
    if (std::isnan(x)) raise(fault::overflow);
    return isLargerTail ? 1 : 0;
  }

  // exp(-s^2/2) from s rounded to a sixteenth and the small rest, so that the square is exact.
  const auto bell = [](double s) {
    const double sixteenths = std::floor(s * 16) / 16;
    const double rest = (s - sixteenths) * (s + sixteenths);
    return std::exp(-sixteenths * sixteenths * 0.5) * std::exp(-rest * 0.5);
  };
  double tail = 0;
  if (y <= 5.656854248) {  // sqrt(32), the border between the two forms of the tail
    double numerator = c[8] * y;
    double denominator = y;
    for (std::size_t i = 0; i < 7; ++i) {
      numerator = (numerator + c[i]) * y;
      denominator = (denominator + d[i]) * y;
    }
    tail = bell(y) * ((numerator + c[7]) / (denominator + d[7]));
  } else {
    const double square = 1 / (x * x);
    double numerator = p[5] * square;
    double denominator = square;
    for (std::size_t i = 0; i < 4; ++i) {
      numerator = (numerator + p[i]) * square;
      denominator = (denominator + q[i]) * square;
    }
    const double part = square * (numerator + p[4]) / (denominator + q[4]);
    tail = bell(x) * ((published::inverseRootTwoPi - part) / y);
  }
  return isLargerTail ? 1 - tail : tail;
} catch (RuntimeError& error) {
  error.leave("m_Normal.NormalCDF", caller);
}

double NormalINV(double p, Boolean upper, Line caller) try {
  if (p == 0) return upper ? 38.5 : -38.5;
  if (p == 1) return upper ? -8.3 : 8.3;
  return upper ? -NormINV16(p) : NormINV16(p);
} catch (RuntimeError& error) {
  error.leave("m_Normal.NormalINV", caller);
}

namespace {

/// Whether p = 1/2 + q lies between the tails, where AS 241 needs no logarithm.
bool isCentral(double q) {
  return std::abs(q) <= 0.425;
}

/// The deviate of p = 1/2 + q between the tails. Nothing fails here.
[[gnu::always_inline]] inline double centralDeviate(double q) {
  constexpr std::array a{3.38713287279637, 133.141667891784, 1971.59095030655, 13731.6937655095,
                         45921.9539315499, 67265.7709270087, 33430.5755835881, 2509.08092873012};
  constexpr std::array b{1.0,
                         42.3133307016009,
                         687.187007492058,
                         5394.19602142475,
                         21213.7943015866,
                         39307.8958000927,
                         28729.0857357219,
                         5226.49527885285};
  const double r = 0.180625 - q * q;
  return q * polynomial(a, r) / polynomial(b, r);
}

/// Size of the deviate beyond which lies the probability `tail` <= 0.075. A function of its own, so
/// that the registers which its calls need are not saved for the common draw between the tails.
[[gnu::noinline]] double tailDeviate(double tail, Line line = Line::here()) {
  constexpr std::array c{1.42343711074968,   4.63033784615655,    5.76949722146069,
                         3.6478483247632,    1.27045825245237,    0.241780725177451,
                         0.0227238449892692, 0.000774545014278341};
  constexpr std::array d{1.0,
                         2.05319162663776,
                         1.6763848301838,
                         0.6897673349851,
                         0.14810397642748,
                         0.0151986665636165,
                         0.000547593808499534,
                         1.05075007164442E-9};
  constexpr std::array e{6.6579046435011,     5.46378491116411,   1.78482653991729,
                         0.296560571828505,   0.0265321895265761, 0.00124266094738808,
                         2.71155556874349E-5, 2.01033439929229E-7};
  constexpr std::array f{1.0,
                         0.599832206555888,
                         0.136929880922736,
                         0.0148753612908506,
                         0.000786869131145613,
                         1.84631831751005E-5,
                         1.42151175831645E-7,
                         2.04426310338994E-15};

  const double s = std::sqrt(-Log(tail, line));
  return s <= 5 ? polynomial(c, s - 1.6) / polynomial(d, s - 1.6)
                : polynomial(e, s - 5) / polynomial(f, s - 5);
}

}  // namespace

double NormINV16(double p, Line caller) try {
  const double q = p - 0.5;
  if (isCentral(q)) return centralDeviate(q);
  return std::copysign(tailDeviate(std::min(p, 1 - p)), q);
} catch (RuntimeError& error) {
  error.leave("m_Normal.NormINV16", caller);
}

Band band(double mean, double sd, const Limits& limits, Line caller) try {
  if (sd == 0) return {};
  return keptBand(limits, [&](double limit) { return NormalCDF(Divide(limit - mean, sd), false); });
} catch (RuntimeError& error) {
  error.leave("m_Normal.NormalVAL", caller);
}

namespace {

/// `value` for any p, with the handler for its errors.
[[gnu::noinline, gnu::flatten]] double trappedValue(double p, double mean, double sd,
                                                    const Band& band, Line caller) try {
  if (sd == 0) return checked(mean);
  return checked(NormalINV(band.probability(p), false) * sd + mean);
} catch (RuntimeError& error) {
  error.leave("m_Normal.NormalVAL", caller);
}

}  // namespace

double value(double p, double mean, double sd, const Band& band, Line caller) {
  // Most draws lie between the tails of one band: nothing is called there, and nothing can fail.
  if (sd != 0 && !band.wrapped) {
    const double q = band.probability(p) - 0.5;
    const double x = centralDeviate(q) * sd + mean;
    if (isCentral(q) && std::isfinite(x)) return x;
  }
  return trappedValue(p, mean, sd, band, caller);
}

}  // namespace palvex::m_Normal
