#ifndef MARROWBENCH_MARROWCTL_SUPPORT_SHA256_H
#define MARROWBENCH_MARROWCTL_SUPPORT_SHA256_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace marrowbench::ctl {

/// The SHA-256 digest of a text (FIPS 180-4).
[[nodiscard]] std::array<std::uint8_t, 32> sha256(std::string_view text);

/// Base 64 with padding (RFC 4648, section 4).
[[nodiscard]] std::string base64(std::string_view bytes);

}  // namespace marrowbench::ctl

#endif
