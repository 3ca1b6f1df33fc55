#pragma once

#include <utility>

#include "runtime/qel/AttributeAccess.h"
#include "runtime/qel/Entity.h"

namespace Qel {

// A value or pointer attribute. Setting it publishes a change, and only when the value
// is a new one.
//
//   Mode mode() const { return mode_.get(); }
//   void modeIs(Mode mode) { mode_.is(*this, mode); }
//   Qel::ValueAttr<Mode, kMode> mode_;
template <typename T, AttributeId Id>
class ValueAttr {
 public:
  static constexpr AttributeId kId = Id;

  const T& get() const noexcept { return value_; }
  void is(Entity& owner, T value) {
    if (value_ == value) return;
    value_ = std::move(value);
    AttributeAccess<>::notify(owner, Id, nullptr, &value_);
  }
  // Back to the empty value (a null pointer).
  void del(Entity& owner) { is(owner, T{}); }

 private:
  T value_{};
};

}  // namespace Qel
