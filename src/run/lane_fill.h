#ifndef MARROWBENCH_RUN_LANE_FILL_H
#define MARROWBENCH_RUN_LANE_FILL_H

#include <cstddef>
#include <cstdint>
#include <cstring>

/// Test data many bytes at a time: every lane runs its own generator over its own stripe of the
/// buffer. fillTestData() cuts the stripes and jumps the generators to where they begin.
namespace marrowbench {

/// Factor of the generator's output: x is the high half of state * factor.
inline constexpr std::uint64_t kFactor = 0x2545F4914F6CDD1D;

/// Fills `lanes` stripes of `length` bytes that follow each other from `data` on.
struct LaneFill {
  int lanes;  ///< 0: there is no such way here
  /// @param length  bytes of a stripe, a multiple of 8
  /// @param states  the generator's state before each stripe
  void (*fill)(std::byte* data, std::size_t length, const std::uint64_t* states);
};

/// The vector code of this build, as far as the processor has what it needs.
[[nodiscard]] LaneFill laneFill256();
[[nodiscard]] LaneFill laneFill512();

/// LaneFill::fill for vectors of the compiler's, two at a time so that one
/// computes while the other waits for its results.
///
/// With p = state * factor and x the high half of p, the byte is (x mod 254) + 1. As 254 = 256 - 2,
/// that is (x + 2 * (x div 254) + 1) mod 256, and x div 254 = (x >> 1) div 127, which is
/// ((x >> 1) * m) >> 38 with m = ceil(2^38 / 127): m * 127 exceeds 2^38 by 119, and 119 * 2^31 is
/// below 2^38, so the quotient is exact for every 31-bit x >> 1. The sum is made in the high half
/// of each lane, where x stands already; 32-bit additions keep the low halves out of it.
///
/// @tparam Isa  Words and Halves, vectors of 64-bit and 32-bit lanes; multiplyLow(a, b), the 64-bit
/// products of the lanes' low halves;
///              shuffleBytes(a, from), byte i of every 16 being a's byte from[i], 0 for from[i] >
///              127
template <class Isa>
void fillLanes(std::byte* data, std::size_t length, const std::uint64_t* states) {
  using Words = typename Isa::Words;
  using Halves = typename Isa::Halves;
  constexpr std::size_t kWords = sizeof(Words) / 8;
  constexpr std::size_t kVectors = 2;
  constexpr std::size_t kSteps = 8;
  constexpr std::uint64_t kInverse = 2164392969;  // m
  const Words inverse = Words{} + kInverse;

  // place[i], used in the i-th of eight steps, moves byte 4 of every lane, the lowest of its high
  // half, to byte i and clears the rest.
  Words place[kSteps];
  for (std::size_t i = 0; i < kSteps; ++i) {
    for (std::size_t word = 0; word < kWords; ++word) {
      const std::uint64_t from = word % 2 == 0 ? 4 : 12;
      place[i][word] = (0x8080808080808080 & ~(0xFFULL << (8 * i))) | from << (8 * i);
    }
  }

  Words state[kVectors];
  std::memcpy(state, states, sizeof state);
  for (std::size_t offset = 0; offset < length; offset += kSteps) {
    Words bytes[kVectors] = {};
    for (const Words& to : place) {
      for (std::size_t v = 0; v < kVectors; ++v) {
        Words s = state[v];
        s ^= s >> 12;
        s ^= s << 25;
        s ^= s >> 27;
        state[v] = s;
        const Words p = s * kFactor;
        const Halves quotient = reinterpret_cast<Halves>(Isa::multiplyLow(p >> 33, inverse)) >> 6;
        const Halves sum = reinterpret_cast<Halves>(p) + quotient + quotient;
        bytes[v] |= Isa::shuffleBytes(reinterpret_cast<Words>(sum), to);
      }
    }
    for (std::size_t v = 0; v < kVectors; ++v) {
      // No byte is above 253 yet, so nothing carries into its neighbour.
      bytes[v] += 0x0101010101010101;
      for (std::size_t word = 0; word < kWords; ++word) {
        const std::uint64_t eight = bytes[v][word];
        std::memcpy(data + (v * kWords + word) * length + offset, &eight, sizeof eight);
      }
    }
  }
}

}  // namespace marrowbench

#endif
