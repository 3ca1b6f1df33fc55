#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

#include "runtime/lumo/String.h"
#include "runtime/lumo/Exceptions.h"

namespace Qel {

// A counted string of at most MaxBytes bytes. Derived names the type and gives, as
// Derived::tooLongText, the text raised (Qel::throwRangeException) when built from a longer
// string; so an overlong name never gets past its constructor.
template <class Derived, std::size_t MaxBytes>
class BoundedString {
 public:
  static constexpr std::size_t maxLength() noexcept { return MaxBytes; }

  BoundedString() = default;
  BoundedString(const char* text) : BoundedString(std::string_view(text ? text : "")) {}  // NOLINT
  BoundedString(std::string_view text) : text_(checked(text)) {}                          // NOLINT
  BoundedString(const std::string& text) : BoundedString(std::string_view(text)) {}       // NOLINT
  BoundedString(Lumo::String text) : text_(std::move(text)) { checked(text_.view()); }    // NOLINT

  const Lumo::String& str() const noexcept { return text_; }
  std::string_view view() const noexcept { return text_.view(); }
  std::string_view toString() const noexcept { return text_.view(); }
  std::size_t size() const noexcept { return text_.size(); }
  bool empty() const noexcept { return text_.empty(); }

  std::size_t hash() const noexcept { return std::hash<std::string_view>()(view()); }

  friend bool operator==(const Derived& a, const Derived& b) noexcept {
    return a.view() == b.view();
  }
  friend std::strong_ordering operator<=>(const Derived& a, const Derived& b) noexcept {
    return a.view().compare(b.view()) <=> 0;
  }
  friend std::ostream& operator<<(std::ostream& os, const Derived& s) { return os << s.view(); }

 private:
  static std::string_view checked(std::string_view text) {
    if (text.size() > MaxBytes) throwRangeException(Derived::tooLongText);
    return text;
  }

  Lumo::String text_;
};

}  // namespace Qel
