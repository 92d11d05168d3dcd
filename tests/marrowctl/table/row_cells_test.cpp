#include "marrowctl/table/row_cells.h"

#include <gtest/gtest.h>

#include <string>

namespace marrowbench::ctl {
namespace {

// A line with the bytes behind it that the reader may look at. The cells read from it point into
// it.
class Line {
 public:
  explicit Line(const std::string& text, bool isEnded = true)
      : storage(text + std::string(kMaskBytes, ',')) {
    line.text = std::string_view(storage).substr(0, text.size());
    line.isEnded = isEnded;
  }
  TextLine line;

 private:
  std::string storage;
};

constexpr const char* kFront = "Nov 16. 02:21.29,Posix,Copy,,,0,65536,64,0,0,4,0,";
constexpr const char* kBack = ",0,52,393846,100,,,,,,,,,,,,,";

std::string row(const std::string& middle) { return kFront + middle + kBack; }

TEST(RowReader, TakesCellsFromBothEnds) {
  RowReader reader;
  RowCells cells;
  const Line line(row("/in,,/out,,an error"));
  ASSERT_EQ(reader.read(line.line, cells), LineContent::row);
  EXPECT_EQ(cells.parameters, "Posix,Copy,,,0,65536,64,0,0,4,0");
  EXPECT_EQ(cells.source, "/in");
  EXPECT_EQ(cells.dest, "/out");
  EXPECT_EQ(cells.error, "an error");
  EXPECT_EQ(cells.nullPosition, 0);
  EXPECT_EQ(cells.milliseconds, 52);
  EXPECT_EQ(cells.kibPerSecond, 393846);
  EXPECT_EQ(cells.percent, 100);
}

TEST(RowReader, SplitsTheMiddleAtTheEmptyAddresses) {
  const struct {
    const char* middle;
    const char* source;
    const char* dest;
    const char* error;
  } cases[] = {{"a,b,,c,d,,", "a,b", "c,d", ""},
               {"a,,b,,x, y", "a", "b", "x, y"},
               {"a,1.2.3.4,b,5.6.7.8,", "a", "b", ""}};
  RowReader reader;
  RowCells cells;
  for (const auto& c : cases) {
    const Line line(row(c.middle));
    ASSERT_EQ(reader.read(line.line, cells), LineContent::row) << c.middle;
    EXPECT_EQ(cells.source, c.source) << c.middle;
    EXPECT_EQ(cells.dest, c.dest) << c.middle;
    EXPECT_EQ(cells.error, c.error) << c.middle;
  }
}

TEST(RowReader, DoesNotGuessWhatIsAmbiguous) {
  RowReader reader;
  RowCells cells;
  for (const char* middle :
       {"a,,b,,c,,", ",a,,b,,", "a,,b,,,", "a,,,b,,", "a,1.2.3.4,b,c,5.6.7.8,"}) {
    EXPECT_EQ(reader.read(Line(row(middle)).line, cells), LineContent::unusable) << middle;
    EXPECT_EQ(reader.reason(), "ambiguous: separators in its paths or its error text") << middle;
  }
}

TEST(RowReader, PassesOverHeadersAndBlankLines) {
  RowReader reader;
  RowCells cells;
  for (const char* text : {"", "  \t", "\r", "Date,Method,Type,", "Date;Method;Type;"}) {
    EXPECT_EQ(reader.read(Line(text).line, cells), LineContent::nothing) << text;
  }
}

TEST(RowReader, TakesALastRowWithoutALineFeedOnlyIfItIsWhole) {
  const std::string whole = row("a,,b,,");
  RowReader reader;
  RowCells cells;
  EXPECT_EQ(reader.read(Line(whole, false).line, cells), LineContent::row);
  for (std::size_t length = 1; length + 2 < whole.size(); ++length) {
    EXPECT_EQ(reader.read(Line(whole.substr(0, length), false).line, cells), LineContent::unusable)
        << length;
  }
}

TEST(DateFrom, GrowsWithTheDateAndRefusesWhatIsNone) {
  EXPECT_LT(dateFrom("Feb 29. 23:59.59"), dateFrom("Mar 01. 00:00.00"));
  const DateParts parts = partsOf(dateFrom("Nov 16. 02:21.29"));
  EXPECT_EQ(parts.month, 11);
  EXPECT_EQ(parts.day, 16);
  EXPECT_EQ(parts.hour, 2);
  EXPECT_EQ(parts.minute, 21);
  EXPECT_EQ(parts.second, 29);
  for (const char* text :
       {"", "-.-", "--.-", "Nov 16. 02:21.2", "Nov 31. 02:21.29", "nov 16. 02:21.29",
        "Nov 16. 24:21.29", "Nov 16. 02:60.29", "Nov 1x. 02:21.29", "Nov 00. 02:21.29"}) {
    EXPECT_EQ(dateFrom(text), 0U) << text;
  }
}

}  // namespace
}  // namespace marrowbench::ctl
