#include "families/m_Histogram.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "runtime/Object.h"

namespace palvex::m_Histogram {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// ---- the cells ----

/// A value; a value and its count; or a lower edge, an upper edge and a count.
using Entry = std::array<double, 3>;

/// The configuration itself, or what the cell that it refers to holds.
Variant layoutOf(const Variant& configuration) {
  if (!configuration.isObject()) return configuration;
  try {
    return configuration.toObject()->get("Value");
  } catch (const RuntimeError&) {
    return {};  // an object that is no cell names no layout
  }
}

/// How many cells make an entry of the layout; 0 for what is no layout.
std::int32_t entryWidth(const Variant& configuration) {
  const Variant text = layoutOf(configuration);
  const auto* layout = std::find_if(layouts.begin(), layouts.end(),
                                    [&](std::string_view name) { return text == Variant(name); });
  return layout == layouts.end() ? 0 : static_cast<std::int32_t>(layout - layouts.begin() + 1);
}

/// The cells of a range as a two-dimensional array. A range whose value is no array does not tell
/// how many columns it has: where its number of cells is a multiple of `width`, they are taken as
/// rows of that width, else as one column.
Variant cellsOf(Object& range, std::int32_t width) {
  Variant value = range.get("Value");
  if (value.isArray()) return value;
  const double count = range.get("Count").toDouble();
  if (!(count >= 0 && count < std::numeric_limits<std::int32_t>::max())) raise(fault::overflow);
  const auto n = static_cast<std::int32_t>(count);
  std::vector<Variant> read;  // grows with what there is, whatever the count says
  for (std::int32_t i = 1; i <= n; ++i)
    read.push_back(range.get("Cells", {i}).toObject()->get("Value"));
  const std::int32_t columns = n % width == 0 ? width : 1;
  Variant cells = Variant::array(n / columns, columns);
  for (std::int32_t i = 0; i < n; ++i) {
    cells.at(i / columns + 1, i % columns + 1) = std::move(read[static_cast<std::size_t>(i)]);
  }
  return cells;
}

bool isBlank(const Variant& cell) {
  return cell.isEmpty() || cell == Variant("");
}

/// Reads one cell of an entry. Returns the fault of a bad cell, "" for a good one.
std::string readNumber(const Variant& cell, bool isCount, double& number) {
  number = 0;
  if (cell.isError()) return "Error in cell value for Data Range.";
  if (isCount && isBlank(cell)) return "";
  if (isCount && (cell == Variant(infinity) || cell == Variant(-infinity)))
    return "Counts can not be negative.";
  if (!cell.isNumeric()) return "Non-numeric value in the data range.";
  number = cell.toDouble();
  return isCount && number < 0 ? "Counts can not be negative." : "";
}

/// Reads all entries of `width` consecutive cells, row by row, blank ones skipped; the first fault.
std::string readEntries(const Variant& cells, std::int32_t width, std::vector<Entry>& entries) {
  const std::int32_t columns = cells.upperBound(2);
  const auto isCount = [&](std::int32_t i) { return width > 1 && i == width - 1; };
  for (std::int32_t row = 1; row <= cells.upperBound(1); ++row) {
    for (std::int32_t first = 1; first <= columns; first += width) {
      bool blank = true;
      for (std::int32_t i = 0; i < width; ++i) blank = blank && isBlank(cells.at(row, first + i));
      if (blank) continue;
      Entry entry{};
      for (std::int32_t i = 0; i < width; ++i) {
        double& number = entry[static_cast<std::size_t>(i)];
        std::string fault = readNumber(cells.at(row, first + i), isCount(i), number);
        if (!fault.empty()) return fault;
        if (width == 3 && i == 1 && entry[1] <= entry[0])
          return "Upper bin edge must be greater than lower bin edge.";
      }
      entries.push_back(entry);
    }
  }
  return entries.empty() ? "No data" : "";
}

// ---- from entries to bins ----

struct Bin {
  double lower;
  double upper;
  double count;
};

/// The quantile of sorted values, linear between neighbours.
double quantileOf(const std::vector<double>& sorted, double p) {
  const double position = p * static_cast<double>(sorted.size() - 1);
  const auto i = static_cast<std::size_t>(position);
  const double next = sorted[std::min(i + 1, sorted.size() - 1)];
  return sorted[i] + (next - sorted[i]) * (position - static_cast<double>(i));
}

/// How many bins show n = sorted.size() >= 2 values, not all equal, best.
int binCount(const std::vector<double>& sorted) {
  constexpr int most = 1000;
  const int sturges = static_cast<int>(std::bit_width(sorted.size() - 1)) + 1;  // ceil(log2 n) + 1
  const double iqr = quantileOf(sorted, 0.75) - quantileOf(sorted, 0.25);
  if (!(iqr > 0)) return sturges;
  const double range = sorted.back() - sorted.front();
  const double width = 2 * iqr / std::cbrt(static_cast<double>(sorted.size()));
  const double freedmanDiaconis = std::ceil(std::min<double>(range / width, most));
  return std::max(std::min(sturges, most), static_cast<int>(freedmanDiaconis));
}

/// Bins of equal width over the values; fewer where doubles lie too far apart for so many edges.
std::vector<Bin> equalBins(const std::vector<Entry>& entries) {
  std::vector<double> values;
  values.reserve(entries.size());
  for (const Entry& entry : entries) values.push_back(entry[0]);
  std::sort(values.begin(), values.end());
  const double least = values.front();
  const double range = checked(values.back() - least);
  const auto total = static_cast<double>(values.size());
  if (range == 0) return {{least, least, total}};

  const int n = binCount(values);
  std::vector<double> edges;
  edges.reserve(static_cast<std::size_t>(n) + 1);
  for (int i = 0; i < n; ++i)
    edges.push_back(std::min(values.back(), least + range * (i / static_cast<double>(n))));
  edges.push_back(values.back());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());

  std::vector<Bin> bins;
  bins.reserve(edges.size() - 1);
  auto from = values.begin();
  for (std::size_t i = 1; i < edges.size(); ++i) {
    const auto to =
        i + 1 == edges.size() ? values.end() : std::lower_bound(from, values.end(), edges[i]);
    bins.push_back({edges[i - 1], edges[i], static_cast<double>(to - from)});
    from = to;
  }
  return bins;
}

/// Where the bins of neighbouring values a < b meet: halfway, in [a, b).
double halfway(double a, double b) {
  const double middle = a + checked(b - a) / 2;
  return middle < b ? middle : a;
}

/// A bin about each value that counts.
std::vector<Bin> binsAboutValues(std::vector<Entry> entries) {
  std::sort(entries.begin(), entries.end());
  std::vector<Entry> merged;
  for (const Entry& entry : entries) {
    if (!merged.empty() && merged.back()[0] == entry[0]) {
      merged.back()[1] += entry[1];
    } else {
      merged.push_back(entry);
    }
  }
  const auto counts = [](const Entry& entry) { return entry[1] > 0; };
  const auto first = std::find_if(merged.begin(), merged.end(), counts);
  const auto last = std::find_if(merged.rbegin(), merged.rend(), counts).base();
  if (first == merged.end()) return {};
  const std::vector<Entry> kept(first, last);
  if (kept.size() == 1) return {{kept[0][0], kept[0][0], kept[0][1]}};

  std::vector<Bin> bins;
  bins.reserve(kept.size());
  const double least = kept.front()[0];
  const double lowestEdge = least - (halfway(least, kept[1][0]) - least);
  double lower = std::min(lowestEdge, std::nextafter(least, -infinity));
  for (std::size_t i = 0; i + 1 < kept.size(); ++i) {
    const double upper = halfway(kept[i][0], kept[i + 1][0]);
    bins.push_back({lower, upper, kept[i][1]});
    lower = upper;
  }
  const double greatest = kept.back()[0];
  const double highestEdge = greatest + (greatest - lower);
  bins.push_back(
      {lower, std::max(highestEdge, std::nextafter(greatest, infinity)), kept.back()[1]});
  return bins;
}

/// The bins as given, in increasing order; nothing where two of them overlap.
std::optional<std::vector<Bin>> givenBins(const std::vector<Entry>& entries) {
  std::vector<Bin> bins;
  bins.reserve(entries.size());
  for (const Entry& entry : entries) bins.push_back({entry[0], entry[1], entry[2]});
  std::sort(bins.begin(), bins.end(), [](const Bin& a, const Bin& b) { return a.lower < b.lower; });
  const auto overlapping = std::adjacent_find(
      bins.begin(), bins.end(), [](const Bin& a, const Bin& b) { return b.lower < a.upper; });
  if (overlapping != bins.end()) return std::nullopt;
  return bins;
}

std::optional<std::vector<Bin>> binsFrom(std::vector<Entry> entries, std::int32_t width) {
  if (width == 1) return equalBins(entries);
  if (width == 2) return binsAboutValues(std::move(entries));
  return givenBins(entries);
}

Arrays tabulate(const std::vector<Bin>& bins, double total) {
  Arrays arrays;
  arrays.density.reserve(3 * bins.size());
  arrays.table.reserve(bins.size());
  double running = 0;
  for (const Bin& bin : bins) {
    const double width = checked(bin.upper - bin.lower);
    const double density = width == 0 ? 1 : checked(bin.count / total / width);
    running += bin.count;
    arrays.density.insert(arrays.density.end(), {bin.lower, bin.upper, density});
    arrays.table.push_back({bin.lower, bin.upper, running / total});
  }
  return arrays;
}

// ---- searching ----

/// The first of the numbers 0..n-1 for which `holds` is true, n when there is none. `holds` must be
/// true for all numbers after the first such.
template <class Predicate>
std::size_t firstThat(std::size_t n, Predicate&& holds) {
  std::size_t first = 0;
  while (first < n) {
    const std::size_t middle = first + (n - first) / 2;
    if (holds(middle)) {
      n = middle;
    } else {
      first = middle + 1;
    }
  }
  return first;
}

/// The greatest density of the bins that have values in [from, to].
double greatestDensity(const DensityArray& bins, double from, double to) {
  const std::size_t n = bins.size() / 3;
  double greatest = 0;
  std::size_t i = firstThat(n, [&](std::size_t bin) {
    const double upper = bins[3 * bin + 1];
    return bin + 1 == n ? upper >= from : upper > from;
  });
  for (; i < n && bins[3 * i] <= to; ++i) greatest = std::max(greatest, bins[3 * i + 2]);
  return greatest;
}

void checkBuilt(bool built, Line line = Line::here()) {
  if (!built) raise(fault::subscript, line);
}

double probabilityBefore(const Table& table, std::size_t i) {
  return i == 0 ? 0 : table[i - 1][2];
}

/// The value at probability p inside bin i, whose own probability is positive.
double valueInBin(const Table& table, std::size_t i, double p) {
  const auto& [lower, upper, cumulative] = table[i];
  const double before = probabilityBefore(table, i);
  return std::min(upper, lower + (upper - lower) * ((p - before) / (cumulative - before)));
}

/// The first bin that reaches beyond probability p, the last one when none does.
std::size_t binBeyond(const Table& table, double p) {
  return firstThat(table.size() - 1, [&](std::size_t i) { return table[i][2] > p; });
}

/// The first bin that reaches probability p, the last one when none does.
std::size_t binReaching(const Table& table, double p) {
  return firstThat(table.size() - 1, [&](std::size_t i) { return table[i][2] >= p; });
}

}  // namespace

std::string CreateHistogramArrays(const Variant& range, const Variant& configuration,
                                  DensityArray& density, Table& table, Line caller) try {
  const std::int32_t width = entryWidth(configuration);
  if (width == 0) return "Unrecognized data configuration type";
  const Variant cells = cellsOf(*range.toObject(), width);
  if (width > 1 && cells.upperBound(2) != width)
    return "Data range must have " + std::to_string(width) + " columns.";

  std::vector<Entry> entries;
  if (std::string fault = readEntries(cells, width, entries); !fault.empty()) return fault;
  const auto bins = binsFrom(std::move(entries), width);
  if (!bins) return "Overlap in histogram bins.";
  double total = 0;
  for (const Bin& bin : *bins) total += bin.count;
  if (total == 0) return "No data";

  Arrays arrays = tabulate(*bins, checked(total));
  density = std::move(arrays.density);
  table = std::move(arrays.table);
  return "";
} catch (RuntimeError& error) {
  error.leave("m_Histogram.CreateHistogramArrays", caller);
}

double density(double x, const DensityArray& bins, const Limits& limits, const Variant& priorX,
               Line caller) try {
  checkBuilt(bins.size() >= 3);
  if (std::isnan(x)) raise(fault::overflow);
  if (limits.cut(x) || x < bins.front() || x > bins[bins.size() - 2]) return 0;
  const double prior = priorX.isNumeric() ? priorX.toDouble() : x;
  if (prior >= x) return greatestDensity(bins, x, x);

  const auto& [lower, upper] = limits;
  const bool cuts = lower && *lower <= x && lower != upper;  // equal limits cut nothing
  const double from = cuts ? std::max(prior, *lower) : prior;
  const double greatest = greatestDensity(bins, from, x);
  if (!limits.reversed() || *upper <= prior || *upper >= x) return greatest;
  return std::max(greatest, greatestDensity(bins, prior, *upper));
} catch (RuntimeError& error) {
  error.leave("m_Histogram.HistogramPDF", caller);
}

double HistogramCDF(double x, const Table& table, Line caller) try {
  checkBuilt(!table.empty());
  if (std::isnan(x)) raise(fault::overflow);
  const std::size_t next = firstThat(table.size(), [&](std::size_t i) { return table[i][0] > x; });
  if (next == 0) return 0;
  const auto& [lower, upper, cumulative] = table[next - 1];
  if (x >= upper) return cumulative;
  const double before = probabilityBefore(table, next - 1);
  return std::min(cumulative, before + (cumulative - before) * ((x - lower) / (upper - lower)));
} catch (RuntimeError& error) {
  error.leave("m_Histogram.HistogramCDF", caller);
}

double HistogramINV(double p, const Table& table, Line caller) try {
  checkBuilt(!table.empty());
  if (std::isnan(p)) raise(fault::overflow);
  if (p <= 0) return table[binBeyond(table, 0)][0];
  const double q = std::min(p, 1.0);
  return valueInBin(table, binReaching(table, q), q);
} catch (RuntimeError& error) {
  error.leave("m_Histogram.HistogramINV", caller);
}

Band band(const Table& table, const Limits& limits, Line caller) try {
  checkBuilt(!table.empty());
  if (table.front()[0] == table.back()[1]) return {};
  Band kept = keptBand(limits, [&](double limit) { return HistogramCDF(limit, table); });
  // Reversed limits in one gap have the same probability, and still keep every value.
  kept.wrapped = limits.reversed();
  if (kept.wrapped) kept.split = kept.upper / (1 - kept.lower + kept.upper);
  return kept;
} catch (RuntimeError& error) {
  error.leave("m_Histogram.HistogramVAL", caller);
}

double value(double p, const Table& table, const Band& band, Line caller) try {
  // By rounding, a probability may end up a little beyond the piece that the limits keep. Where the
  // piece ends in a gap, the value would then lie on the far side of the gap.
  const double position = std::clamp(p, 0.0, 1.0);
  const double end = band.wrapped && position > band.split ? 1 : band.upper;
  const double q = std::min(band.probability(position), end);
  // The band may begin in a gap, whose left end the limits have cut away: its first value is the
  // gap's right end.
  return q == band.lower && q < 1 ? valueInBin(table, binBeyond(table, q), q)
                                  : HistogramINV(q, table);
} catch (RuntimeError& error) {
  error.leave("m_Histogram.HistogramVAL", caller);
}

}  // namespace palvex::m_Histogram
