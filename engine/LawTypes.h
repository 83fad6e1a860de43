#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "engine/Family.h"
#include "engine/Law.h"
#include "runtime/Variant.h"

/// The types of law that a host offers people by name.
namespace palvex {

/// A type: its name, and the names of its parameters in their order.
struct LawType {
  std::string_view name;                       ///< as a host chooses it
  std::array<std::string_view, 4> parameters;  ///< display names; the unused ones empty

  /// How many parameters the type has, from 2 to 4.
  [[nodiscard]] std::int16_t parameterCount() const noexcept {
    return static_cast<std::int16_t>(
        std::count_if(parameters.begin(), parameters.end(), [](auto one) { return !one.empty(); }));
  }
};

/// The ten of the engine, and two set by figures that people can tell: PERT and LognormalMean.
inline const std::array<LawType, families.size() + 2> lawTypes = [] {
  std::array<LawType, families.size() + 2> types{};
  for (std::size_t i = 0; i < families.size(); ++i) {
    types[i].name = families[i].name;
    std::transform(families[i].parameters->begin(), families[i].parameters->end(),
                   types[i].parameters.begin(), [](const Parameter& one) { return one.name; });
  }
  types[families.size()] = {"PERT", {"Minimum", "Likely", "Maximum"}};
  types[families.size() + 1] = {"LognormalMean", {"Mean", "Std Dev", "Minimum"}};
  return types;
}();

/// The type of a name, exact to the letter case, or null.
inline const LawType* findLawType(std::string_view name) noexcept {
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
