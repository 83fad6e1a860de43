#include "component/Conversion.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "component/Boundary.h"
#include "component/HostObject.h"
#include "component/Text.h"

namespace palvex::component {

namespace {

/// Keeps an array's storage in place while its elements are read or written.
class ArrayAccess {
 public:
  explicit ArrayAccess(SAFEARRAY& array) : array_(array) {
    require(SafeArrayAccessData(&array_, reinterpret_cast<void**>(&elements_)));
  }
  ArrayAccess(const ArrayAccess&) = delete;
  ArrayAccess& operator=(const ArrayAccess&) = delete;
  ~ArrayAccess() { SafeArrayUnaccessData(&array_); }

  [[nodiscard]] std::byte* element(std::size_t i) const noexcept {
    return elements_ + i * SafeArrayGetElemsize(&array_);
  }

 private:
  SAFEARRAY& array_;
  std::byte* elements_ = nullptr;
};

std::int32_t elementCount(SAFEARRAY& array, UINT dimension) {
  LONG lower = 0;
  LONG upper = -1;
  require(SafeArrayGetLBound(&array, dimension, &lower));
  require(SafeArrayGetUBound(&array, dimension, &upper));
  return static_cast<std::int32_t>(std::int64_t{upper} - lower + 1);
}

/// The kinds of single value that the engine has a counterpart for.
bool isScalar(VARTYPE type) noexcept {
  switch (type) {
    case VT_EMPTY:
    case VT_NULL:
    case VT_BSTR:
    case VT_BOOL:
    case VT_ERROR:
    case VT_DISPATCH:
    case VT_UNKNOWN:
    case VT_DATE:
    case VT_R4:
    case VT_R8:
    case VT_I1:
    case VT_I2:
    case VT_I4:
    case VT_I8:
    case VT_INT:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_UI8:
    case VT_UINT:
    case VT_CY:
    case VT_DECIMAL:
      return true;
    default:
      return false;
  }
}

Variant scalar(const VARIANT& given);

/// The elements lie column by column: the first index runs fastest.
Variant fromArray(SAFEARRAY* array) {
  VARTYPE type = VT_EMPTY;
  if (array == nullptr || FAILED(SafeArrayGetVartype(array, &type))) raise(fault::typeMismatch);
  const UINT dimensions = SafeArrayGetDim(array);
  if (dimensions != 1 && dimensions != 2) raise(fault::typeMismatch);
  const std::int32_t rows = elementCount(*array, 1);
  const std::int32_t columns = dimensions == 2 ? elementCount(*array, 2) : 0;

  const ArrayAccess access(*array);
  const auto element = [&](std::size_t i) {
    VARIANT reference{};
    V_VT(&reference) = static_cast<VARTYPE>(type | VT_BYREF);
    V_BYREF(&reference) = access.element(i);
    return scalar(reference);
  };
  if (dimensions == 1) {
    Variant list = Variant::array(rows);
    for (std::int32_t i = 1; i <= rows; ++i) list.at(i) = element(static_cast<std::size_t>(i - 1));
    return list;
  }
  if (columns == 0) raise(fault::typeMismatch);
  Variant table = Variant::array(rows, columns);
  std::size_t i = 0;
  for (std::int32_t column = 1; column <= columns; ++column) {
    for (std::int32_t row = 1; row <= rows; ++row) table.at(row, column) = element(i++);
  }
  return table;
}

Variant fromObject(IUnknown* object) {
  if (object == nullptr) return std::shared_ptr<Object>();
  auto late = Ref<IUnknown>(object).as<IDispatch>();
  if (!late) raise(fault::typeMismatch);
  return std::make_shared<HostObject>(std::move(late));
}

/// A host's error value keeps its own number in the low half; other codes stay whole.
Variant fromErrorValue(SCODE code) {
  if (code == DISP_E_PARAMNOTFOUND) return Variant::missing();
  return Variant::error(HRESULT_FACILITY(code) == FACILITY_CONTROL ? HRESULT_CODE(code) : code);
}

Variant number(const VARIANT& given) {
  OwnedVariant converted;
  require(VariantChangeType(converted.receive(), const_cast<VARIANT*>(&given), 0, VT_R8));
  return V_R8(&converted.get());
}

Variant scalar(const VARIANT& given) {
  if (V_VT(&given) == (VT_VARIANT | VT_BYREF)) {
    const VARIANT* const referred = V_VARIANTREF(&given);
    if (referred == nullptr || V_VT(referred) == (VT_VARIANT | VT_BYREF))
      raise(fault::typeMismatch);
    return scalar(*referred);
  }
  if (!isScalar(static_cast<VARTYPE>(V_VT(&given) & ~VT_BYREF))) raise(fault::typeMismatch);
  if (V_ISBYREF(&given)) return scalar(copyOf(given).get());
  switch (V_VT(&given)) {
    case VT_EMPTY:
      return {};
    case VT_NULL:
      return Variant::missing();  // neither a number nor a text, like one that was left out
    case VT_BSTR:
      return utf8FromBstr(V_BSTR(&given));
    case VT_BOOL:
      return V_BOOL(&given) != VARIANT_FALSE;
    case VT_ERROR:
      return fromErrorValue(V_ERROR(&given));
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return fromObject(V_UNKNOWN(&given));
    case VT_R8:
    case VT_DATE:
      return V_R8(&given);
    default:
      return number(given);
  }
}

OwnedVariant arrayToAutomation(const Variant& array) {
  const std::int32_t size = array.upperBound();
  OwnedVariant made;
  V_ARRAY(&made.get()) = SafeArrayCreateVector(VT_VARIANT, 1, static_cast<ULONG>(size));
  if (V_ARRAY(&made.get()) == nullptr) throw std::bad_alloc();
  V_VT(&made.get()) = VT_ARRAY | VT_VARIANT;
  const ArrayAccess access(*V_ARRAY(&made.get()));
  for (std::int32_t i = 1; i <= size; ++i) {
    *reinterpret_cast<VARIANT*>(access.element(static_cast<std::size_t>(i - 1))) =
        toAutomation(array.at(i)).release();
  }
  return made;
}

}  // namespace

Variant fromAutomation(const VARIANT& given) {
  const VARIANT* content = &given;
  if (V_VT(content) == (VT_VARIANT | VT_BYREF)) content = V_VARIANTREF(content);
  if (content == nullptr) raise(fault::typeMismatch);
  if (!V_ISARRAY(content)) return scalar(*content);
  if (!V_ISBYREF(content)) return fromArray(V_ARRAY(content));
  if (V_ARRAYREF(content) == nullptr) raise(fault::typeMismatch);
  return fromArray(*V_ARRAYREF(content));
}

OwnedVariant toAutomation(const Variant& value) {
  OwnedVariant made;
  if (value.isEmpty()) return made;
  if (value.isArray()) return arrayToAutomation(value);
  if (value.isText()) {
    V_BSTR(&made.get()) = bstr(value.toText()).release();
    V_VT(&made.get()) = VT_BSTR;
    return made;
  }
  const double x = value.toDouble();
  if (x >= std::numeric_limits<LONG>::min() && x <= std::numeric_limits<LONG>::max() &&
      x == std::floor(x)) {
    V_VT(&made.get()) = VT_I4;
    V_I4(&made.get()) = static_cast<LONG>(x);
  } else {
    V_VT(&made.get()) = VT_R8;
    V_R8(&made.get()) = x;
  }
  return made;
}

OwnedVariant copyOf(const VARIANT& given) {
  OwnedVariant copy;
  if (V_ISBYREF(&given) && V_BYREF(&given) == nullptr) raise(fault::typeMismatch);
  require(VariantCopyInd(copy.receive(), const_cast<VARIANT*>(&given)));
  return copy;
}

}  // namespace palvex::component
