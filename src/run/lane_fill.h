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
  int lanes;  ///< 0: this build or this processor can't fill so
  /// @param length  bytes of a stripe, a multiple of 8
  /// @param states  the generator's state before each stripe
  void (*fill)(std::byte* data, std::size_t length, const std::uint64_t* states);
};

/// The vector code of this build, as far as the processor has what it needs.
[[nodiscard]] LaneFill laneFill256();
[[nodiscard]] LaneFill laneFill512();

/// LaneFill::fill for vectors of the compiler's.
///
/// With p = state * factor and x the high half of p, the byte is (x mod 254) + 1. As 256 = 254 + 2,
/// x has the same remainder as d = b0 + 2 b1 + 4 b2 + 8 b3, where b0 to b3 are the bytes of x. And
/// as 254 = 256 - 2, d mod 254 = (d + 2 (d div 254)) mod 256. d is at most 15 * 255 = 3825, so
/// d div 254 = (d * m) >> 23 with m = ceil(2^23 / 254): m * 254 exceeds 2^23 by 250, and 250 * 3825
/// is below 2^23.
///
/// Eight steps of a lane make eight bytes, which are stored at once. Their results are packed
/// early, as fewer vectors are less to compute: step i shares its 64-bit lane with step i + 4 (a
/// half each), then also with step i + 2 (a quarter each), then with step i + 1 (a byte each). So
/// they end up in the order of a little-endian word.
///
/// @tparam Isa  Words and Quarters: vectors of 64-bit and 16-bit lanes;
///              kVectors: how many take turns, so that one computes while another waits;
///              join(low, high): the even halves of `low`, the odd ones of `high`;
///              digitSum(x): d of each half;
///              multiplyHigh(a, b): the high 16 bits of the products of the quarters
template <class Isa>
void fillLanes(std::byte* data, std::size_t length, const std::uint64_t* states) {
  using Words = typename Isa::Words;
  using Quarters = typename Isa::Quarters;
  constexpr std::size_t kWords = sizeof(Words) / 8;
  constexpr std::size_t kVectors = Isa::kVectors;
  constexpr std::size_t kSteps = 8;
  const Quarters inverse = Quarters{} + 33027;  // m

  Words state[kVectors];
  std::memcpy(state, states, sizeof state);
  for (std::size_t offset = 0; offset < length; offset += kSteps) {
    Words x[kVectors][kSteps / 2];
    for (std::size_t step = 0; step < kSteps; ++step) {
      for (std::size_t v = 0; v < kVectors; ++v) {
        Words s = state[v];
        s ^= s >> 12;
        s ^= s << 25;
        s ^= s >> 27;
        state[v] = s;
        const Words p = s * kFactor;
        Words& shared = x[v][step % 4];
        shared = step < 4 ? p >> 32 : Isa::join(shared, p);
      }
    }
    for (std::size_t v = 0; v < kVectors; ++v) {
      Words d[kSteps / 2];
      for (std::size_t i = 0; i < kSteps / 2; ++i) d[i] = Isa::digitSum(x[v][i]);
      const auto even = reinterpret_cast<Quarters>(d[0] | d[2] << 16);
      const auto odd = reinterpret_cast<Quarters>(d[1] | d[3] << 16);
      const Quarters evenTimes = Isa::multiplyHigh(even, inverse) >> 7;
      const Quarters oddTimes = Isa::multiplyHigh(odd, inverse) >> 7;
      const Quarters evenBytes = (even + evenTimes + evenTimes) & 0xFF;
      const Quarters oddBytes = (odd + oddTimes + oddTimes) << 8;
      // No byte is above 253 yet, so nothing carries into its neighbour.
      const Words bytes = reinterpret_cast<Words>(evenBytes | oddBytes) + 0x0101010101010101;
      for (std::size_t word = 0; word < kWords; ++word) {
        const std::uint64_t eight = bytes[word];
        std::memcpy(data + (v * kWords + word) * length + offset, &eight, sizeof eight);
      }
    }
  }
}

}  // namespace marrowbench

#endif
