#pragma once

#include <string>

#include "runtime/state/IpGenAddr.h"

namespace VekMVxlan {

// Addresses travel to the VXLAN modules as raw bytes in network order: 4 for IPv4, 16 for
// IPv6.

// Sizes `buffer` to the address's byte count, zero-filled, and writes the address.
void copyAddrToBuffer(std::string& buffer, const Lanx::IpGenAddr& addr);

// True for an address without family and for the all-zero address of either family: both
// mean "any" or "none" to a module.
bool isAddrZero(const Lanx::IpGenAddr& addr) noexcept;

// The address's bytes, or nothing for a zero address, which the modules read as "any" or
// as "clear what you hold".
std::string addrBytesUnlessZero(const Lanx::IpGenAddr& addr);

}  // namespace VekMVxlan
