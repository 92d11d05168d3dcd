#include "marrowctl/table/run_spans.h"

#include <gtest/gtest.h>

namespace marrowbench::ctl {
namespace {

TEST(RunSpans, AGapEndsARun) {
  RunSpans spans(100);
  spans.add(0, 10);
  spans.add(110, 120);
  EXPECT_EQ(spans.count(), 1U);
  spans.add(221, 230);
  EXPECT_EQ(spans.count(), 2U);
  EXPECT_EQ(spans.newestBegin(), 221);
  EXPECT_EQ(spans.indexOf(120), 0U);
  EXPECT_EQ(spans.indexOf(230), 1U);
}

TEST(RunSpans, TheOrderOfRowsDoesNotMatter) {
  RunSpans spans(100);
  spans.add(1000, 1010);
  spans.add(0, 10);
  spans.add(500, 510);
  EXPECT_EQ(spans.count(), 3U);
  // A row that was under way in between.
  spans.add(50, 450);
  EXPECT_EQ(spans.count(), 2U);
  spans.add(0, 2000);
  EXPECT_EQ(spans.count(), 1U);
  EXPECT_EQ(spans.newestBegin(), 0);
}

}  // namespace
}  // namespace marrowbench::ctl
