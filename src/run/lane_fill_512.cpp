#include <immintrin.h>

#include "run/lane_fill.h"
#include "run/vector_support.h"

// Only this file is compiled for processors with AVX-512 F, BW and DQ. So it includes nothing whose
// inline functions other files use: the linker keeps one copy of each, and that must run on every
// processor.
namespace marrowbench {
namespace {

struct Avx512 {
  using Words = std::uint64_t __attribute__((vector_size(64)));
  using Quarters = std::uint16_t __attribute__((vector_size(64)));
  // Two would be slower: they write to twice as many places.
  static constexpr int kVectors = 1;

  static Words join(Words low, Words high) {
    return reinterpret_cast<Words>(_mm512_mask_blend_epi32(0xAAAA, reinterpret_cast<__m512i>(low),
                                                           reinterpret_cast<__m512i>(high)));
  }
  static Words digitSum(Words x) {
    const __m512i pairs =
        _mm512_maddubs_epi16(reinterpret_cast<__m512i>(x), _mm512_set1_epi32(0x08040201));
    return reinterpret_cast<Words>(_mm512_madd_epi16(pairs, _mm512_set1_epi16(1)));
  }
  static Quarters multiplyHigh(Quarters a, Quarters b) {
    return reinterpret_cast<Quarters>(
        _mm512_mulhi_epu16(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
  }
};

}  // namespace

LaneFill laneFill512() {
  if (!canRunVectors512()) return {};
  return {Avx512::kVectors * sizeof(Avx512::Words) / 8, fillLanes<Avx512>};
}

}  // namespace marrowbench
