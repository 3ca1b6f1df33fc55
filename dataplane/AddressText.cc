#include "dataplane/AddressText.h"

#include <arpa/inet.h>
#include <fmt/format.h>

namespace Dataplane {

std::optional<std::string> AddressText::ip(std::string_view raw) {
  char text[INET6_ADDRSTRLEN];
  const int family = raw.size() == 4 ? AF_INET : raw.size() == 16 ? AF_INET6 : 0;
  if (family == 0 || !inet_ntop(family, raw.data(), text, sizeof text)) return std::nullopt;
  return std::string(text);
}

std::optional<std::string> AddressText::mac(std::string_view raw) {
  if (raw.size() != 6) return std::nullopt;
  auto byte = [&raw](int i) { return static_cast<unsigned char>(raw[i]); };
  return fmt::format("{:02x}:{:02x}:{:02x}:{:02x}:{:02x}:{:02x}", byte(0), byte(1), byte(2),
                     byte(3), byte(4), byte(5));
}

}  // namespace Dataplane
