#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"

namespace Lumo {

// The counted immutable string: copies share one buffer.
class String {
 public:
  String() = default;
  String(const char* text) : String(std::string_view(text ? text : "")) {}  // NOLINT
  String(std::string_view text) {                                             // NOLINT
    if (!text.empty()) rep_ = makePtr<Rep>(std::string(text));
  }
  String(const std::string& text) : String(std::string_view(text)) {}  // NOLINT

  std::string_view view() const noexcept { return rep_ ? std::string_view(rep_->text) : ""; }
  const std::string& str() const noexcept { return rep_ ? rep_->text : emptyText(); }
  const char* c_str() const noexcept { return str().c_str(); }
  std::size_t size() const noexcept { return view().size(); }
  bool empty() const noexcept { return size() == 0; }
  operator std::string_view() const noexcept { return view(); }  // NOLINT

  friend bool operator==(const String& a, const String& b) noexcept { return a.view() == b.view(); }
  friend bool operator==(const String& a, std::string_view b) noexcept { return a.view() == b; }
  friend bool operator==(const String& a, const char* b) noexcept { return a.view() == b; }
  friend bool operator==(const String& a, const std::string& b) noexcept { return a.view() == b; }
  friend std::strong_ordering operator<=>(const String& a, const String& b) noexcept {
    return a.view().compare(b.view()) <=> 0;
  }
  friend std::ostream& operator<<(std::ostream& os, const String& s) { return os << s.view(); }

 private:
  struct Rep : Node {
    explicit Rep(std::string t) : text(std::move(t)) {}
    const std::string text;
  };
  static const std::string& emptyText() {
    static const std::string none;
    return none;
  }
  Ptr<Rep> rep_;
};

}  // namespace Lumo

template <>
struct std::hash<Lumo::String> {
  std::size_t operator()(const Lumo::String& s) const noexcept {
    return std::hash<std::string_view>()(s.view());
  }
};
