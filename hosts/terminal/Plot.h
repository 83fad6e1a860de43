#pragma once

#include <string>
#include <vector>

#include "runtime/Limits.h"

namespace palvex::terminal {

/// A value that a panel points out, such as the mean.
struct Mark {
  std::string name;
  double x;
};

/// The picture of one distribution.
struct Panel {
  std::string title;
  std::string subtitle;
  std::vector<double> x;        // at least two, increasing
  std::vector<double> density;  // at each x, as if there were no limits
  Limits limits;
  std::vector<Mark> marks;
};

/// The panels side by side as an SVG document: the density filled where the limits keep it, its
/// outline where they cut it away, an axis with round numbers, and the marks. The colours follow
/// the reader's light or dark scheme, and nothing is told by colour alone.
[[nodiscard]] std::string svgOf(const std::vector<Panel>& panels, const std::string& title);

/// Round numbers in [from, to] that part it in about `parts`.
[[nodiscard]] std::vector<double> roundNumbers(double from, double to, int parts);

/// `value` in as few digits as tell it apart on an axis of this length.
[[nodiscard]] std::string shortNumber(double value, double axisLength);

}  // namespace palvex::terminal
