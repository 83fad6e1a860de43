#pragma once

#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "families/Truncation.h"

/// The empirical distribution of worksheet data: bins in increasing order, a constant density in
/// each, density 0 in the gaps between them. One single value is a point mass.
///
/// A bin's left edge belongs to it and its right edge does not, except the last one's. Every
/// evaluation is a binary search. All routines raise error 9 for arrays that were never built, 6
/// for an x or p that is NaN; each adds its line to the trace of an error that passes it.
namespace palvex::m_Histogram {

/// The layouts of worksheet data that the builder knows.
inline constexpr std::array<std::string_view, 3> layouts{"Raw Data", "Data and Counts (2 cols)",
                                                         "Bins and Counts (3 cols)"};

/// Lower edge, upper edge and density of each bin in turn.
using DensityArray = std::vector<double>;
/// Per bin its lower edge, its upper edge and the cumulative probability at the upper edge.
using Table = std::vector<std::array<double, 3>>;

/// Both arrays of one histogram.
struct Arrays {
  DensityArray density;  ///< what densities are looked up in
  Table table;           ///< what probabilities and values are looked up in
};

/// Builds both arrays from a worksheet range.
///
/// - "Raw Data": every cell is a value. Bins of equal width from the smallest value to the largest,
///   as many as the larger of Sturges' number (J. Amer. Statist. Assoc. 21 (1926) 65-66) and
///   Freedman and Diaconis' (Z. Wahrsch. verw. Gebiete 57 (1981) 453-476), at most 1000.
/// - "Data and Counts (2 cols)": a value and how often it occurs. Bins meet halfway between
///   neighbouring values; the outer ones are symmetric about theirs. A value that occurs 0 times
///   counts only between others.
/// - "Bins and Counts (3 cols)": lower edge, upper edge, count, in any order; gaps are allowed.
///
/// Wholly blank rows are skipped, where an empty text counts as blank; a blank count is 0.
/// @param range          a range object; its cells are read with one "Value" when that is an array
/// @param configuration  one of `layouts`, or an object whose "Value" is one
/// @param density,table  replaced on success, otherwise left as they are
/// @returns the first fault of the data as a sentence, "" on success
/// @throws RuntimeError from the range; 6 when edges or densities leave the range of doubles
std::string CreateHistogramArrays(const Variant& range, const Variant& configuration,
                                  DensityArray& density, Table& table, Line caller = Line::here());

/// The untruncated density at x, or 0 where the limits cut x away. It is not rescaled by the kept
/// probability. 1 at the value of a point mass.
/// @param priorX  when numeric and below x: the point drawn before x; the result is then the
///                greatest density that occurs in the kept part of (priorX, x], so that no bin is
///                too narrow to be seen in a graph
double density(double x, const DensityArray& bins, const Limits& limits, const Variant& priorX,
               Line caller = Line::here());

/// The probability of a value up to x.
double HistogramCDF(double x, const Table& table, Line caller = Line::here());

/// The smallest value whose probability is p; the first value of the distribution for p <= 0, the
/// last for p >= 1.
double HistogramINV(double p, const Table& table, Line caller = Line::here());

/// The band of probabilities kept by the limits: first half of HistogramVAL.
Band band(const Table& table, const Limits& limits, Line caller = Line::here());

/// The value at the position p of the kept band: second half of HistogramVAL. The only value of a
/// point mass, whatever the limits.
double value(double p, const Table& table, const Band& band, Line caller = Line::here());

/// `density` with limits as a host holds them: a numeric variant is a limit, anything else is none.
inline double HistogramPDF(double x, const DensityArray& bins, const Variant& ltl,
                           const Variant& utl, const Variant& priorX = Variant::missing(),
                           Line caller = Line::here()) {
  return density(x, bins, limitsFrom(ltl, utl), priorX, caller);
}

/// The value whose position in the cumulative scale of the truncated distribution is p: a random
/// draw when p is a uniform random number of [0, 1].
inline double HistogramVAL(double p, const Table& table, const Variant& ltl = Variant::missing(),
                           const Variant& utl = Variant::missing(), Line caller = Line::here()) {
  return value(p, table, band(table, limitsFrom(ltl, utl), caller), caller);
}

}  // namespace palvex::m_Histogram
