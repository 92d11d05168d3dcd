#include "run/lost_rows.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "helpers/printed.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

template <class Action>
std::string toldBy(Action action) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(test::printedBy(action), "") << "standard output is for the reports";
  return testing::internal::GetCapturedStderr();
}

class LostRowsTest : public testing::Test {
 protected:
  std::string note(TableAppend outcome, int code) {
    return toldBy([&] { rows.note("/srv/res.csv", outcome, code); });
  }

  LostRows rows;
};

TEST_F(LostRowsTest, TellsTheReason) {
  const struct {
    TableAppend outcome;
    int code;
    const char* reason;
  } cases[] = {
      {TableAppend::locked, 0, "still locked by another client"},
      {TableAppend::locked, EACCES, "no lock: Permission denied"},
      {TableAppend::takenOver, 0, "the lock was taken over by another client"},
      {TableAppend::failed, ENOSPC, "No space left on device"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(note(c.outcome, c.code),
              std::string("marrowbench: row lost: /srv/res.csv: ") + c.reason + "\n");
  }
}

TEST_F(LostRowsTest, SumsUpWhatIsLost) {
  EXPECT_EQ(note(TableAppend::written, ENOSPC), "");
  EXPECT_EQ(toldBy([&] { rows.printSum(); }), "") << "none is lost";
  (void)note(TableAppend::failed, ENOSPC);
  (void)note(TableAppend::locked, 0);
  EXPECT_EQ(toldBy([&] { rows.printSum(); }), "marrowbench: 2 of 3 rows lost\n");
}

TEST_F(LostRowsTest, FolderAsksForNoTable) {
  const test::TempFolder folder;
  for (const TableAppend outcome : {TableAppend::locked, TableAppend::failed}) {
    EXPECT_EQ(toldBy([&] { rows.note(folder.path().c_str(), outcome, EISDIR); }), "");
  }
  EXPECT_EQ(toldBy([&] { rows.printSum(); }), "");
}

}  // namespace
}  // namespace marrowbench
