// Law, the members of c_Distribution and Boost.Math behind one C interface, which bench/accuracy.py
// asks. A question that fails is answered with NaN.

#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/exponential.hpp>
#include <boost/math/distributions/gamma.hpp>
#include <boost/math/distributions/lognormal.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/triangular.hpp>
#include <boost/math/distributions/uniform.hpp>
#include <boost/math/distributions/weibull.hpp>
#include <cmath>
#include <exception>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "bench/Cases.h"
#include "engine/Law.h"
#include "families/m_Johnson.h"

namespace palvex::bench {

namespace {

namespace math = boost::math;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

class Source {
 public:
  Source() = default;
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;
  virtual ~Source() = default;
  virtual double density(double x) = 0;
  virtual double tail(double x, bool upper) = 0;
  virtual double quantile(double p, bool upper) = 0;
};

class LawItself final : public Source {
 public:
  explicit LawItself(Law law) : law_(std::move(law)) {}
  double density(double x) override { return law_.density(x); }
  double tail(double x, bool upper) override {
    return upper ? law_.exceedance(x) : law_.probability(x);
  }
  double quantile(double p, bool upper) override {
    return upper ? law_.upperQuantile(p) : law_.quantile(p);
  }

 private:
  Law law_;
};

class Members final : public Source {
 public:
  explicit Members(std::unique_ptr<c_Distribution> object) : object_(std::move(object)) {}
  double density(double x) override { return object_->pdf(x); }
  double tail(double x, bool upper) override { return upper ? nan : object_->cdf(x); }
  double quantile(double p, bool upper) override { return upper ? nan : object_->RandVal(p); }

 private:
  std::unique_ptr<c_Distribution> object_;
};

/// A distribution of Boost.Math, of (x - origin)/unit.
template <class Distribution>
class Boost final : public Source {
 public:
  Boost(Distribution law, double origin, double unit) : law_(law), origin_(origin), unit_(unit) {}
  double density(double x) override { return math::pdf(law_, (x - origin_) / unit_) / unit_; }
  double tail(double x, bool upper) override {
    const double z = (x - origin_) / unit_;
    return upper ? math::cdf(math::complement(law_, z)) : math::cdf(law_, z);
  }
  double quantile(double p, bool upper) override {
    const double z = upper ? math::quantile(math::complement(law_, p)) : math::quantile(law_, p);
    return origin_ + unit_ * z;
  }

 private:
  Distribution law_;
  double origin_;
  double unit_;
};

template <class Distribution>
std::unique_ptr<Source> boost(Distribution law, double origin = 0, double unit = 1) {
  return std::make_unique<Boost<Distribution>>(law, origin, unit);
}

/// Null for a type that Boost.Math has not.
std::unique_ptr<Source> boostOf(const std::string& type, const Parameters& v) {
  if (type == "Normal") return boost(math::normal(v[0], v[1]));
  if (type == "Uniform") return boost(math::uniform(v[0], v[1]));
  if (type == "Triangular") return boost(math::triangular(v[0], v[1], v[2]));
  if (type == "Lognormal") return boost(math::lognormal(v[0], v[1]), v[2]);
  if (type == "Exponential") return boost(math::exponential(v[0]), v[1]);
  if (type == "Weibull") return boost(math::weibull(v[0], v[1]), v[2]);
  if (type == "Gamma") return boost(math::gamma_distribution<>(v[0], v[1]), v[2]);
  if (type == "Beta") return boost(math::beta_distribution<>(v[0], v[1]), v[2], v[3] - v[2]);
  return nullptr;
}

Variant variant(std::optional<double> limit) {
  return limit ? Variant(*limit) : Variant{};
}

/// What `ask` answers, NaN when it fails.
template <class Ask>
double answer(Ask&& ask) {
  try {
    return ask();
  } catch (const std::exception&) {
    return nan;
  }
}

}  // namespace

}  // namespace palvex::bench

using palvex::bench::Source;

extern "C" {

/// @param who     "law", "members" or "Boost", which is asked for the whole distribution
/// @param limits  lower and upper one, NaN for none
/// @returns null where there is no such distribution
Source* palvexSource(const char* who, const char* type, const double* parameters,
                     const double* limits) {
  using namespace palvex::bench;
  try {
    const Parameters p{parameters[0], parameters[1], parameters[2], parameters[3]};
    const std::string name = who;
    if (name == "Boost") return boostOf(type, p).release();
    const auto limit = [&](int i) {
      return std::isnan(limits[i]) ? std::optional<double>{} : std::optional{limits[i]};
    };
    const Case one{type, type, p};
    if (name == "law") {
      const palvex::Law whole = one.object()->law();
      return std::make_unique<LawItself>(whole.between(limit(0), limit(1))).release();
    }
    auto object = one.object(variant(limit(0)), variant(limit(1)));
    return std::make_unique<Members>(std::move(object)).release();
  } catch (const std::exception&) {
    return nullptr;
  }
}

double palvexDensity(Source* source, double x) {
  return palvex::bench::answer([&] { return source->density(x); });
}

double palvexTail(Source* source, double x, int upper) {
  return palvex::bench::answer([&] { return source->tail(x, upper != 0); });
}

double palvexQuantile(Source* source, double p, int upper) {
  return palvex::bench::answer([&] { return source->quantile(p, upper != 0); });
}

void palvexForget(Source* source) {
  delete source;
}

/// gamma, delta, lambda and xi of the Johnson curve of four moments; for the normal curve standard
/// deviation, 0, mean, 0.
/// @returns its type: 1 SL, 2 SU, 3 SB, 4 normal; 0 for a fit that fails
int palvexJohnson(const double* moments, double* constants) {
  palvex::m_Johnson::JohnsonParams fit;
  try {
    palvex::m_Johnson::CalcJohnson(moments[0], moments[1], moments[2], moments[3], fit);
  } catch (const std::exception&) {
    return 0;
  }
  constants[0] = fit.gamma;
  constants[1] = fit.delta;
  constants[2] = fit.lambda;
  constants[3] = fit.xi;
  return fit.typeCode;
}
}
