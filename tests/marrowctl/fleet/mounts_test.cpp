#include "marrowctl/fleet/mounts.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace marrowbench::ctl {
namespace {

constexpr const char* kMounts =
    "/dev/vda / ext4 rw,relatime 0 0\n"
    "torn line\n"
    "server:/bench /srv/share nfs4 rw,vers=4.1,lookupcache=positive 0 0\n"
    "tmpfs /srv/share/memory tmpfs rw 0 0\n"
    "user@host:/x\\040y /mnt/my\\040share fuse.sshfs rw,user_id=0 0 0\n"
    "first /mnt/twice nfs rw 0 0\n"
    "second /mnt/twice cifs rw 0 0\n";

std::optional<Mount> mountAt(const std::string& path) {
  std::istringstream list(kMounts);
  return mountIn(list, path);
}

TEST(MountIn, IsTheLongestThatHoldsThePath) {
  const struct {
    const char* path;
    const char* source;
  } cases[] = {{"/", "/dev/vda"},
               {"/srv", "/dev/vda"},
               {"/srv/shared", "/dev/vda"},
               {"/srv/share", "server:/bench"},
               {"/srv/share/a/b", "server:/bench"},
               {"/srv/share/memory/x", "tmpfs"},
               {"/mnt/my share/x", "user@host:/x y"},
               {"/mnt/twice/x", "second"}};
  for (const auto& c : cases) {
    const auto mount = mountAt(c.path);
    ASSERT_TRUE(mount) << c.path;
    EXPECT_EQ(mount->source, c.source) << c.path;
  }
}

TEST(MountIn, IsNothingWithoutAList) {
  std::istringstream list("");
  EXPECT_FALSE(mountIn(list, "/"));
}

TEST(Mount, HasAnOptionAsAWordOfItsOwn) {
  const Mount mount = *mountAt("/srv/share");
  EXPECT_TRUE(mount.has("lookupcache=positive"));
  EXPECT_TRUE(mount.has("rw"));
  EXPECT_FALSE(mount.has("lookupcache"));
  EXPECT_FALSE(mount.has("vers=4"));
}

}  // namespace
}  // namespace marrowbench::ctl
