#ifndef MARROWBENCH_RUN_TEST_DATA_H
#define MARROWBENCH_RUN_TEST_DATA_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace marrowbench {

/// The generator's seed for one run: configIndex * 1333 + iteration, in 64 bits.
[[nodiscard]] std::uint64_t testDataSeed(std::int32_t configIndex, std::int32_t iteration);

/// Ways to compute the same bytes, from the slowest to the fastest.
enum class FillPath : std::int32_t {
  byteLoop = 0,     ///< one byte after the other; what the others are measured by
  scalarLanes = 1,  ///< four stripes of the buffer at once, on any processor
  vector256 = 2,    ///< 256-bit vectors
  vector512 = 3,    ///< 512-bit vectors
};

/// Whether this build and this processor can take a path.
[[nodiscard]] bool canFill(FillPath path);

/// The fastest path that canFill(), found out at the first call.
[[nodiscard]] FillPath fastestFillPath();

/// Fills `data` with the bytes of a write test: 1 to 254, never 0 or 255, so that a zero byte in a
/// written file is corruption. Repeatable from the seed on every system and path.
///
/// xorshift64* (Vigna, "An experimental exploration of Marsaglia's xorshift generators, scrambled",
/// 2014) with shifts 12, 25, 27; a byte is (high 32 bits of the product mod 254) + 1.
///
/// @param seed  0 is replaced by a fixed value, as the generator never leaves the state 0
/// @param path  one that canFill()
void fillTestData(std::span<std::byte> data, std::uint64_t seed, FillPath path = fastestFillPath());

}  // namespace marrowbench

#endif
