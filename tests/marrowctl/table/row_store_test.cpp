#include "marrowctl/table/row_store.h"

#include <gtest/gtest.h>

namespace marrowbench::ctl {
namespace {

constexpr char kMark[] = {kNumberMark, '\0'};

RowKind kindOf(const std::string& source, const std::string& dest, const std::string& error) {
  RowKind kind;
  kind.source = source;
  kind.dest = dest;
  kind.error = error;
  kind.sourceNumbers = marksIn(source);
  kind.destNumbers = marksIn(dest);
  kind.errorNumbers = marksIn(error);
  return kind;
}

TEST(RowStore, GivesTextsBackWhoseNumbersRepeatThoseOfTheSource) {
  RowStore store;
  const std::string mark(kMark);
  const std::uint32_t kind =
      store.addKind("a", kindOf(mark + "/" + mark, mark + "_" + mark, "code " + mark));
  StoredRow row;
  row.kind = kind;
  store.add(row, 0, {17, 1007, 17, 1007, 17});
  store.add(row, 3, {17, 1007, 1007, 17, 12});
  store.endFile();
  store.finish();

  StoredRowCursor rows(store);
  ASSERT_TRUE(rows.next());
  EXPECT_EQ(rows.source() + " " + rows.dest() + " " + rows.error(), "7/007 7_007 code 7");
  ASSERT_TRUE(rows.next());
  EXPECT_EQ(rows.source() + " " + rows.dest() + " " + rows.error(), "7/007 007_7 code 2");
  EXPECT_EQ(rows.line(), 3U);
  EXPECT_FALSE(rows.next());
}

// A path may have fewer numbers than the other.
TEST(RowStore, GivesTextsBackOfPathsThatAreNotAlike) {
  RowStore store;
  const std::string mark(kMark);
  StoredRow row;
  row.kind = store.addKind("a", kindOf("MEMORY", mark + mark, mark));
  store.add(row, 0, {17, 17, 17});
  row.kind = store.addKind("b", kindOf(mark + "," + mark + "," + mark, mark, mark));
  store.add(row, 0, {17, 18, 19, 17, 18});
  store.endFile();
  store.finish();

  StoredRowCursor rows(store);
  ASSERT_TRUE(rows.next());
  EXPECT_EQ(rows.source() + " " + rows.dest() + " " + rows.error(), "MEMORY 77 7");
  ASSERT_TRUE(rows.next());
  EXPECT_EQ(rows.source() + " " + rows.dest() + " " + rows.error(), "7,8,9 7 8");
}

TEST(RowStore, GoesOnFromBlockToBlock) {
  RowStore store;
  StoredRow row;
  row.kind = store.addKind("a", kindOf(kMark, "MEMORY", ""));
  const std::uint64_t count = 2 * RowStore::kRowsOfBlock + 5;
  for (std::uint64_t i = 0; i < count; ++i) store.add(row, 1, {1'000'000 + i});
  store.endFile();
  store.finish();

  std::uint64_t seen = 0;
  for (StoredRowCursor rows(store); rows.next(); ++seen) {
    ASSERT_EQ(rows.line(), seen + 1);
    ASSERT_EQ(rows.numbers().at(0), 1'000'000 + seen);
  }
  EXPECT_EQ(seen, count);
}

}  // namespace
}  // namespace marrowbench::ctl
