#include "support/present_memory.h"

#include <gtest/gtest.h>

#include <vector>

#include "fakes/fake_platform.h"
#include "helpers/pages.h"

namespace marrowbench {
namespace {

using test::fakePlatform;

TEST(MakePresent, AsksTheSystemForExactlyTheBytes) {
  std::vector<std::byte> memory(10000, std::byte{7});
  makePresent(memory.data(), 9000);
  ASSERT_EQ(fakePlatform().populated.size(), 1U);
  EXPECT_EQ(fakePlatform().populated[0].memory, memory.data());
  EXPECT_EQ(fakePlatform().populated[0].size, 9000U);
}

TEST(MakePresent, KeepsTheContentWhereTheSystemRefuses) {
  fakePlatform().populates = false;
  const std::vector<std::byte> before(10000, std::byte{7});
  std::vector<std::byte> memory = before;
  makePresent(memory.data(), memory.size());
  EXPECT_EQ(memory, before);
}

TEST(MakePresent, TouchesEachPageOfTheBytesWhereTheSystemRefuses) {
  fakePlatform().populates = false;
  const test::Pages pages;
  makePresent(pages.memory + 2 * pages.kSize - 1, pages.kSize + 2);
  EXPECT_EQ(pages.present(), ".xxx....");
}

TEST(MakePresent, AsksForNothingWithoutBytes) {
  makePresent(nullptr, 0);
  EXPECT_TRUE(fakePlatform().populated.empty());
}

}  // namespace
}  // namespace marrowbench
