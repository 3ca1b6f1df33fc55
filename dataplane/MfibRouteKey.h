#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace Dataplane {

// A FIB route's key as the command carries it: the raw source (none, 4 or 16 bytes) and
// group (4 or 16 bytes). The table keeps it in its entry, so adding a route makes no text
// and takes no heap; the text "<source>,<group>" ("*" for no source) is made for the dump.
class MfibRouteKey {
 public:
  // nullopt for an address of another length.
  static std::optional<MfibRouteKey> of(std::string_view source, std::string_view group);
  // The key of a text that text() would give back the same; nullopt for any other text.
  static std::optional<MfibRouteKey> parse(std::string_view text);

  std::string text() const;
  std::size_t hash() const noexcept;
  bool operator==(const MfibRouteKey&) const noexcept = default;

 private:
  std::array<std::uint8_t, 16> source_{};
  std::array<std::uint8_t, 16> group_{};
  std::uint8_t sourceSize_ = 0;
  std::uint8_t groupSize_ = 0;
};

}  // namespace Dataplane

template <>
struct std::hash<Dataplane::MfibRouteKey> {
  std::size_t operator()(const Dataplane::MfibRouteKey& key) const noexcept { return key.hash(); }
};
