#include <immintrin.h>

#include "run/lane_fill.h"
#include "run/vector_support.h"

// Only this file is compiled for processors with AVX2. So it includes nothing whose inline
// functions other files use: the linker keeps one copy of each, and that must run on every
// processor.
namespace marrowbench {
namespace {

struct Avx2 {
  using Words = std::uint64_t __attribute__((vector_size(32)));
  using Quarters = std::uint16_t __attribute__((vector_size(32)));
  static constexpr int kVectors = 2;

  static Words join(Words low, Words high) {
    return reinterpret_cast<Words>(
        _mm256_blend_epi32(reinterpret_cast<__m256i>(low), reinterpret_cast<__m256i>(high), 0xAA));
  }
  static Words digitSum(Words x) {
    const __m256i pairs =
        _mm256_maddubs_epi16(reinterpret_cast<__m256i>(x), _mm256_set1_epi32(0x08040201));
    return reinterpret_cast<Words>(_mm256_madd_epi16(pairs, _mm256_set1_epi16(1)));
  }
  static Quarters multiplyHigh(Quarters a, Quarters b) {
    return reinterpret_cast<Quarters>(
        _mm256_mulhi_epu16(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
  }
};

}  // namespace

LaneFill laneFill256() {
  if (!canRunVectors256()) return {};
  return {Avx2::kVectors * sizeof(Avx2::Words) / 8, fillLanes<Avx2>};
}

}  // namespace marrowbench
