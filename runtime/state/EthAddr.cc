#include "runtime/state/EthAddr.h"

#include <fmt/format.h>

#include <charconv>

#include "runtime/lumo/Exception.h"

namespace Lanx {

EthAddr::EthAddr(std::string_view text) {
  std::string whyNot;
  std::optional<EthAddr> parsed = fromString(text, &whyNot);
  if (!parsed) throw Lumo::Exception(whyNot);
  *this = *parsed;
}

std::optional<EthAddr> EthAddr::fromString(std::string_view text, std::string* whyNot) {
  // Six groups of two hex digits with five colons between them: exactly 17 characters.
  constexpr std::size_t textLength = 3 * bytes - 1;
  std::array<std::uint8_t, bytes> raw{};
  bool good = text.size() == textLength;
  for (std::size_t i = 0; good && i < bytes; ++i) {
    const char* first = text.data() + 3 * i;
    auto [end, error] = std::from_chars(first, first + 2, raw[i], 16);
    good = error == std::errc() && end == first + 2 && (i + 1 == bytes || first[2] == ':');
  }
  if (!good) {
    if (whyNot)
      *whyNot = fmt::format("bad Ethernet address \"{}\": expected xx:xx:xx:xx:xx:xx", text);
    return std::nullopt;
  }
  return EthAddr(raw);
}

std::string EthAddr::toString() const {
  return fmt::format("{:02x}:{:02x}:{:02x}:{:02x}:{:02x}:{:02x}", raw_[0], raw_[1], raw_[2],
                     raw_[3], raw_[4], raw_[5]);
}

}  // namespace Lanx
