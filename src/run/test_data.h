#ifndef MARROWBENCH_RUN_TEST_DATA_H
#define MARROWBENCH_RUN_TEST_DATA_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace marrowbench {

/// The generator's seed for one run: configIndex * 1333 + iteration, in 64 bits.
[[nodiscard]] std::uint64_t testDataSeed(std::int32_t configIndex, std::int32_t iteration);

/// Fills `data` with the bytes of a write test: 1 to 254, never 0 or 255, so that a zero byte in a
/// written file is corruption. Repeatable from the seed on every system.
///
/// xorshift64* (Vigna, "An experimental exploration of Marsaglia's xorshift generators, scrambled",
/// 2014) with shifts 12, 25, 27; a byte is (high 32 bits of the product mod 254) + 1.
///
/// @param seed  0 is replaced by a fixed value, as the generator never leaves the state 0
void fillTestData(std::span<std::byte> data, std::uint64_t seed);

}  // namespace marrowbench

#endif
