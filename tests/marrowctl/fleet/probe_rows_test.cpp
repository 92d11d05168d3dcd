#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "marrowctl/fleet/probe_steps.h"

namespace marrowbench::ctl {
namespace {

using Texts = std::vector<std::string>;

RowTest rowsOfOne(int told, int kept, int locked = 0, int failed = 0) {
  RowTest rows;
  rows.clients = rows.headers = 1;
  rows.told = told;
  rows.kept = kept;
  rows.locked = locked;
  rows.failed = failed;
  return rows;
}

TEST(RowsAlone, OnASlowShareAreFewAndFine) {
  for (const int told : {1, 3, 20}) {
    Probe probe;
    judgeRowsAlone(rowsOfOne(told, told), 30, probe);
    EXPECT_EQ(probe.troubles, Texts{}) << told;
    ASSERT_TRUE(probe.secondsPerRow) << told;
    EXPECT_DOUBLE_EQ(*probe.secondsPerRow, 30.0 / told);
  }
}

TEST(RowsAlone, TellWhatIsWrongWithAShare) {
  const struct {
    RowTest rows;
    const char* trouble;
  } cases[] = {
      {rowsOfOne(3, 2), "of 3 rows of a single client 2 are in the table"},
      {rowsOfOne(0, 0), "a single client got no row written"},
      {rowsOfOne(0, 0, 1), "a single client waited for the lock in vain"},
      {rowsOfOne(3, 3, 1), "a single client waited for the lock in vain"},
      {rowsOfOne(3, 3, 0, 2), "a single client could not write 2 rows"},
  };
  for (const auto& c : cases) {
    Probe probe;
    judgeRowsAlone(c.rows, 30, probe);
    EXPECT_EQ(probe.troubles, Texts{std::string(c.trouble) + ", with nobody else there"});
    EXPECT_FALSE(probe.secondsPerRow) << c.trouble;
  }
}

}  // namespace
}  // namespace marrowbench::ctl
