#include "runtime/state/McastTunnelIntfId.h"

#include <fmt/format.h>

#include <charconv>
#include <mutex>
#include <unordered_map>

#include "runtime/lumo/Exception.h"

namespace Multicast::Tunnel {

namespace {

using Lanx::AddressFamily;
using Lanx::IntfId;
using Lanx::IpGenAddr;

constexpr std::string_view unknownIpv6Marker = "v6#";

// FNV-1a over the 16 bytes, folded to 48 bits: the same in every process, so an id printed by
// one program means the same tunnel to another.
std::uint64_t ipv6Hash(const IpGenAddr& addr) {
  std::uint64_t hash = 0xcbf29ce484222325ULL;
  for (std::uint8_t byte : addr.rawBytes()) {
    hash ^= byte;
    hash *= 0x100000001b3ULL;
  }
  return (hash ^ (hash >> 48)) & McastTunnelIntfId::addressMask;
}

// The IPv6 VTEPs that ids were made of, by hash. Ids are made on the agent thread, names may
// be asked for from a trace of any thread; a lock keeps both apart.
class Ipv6Vteps {
 public:
  static Ipv6Vteps& instance() {
    static Ipv6Vteps vteps;
    return vteps;
  }

  // The address already known under the hash, after remembering addr if there was none.
  IpGenAddr remember(std::uint64_t hash, const IpGenAddr& addr) {
    std::lock_guard<std::mutex> lock(mutex_);
    return byHash_.try_emplace(hash, addr).first->second;
  }

  std::optional<IpGenAddr> find(std::uint64_t hash) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = byHash_.find(hash);
    if (found == byHash_.end()) return std::nullopt;
    return found->second;
  }

 private:
  std::mutex mutex_;
  std::unordered_map<std::uint64_t, IpGenAddr> byHash_;
};

IntfId tunnelId(std::uint8_t tunnelType, bool ipv6, std::uint64_t address) {
  return IntfId::make(IntfId::Kind::mcastTunnel,
                      (std::uint64_t{tunnelType} << McastTunnelIntfId::tunnelTypeShift) |
                          (ipv6 ? McastTunnelIntfId::ipv6Bit : 0) |
                          (address & McastTunnelIntfId::addressMask));
}

std::optional<IntfId> makeId(std::uint8_t tunnelType, const IpGenAddr& vtep, std::string& reason) {
  if (tunnelType == 0 || tunnelType > McastTunnelIntfId::maxTunnelType) {
    reason = fmt::format("tunnel type {} out of range 1..{}", tunnelType,
                         McastTunnelIntfId::maxTunnelType);
    return std::nullopt;
  }
  switch (vtep.family()) {
    case AddressFamily::ipv4:
      return tunnelId(tunnelType, false, vtep.ipv4HostOrder());
    case AddressFamily::ipv6: {
      std::uint64_t hash = ipv6Hash(vtep);
      IpGenAddr known = Ipv6Vteps::instance().remember(hash, vtep);
      if (known != vtep) {
        reason = fmt::format("VTEP {} has the same tunnel id as VTEP {}", vtep, known);
        return std::nullopt;
      }
      return tunnelId(tunnelType, true, hash);
    }
    case AddressFamily::none:
      break;
  }
  reason = "tunnel VTEP has no address";
  return std::nullopt;
}

std::string_view trimmed(std::string_view text) {
  std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

template <class Number>
bool parseWhole(std::string_view text, Number& number, int base = 10) {
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return !text.empty() && error == std::errc() && end == text.data() + text.size();
}

std::optional<std::uint8_t> parseTunnelType(std::string_view text, std::string& reason) {
  unsigned type = 0;
  if (!parseWhole(text, type) || type == 0 || type > McastTunnelIntfId::maxTunnelType) {
    reason = fmt::format("tunnel type \"{}\" is not a number 1..{}", text,
                         McastTunnelIntfId::maxTunnelType);
    return std::nullopt;
  }
  return static_cast<std::uint8_t>(type);
}

std::optional<IntfId> fromTypeAndVtep(std::string_view typeText, std::string_view vtepText,
                                      std::string& reason) {
  std::optional<std::uint8_t> type = parseTunnelType(typeText, reason);
  if (!type) return std::nullopt;
  std::optional<IpGenAddr> vtep = IpGenAddr::fromString(vtepText, &reason);
  if (!vtep) return std::nullopt;
  return makeId(*type, *vtep, reason);
}

}  // namespace

IntfId McastTunnelIntfId::intfId(std::uint8_t tunnelType, const IpGenAddr& vtep) {
  std::string reason;
  std::optional<IntfId> id = makeId(tunnelType, vtep, reason);
  if (!id) throw Lumo::Exception(reason);
  return *id;
}

IpGenAddr McastTunnelIntfId::vtep(IntfId id) {
  if (tunnelType(id) == 0) return {};
  std::uint64_t address = id.payload() & addressMask;
  if (!(id.payload() & ipv6Bit)) return IpGenAddr::ipv4(static_cast<std::uint32_t>(address));
  return Ipv6Vteps::instance().find(address).value_or(IpGenAddr());
}

std::string McastTunnelIntfId::endpointText(IntfId id) {
  IpGenAddr addr = vtep(id);
  if (addr.isNone()) {
    return fmt::format("{}-{}{:012x}", tunnelType(id), unknownIpv6Marker,
                       id.payload() & addressMask);
  }
  return fmt::format("{}-{}", tunnelType(id), addr);
}

std::optional<IntfId> McastTunnelIntfId::fromEndpointText(std::string_view text,
                                                          std::string& reason) {
  std::size_t dash = text.find('-');
  if (dash == std::string_view::npos) {
    reason = "expected <tunnel type>-<VTEP address>";
    return std::nullopt;
  }
  std::string_view vtepText = text.substr(dash + 1);
  if (!vtepText.starts_with(unknownIpv6Marker)) {
    return fromTypeAndVtep(text.substr(0, dash), vtepText, reason);
  }
  std::optional<std::uint8_t> type = parseTunnelType(text.substr(0, dash), reason);
  std::uint64_t hash = 0;
  if (!type) return std::nullopt;
  if (!parseWhole(vtepText.substr(unknownIpv6Marker.size()), hash, 16) || hash > addressMask) {
    reason = fmt::format("\"{}\" is not a 48-bit hash in hex", vtepText);
    return std::nullopt;
  }
  return tunnelId(*type, true, hash);
}

std::optional<IntfId> McastTunnelIntfId::fromScenarioForm(std::string_view text,
                                                          std::string& reason) {
  text = trimmed(text);
  if (!text.starts_with('{') || !text.ends_with('}')) {
    reason = "expected {tunnel: <type>, vtep: <address>}";
    return std::nullopt;
  }
  std::string_view typeText;
  std::string_view vtepText;
  std::string_view fields = text.substr(1, text.size() - 2);
  while (!fields.empty()) {
    std::size_t comma = std::min(fields.find(','), fields.size());
    std::string_view field = fields.substr(0, comma);
    fields.remove_prefix(std::min(comma + 1, fields.size()));
    std::size_t colon = field.find(':');
    std::string_view key = trimmed(field.substr(0, colon));
    std::string_view value =
        colon == std::string_view::npos ? "" : trimmed(field.substr(colon + 1));
    if (key == "tunnel") {
      typeText = value;
    } else if (key == "vtep") {
      vtepText = value;
    } else {
      reason = fmt::format("unknown key \"{}\", expected tunnel and vtep", key);
      return std::nullopt;
    }
  }
  return fromTypeAndVtep(typeText, vtepText, reason);
}

}  // namespace Multicast::Tunnel
