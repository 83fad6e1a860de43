#pragma once

#include <string_view>
#include <vector>

#include "runtime/RuntimeError.h"
#include "runtime/Variant.h"

namespace palvex {

/// An object of the host, reached by the names of its members (late binding). Worksheet ranges are
/// such objects; the engine knows no other kind.
///
/// A host derives from it and overrides `doGet`; whatever `doGet` throws arrives at the engine as a
/// RuntimeError, but for std::bad_alloc: a lack of memory says nothing about the object.
class Object {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;

  /// The value of a member, read now.
  /// @param member     its name, letter case ignored
  /// @param arguments  its arguments, such as the index of a collection's item
  /// @throws RuntimeError 438 for an unknown member, or the host's own error
  /// @throws std::bad_alloc
  [[nodiscard]] Variant get(std::string_view member, const std::vector<Variant>& arguments = {},
                            Line line = Line::here());

 protected:
  /// Reads a member. An override calls this base version for the members that it does not know; it
  /// raises error 438.
  virtual Variant doGet(std::string_view member, const std::vector<Variant>& arguments);
};

/// Whether two names of members are the same: letters of the Latin alphabet match in either case.
[[nodiscard]] bool sameMember(std::string_view a, std::string_view b) noexcept;

}  // namespace palvex
