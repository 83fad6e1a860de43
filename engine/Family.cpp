#include "engine/Family.h"

#include <limits>

#include "families/m_Normal.h"

namespace palvex {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

const Family normal{
    .name = "Normal",
    .demands = {Demand::real, Demand::nonNegative},
    .parametersRead = 2,
    .fit = nullptr,
    .density = [](const Values& v, double x, const Limits& limits, const Variant&,
                  Line line) { return m_Normal::density(x, v.p[0], v.p[1], limits, line); },
    .cumulative =
        [](const Values& v, double x, Line line) {
          return m_Normal::NormalCDF(Divide(x - v.p[0], v.p[1], line), false, line);
        },
    .band = [](const Values& v, const Limits& limits,
               Line line) { return m_Normal::band(v.p[0], v.p[1], limits, line); },
    .value = [](const Values& v, const Band& band, double p,
                Line line) { return m_Normal::value(p, v.p[0], v.p[1], band, line); },
    .ignoresLimits = nullptr,
    .support =
        [](const Values& v) {
          return v.p[1] == 0 ? Support{v.p[0], v.p[0]} : Support{-infinity, infinity};
        },
};

constexpr std::array families{&normal};

}  // namespace

const Family* findFamily(std::string_view name) noexcept {
  for (const Family* family : families) {
    if (family->name == name) return family;
  }
  return nullptr;
}

}  // namespace palvex
