#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Remote {

// Where the daemon listens: a Unix socket ("unix:/run/vek/dataplane.sock") or TCP on the
// loopback ("tcp:50051", "127.0.0.1:50051", "[::1]:50051"). The daemon takes no commands
// from other hosts: it has no authentication.
class DaemonAddress {
 public:
  // The address in gRPC's form, or none if the text is not an address the daemon takes.
  static std::optional<std::string> parse(std::string_view text);
  // unix:$XDG_RUNTIME_DIR/vek/dataplane.sock, or under /tmp without that variable.
  static std::string defaultAddress();
  // The socket file of a Unix address; empty for TCP.
  static std::string socketPath(std::string_view address);
};

}  // namespace Remote
