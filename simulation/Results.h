#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simulation/Percentiles.h"
#include "simulation/Sampling.h"
#include "simulation/Statistics.h"

namespace palvex::simulation {

// What is undefined, such as the standard deviation of one trial, is NaN.

struct Percentile {
  double percent;
  double value;
  double low;  // the interval that holds the percentile with a confidence of 95 %
  double high;
};

/// How a result depends on an input.
struct Sensitivity {
  double rankCorrelation;  // Spearman's, on the first trials
  double varianceShare;    // of the result's variance, what the input explains alone
  double meanLow;          // the result's mean in the lowest tenth of the input
  double meanHigh;         // and in the highest
};

/// What was known after some of the trials.
struct Settling {
  std::uint64_t trials;
  double mean;
  double standardError;
  Percentile p80;
};

struct InputStatistics {
  std::string name;
  std::string type;
  std::string unit;
  Moments moments;
};

struct ResultStatistics {
  std::string name;
  std::string unit;
  Moments moments;
  std::vector<Percentile> percentiles;
  std::vector<Percentile> marks;           // P10, P50, P80 and P90, whatever was asked for
  std::vector<Sensitivity> sensitivities;  // to each input, in their order
  Histogram histogram;                     // the running sum of its counts is the S-curve
  std::vector<Settling> settling;
};

struct Results {
  std::uint64_t trials = 0;    // that count
  std::uint64_t failures = 0;  // that were left out
  std::uint64_t asked = 0;     // at most
  std::uint64_t seed = 0;
  Sampling sampling = Sampling::random;
  std::uint64_t rankTrials = 0;  // that the rank correlations are made from
  bool cancelled = false;        // before all was done
  bool settled = false;          // stopped because the intervals were narrow enough
  std::vector<InputStatistics> inputs;
  std::vector<ResultStatistics> results;
};

}  // namespace palvex::simulation
