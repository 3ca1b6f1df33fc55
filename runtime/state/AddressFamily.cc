#include "runtime/state/AddressFamily.h"

namespace Lanx {

std::string_view addressFamilyName(AddressFamily af) noexcept {
  switch (af) {
    case AddressFamily::ipv4:
      return "ipv4";
    case AddressFamily::ipv6:
      return "ipv6";
    case AddressFamily::none:
      return "none";
  }
  return "unknown";  // a family byte from outside that is none of the three
}

std::optional<AddressFamily> addressFamilyFromName(std::string_view name) noexcept {
  for (AddressFamily af : {AddressFamily::ipv4, AddressFamily::ipv6}) {
    if (addressFamilyName(af) == name) return af;
  }
  return std::nullopt;
}

}  // namespace Lanx
