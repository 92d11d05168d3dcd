#include "run/vector_support.h"

#include <gtest/gtest.h>

namespace marrowbench {
namespace {

TEST(VectorSupport, AgreesWithTheCompilersOwnAnswer) {
  EXPECT_EQ(canRunVectors256(), __builtin_cpu_supports("avx2") != 0);
  EXPECT_EQ(canRunVectors512(), __builtin_cpu_supports("avx512f") != 0 &&
                                    __builtin_cpu_supports("avx512bw") != 0 &&
                                    __builtin_cpu_supports("avx512dq") != 0);
}

}  // namespace
}  // namespace marrowbench
