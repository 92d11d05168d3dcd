#include <immintrin.h>

#include "run/lane_fill.h"

// This file alone is compiled for processors with AVX2, so it includes nothing whose inline
// functions others might share.
namespace marrowbench {
namespace {

struct Avx2 {
  using Words = std::uint64_t __attribute__((vector_size(32)));
  using Halves = std::uint32_t __attribute__((vector_size(32)));

  static Words multiplyLow(Words a, Words b) {
    return reinterpret_cast<Words>(
        _mm256_mul_epu32(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
  }
  static Words shuffleBytes(Words a, Words from) {
    return reinterpret_cast<Words>(
        _mm256_shuffle_epi8(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(from)));
  }
};

}  // namespace

LaneFill laneFill256() {
  if (!__builtin_cpu_supports("avx2")) return {};
  return {2 * sizeof(Avx2::Words) / 8, fillLanes<Avx2>};
}

}  // namespace marrowbench
