#include "numerics/m_Integration.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "runtime/Arithmetic.h"

namespace palvex::m_Integration {

namespace {

constexpr double tolerance = 1e-12;
constexpr std::size_t mostPanels = 2000;

struct Panel {
  double from;
  double to;
  double integral;
  double magnitude;  // integral of |f|
  double error;
};

bool moreAccurate(const Panel& a, const Panel& b) {
  return a.error < b.error;
}

Panel panel(const std::function<double(double)>& f, double from, double to) {
  // Half of the symmetric nodes with their Kronrod weights; the Gauss rule uses the centre and
  // every other node.
  constexpr std::array nodes{0.207784955007898467600689, 0.405845151377397166906606,
                             0.586087235467691130294144, 0.741531185599394439863865,
                             0.864864423359769072789713, 0.949107912342758524526190,
                             0.991455371120812639206855};
  constexpr std::array kronrod{0.204432940075298892414162, 0.190350578064785409913256,
                               0.169004726639267902826583, 0.140653259715525918745190,
                               0.104790010322250183839876, 0.0630920926299785532907007,
                               0.0229353220105292249637320};
  constexpr std::array gauss{0.381830050505118944950370, 0.279705391489276667901468,
                             0.129484966168869693270611};
  constexpr double kronrodCentre = 0.209482141084727828012999;
  constexpr double gaussCentre = 0.417959183673469387755102;

  const double centre = from + (to - from) / 2;
  const double half = (to - from) / 2;
  const double atCentre = f(centre);
  std::array<double, nodes.size()> below{};
  std::array<double, nodes.size()> above{};
  double fine = kronrodCentre * atCentre;
  double coarse = gaussCentre * atCentre;
  double magnitude = kronrodCentre * std::abs(atCentre);
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    below[i] = f(centre - half * nodes[i]);
    above[i] = f(centre + half * nodes[i]);
    fine += kronrod[i] * (below[i] + above[i]);
    magnitude += kronrod[i] * (std::abs(below[i]) + std::abs(above[i]));
    if (i % 2 == 1) coarse += gauss[i / 2] * (below[i] + above[i]);
  }
  double roughness = kronrodCentre * std::abs(atCentre - fine / 2);
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    roughness += kronrod[i] * (std::abs(below[i] - fine / 2) + std::abs(above[i] - fine / 2));
  }
  double error = std::abs(fine - coarse);
  if (roughness > 0) error = roughness * std::min(1.0, std::pow(200 * error / roughness, 1.5));
  if (!(from < centre && centre < to)) error = 0;  // nothing left to halve
  return {from, to, checked(half * fine), half * magnitude, half * error};
}

}  // namespace

double integrate(const std::function<double(double)>& f, std::span<const double> breaks) {
  std::vector<Panel> panels;  // a heap, the largest error first
  double magnitude = 0;
  double error = 0;
  const auto add = [&](double from, double to) {
    const Panel added = panel(f, from, to);
    magnitude += added.magnitude;
    error += added.error;
    panels.push_back(added);
    std::push_heap(panels.begin(), panels.end(), moreAccurate);
  };
  for (std::size_t i = 1; i < breaks.size(); ++i) add(breaks[i - 1], breaks[i]);
  const auto settled = [&] { return error <= tolerance * magnitude; };
  const auto sumAfresh = [&] {
    magnitude = 0;
    error = 0;
    for (const Panel& p : panels) {
      magnitude += p.magnitude;
      error += p.error;
    }
  };
  while (true) {
    // Subtracting a large panel leaves its rounding error in the sums: where that may outweigh the
    // panels, the sums are made anew.
    const bool stale = error > 2 * static_cast<double>(panels.size()) * panels.front().error;
    if (stale || settled()) sumAfresh();
    if (settled()) break;
    if (panels.size() > mostPanels + breaks.size()) raise(fault::overflow);
    std::pop_heap(panels.begin(), panels.end(), moreAccurate);
    const Panel worst = panels.back();
    panels.pop_back();
    magnitude -= worst.magnitude;
    error -= worst.error;
    const double centre = worst.from + (worst.to - worst.from) / 2;
    add(worst.from, centre);
    add(centre, worst.to);
  }
  double sum = 0;
  for (const Panel& p : panels) sum += p.integral;
  return checked(sum);
}

}  // namespace palvex::m_Integration
