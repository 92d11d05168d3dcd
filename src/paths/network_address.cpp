#include "paths/network_address.h"

#include <bit>
#include <cstdio>

namespace marrowbench {

FixedString formatNetworkAddress(const NetworkAddress& address) {
  const auto& b = address.bytes;
  const auto w = std::bit_cast<std::array<std::uint16_t, 8>>(b);
  if (w[0] == 0) return {};

  std::array<char, 64> text{};
  if (w[7] != 0) {
    (void)std::snprintf(text.data(), text.size(), "%02X:%02X:%02X:%02X:%02X:%02X:%02X:%02X", w[0],
                        w[1], w[2], w[3], w[4], w[5], w[6], w[7]);
  } else {
    (void)std::snprintf(text.data(), text.size(), "%03d.%03d.%03d.%03d", b[0], b[1], b[2], b[3]);
  }
  return text.data();
}

}  // namespace marrowbench
