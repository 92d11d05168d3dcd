#include <immintrin.h>

#include "run/lane_fill.h"

// This file alone is compiled for processors with AVX-512 F, BW and DQ, so it includes nothing
// whose inline functions others might share. The masks select all lanes: without one, g++ 12 warns
// about a variable of its own header.
namespace marrowbench {
namespace {

struct Avx512 {
  using Words = std::uint64_t __attribute__((vector_size(64)));
  using Halves = std::uint32_t __attribute__((vector_size(64)));

  static Words multiplyLow(Words a, Words b) {
    return reinterpret_cast<Words>(
        _mm512_maskz_mul_epu32(0xFF, reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
  }
  static Words shuffleBytes(Words a, Words from) {
    return reinterpret_cast<Words>(_mm512_maskz_shuffle_epi8(~0ULL, reinterpret_cast<__m512i>(a),
                                                             reinterpret_cast<__m512i>(from)));
  }
};

}  // namespace

LaneFill laneFill512() {
  const bool hasAll = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                      __builtin_cpu_supports("avx512dq");
  if (!hasAll) return {};
  return {2 * sizeof(Avx512::Words) / 8, fillLanes<Avx512>};
}

}  // namespace marrowbench
