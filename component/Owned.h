#pragma once

// Owners of what automation hands around: a text (BSTR), a VARIANT, a reference to an interface.
// Each frees what it holds exactly once; none is copied by accident.

#include <oaidl.h>
#include <oleauto.h>
#include <unknwn.h>

#include <utility>

namespace palvex::component {

/// Owns a BSTR. A null BSTR is the empty text.
class Bstr {
 public:
  Bstr() noexcept = default;
  explicit Bstr(BSTR owned) noexcept : text_(owned) {}
  Bstr(Bstr&& other) noexcept : text_(other.release()) {}
  Bstr& operator=(Bstr&& other) noexcept {
    std::swap(text_, other.text_);
    return *this;
  }
  ~Bstr() { SysFreeString(text_); }

  [[nodiscard]] BSTR get() const noexcept { return text_; }
  [[nodiscard]] BSTR release() noexcept { return std::exchange(text_, nullptr); }
  /// Where a call leaves a text for this owner; what was held is freed.
  [[nodiscard]] BSTR* receive() noexcept {
    SysFreeString(release());
    return &text_;
  }

 private:
  BSTR text_ = nullptr;
};

/// Owns a VARIANT and what it holds.
class OwnedVariant {
 public:
  OwnedVariant() noexcept { VariantInit(&content_); }
  OwnedVariant(OwnedVariant&& other) noexcept : content_(other.release()) {}
  OwnedVariant& operator=(OwnedVariant&& other) noexcept {
    std::swap(content_, other.content_);
    return *this;
  }
  ~OwnedVariant() { clear(); }

  [[nodiscard]] const VARIANT& get() const noexcept { return content_; }
  [[nodiscard]] VARIANT& get() noexcept { return content_; }
  [[nodiscard]] VARIANT release() noexcept {
    const VARIANT content = content_;
    VariantInit(&content_);
    return content;
  }
  /// Where a call leaves content for this owner; what was held is freed.
  [[nodiscard]] VARIANT* receive() noexcept {
    clear();
    return &content_;
  }

 private:
  void clear() noexcept {
    if (V_VT(&content_) != VT_EMPTY) VariantClear(&content_);
    VariantInit(&content_);  // also when the content refused to be cleared
  }

  VARIANT content_;
};

/// Owns one reference to an interface.
template <class Interface>
class Ref {
 public:
  Ref() noexcept = default;
  /// Adds a reference.
  explicit Ref(Interface* object) noexcept : object_(object) {
    if (object_ != nullptr) object_->AddRef();
  }
  /// Takes over a reference that the caller owns.
  [[nodiscard]] static Ref adopt(Interface* object) noexcept {
    Ref ref;
    ref.object_ = object;
    return ref;
  }
  Ref(const Ref& other) noexcept : Ref(other.object_) {}
  Ref(Ref&& other) noexcept : object_(other.release()) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Ref() {
    if (object_ != nullptr) object_->Release();
  }

  [[nodiscard]] Interface* get() const noexcept { return object_; }
  Interface* operator->() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }
  [[nodiscard]] Interface* release() noexcept { return std::exchange(object_, nullptr); }
  /// Where a call leaves a reference for this owner; what was held is released.
  [[nodiscard]] Interface** receive() noexcept {
    *this = Ref();
    return &object_;
  }
  /// Another interface of the same object; empty when the object lacks it.
  template <class Other>
  [[nodiscard]] Ref<Other> as() const noexcept {
    Ref<Other> other;
    if (object_ == nullptr ||
        FAILED(object_->QueryInterface(__uuidof(Other), reinterpret_cast<void**>(other.receive()))))
      return {};
    return other;
  }

 private:
  Interface* object_ = nullptr;
};

}  // namespace palvex::component
