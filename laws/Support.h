#pragma once

namespace palvex {

/// Where a distribution has values: from `lower` to `upper`, either infinite, each end counting as
/// a value or not.
struct Support {
  double lower;               ///< may be -infinity
  double upper;               ///< may be infinity
  bool lowerIncluded = true;  ///< whether `lower` is a value
  bool upperIncluded = true;  ///< whether `upper` is one
};

}  // namespace palvex
