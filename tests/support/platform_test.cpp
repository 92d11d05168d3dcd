#include "support/platform.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "helpers/pages.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

class OpenFile {
 public:
  explicit OpenFile(int flags) : descriptor(open(folder.file("f").c_str(), flags, 0666)) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { close(descriptor); }

  [[nodiscard]] struct stat status() const {
    struct stat now {};
    EXPECT_EQ(fstat(descriptor, &now), 0);
    return now;
  }

 private:
  test::TempFolder folder;

 public:
  const int descriptor;
};

TEST(ReserveSpace, TakesBlocksAndLeavesTheSize) {
  const OpenFile file(O_WRONLY | O_CREAT);
  for (const Reservation kind : {Reservation::contiguous, Reservation::anywhere}) {
    if (!reserveSpace(file.descriptor, kind, 1'000'000)) {
      GTEST_SKIP() << "the file system of the temporary folder refuses reservations";
    }
    EXPECT_EQ(file.status().st_size, 0);
    EXPECT_GE(file.status().st_blocks * 512, 1'000'000);
  }
}

TEST(ReserveSpace, LengthZeroReservesNothing) {
  const OpenFile file(O_WRONLY | O_CREAT);
  EXPECT_TRUE(reserveSpace(file.descriptor, Reservation::anywhere, 0));
  EXPECT_EQ(file.status().st_blocks, 0);
}

TEST(ReserveSpace, TellsWhyTheSystemRefuses) {
  EXPECT_FALSE(reserveSpace(-1, Reservation::contiguous, 4096));
  EXPECT_EQ(errno, EBADF);
}

TEST(PopulatePages, MakesThePagesOfTheBytesPresentAndNoOthers) {
  const test::Pages pages;
  pages.memory[2 * pages.kSize] = std::byte{7};
  if (!populatePages(pages.memory + 2 * pages.kSize - 1, pages.kSize + 2)) {
    GTEST_SKIP() << "this system has no such request";
  }
  EXPECT_EQ(pages.present(), ".xxx....");
  EXPECT_EQ(pages.memory[2 * pages.kSize], std::byte{7});
}

TEST(SystemErrorText, KnowsTheCodesOfTheSystem) {
  std::array<char, 250> text{};
  ASSERT_TRUE(systemErrorText(ENOENT, text.data(), text.size()));
  EXPECT_STREQ(text.data(), "No such file or directory");
}

TEST(SystemErrorText, DoesNotTakeATextForUnknownCodes) {
  std::array<char, 250> text{};
  for (const int code : {-2, 9999, 2147483647}) {
    EXPECT_FALSE(systemErrorText(code, text.data(), text.size())) << code;
  }
}

TEST(SystemErrorText, CutsToTheRoomThereIs) {
  std::array<char, 8> text{};
  ASSERT_TRUE(systemErrorText(ENOENT, text.data(), text.size()));
  EXPECT_STREQ(text.data(), "No such");
}

}  // namespace
}  // namespace marrowbench
