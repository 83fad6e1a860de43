#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace palvex::simulation {

/// The rank, from 1, of a percentile among n >= 1 values: the ceil(percent n / 100)-th smallest.
[[nodiscard]] std::uint64_t percentileRank(double percent, std::uint64_t n);

/// The ranks between which the percentile of what is simulated lies with a confidence of 95 %, by
/// the binomial distribution B of how many of n values stay below it: the largest l with
/// P(B < l) <= 2.5 % and the smallest u with P(B >= u) <= 2.5 %; 1 or n where there is none.
[[nodiscard]] std::pair<std::uint64_t, std::uint64_t> intervalRanks(double percent,
                                                                    std::uint64_t n);

/// An interval of values, ends included.
struct Interval {
  double low = -std::numeric_limits<double>::infinity();  ///< -infinity for no end
  double high = std::numeric_limits<double>::infinity();  ///< infinity for no end
};

/// Counts the values below an interval and on its ends, and keeps those inside.
class Window {
 public:
  /// @param interval  outside of which values are only counted
  explicit Window(const Interval& interval) : interval_(interval) {}

  /// The interval as it was narrowed last.
  [[nodiscard]] const Interval& interval() const { return interval_; }
  /// How many values it holds in memory.
  [[nodiscard]] std::size_t kept() const { return inside_.size(); }

  /// Counts values, and keeps those inside.
  void add(std::span<const double> values);
  /// Counts values that are known to lie below the interval.
  void addBelow(std::uint64_t times) { below_ += times; }
  /// Narrows the interval to one within it.
  void narrow(const Interval& interval);

  /// The value with a rank among all that were added, if it lies in the interval. Puts the kept
  /// values into another order.
  [[nodiscard]] std::optional<double> value(std::uint64_t rank);

 private:
  void add(double value, std::uint64_t times);

  Interval interval_;
  std::uint64_t below_ = 0;
  std::uint64_t atLow_ = 0;
  std::uint64_t atHigh_ = 0;  // 0 where both ends are one
  std::vector<double> inside_;
};

/// Equal cells between two values, and what lies outside of them.
struct Cells {
  double low = 0;           ///< where the first cell begins
  double width = 0;         ///< of each cell; 0 when all values that they were made for are equal
  std::uint64_t count = 0;  ///< how many cells

  /// 0 below the cells, 1, 2, ... in them, count + 1 above them; never less for a greater value.
  [[nodiscard]] std::size_t placeOf(double value) const;
};

/// How many values lie in each of equal cells, and outside of them.
struct Histogram {
  double low = 0;                     ///< where the first cell begins
  double width = 0;                   ///< of each cell; 0 when the values are equal
  std::uint64_t below = 0;            ///< how many values lie below the cells
  std::uint64_t above = 0;            ///< how many values lie above them
  std::vector<std::uint64_t> counts;  ///< how many values lie in each cell
};

/// What a part of the values is reduced to, so that exact percentiles of all come out: at first the
/// values themselves; later, when it is known in which cells the percentiles will lie, how many
/// there are in each place, and the values in these cells.
struct Digest {
  std::uint64_t count = 0;            ///< how many were added
  std::vector<double> values;         ///< those that are kept, in their order
  Cells cells;                        ///< there are none at first
  std::vector<std::uint64_t> counts;  ///< of each place, see Cells::placeOf; at first none
  std::vector<bool> wanted;           ///< the places whose values are kept

  /// Adds values that come after those before.
  void add(std::span<const double> some);
};

/// Exact order statistics of as many values as there come, without keeping them: the first ones
/// tell in which narrow window each percentile will lie; of the others only those inside a window
/// are kept. As values come in, the percentiles are known better, and the windows narrow.
class Percentiles {
 public:
  /// How many values are kept before there are windows.
  static constexpr std::size_t pilotSize = 131'072;
  /// Standard deviations of a percentile's rank to each side that a window holds. Two of them are
  /// for the percentile's own interval.
  static constexpr double usualReach = 8;

  /// @param percents  from 0 to 100, in increasing order
  /// @param reach     see usualReach; greater when a window missed
  explicit Percentiles(std::vector<double> percents, double reach = usualReach);

  /// The digest that a part of the values is to be added to: copied, filled and handed to add().
  [[nodiscard]] const Digest& blank() const { return blank_; }

  /// Joins a part. The parts come in their order.
  void add(Digest part);

  /// All values so far in their order; none once there are more than pilotSize.
  [[nodiscard]] std::span<const double> pilot() const { return pilot_; }

  /// A percentile and its interval.
  struct Estimate {
    double value;  ///< the value at the percentile's rank
    double low;    ///< lower end of the 95 % interval, see intervalRanks
    double high;   ///< its upper end
  };
  /// A percentile of all values so far; nothing when its window missed it.
  /// @param index  of the percent
  [[nodiscard]] std::optional<Estimate> estimate(std::size_t index);

  /// 400 cells over the bulk of the first values (all but a thousandth at each end; one cell when
  /// these are equal), with the counts of all.
  [[nodiscard]] Histogram histogram();

 private:
  void endPilot();
  void narrow(std::size_t index);
  void renewBlank();
  [[nodiscard]] std::span<const double> sortedPilot();
  [[nodiscard]] Cells bulkOfPilot();
  [[nodiscard]] std::optional<double> value(std::size_t index, std::uint64_t rank);
  /// Where a percentile will lie; an end beyond all values stays as `interval` has it.
  /// @param valueOf  the value with a rank
  template <class ValueOf>
  [[nodiscard]] Interval predicted(double percent, Interval interval, ValueOf valueOf) const;

  std::vector<double> percents_;
  double reach_;
  std::uint64_t count_ = 0;
  std::vector<double> pilot_;            // all values, in their order, while there are no windows
  std::vector<double> sorted_;           // the same, sorted when asked for
  std::vector<Window> windows_;          // one for each percent
  std::vector<std::size_t> capacities_;  // kept values at which a window is narrowed
  Cells cells_;
  std::vector<std::uint64_t> counts_;  // of each place
  Digest blank_;
};

}  // namespace palvex::simulation
