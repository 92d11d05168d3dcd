#include "run/vector_support.h"

#include <gtest/gtest.h>

namespace marrowbench {
namespace {

TEST(VectorSupport, AgreesWithTheCompilersOwnAnswer) {
  EXPECT_EQ(canRunVectors256(), __builtin_cpu_supports("avx2") != 0);
  const bool has512 = __builtin_cpu_supports("avx512f") != 0 &&
                      __builtin_cpu_supports("avx512bw") != 0 &&
                      __builtin_cpu_supports("avx512dq") != 0;
#if defined(__APPLE__)
  EXPECT_LE(canRunVectors512(), has512) << "the system keeps these registers from their use on";
#else
  EXPECT_EQ(canRunVectors512(), has512);
#endif
}

}  // namespace
}  // namespace marrowbench
