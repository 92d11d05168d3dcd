#ifndef MARROWBENCH_MARROWCTL_TABLE_BYTE_MASK_H
#define MARROWBENCH_MARROWCTL_TABLE_BYTE_MASK_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace marrowbench::ctl {

/// Bytes that are looked at together.
inline constexpr std::size_t kMaskBytes = 64;

/// Which of 64 bytes equal `wanted`: bit i stands for byte i. The comparison is a loop of fixed
/// length without a branch, which compilers turn into vector instructions on every processor.
[[nodiscard]] inline std::uint64_t equalMask(const char* bytes, char wanted) {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  // Multiplied by it, eight bytes of 0 or 1 have their bits side by side in the highest byte.
  constexpr std::uint64_t kGather =
      std::endian::native == std::endian::little ? 0x0102040810204080U : 0x8040201008040201U;
  std::uint8_t equal[kMaskBytes];
  for (std::size_t i = 0; i < kMaskBytes; ++i) equal[i] = bytes[i] == wanted ? 1 : 0;
  std::uint64_t mask = 0;
  for (std::size_t i = 0; i < kMaskBytes; i += kWord) {
    std::uint64_t word = 0;
    std::memcpy(&word, equal + i, kWord);
    mask |= (word * kGather >> 56U) << i;
  }
  return mask;
}

}  // namespace marrowbench::ctl

#endif
