#include "marrowctl/fleet/mounts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace marrowbench::ctl {
namespace {

constexpr const char* kMounts =
    "/dev/vda / ext4 rw,relatime 0 0\n"
    "torn line\n"
    "server:/bench /srv/share nfs4 rw,vers=4.1,lookupcache=pos 0 0\n"
    "tmpfs /srv/share/memory tmpfs rw 0 0\n"
    "user@host:/x\\040y /mnt/my\\040share fuse.sshfs rw,user_id=0 0 0\n"
    "first /mnt/twice nfs rw 0 0\n"
    "second /mnt/twice cifs rw 0 0\n";

std::optional<Mount> mountAt(const std::string& path) {
  std::istringstream list(kMounts);
  return mountUnder(mountsIn(list), path);
}

TEST(MountUnder, IsTheLongestThatHoldsThePath) {
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

TEST(MountUnder, IsNothingWithoutAList) { EXPECT_FALSE(mountUnder({}, "/")); }

TEST(DisksAndShares, AreNoFileSystemsOfMemoryAndOfTheKernel) {
  std::istringstream list(
      "proc /proc proc rw 0 0\n"
      "/dev/sda1 / ext4 rw,relatime 0 0\n"
      "tmpfs /tmp tmpfs rw 0 0\n"
      "server:/export /mnt/my\\040share nfs4 rw,vers=4.1 0 0\n"
      "//nas/data /mnt/nas cifs rw 0 0\n"
      "gluster /g fuse.glusterfs rw 0 0\n"
      "broken\n");
  const std::vector<Mount> expected = {{"/", "ext4", "/dev/sda1", "rw,relatime"},
                                       {"/mnt/my share", "nfs4", "server:/export", "rw,vers=4.1"},
                                       {"/mnt/nas", "cifs", "//nas/data", "rw"},
                                       {"/g", "fuse.glusterfs", "gluster", "rw"}};
  EXPECT_EQ(disksAndShares(mountsIn(list)), expected);
}

TEST(DisksAndShares, AreAtMost32) {
  std::stringstream list;
  for (int i = 0; i < 40; ++i) list << "/dev/sda" << i << " /m" << i << " ext4 rw 0 0\n";
  EXPECT_EQ(disksAndShares(mountsIn(list)).size(), 32U);
}

TEST(DisksAndShares, BeginWithTheOneThatMatters) {
  std::stringstream list;
  for (int i = 0; i < 40; ++i) list << "/dev/sda" << i << " /m" << i << " ext4 rw 0 0\n";
  list << "hostshare /share 9p rw 0 0\n";
  const std::vector<Mount> all = mountsIn(list);
  // One that would be left out, one behind the 32nd, and one that is there already.
  for (const std::size_t first : {40U, 39U, 3U}) {
    const std::vector<Mount> shown = disksAndShares(all, all[first]);
    ASSERT_EQ(shown.size(), 32U) << first;
    EXPECT_EQ(shown.front(), all[first]);
    EXPECT_EQ(std::count(shown.begin(), shown.end(), all[first]), 1);
  }
}

TEST(Mount, IsAShareByItsTypeOrSource) {
  const struct {
    const char* type;
    const char* source;
    bool isShare;
  } cases[] = {{"nfs4", "server:/export", true},
               {"cifs", "//nas/data", true},
               {"fuse.sshfs", "user@host:/x", true},
               {"fuse.glusterfs", "gluster", true},
               {"9p", "hostshare", true},
               {"ceph", "10.0.0.1,10.0.0.2:/", true},
               {"lustre", "10.0.0.1@tcp:/fs", true},
               {"ext4", "/dev/sda1", false},
               {"ext4", "/dev/disk/by-path/pci-0000:00:1f.2:/1", false},
               {"fuseblk", "/dev/sdb1", false},
               {"zfs", "tank/data:x", false},
               {"tmpfs", "tmpfs", false},
               {"overlay", "overlay", false}};
  for (const auto& c : cases) {
    const Mount mount{"/m", c.type, c.source, "rw"};
    EXPECT_EQ(mount.isShare(), c.isShare) << c.type << " " << c.source;
  }
}

TEST(Mount, HasAnOptionAsAWordOfItsOwn) {
  const Mount mount = *mountAt("/srv/share");
  EXPECT_TRUE(mount.has("lookupcache=pos"));
  EXPECT_TRUE(mount.has("rw"));
  EXPECT_FALSE(mount.has("lookupcache"));
  EXPECT_FALSE(mount.has("vers=4"));
}

}  // namespace
}  // namespace marrowbench::ctl
