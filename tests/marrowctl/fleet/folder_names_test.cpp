#include "marrowctl/fleet/folder_names.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "helpers/temp_folder.h"

namespace marrowbench::ctl {
namespace {

// Whether it was read in this look: what has come since is not in the listing then.
bool wasRead(FolderListings& listings, const std::string& folder) {
  test::writeFile((folder + "/new").c_str(), "");
  return listings.of(folder).names.empty();
}

TEST(FolderListings, AreReadOnceInALook) {
  const test::TempFolder folder;
  FolderListings listings;
  EXPECT_TRUE(listings.of(folder.path()).names.empty());
  EXPECT_EQ(listings.of(folder.path()).code, 0);
  EXPECT_TRUE(wasRead(listings, folder.path()));
  listings.forget();
  EXPECT_EQ(listings.of(folder.path()).names, std::vector<std::string>{"new"});
  EXPECT_EQ(listings.of(folder.path() + "/missing").code, ENOENT);
}

TEST(FolderListings, TheFolderOfAFileIsRenewed) {
  const test::TempFolder folder;
  const std::string inner = folder.path() + "/inner";
  std::filesystem::create_directory(inner);
  FolderListings listings;
  listings.renew(inner + "/res.csv");
  EXPECT_TRUE(wasRead(listings, inner));
  std::filesystem::remove_all(inner);
  EXPECT_FALSE(wasRead(listings, folder.path())) << "only that one";
}

TEST(FolderListings, WhereItIsMissingTheNextOneAboveIsRenewed) {
  const test::TempFolder folder;
  FolderListings listings;
  listings.renew(folder.path() + "/a/b/res.csv");
  EXPECT_TRUE(wasRead(listings, folder.path()));
}

}  // namespace
}  // namespace marrowbench::ctl
