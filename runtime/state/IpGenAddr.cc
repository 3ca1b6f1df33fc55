#include "runtime/state/IpGenAddr.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <cstring>

#include "runtime/lumo/Exception.h"

namespace Lanx {

namespace {

constexpr std::size_t ipv4Bytes = 4;

std::optional<IpGenAddr> noAddress(std::string_view text, std::string* whyNot) {
  if (whyNot) *whyNot = fmt::format("bad address \"{}\": not an IPv4 or IPv6 address", text);
  return std::nullopt;
}

}  // namespace

IpGenAddr::IpGenAddr(std::string_view text) {
  std::string whyNot;
  std::optional<IpGenAddr> parsed = fromString(text, &whyNot);
  if (!parsed) throw Lumo::Exception(whyNot);
  *this = *parsed;
}

IpGenAddr IpGenAddr::ipv4(std::uint32_t hostOrder) noexcept {
  IpGenAddr addr;
  addr.family_ = AddressFamily::ipv4;
  for (std::size_t i = 0; i < ipv4Bytes; ++i) {
    addr.bytes_[i] = static_cast<std::uint8_t>(hostOrder >> (8 * (ipv4Bytes - 1 - i)));
  }
  return addr;
}

std::optional<IpGenAddr> IpGenAddr::fromRawBytes(std::span<const std::uint8_t> bytes) noexcept {
  IpGenAddr addr;
  if (bytes.size() == ipv4Bytes) {
    addr.family_ = AddressFamily::ipv4;
  } else if (bytes.size() == maxBytes) {
    addr.family_ = AddressFamily::ipv6;
  } else {
    return std::nullopt;
  }
  std::memcpy(addr.bytes_.data(), bytes.data(), bytes.size());
  return addr;
}

std::optional<IpGenAddr> IpGenAddr::fromString(std::string_view text, std::string* whyNot) {
  char terminated[INET6_ADDRSTRLEN];
  if (text.empty() || text.size() >= sizeof(terminated)) return noAddress(text, whyNot);
  std::memcpy(terminated, text.data(), text.size());
  terminated[text.size()] = '\0';
  IpGenAddr addr;
  bool ipv6 = text.find(':') != std::string_view::npos;
  addr.family_ = ipv6 ? AddressFamily::ipv6 : AddressFamily::ipv4;
  if (inet_pton(ipv6 ? AF_INET6 : AF_INET, terminated, addr.bytes_.data()) != 1) {
    return noAddress(text, whyNot);
  }
  return addr;
}

std::uint32_t IpGenAddr::ipv4HostOrder() const noexcept {
  if (family_ != AddressFamily::ipv4) return 0;
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < ipv4Bytes; ++i) value = (value << 8) | bytes_[i];
  return value;
}

bool IpGenAddr::isMulticast() const noexcept {
  switch (family_) {
    case AddressFamily::ipv4:
      return (bytes_[0] & 0xf0) == 0xe0;  // 224.0.0.0/4
    case AddressFamily::ipv6:
      return bytes_[0] == 0xff;  // ff00::/8
    case AddressFamily::none:
      break;
  }
  return false;
}

IpGenAddr IpGenAddr::masked(std::size_t prefixLength) const noexcept {
  IpGenAddr addr = *this;
  for (std::size_t i = 0; i < maxBytes; ++i) {
    std::size_t bitsKept = prefixLength > 8 * i ? prefixLength - 8 * i : 0;
    if (bitsKept < 8) addr.bytes_[i] &= static_cast<std::uint8_t>(0xff00u >> bitsKept);
  }
  return addr;
}

std::string IpGenAddr::toString() const {
  if (isNone()) return "none";
  char text[INET6_ADDRSTRLEN];
  inet_ntop(family_ == AddressFamily::ipv4 ? AF_INET : AF_INET6, bytes_.data(), text, sizeof(text));
  return text;
}

}  // namespace Lanx
