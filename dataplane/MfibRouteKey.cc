#include "dataplane/MfibRouteKey.h"

#include <arpa/inet.h>

#include <cstring>

#include "dataplane/AddressText.h"

namespace Dataplane {

namespace {

bool validSize(std::size_t size) { return size == 4 || size == 16; }

std::uint64_t word(const std::array<std::uint8_t, 16>& bytes, std::size_t at) {
  std::uint64_t value;
  std::memcpy(&value, bytes.data() + at, sizeof value);
  return value;
}

// The raw bytes of an address's text, either family.
std::optional<std::string> rawOf(std::string_view text) {
  const std::string terminated(text);
  unsigned char raw[16];
  if (inet_pton(AF_INET, terminated.c_str(), raw) == 1) return std::string(raw, raw + 4);
  if (inet_pton(AF_INET6, terminated.c_str(), raw) == 1) return std::string(raw, raw + 16);
  return std::nullopt;
}

}  // namespace

std::optional<MfibRouteKey> MfibRouteKey::of(std::string_view source, std::string_view group) {
  if ((!source.empty() && !validSize(source.size())) || !validSize(group.size())) {
    return std::nullopt;
  }
  MfibRouteKey key;
  std::memcpy(key.source_.data(), source.data(), source.size());
  std::memcpy(key.group_.data(), group.data(), group.size());
  key.sourceSize_ = static_cast<std::uint8_t>(source.size());
  key.groupSize_ = static_cast<std::uint8_t>(group.size());
  return key;
}

std::optional<MfibRouteKey> MfibRouteKey::parse(std::string_view text) {
  const auto comma = text.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const std::string_view sourceText = text.substr(0, comma);
  std::optional<std::string> source =
      sourceText == "*" ? std::optional<std::string>("") : rawOf(sourceText);
  std::optional<std::string> group = rawOf(text.substr(comma + 1));
  if (!source || !group) return std::nullopt;
  auto key = of(*source, *group);
  // A text in another spelling of the same addresses names no key: keys are their texts.
  if (!key || key->text() != text) return std::nullopt;
  return key;
}

std::string MfibRouteKey::text() const {
  auto address = [](const std::array<std::uint8_t, 16>& bytes, std::uint8_t size) {
    return AddressText::ip(
               std::string_view(reinterpret_cast<const char*>(bytes.data()), size))
        .value_or(std::string());
  };
  return (sourceSize_ == 0 ? std::string("*") : address(source_, sourceSize_)) + "," +
         address(group_, groupSize_);
}

std::size_t MfibRouteKey::hash() const noexcept {
  // The hash collection mixes the result again; this only has to fold every byte in.
  std::uint64_t h = word(group_, 0) * 0x9e3779b97f4a7c15ull;
  h ^= word(group_, 8) + (h << 6) + (h >> 2);
  h ^= word(source_, 0) * 0xc2b2ae3d27d4eb4full + (h << 6) + (h >> 2);
  h ^= word(source_, 8) + (h << 6) + (h >> 2);
  h ^= (static_cast<std::uint64_t>(sourceSize_) << 8 | groupSize_) + (h << 6) + (h >> 2);
  return static_cast<std::size_t>(h);
}

}  // namespace Dataplane
