#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "runtime/Boolean.h"
#include "runtime/RuntimeError.h"

namespace palvex {

class Object;

/// What a host hands over or receives: nothing, a missing argument, a Boolean, a number, a text, a
/// worksheet error value, an object or an array. It is converted by toDouble and the like only,
/// which raise error 13 for a content that does not convert.
class Variant {
 public:
  /// Empty.
  Variant() noexcept = default;
  /// @{
  /// Same kind and content; the two share an object. One that was moved from keeps its kind, not
  /// its content.
  Variant(const Variant&);
  Variant(Variant&&) noexcept;
  Variant& operator=(const Variant&);
  Variant& operator=(Variant&&) noexcept;
  /// @}
  ~Variant();

  /// @{
  /// A Boolean.
  Variant(std::same_as<bool> auto value) noexcept : content_(Boolean(value)) {}
  Variant(Boolean value) noexcept : content_(value) {}
  /// @}
  /// Any other arithmetic type is a number.
  template <class Number>
  requires(std::is_arithmetic_v<Number> && !std::same_as<Number, bool>) Variant(Number value)
  noexcept : content_(static_cast<double>(value)) {}
  /// @{
  /// A text.
  Variant(std::string text) noexcept : content_(std::move(text)) {}
  Variant(std::string_view text) : content_(std::string(text)) {}
  Variant(const char* text) : content_(std::string(text)) {}
  /// @}
  /// An object; a null pointer is an object without members.
  template <std::derived_from<Object> Kind>
  Variant(std::shared_ptr<Kind> object) noexcept
      : content_(std::shared_ptr<Object>(std::move(object))) {}
  // A pointer would silently become a Boolean.
  template <class Pointee>
  requires(!std::same_as<std::remove_cv_t<Pointee>, char>) Variant(Pointee*)
  = delete;
  Variant(std::nullptr_t) = delete;

  /// An optional argument that was left out.
  static const Variant& missing() noexcept;
  /// A worksheet error value, such as 2042 for "not available".
  static Variant error(std::int32_t code) noexcept;
  /// A one-dimensional array of empties with the indices 1..n; error 9 for n < 0.
  static Variant array(std::int32_t n, Line line = Line::here());
  /// A two-dimensional array of empties with indices from 1; error 9 for a negative size.
  static Variant array(std::int32_t rows, std::int32_t columns, Line line = Line::here());

  /// Whether nothing was ever assigned.
  [[nodiscard]] bool isEmpty() const noexcept { return holds<std::monostate>(); }
  /// Whether it stands for an argument that was left out.
  [[nodiscard]] bool isMissing() const noexcept { return holds<Missing>(); }
  /// Whether it is a text, numeric or not.
  [[nodiscard]] bool isText() const noexcept { return holds<std::string>(); }
  /// Whether it is a worksheet error value.
  [[nodiscard]] bool isError() const noexcept { return holds<ErrorValue>(); }
  /// Whether it is an object, be it a null one.
  [[nodiscard]] bool isObject() const noexcept { return holds<std::shared_ptr<Object>>(); }
  /// Whether it is an array of one or two dimensions.
  [[nodiscard]] bool isArray() const noexcept { return holds<Array>(); }
  /// True for a finite number, a Boolean and a numeric text (see NumericText.h).
  [[nodiscard]] bool isNumeric() const;

  /// As a number: true is -1, empty is 0, a numeric text its value; else error 13.
  [[nodiscard]] double toDouble(Line line = Line::here()) const;
  /// As a text: a number in its shortest form, "True" or "False", "" for empty; error 13 for a
  /// missing argument, an error value, an object and an array.
  [[nodiscard]] std::string toText(Line line = Line::here()) const;
  /// The object; error 13 for anything else and for a null one. The caller shares its ownership,
  /// because a host may empty this variant while the object answers.
  [[nodiscard]] std::shared_ptr<Object> toObject(Line line = Line::here()) const;
  /// The code of a worksheet error value; error 13 for anything else.
  [[nodiscard]] std::int32_t errorCode(Line line = Line::here()) const;

  /// @{
  /// An element of an array; error 9 out of bounds or with the wrong number of indices, 13 when
  /// this is no array.
  [[nodiscard]] Variant& at(std::int32_t i, Line line = Line::here());
  [[nodiscard]] const Variant& at(std::int32_t i, Line line = Line::here()) const;
  [[nodiscard]] Variant& at(std::int32_t row, std::int32_t column, Line line = Line::here());
  [[nodiscard]] const Variant& at(std::int32_t row, std::int32_t column,
                                  Line line = Line::here()) const;
  /// @}
  /// @{
  /// First and last index of a dimension (1 or 2); error 9 for a dimension that is not there, 13
  /// when this is no array.
  [[nodiscard]] std::int32_t lowerBound(std::int32_t dimension = 1, Line line = Line::here()) const;
  [[nodiscard]] std::int32_t upperBound(std::int32_t dimension = 1, Line line = Line::here()) const;
  /// @}

  /// Same kind and same content. Never raises.
  friend bool operator==(const Variant& a, const Variant& b) noexcept {
    return a.content_ == b.content_;
  }

 private:
  struct Missing {
    friend bool operator==(Missing, Missing) noexcept { return true; }
  };
  struct ErrorValue {
    std::int32_t code;
    friend bool operator==(ErrorValue a, ErrorValue b) noexcept { return a.code == b.code; }
  };
  struct Array {
    std::int32_t rows;
    std::int32_t columns;  // 0 for one dimension
    std::vector<Variant> cells;
    friend bool operator==(const Array& a, const Array& b) noexcept {
      return a.rows == b.rows && a.columns == b.columns && a.cells == b.cells;
    }
  };

  template <class Content>
  [[nodiscard]] bool holds() const noexcept {
    return std::holds_alternative<Content>(content_);
  }
  [[nodiscard]] const Array& toArray(Line line) const;

  std::variant<std::monostate, Missing, Boolean, double, std::string, ErrorValue,
               std::shared_ptr<Object>, Array>
      content_;
};

}  // namespace palvex
