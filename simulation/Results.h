#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simulation/Percentiles.h"
#include "simulation/Sampling.h"
#include "simulation/Statistics.h"

namespace palvex::simulation {

// Values have the unit of their row. What is undefined, such as the standard deviation of one
// trial, is NaN.

/// A percentile of a result, and how sure it is.
struct Percentile {
  double percent;  ///< from 0 to 100
  double value;    ///< the ceil(percent n / 100)-th smallest of the n values, exactly
  double low;      ///< lower end of the interval that holds it with a confidence of 95 %
  double high;     ///< upper end of that interval
};

/// How a result depends on an input.
struct Sensitivity {
  double rankCorrelation;  ///< Spearman's, on the first Results::rankTrials trials
  double varianceShare;    ///< what the input alone explains of the result's variance, from 0 to 1
  double meanLow;          ///< mean of the result in the lowest tenth of the input
  double meanHigh;         ///< mean of the result in the highest tenth of the input
};

/// What was known of a result after some of the trials.
struct Settling {
  std::uint64_t trials;  ///< the first ones, 100, 200, 500, ...
  double mean;           ///< of their values
  double standardError;  ///< of that mean
  Percentile p80;        ///< of their values
};

/// What was drawn of an input.
struct InputStatistics {
  std::string name;  ///< that of its row
  std::string type;  ///< one of lawTypes
  std::string unit;  ///< for people: "days"
  Moments moments;   ///< of the values in all trials, with 0 where it did not happen
};

/// What became of a result.
struct ResultStatistics {
  std::string name;                        ///< that of its row
  std::string unit;                        ///< for people: "days"
  Moments moments;                         ///< of the values in all trials
  std::vector<Percentile> percentiles;     ///< those of Settings::percents, in increasing order
  std::vector<Percentile> marks;           ///< P10, P50, P80 and P90, whatever was asked for
  std::vector<Sensitivity> sensitivities;  ///< to each input, in the order of Results::inputs
  Histogram histogram;                     ///< the running sum of its counts is the S-curve
  std::vector<Settling> settling;          ///< with more and more trials
};

/// All that a simulation answers.
struct Results {
  std::uint64_t trials = 0;               ///< how many count: those that did not fail
  std::uint64_t failures = 0;             ///< how many failed and were left out
  std::uint64_t asked = 0;                ///< how many were asked for
  std::uint64_t seed = 0;                 ///< that of the Settings
  Sampling sampling = Sampling::random;   ///< that of the Settings
  std::uint64_t rankTrials = 0;           ///< how many the rank correlations are made from
  bool cancelled = false;                 ///< whether it was ended before all trials were done
  bool settled = false;                   ///< whether it ended early, see Settings::until
  std::vector<InputStatistics> inputs;    ///< from top to bottom of the table
  std::vector<ResultStatistics> results;  ///< from top to bottom of the table
};

}  // namespace palvex::simulation
