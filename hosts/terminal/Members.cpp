#include "hosts/terminal/Members.h"

#include <cmath>

namespace palvex::terminal {

namespace {

constexpr double tolerance = 1e-6;

}  // namespace

Members::Members(const std::string& type, const std::vector<DistributionArguments::Item>& items) {
  setChecked(distribution_, type, items);
  try {
    law_ = lawOf(type, items);
    sd_ = law_->sd();
  } catch (const Refusal& refusal) {
    whyNoLaw_ = refusal.what();
  }
}

bool Members::same(double member, double law) {
  return member == law ||
         (std::isfinite(law) && std::abs(member - law) <= tolerance * std::abs(law));
}

bool Members::sameDraw(double member, double law) const {
  return same(member, law) || (std::isfinite(law) && std::abs(member - law) <= tolerance * sd_);
}

void addMembers(CLI::App& command, bool& members) {
  command.add_flag("--members", members,
                   "Show what the members pdf, cdf and RandVal answer, and where that is not the "
                   "law");
}

}  // namespace palvex::terminal
