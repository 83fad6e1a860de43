#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "engine/Catalogue.h"
#include "engine/Law.h"
#include "runtime/Variant.h"

/// The types of law that a host offers people by name.
namespace palvex {

/// A type: its name, and the names of its parameters in their order.
using LawType = CatalogueEntry;

/// The ten of the engine, and two that are set by what people know: PERT and LognormalMean.
inline constexpr std::array<LawType, catalogue.size() + 2> lawTypes = [] {
  std::array<LawType, catalogue.size() + 2> types{};
  std::copy(catalogue.begin(), catalogue.end(), types.begin());
  types[catalogue.size()] = {"PERT", {"Minimum", "Likely", "Maximum"}};
  types[catalogue.size() + 1] = {"LognormalMean", {"Mean", "Std Dev", "Minimum"}};
  return types;
}();

/// The type of a name, exact to the letter case, or null.
constexpr const LawType* findLawType(std::string_view name) noexcept {
  for (const LawType& type : lawTypes) {
    if (type.name == name) return &type;
  }
  return nullptr;
}

/// A law from what a worksheet holds: numbers, texts, ranges; an empty parameter is 0, one that is
/// left out at the end is empty, and an empty limit is none.
/// @throws std::invalid_argument with the engine's sentence for the first fault
/// @throws RuntimeError from the host, and from a curve's fit
[[nodiscard]] Law makeLaw(std::string_view type, std::span<const Variant> parameters,
                          const Variant& ltl = {}, const Variant& utl = {});

/// The same from numbers, quickly: for parameters that change with each call. Not for histograms.
/// @param parameters  as many as the type has
/// @throws std::invalid_argument
[[nodiscard]] Law makeLaw(const LawType& type, std::span<const double> parameters,
                          const Limits& limits = {});

}  // namespace palvex
