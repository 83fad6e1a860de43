#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "families/m_Histogram.h"

namespace palvex {

/// A type of distribution: its name and the display names of its parameters, in their order.
struct CatalogueEntry {
  std::string_view name;
  std::array<std::string_view, 4> parameters;  // the unused ones empty

  [[nodiscard]] constexpr std::int16_t parameterCount() const noexcept {
    int count = 0;
    for (const std::string_view parameter : parameters) count += parameter.empty() ? 0 : 1;
    return static_cast<std::int16_t>(count);
  }
};

/// The ten types, in the order in which a host lists them.
inline constexpr std::array<CatalogueEntry, 10> catalogue{{
    {"Normal", {"Mean", "Std Dev"}},
    {"Uniform", {"Minimum", "Maximum"}},
    {"Triangular", {"Minimum", "Likely", "Maximum"}},
    {"Lognormal", {"Location", "Scale", "Minimum"}},
    {"Exponential", {"Lambda", "Minimum"}},
    {"Weibull", {"Shape", "Scale", "Minimum"}},
    {"Beta", {"Alpha", "Beta", "Minimum", "Maximum"}},
    {"Gamma", {"Shape", "Scale", "Minimum"}},
    {"Johnson", {"Mean", "Std Dev", "Skewness", "Kurtosis"}},
    {"Histogram", {"Data Range", "Data Config"}},
}};

/// The layouts of a histogram's worksheet data.
inline constexpr auto dataConfigurations = m_Histogram::layouts;

/// The entry of a type's name, exact to the letter case, or null.
constexpr const CatalogueEntry* findEntry(std::string_view name) noexcept {
  for (const CatalogueEntry& entry : catalogue) {
    if (entry.name == name) return &entry;
  }
  return nullptr;
}

}  // namespace palvex
