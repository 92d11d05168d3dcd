#ifndef MARROWBENCH_PATHS_NETWORK_ADDRESS_H
#define MARROWBENCH_PATHS_NETWORK_ADDRESS_H

#include <array>
#include <cstdint>

#include "support/fixed_string.h"

namespace marrowbench {

/// Address of a machine or network interface: the first four bytes are an IPv4 address, first
/// byte printed first, or all of it is eight 16-bit words as they stand in memory. All zero while
/// no address is known, which is always: no supported system is asked for its adapters.
struct NetworkAddress {
  std::array<std::uint8_t, 16> bytes{};
};

static_assert(sizeof(NetworkAddress) == 16);

/// The text of an address: empty when its first word is 0; eight words in upper-case hexadecimal,
/// at least two digits each, when its last word is not 0; else IPv4 with three digits per byte, as
/// in "192.168.001.020".
[[nodiscard]] FixedString formatNetworkAddress(const NetworkAddress& address);

}  // namespace marrowbench

#endif
