#pragma once

#include <optional>
#include <utility>

#include "runtime/lumo/Exceptions.h"

namespace Qel {

// A key or nothing; the type of a bookmark. Reading an empty one raises.
template <typename T>
class Optional {
 public:
  Optional() = default;
  Optional(T value) : value_(std::move(value)) {}  // NOLINT(google-explicit-constructor)

  bool hasValue() const noexcept { return value_.has_value(); }
  explicit operator bool() const noexcept { return hasValue(); }
  const T& value() const {
    if (!value_) Impl::throwBadOptionalAccess();
    return *value_;
  }
  const T& operator*() const { return value(); }
  const T* operator->() const { return &value(); }

  void valueIs(T value) { value_ = std::move(value); }
  void reset() noexcept { value_.reset(); }

  friend bool operator==(const Optional&, const Optional&) = default;

 private:
  std::optional<T> value_;
};

}  // namespace Qel
