#include "runtime/state/IpGenPrefix.h"

#include <fmt/format.h>

#include <charconv>

#include "runtime/lumo/Exception.h"

namespace Lanx {

namespace {

std::size_t maxLength(const IpGenAddr& addr) noexcept { return 8 * addr.size(); }

}  // namespace

IpGenPrefix::IpGenPrefix(const IpGenAddr& addr, std::uint8_t length)
    : addr_(addr.masked(length)), length_(length) {
  if (length > maxLength(addr)) {
    throw Lumo::Exception(
        fmt::format("prefix length {} too long for address {}", length, addr.toString()));
  }
}

IpGenPrefix::IpGenPrefix(std::string_view text) {
  std::string whyNot;
  std::optional<IpGenPrefix> parsed = fromString(text, &whyNot);
  if (!parsed) throw Lumo::Exception(whyNot);
  *this = *parsed;
}

std::optional<IpGenPrefix> IpGenPrefix::fromString(std::string_view text, std::string* whyNot) {
  if (text == "*") return IpGenPrefix();
  std::size_t slash = text.find('/');
  std::optional<IpGenAddr> addr = IpGenAddr::fromString(text.substr(0, slash), whyNot);
  if (!addr) return std::nullopt;
  if (slash == std::string_view::npos) return IpGenPrefix(*addr);
  std::string_view lengthText = text.substr(slash + 1);
  unsigned length = 0;
  auto [end, error] =
      std::from_chars(lengthText.data(), lengthText.data() + lengthText.size(), length);
  if (lengthText.empty() || error != std::errc() || end != lengthText.data() + lengthText.size() ||
      length > maxLength(*addr)) {
    if (whyNot) {
      *whyNot = fmt::format("bad prefix \"{}\": length must be 0 to {}", text, maxLength(*addr));
    }
    return std::nullopt;
  }
  return IpGenPrefix(*addr, static_cast<std::uint8_t>(length));
}

std::string IpGenPrefix::toString() const {
  if (isNone()) return "*";
  if (isHost()) return addr_.toString();
  return fmt::format("{}/{}", addr_.toString(), length_);
}

}  // namespace Lanx
