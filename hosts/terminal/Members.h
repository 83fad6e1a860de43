#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hosts/terminal/Arguments.h"

namespace palvex::terminal {

/// What `pdf`, `cdf` and `RandVal` of c_Distribution answer, beside the law that they stand for:
/// docs/departures.md tells where the two differ.
class Members {
 public:
  /// @throws Refusal when ParamsOK finds a fault
  Members(const std::string& type, const std::vector<DistributionArguments::Item>& items);

  double pdf(double x) { return distribution_.pdf(x); }
  double cdf(double x) { return distribution_.cdf(x); }
  double draw(double p) { return distribution_.RandVal(p); }

  /// The law, or why there is none.
  [[nodiscard]] const std::optional<Law>& law() const { return law_; }
  [[nodiscard]] const std::string& whyNoLaw() const { return whyNoLaw_; }

  /// Whether a member's density or probability is the law's, to six digits.
  static bool same(double member, double law);
  /// Whether a draw is the law's, to a millionth of its standard deviation.
  [[nodiscard]] bool sameDraw(double member, double law) const;

 private:
  c_Distribution distribution_;
  std::optional<Law> law_;
  std::string whyNoLaw_;
  double sd_ = 0;
};

/// Adds --members to a command.
void addMembers(CLI::App& command, bool& members);

}  // namespace palvex::terminal
