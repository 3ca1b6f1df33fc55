#include "remote/DaemonAddress.h"

#include <charconv>
#include <cstdlib>

namespace Remote {

namespace {

constexpr std::string_view unixScheme = "unix:";
constexpr std::string_view tcpScheme = "tcp:";

bool isPort(std::string_view text) {
  unsigned port = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  return error == std::errc() && end == text.data() + text.size() && port > 0 && port < 65536;
}

}  // namespace

std::optional<std::string> DaemonAddress::parse(std::string_view text) {
  if (text.starts_with(unixScheme)) {
    if (text.size() == unixScheme.size()) return std::nullopt;
    return std::string(text);
  }
  if (text.starts_with(tcpScheme)) {
    text.remove_prefix(tcpScheme.size());
    if (!isPort(text)) return std::nullopt;
    return "127.0.0.1:" + std::string(text);
  }
  const auto colon = text.rfind(':');
  if (colon == std::string_view::npos || !isPort(text.substr(colon + 1))) return std::nullopt;
  const std::string_view host = text.substr(0, colon);
  if (host != "127.0.0.1" && host != "localhost" && host != "[::1]") return std::nullopt;
  return std::string(text);
}

std::string DaemonAddress::defaultAddress() {
  const char* runtimeDir = std::getenv("XDG_RUNTIME_DIR");
  const std::string dir = runtimeDir && *runtimeDir ? runtimeDir : "/tmp";
  return std::string(unixScheme) + dir + "/vek/dataplane.sock";
}

std::string DaemonAddress::socketPath(std::string_view address) {
  if (!address.starts_with(unixScheme)) return std::string();
  return std::string(address.substr(unixScheme.size()));
}

}  // namespace Remote
