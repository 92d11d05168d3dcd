#include "run/vector_support.h"

#include <cpuid.h>

#include <cstdint>

// Asks the processor itself: __builtin_cpu_supports() needs a table that some cross compilers'
// run-time libraries lack.
namespace marrowbench {
namespace {

constexpr std::uint32_t kAvxState = 0x06;     // the lower and upper halves of 256-bit registers
constexpr std::uint32_t kAvx512State = 0xE6;  // those, the masks and the rest of 512-bit registers

// The register states that the system keeps for each thread, as bits; 0 when it keeps none.
std::uint32_t keptStates() {
  std::uint32_t a = 0;
  std::uint32_t b = 0;
  std::uint32_t c = 0;
  std::uint32_t d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & bit_OSXSAVE) == 0) return 0;
  std::uint32_t low = 0;
  std::uint32_t high = 0;
  __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

bool hasAll(std::uint32_t features, std::uint32_t states) {
  std::uint32_t a = 0;
  std::uint32_t b = 0;
  std::uint32_t c = 0;
  std::uint32_t d = 0;
  if (__get_cpuid_count(7, 0, &a, &b, &c, &d) == 0) return false;
  return (b & features) == features && (keptStates() & states) == states;
}

}  // namespace

bool canRunVectors256() { return hasAll(bit_AVX2, kAvxState); }

bool canRunVectors512() { return hasAll(bit_AVX512F | bit_AVX512BW | bit_AVX512DQ, kAvx512State); }

}  // namespace marrowbench
