#pragma once

namespace palvex {

/// Where a distribution has values: from `lower` to `upper`, either infinite, each end counting as
/// a value or not.
struct Support {
  double lower;
  double upper;
  bool lowerIncluded = true;
  bool upperIncluded = true;
};

}  // namespace palvex
