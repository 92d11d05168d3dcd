#include "paths/host_name.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>

namespace marrowbench {
namespace {

TEST(HostNameFrom, DropsTheDomain) {
  const struct {
    std::string raw, name;
  } cases[] = {{"build7.lab", "build7"},
               {"build7.lab.example", "build7"},
               {"build7.", "build7"},
               {"b.lab", "b"},
               {"build7", "build7"},
               {"BUILD-7", "BUILD-7"},
               {std::string(255, 'x'), std::string(255, 'x')}};
  for (const auto& c : cases) EXPECT_EQ(hostNameFrom(c.raw).view(), c.name) << c.raw;
}

TEST(HostNameFrom, LeavesANameThatStartsWithADotWhole) {
  // The first dot decides, and it stands at the front: the ones behind it cut nothing.
  for (const char* raw : {".lab", ".", ".build7.lab"})
    EXPECT_EQ(hostNameFrom(raw).view(), std::string(raw));
}

TEST(HostNameFrom, UnnamedMachinesGetAFixedName) {
  for (const char* raw : {"", "localhost", "LOCALHOST", "LocalHost", "localhost.localdomain"}) {
    EXPECT_EQ(hostNameFrom(raw).view(), "NoHostNameSet_") << raw;
  }
  for (const char* raw : {"localhost2", "mylocalhost", "local"}) {
    EXPECT_EQ(hostNameFrom(raw).view(), std::string(raw));
  }
}

TEST(HostName, IsTheNameOfThisMachine) {
  std::array<char, 256> raw{};
  ASSERT_EQ(gethostname(raw.data(), raw.size()), 0);
  EXPECT_EQ(hostName().view(), hostNameFrom(raw.data()).view());
}

}  // namespace
}  // namespace marrowbench
