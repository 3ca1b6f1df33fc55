#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace Lumo {

// The strong counted pointer of the runtime. Ptr<T const> is the read-only form that
// every mounted input is held by.
template <typename T>
class Ptr {
 public:
  Ptr() noexcept = default;
  Ptr(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor)
  Ptr(T* raw) noexcept : raw_(raw) {  // NOLINT(google-explicit-constructor)
    if (raw_) raw_->newRef();
  }
  Ptr(const Ptr& other) noexcept : Ptr(other.raw_) {}
  Ptr(Ptr&& other) noexcept : raw_(std::exchange(other.raw_, nullptr)) {}
  template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  Ptr(const Ptr<U>& other) noexcept : Ptr(other.get()) {}  // NOLINT(google-explicit-constructor)
  template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  Ptr(Ptr<U>&& other) noexcept : raw_(other.release()) {}  // NOLINT(google-explicit-constructor)
  ~Ptr() { reset(); }

  Ptr& operator=(Ptr other) noexcept {
    std::swap(raw_, other.raw_);
    return *this;
  }

  T* get() const noexcept { return raw_; }
  T* operator->() const noexcept { return raw_; }
  T& operator*() const noexcept { return *raw_; }
  explicit operator bool() const noexcept { return raw_ != nullptr; }

  void reset() noexcept {
    if (T* old = std::exchange(raw_, nullptr)) old->deleteRef();
  }
  // Hands the reference over to the caller.
  T* release() noexcept { return std::exchange(raw_, nullptr); }

  template <typename U>
  bool operator==(const Ptr<U>& other) const noexcept {
    return raw_ == other.get();
  }
  bool operator==(std::nullptr_t) const noexcept { return raw_ == nullptr; }
  bool operator==(const T* other) const noexcept { return raw_ == other; }

 private:
  T* raw_ = nullptr;
};

template <typename T, typename... Args>
Ptr<T> makePtr(Args&&... args) {
  return Ptr<T>(new T(std::forward<Args>(args)...));
}

template <typename T, typename U>
Ptr<T> ptrCast(const Ptr<U>& from) {
  return Ptr<T>(dynamic_cast<T*>(from.get()));
}

}  // namespace Lumo

template <typename T>
struct std::hash<Lumo::Ptr<T>> {
  std::size_t operator()(const Lumo::Ptr<T>& p) const noexcept { return std::hash<T*>()(p.get()); }
};
