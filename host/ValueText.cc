#include "host/ValueText.h"

#include <arpa/inet.h>

#include <array>
#include <cctype>

namespace VekHost {

std::optional<std::string> ValueText::address(std::string_view text, Af af) {
  const int family = af == Af::ipv4 ? AF_INET : AF_INET6;
  std::array<unsigned char, 16> raw{};
  std::string input(text);
  if (inet_pton(family, input.c_str(), raw.data()) != 1) return std::nullopt;
  std::array<char, INET6_ADDRSTRLEN> out{};
  if (inet_ntop(family, raw.data(), out.data(), out.size()) == nullptr) return std::nullopt;
  return std::string(out.data());
}

bool ValueText::isMulticast(std::string_view canonicalAddress, Af af) {
  const int family = af == Af::ipv4 ? AF_INET : AF_INET6;
  std::array<unsigned char, 16> raw{};
  std::string input(canonicalAddress);
  if (inet_pton(family, input.c_str(), raw.data()) != 1) return false;
  return af == Af::ipv4 ? (raw[0] & 0xf0) == 0xe0 : raw[0] == 0xff;
}

std::optional<std::string> ValueText::mac(std::string_view text) {
  if (text.size() != 17) return std::nullopt;
  std::string canonical;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    const bool separator = i % 3 == 2;
    if (separator ? c != ':' : !std::isxdigit(c)) return std::nullopt;
    canonical += static_cast<char>(std::tolower(c));
  }
  return canonical;
}

bool ValueText::isName(std::string_view text) {
  if (text.empty() || !std::isalpha(static_cast<unsigned char>(text[0]))) return false;
  for (char c : text) {
    if (!std::isalnum(static_cast<unsigned char>(c)) &&
        std::string_view("/.:_-").find(c) == std::string_view::npos) {
      return false;
    }
  }
  return true;
}

}  // namespace VekHost
