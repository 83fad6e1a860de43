#pragma once

// What the object's members answer, worked out by the stateless routines that keep nothing between
// calls.

#include <bit>
#include <cstdint>
#include <string>

#include "Routines.h"
#include "runtime/Arithmetic.h"

namespace palvex::script {

/// A result to the bit, or an error: number, description, routines. `member` is left out of both.
template <class Call>
std::string outcome(const Call& call, const std::string& member = "") {
  double value = 0;
  const auto error = faultOf([&] { return value = call(); });
  if (!error) return "bits " + std::to_string(std::bit_cast<std::uint64_t>(value));
  std::string description = error->description();
  std::string routines = routinesOf(*error);
  if (!member.empty()) {
    description.resize(description.rfind("\r\n" + member + ": ("));
    routines.resize(routines.rfind("c_Distribution." + member));
  }
  return std::to_string(error->number()) + ' ' + description + ' ' + routines +
         (routines.empty() || routines.back() == ' ' ? "" : " ");
}

/// The routines of one type with fixed parameters and limits. A histogram's parameter is its range
/// of bins and counts.
class Stateless {
 public:
  Stateless(std::string type, const Values& parameters, Variant ltl, Variant utl)
      : type_(std::move(type)), arguments_(parameters), ltl_(std::move(ltl)), utl_(std::move(utl)) {
    if (type_ == "Histogram") arguments_.resize(1);
    if (type_ == "Johnson") {
      arguments_ = call("CalcJohnson", parameters);
      arguments_.pop_back();  // the message
    }
  }

  [[nodiscard]] double pdf(double x) const { return withLimits(type_ + "PDF", x); }
  [[nodiscard]] double RandVal(double p) const {
    return withLimits(type_ == "Johnson" ? "JohnsonVal" : type_ + "VAL", p);
  }
  [[nodiscard]] double cdf(double x) const {
    const auto& p = arguments_;
    Values given = p;
    if (type_ == "Normal")
      return call("NormalCDF", {Divide(x - p[0].toDouble(), p[1].toDouble()), false})[0].toDouble();
    if (type_ == "Gamma") given[2] = p[2] != Variant(0);
    if (type_ == "Lognormal") given.emplace_back(false);
    if (type_ == "Beta") {
      x = Divide(checked(x - p[2].toDouble()), checked(p[3].toDouble() - p[2].toDouble()));
      given = {p[0], p[1], false};
    }
    given.insert(given.begin(), x);
    return call(type_ + "CDF", given)[0].toDouble();
  }

 private:
  [[nodiscard]] double withLimits(const std::string& routine, double x) const {
    Values given = arguments_;
    given.insert(given.begin(), x);
    given.insert(given.end(), {ltl_, utl_});
    return call(routine, given)[0].toDouble();
  }

  std::string type_;
  Values arguments_;
  Variant ltl_;
  Variant utl_;
};

}  // namespace palvex::script
