#pragma once

#include <functional>
#include <string>
#include <vector>

namespace palvex::terminal {

struct Point {
  double x;
  double y;
};
using Line = std::vector<Point>;

/// A value that a panel points out, such as the mean.
struct Mark {
  std::string name;
  double x;
  double height = 0;  // of a curve that the mark is led to; 0 for none
};

/// One curve of a panel. Its lines run in increasing x; a height may be infinite.
struct Curve {
  std::string name;         // in the legend; "" for none
  std::vector<Line> lines;  // what is kept
  std::vector<Line> cut;    // what the limits cut away
};

/// A chart: one curve filled, or several over each other.
struct Panel {
  std::string title;
  std::string note;  // below the title
  double from;       // the axis; from < to
  double to;
  double height;  // of the upper border; > 0
  std::vector<Curve> curves;
  std::vector<Mark> marks;
  std::vector<Point> borders;  // between the bins of a histogram, each as high as the lower one
  std::vector<double> values;  // data, each a tick on the axis
  std::string axisTitle;
  std::string heightTitle;
  bool filled = true;
  bool inPercent = false;  // heights are probabilities
};

/// The panels side by side as an SVG document: curves with what limits cut away dashed, axes with
/// round numbers and titles, and the marks. The colours follow the reader's light or dark scheme,
/// and nothing is told by colour alone. The panels are as wide as the widest marks need and as high
/// as the longest title.
[[nodiscard]] std::string svgOf(const std::vector<Panel>& panels, const std::string& title);

/// The points of a function from `from` to `to` so dense that straight lines between them show it:
/// those of `through` that lie there among them, and both ends of each jump.
[[nodiscard]] Line traced(const std::function<double(double)>& function, double from, double to,
                          const std::vector<double>& through);

/// Round numbers in [from, to] that part it in about `parts`.
[[nodiscard]] std::vector<double> roundNumbers(double from, double to, int parts);

/// How the numbers of an axis are written: in as few digits as tell them apart on it, with marks
/// between thousands, in k, M, G or T where they are large, or with a power of ten.
class NumberStyle {
 public:
  NumberStyle(double from, double to);
  [[nodiscard]] std::string text(double value) const;

 private:
  double length_;
  bool scientific_ = false;
  double unit_ = 1;
  std::string suffix_;
};

/// A parameter in a picture: all its digits, with marks between thousands and a minus sign.
[[nodiscard]] std::string parameterText(double value);

}  // namespace palvex::terminal
