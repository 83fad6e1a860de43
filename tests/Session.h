#pragma once

// What a host does with distributions of every kind, one call of a member after the other.

#include <functional>
#include <string>
#include <vector>

#include "FakeRange.h"
#include "engine/c_Distribution.h"

namespace palvex {

struct Case {
  std::string type;
  std::vector<Variant> parameters;
};

/// Each type with a parameter in a cell; a text that is too long for a string's own room; a fault.
inline std::vector<Case> cases() {
  return {{"Normal", {cell(1), "0000000000000000002"}},
          {"Normal", {cell(1), cell(-2)}},
          {"Uniform", {0, cell(3)}},
          {"Triangular", {0, 1, cell(3)}},
          {"Lognormal", {0, cell(0.5), 0}},
          {"Exponential", {cell(2), 0}},
          {"Weibull", {2, cell(1), 0}},
          {"Beta", {2, cell(3), 0, 3}},
          {"Gamma", {cell(2), 1, 0}},
          {"Johnson", {cell(1), 1, 0.5, 4}},
          {"Johnson", {cell(1), 0.5, 0.5, 2.5}},
          {"Histogram", {block(2, {1, 4, 2, 5, 3, 1}), "Data and Counts (2 cols)"}}};
}

/// The object, checked, between limits and with a graph of three points.
inline c_Distribution described(const Case& as, bool dynamic) {
  c_Distribution d;
  d.distType(as.type);
  const std::array members{&d.param1, &d.param2, &d.param3, &d.param4};
  for (std::size_t i = 0; i < as.parameters.size(); ++i) *members[i] = as.parameters[i];
  d.ltl = "000000000000000000000.2";
  d.utl = cell(2.5);
  d.Dynamic = dynamic;
  std::string cause;
  d.ParamsOK(cause);
  d.ResizeArrays(3);
  d.GraphX(3, 0.5);
  return d;
}

/// A call and its answer as a number.
struct Member {
  const char* name;
  std::function<double(c_Distribution&)> call;
};

inline const std::vector<Member>& members() {
  static const c_Distribution other = described(cases().back(), false);
  static const std::vector<Member> all{
      {"ParamsOK",
       [](c_Distribution& d) {
         std::string cause;
         return d.ParamsOK(cause) ? -1 : static_cast<double>(cause.size());
       }},
      {"RandVal", [](c_Distribution& d) { return d.RandVal(0.3); }},
      {"RandVal without an answer", [](c_Distribution& d) { return d.RandVal(2); }},
      {"pdf", [](c_Distribution& d) { return d.pdf(1.5); }},
      {"pdf without an answer", [](c_Distribution& d) { return d.pdf(NAN); }},
      {"cdf", [](c_Distribution& d) { return d.cdf(1.5); }},
      {"mean, StDev", [](c_Distribution& d) { return d.mean() + d.StDev() + d.StDev(3); }},
      {"CalcMean, CalcStdev", [](c_Distribution& d) { return d.CalcMean() + d.CalcStdev(1); }},
      {"XMin, XMax", [](c_Distribution& d) { return d.XMin() + d.XMax(); }},
      {"CreateGraphData", [](c_Distribution& d) { return d.CreateGraphData(0, 3), 0; }},
      {"ResizeArrays", [](c_Distribution& d) { return d.ResizeArrays(50).isEmpty(); }},
      {"the catalogue",
       [](c_Distribution& d) {
         return d.ValidDistributions().upperBound() + d.DataConfigurations().upperBound() +
                d.GuessParamValue(1, 5) + static_cast<double>(d.ParamName(1).size());
       }},
      {"an unknown type", [](c_Distribution& d) { return d.distType("none of the types"), 0; }},
      {"law", [](c_Distribution& d) { return d.law().mean(); }},
      {"a copy",
       [](c_Distribution& d) {
         c_Distribution copy = d;
         return copy.RandVal(0.3);
       }},
      {"an assignment", [](c_Distribution& d) { return (d = other).RandVal(0.3); }}};
  return all;
}

}  // namespace palvex
