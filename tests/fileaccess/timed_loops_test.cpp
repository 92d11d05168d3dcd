#include "fileaccess/timed_loops.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "fakes/fake_clock.h"
#include "fakes/scripted_methods.h"
#include "fileaccess/error_text.h"
#include "fileaccess/file_copy_methods.h"
#include "fileaccess/file_read_write_methods.h"
#include "helpers/method_checks.h"
#include "helpers/system_limits.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

using test::failure;
using test::fakeClock;
using Log = std::vector<std::string>;

constexpr std::int64_t kGiB = 1073741824;

// A file of so many bytes that takes no space.
void makeFile(const FixedString& path, std::int64_t size) {
  test::writeFile(path, "");
  std::filesystem::resize_file(path.c_str(), static_cast<std::uintmax_t>(size));
}

void expectNothingRecorded(const _fileGLobal& method) {
  EXPECT_EQ(method.parameters.stats.files, 0);
  EXPECT_EQ(method.parameters.stats.bytes, 0);
  EXPECT_EQ(method.parameters.stats.dataMs, 0);
}

// Refused before the open, then after it. An older errno is not told as the reason.
template <class Scripted, class Run>
void expectFailureWhenPreallocationIsRefused(Scripted& method, const FixedString& path, Run run) {
  const struct {
    bool before;
    Log log;
  } cases[] = {{false, {"preallocate before"}},
               {true, {"preallocate before", "open", "preallocate after"}}};
  for (const auto& c : cases) {
    method.script = {};
    method.script.preallocateBefore = c.before;
    method.script.preallocateAfter = false;
    method.parameters.prealloc = true;
    errno = EIO;
    EXPECT_FALSE(run(method));
    EXPECT_EQ(method.script.log, c.log) << "no close";
    EXPECT_EQ(method.errorText, failure("Unable to preallocate file '", path, 0));
    EXPECT_EQ(method.parameters.nullPosition, -1);
    expectNothingRecorded(method);
  }
}

TEST(ClearedRun, ForgetsTheLastRunsOutcomeAndKeepsItsStatistics) {
  test::ScriptedCopy method;
  method.setError("earlier");
  method.parameters.nullPosition = 77;
  method.parameters.stats.files = 3;
  fakeClock().msPerReading = 5;
  EXPECT_FALSE(runCopy(method));
  EXPECT_TRUE(method.errorText.isEmpty());
  EXPECT_EQ(method.parameters.nullPosition, -1);
  EXPECT_EQ(method.parameters.startMs, 1'700'000'000'000);
  EXPECT_EQ(method.parameters.stats.files, 3);
}

// A scripted copy of a real source.
class RunCopy : public testing::Test {
 protected:
  explicit RunCopy(std::int64_t size = 10000) {
    method.sourcePath = folder.file("source");
    method.destPath = folder.file("dest");
    method.parameters.chunkSize = 4096;
    makeFile(method.sourcePath, size);
  }

  test::TempFolder folder;
  test::ScriptedCopy method;
};

TEST_F(RunCopy, MovesChunksAndTheRestWithAPauseAfterEach) {
  method.parameters.chunkWait = 20;
  EXPECT_TRUE(runCopy(method));
  EXPECT_EQ(method.script.log,
            (Log{"open", "transfer 4096", "transfer 4096", "transfer 1808", "close"}));
  EXPECT_EQ(fakeClock().sleeps, (std::vector<std::uint32_t>{20000, 20000, 20000}));
}

TEST_F(RunCopy, EndsWithTheLastFullChunk) {
  const struct {
    std::int32_t chunkSize;
    Log log;
  } cases[] = {{5000, {"open", "transfer 5000", "transfer 5000", "close"}},
               {10000, {"open", "transfer 10000", "close"}},
               {65536, {"open", "transfer 10000", "close"}}};
  for (const auto& c : cases) {
    method.script = {};
    method.parameters.chunkSize = c.chunkSize;
    EXPECT_TRUE(runCopy(method));
    EXPECT_EQ(method.script.log, c.log) << c.chunkSize;
  }
}

TEST_F(RunCopy, PausesInPiecesBelowOneSecond) {
  method.parameters.chunkSize = 5000;
  method.parameters.chunkWait = 2500;
  EXPECT_TRUE(runCopy(method));
  EXPECT_EQ(fakeClock().sleeps,
            (std::vector<std::uint32_t>{999000, 999000, 502000, 999000, 999000, 502000}));
}

TEST_F(RunCopy, PausesOnlyForAPositiveWait) {
  for (const std::int32_t wait : {0, -5}) {
    method.parameters.chunkWait = wait;
    EXPECT_TRUE(runCopy(method));
    EXPECT_TRUE(fakeClock().sleeps.empty()) << wait;
  }
}

TEST_F(RunCopy, RecordsBytesAndTheTimeWithItsPauses) {
  method.parameters.chunkWait = 50;
  fakeClock().msPerReading = 7;
  EXPECT_TRUE(runCopy(method));
  EXPECT_EQ(method.parameters.startMs, 1'700'000'000'000);
  EXPECT_EQ(method.parameters.stats.files, 1);
  EXPECT_EQ(method.parameters.stats.bytes, 10000);
  EXPECT_EQ(method.parameters.stats.dataMs, 157);
  EXPECT_EQ(method.parameters.fileSize, 10000);

  EXPECT_TRUE(runCopy(method)) << "statistics are summed";
  EXPECT_EQ(method.parameters.stats.files, 2);
  EXPECT_EQ(method.parameters.stats.dataMs, 314);
}

TEST_F(RunCopy, AsksForOneTransferWithoutChunkSize) {
  for (const std::int32_t chunkSize : {0, -4096}) {
    method.script = {};
    method.script.fill = 0;
    method.parameters.chunkSize = chunkSize;
    method.parameters.chunkWait = 20;
    EXPECT_TRUE(runCopy(method));
    EXPECT_EQ(method.script.log, (Log{"open", "whole 10000", "close"})) << chunkSize;
    EXPECT_EQ(method.parameters.nullPosition, -1);
    EXPECT_TRUE(fakeClock().sleeps.empty());
  }
}

TEST_F(RunCopy, FailsSilentlyWithoutASource) {
  const FixedString empty = folder.file("empty");
  test::writeFile(empty, "");
  for (const FixedString& source : {folder.file("missing"), folder.file("."), empty}) {
    method.sourcePath = source;
    method.setError("earlier");
    EXPECT_FALSE(runCopy(method));
    EXPECT_TRUE(method.errorText.isEmpty()) << source.c_str();
    EXPECT_TRUE(method.script.log.empty()) << source.c_str();
    EXPECT_EQ(method.parameters.nullPosition, -1);
    expectNothingRecorded(method);
  }
}

TEST_F(RunCopy, PreallocatesBeforeAndAfterTheOpen) {
  method.parameters.prealloc = true;
  method.parameters.chunkSize = 0;
  EXPECT_TRUE(runCopy(method));
  EXPECT_EQ(method.script.log,
            (Log{"preallocate before", "open", "preallocate after", "whole 10000", "close"}));
}

TEST_F(RunCopy, FailsWhenPreallocationIsRefused) {
  expectFailureWhenPreallocationIsRefused(method, method.destPath, runCopy);
}

TEST_F(RunCopy, StopsWhenTheOpenFails) {
  method.script.opens = false;
  EXPECT_FALSE(runCopy(method));
  EXPECT_EQ(method.script.log, Log{"open"});
  EXPECT_EQ(method.errorText.view(), "ERROR: open failed");
  EXPECT_EQ(method.parameters.nullPosition, -1);
}

TEST_F(RunCopy, ClosesAfterAFailedTransfer) {
  method.parameters.chunkWait = 20;
  method.script.failingTransfer = 1;
  EXPECT_FALSE(runCopy(method));
  EXPECT_EQ(method.script.log, (Log{"open", "transfer 4096", "transfer 4096", "close"}));
  EXPECT_EQ(fakeClock().sleeps.size(), 1U);
  EXPECT_EQ(method.errorText.view(), "ERROR: transfer failed");
  EXPECT_EQ(method.parameters.nullPosition, 0);
  expectNothingRecorded(method);

  method.script = {};
  method.script.failingTransfer = 0;
  method.parameters.chunkSize = 0;
  EXPECT_FALSE(runCopy(method));
  EXPECT_EQ(method.script.log, (Log{"open", "whole 10000", "close"}));
  expectNothingRecorded(method);
}

TEST_F(RunCopy, TakesNoOlderErrnoForAShortTransfer) {
  method.parameters.chunkWait = 1;
  fakeClock().duringSleep = [this] {
    makeFile(method.sourcePath, 5000);
    errno = EIO;
  };
  _fileCopy_fd real(method);
  EXPECT_FALSE(runCopy(real));
  EXPECT_EQ(real.errorText, failure("Unable to read file '", method.sourcePath, 0));
}

TEST_F(RunCopy, ClosesWhenThereIsNoMemoryForAChunk) {
  if (!test::kMallocCanFail) GTEST_SKIP() << "a failed malloc ends a process with this sanitizer";
  method.parameters.chunkSize = 2147483647;
  {
    const test::AddressSpaceLimit limit;
    EXPECT_FALSE(runCopy(method));
  }
  EXPECT_EQ(method.script.log, (Log{"open", "close"}));
  EXPECT_EQ(method.errorText,
            composeError("Unable to allocate memory buffer! ", std::strerror(ENOMEM)));
  EXPECT_EQ(method.parameters.nullPosition, 0);
}

TEST_F(RunCopy, FindsTheFirstChunkThatEndsInNulls) {
  const struct {
    std::int32_t chunkSize;
    unsigned char fill;
    std::int64_t position;
  } cases[] = {{4096, 0, 3796}, {301, 0, 1}, {300, 0, 0}, {4096, 0x41, 0}};
  for (const auto& c : cases) {
    method.script.fill = c.fill;
    method.parameters.chunkSize = c.chunkSize;
    EXPECT_TRUE(runCopy(method));
    EXPECT_EQ(method.parameters.nullPosition, c.position) << c.chunkSize;
  }
}

TEST_F(RunCopy, CountsTheNullPositionFromTheStartOfTheFile) {
  method.script.firstNullTransfer = 1;
  EXPECT_TRUE(runCopy(method));
  EXPECT_EQ(method.parameters.nullPosition, 2 * 4096 - 300);
}

TEST_F(RunCopy, KeepsTheLowHalfOfALargeSize) {
  const struct {
    std::int64_t size;
    std::int32_t lowHalf;
  } cases[] = {{3 * kGiB, -1073741824}, {4 * kGiB, 0}, {5 * kGiB, 1073741824}};
  for (const auto& c : cases) {
    method.script = {};
    method.parameters.stats = {};
    method.parameters.chunkSize = 0;
    makeFile(method.sourcePath, c.size);
    EXPECT_TRUE(runCopy(method));
    EXPECT_EQ(method.script.log, (Log{"open", "whole " + std::to_string(c.lowHalf), "close"}));
    EXPECT_EQ(method.parameters.fileSize, c.lowHalf);
    EXPECT_EQ(method.parameters.stats.bytes, c.size);
  }
}

TEST_F(RunCopy, CopiesALargeSourceToItsEnd) {
  makeFile(method.sourcePath, 5 * kGiB + 1);
  method.parameters.chunkSize = 1 << 20;
  method.script.failingTransfer = 4;
  EXPECT_FALSE(runCopy(method));
  const std::string chunk = "transfer 1048576";
  EXPECT_EQ(method.script.log, (Log{"open", chunk, chunk, chunk, chunk, chunk, "close"}));
}

TEST_F(RunCopy, RefusesToPreallocateANegativeSize) {
  makeFile(method.sourcePath, 3 * kGiB);
  method.parameters.prealloc = true;
  _fileCopy_fd real(method);
  EXPECT_FALSE(runCopy(real));
  EXPECT_EQ(real.errorText, failure("Unable to preallocate file '", method.destPath, EINVAL));
}

// A scripted transfer between a buffer of 1,000 bytes and a file of 1,000 bytes.
class RunReadWrite : public testing::Test {
 protected:
  RunReadWrite() {
    method.path = folder.file("file");
    method.buffer = memory.data();
    method.parameters.chunkSize = 400;
    method.parameters.fileSize = 1000;
    makeFile(method.path, 1000);
  }

  test::TempFolder folder;
  std::vector<std::byte> memory = std::vector<std::byte>(1000, std::byte{7});
  test::ScriptedReadWrite method;
};

using RunRead = RunReadWrite;
using RunWrite = RunReadWrite;

TEST_F(RunReadWrite, MovesAlongTheBufferWithAPauseAfterEachChunk) {
  for (const bool isRead : {true, false}) {
    method.script = {};
    method.offsets.clear();
    fakeClock().sleeps.clear();
    method.isRead = isRead;
    method.parameters.chunkWait = 20;
    EXPECT_TRUE(runReadWrite(method));
    EXPECT_EQ(method.script.log,
              (Log{"open", "transfer 400", "transfer 400", "transfer 200", "close"}));
    EXPECT_EQ(method.offsets, (std::vector<std::int64_t>{0, 400, 800}));
    EXPECT_EQ(fakeClock().sleeps, (std::vector<std::uint32_t>{20000, 20000, 20000}));
  }
}

TEST_F(RunReadWrite, RecordsBytesAndTheTimeWithItsPauses) {
  method.parameters.chunkWait = 50;
  fakeClock().msPerReading = 7;
  EXPECT_TRUE(runReadWrite(method));
  EXPECT_EQ(method.parameters.startMs, 1'700'000'000'000);
  EXPECT_EQ(method.parameters.stats.files, 1);
  EXPECT_EQ(method.parameters.stats.bytes, 1000);
  EXPECT_EQ(method.parameters.stats.dataMs, 157);
}

TEST_F(RunReadWrite, MovesEverythingAtOnceWithoutChunkSize) {
  for (const std::int32_t chunkSize : {0, -400}) {
    method.script = {};
    method.parameters.chunkSize = chunkSize;
    method.parameters.chunkWait = 20;
    EXPECT_TRUE(runReadWrite(method));
    EXPECT_EQ(method.script.log, (Log{"open", "transfer 1000", "close"})) << chunkSize;
    EXPECT_TRUE(fakeClock().sleeps.empty());
  }
}

TEST_F(RunReadWrite, StopsWhenTheOpenFails) {
  for (const bool isRead : {true, false}) {
    method.script = {};
    method.script.opens = false;
    method.isRead = isRead;
    EXPECT_FALSE(runReadWrite(method));
    EXPECT_EQ(method.script.log, Log{"open"});
    EXPECT_EQ(method.errorText.view(), "ERROR: open failed");
    EXPECT_EQ(method.parameters.nullPosition, -1);
  }
}

TEST_F(RunReadWrite, ClosesAfterAFailedTransfer) {
  for (const bool isRead : {true, false}) {
    method.script = {};
    method.script.failingTransfer = 1;
    method.isRead = isRead;
    EXPECT_FALSE(runReadWrite(method));
    EXPECT_EQ(method.script.log, (Log{"open", "transfer 400", "transfer 400", "close"}));
    EXPECT_EQ(method.errorText.view(), "ERROR: transfer failed");
    EXPECT_EQ(method.parameters.nullPosition, isRead ? 0 : -1);
    expectNothingRecorded(method);
  }
}

TEST_F(RunReadWrite, ClosesAfterAFailedSingleTransfer) {
  method.parameters.chunkSize = 0;
  method.script.failingTransfer = 0;
  EXPECT_FALSE(runReadWrite(method));
  EXPECT_EQ(method.script.log, (Log{"open", "transfer 1000", "close"}));
  expectNothingRecorded(method);
}

TEST_F(RunRead, FailsWithoutAFile) {
  const struct {
    FixedString path;
    int code;
  } cases[] = {{folder.file("missing"), ENOENT}, {folder.file("."), 0}};
  for (const auto& c : cases) {
    method.isRead = true;
    method.path = c.path;
    EXPECT_FALSE(runReadWrite(method));
    EXPECT_EQ(method.errorText, failure("Unable to find source file '", c.path, c.code));
    EXPECT_TRUE(method.script.log.empty());
    EXPECT_EQ(method.parameters.nullPosition, -1);
  }
}

TEST_F(RunRead, NeverPreallocates) {
  method.isRead = true;
  method.parameters.prealloc = true;
  method.parameters.chunkSize = 0;
  EXPECT_TRUE(runReadWrite(method));
  EXPECT_EQ(method.script.log, (Log{"open", "transfer 1000", "close"}));
}

TEST_F(RunRead, TakesTheLowHalfOfTheFilesSizeUpToOneGiB) {
  const struct {
    std::int64_t size;
    std::int32_t fileSize;
    const char* transfer;
  } cases[] = {{999, 999, "transfer 400"},
               {300, 300, "transfer 300"},
               {kGiB, 1073741824, "transfer 400"},
               {kGiB + 1, 1073741824, "transfer 400"},
               {2 * kGiB - 1, 1073741824, "transfer 400"},
               {2 * kGiB, -2147483647 - 1, "transfer -2147483648"},
               {3 * kGiB, -1073741824, "transfer -1073741824"},
               {4 * kGiB, 0, "transfer 0"},
               {5 * kGiB, 1073741824, "transfer 400"}};
  for (const auto& c : cases) {
    method.script = {};
    method.script.failingTransfer = 0;
    method.isRead = true;
    makeFile(method.path, c.size);
    EXPECT_FALSE(runReadWrite(method));
    EXPECT_EQ(method.parameters.fileSize, c.fileSize) << c.size;
    EXPECT_EQ(method.script.log, (Log{"open", c.transfer, "close"})) << c.size;
  }
}

TEST_F(RunRead, FailsBetweenTwoAndFourGiBAndReadsNothingAtFour) {
  method.isRead = true;
  for (const std::int32_t chunkSize : {0, 400}) {
    method.parameters.chunkSize = chunkSize;
    makeFile(method.path, 3 * kGiB);
    _fileReadWriteBuffer_fd negative(method);
    EXPECT_FALSE(runReadWrite(negative));
    EXPECT_EQ(negative.errorText, failure("Unable to read file '", method.path, EINVAL));
    makeFile(method.path, 4 * kGiB);
    _fileReadWriteBuffer_fd nothing(method);
    EXPECT_TRUE(runReadWrite(nothing));
    EXPECT_EQ(nothing.parameters.stats.files, 1);
    EXPECT_EQ(nothing.parameters.stats.bytes, 0);
  }
}

TEST_F(RunRead, FindsTheFirstChunkThatEndsInNulls) {
  method.isRead = true;
  EXPECT_TRUE(runReadWrite(method));
  EXPECT_EQ(method.parameters.nullPosition, 0);
  method.script.fill = 0;
  EXPECT_TRUE(runReadWrite(method));
  EXPECT_EQ(method.parameters.nullPosition, 100);
  method.parameters.chunkSize = 300;
  EXPECT_TRUE(runReadWrite(method));
  EXPECT_EQ(method.parameters.nullPosition, 0);
}

TEST_F(RunRead, CountsTheNullPositionFromTheStartOfTheFile) {
  method.isRead = true;
  method.script.firstNullTransfer = 1;
  EXPECT_TRUE(runReadWrite(method));
  EXPECT_EQ(method.parameters.nullPosition, 2 * method.parameters.chunkSize - 300);
}

TEST_F(RunRead, LooksForNullsAfterASingleTransfer) {
  method.isRead = true;
  method.script.fill = 0;
  method.parameters.chunkSize = 0;
  EXPECT_TRUE(runReadWrite(method));
  EXPECT_EQ(method.parameters.nullPosition, 500);
  makeFile(method.path, 499);
  EXPECT_TRUE(runReadWrite(method));
  EXPECT_EQ(method.parameters.nullPosition, 0) << "too short to be looked at";
}

TEST_F(RunWrite, KeepsItsFileSizeWhateverTheFile) {
  makeFile(method.path, 5000);
  method.parameters.fileSize = 300;
  EXPECT_TRUE(runReadWrite(method));
  EXPECT_EQ(method.script.log, (Log{"open", "transfer 300", "close"}));
}

TEST_F(RunWrite, WritesAnEmptyFile) {
  for (const std::int32_t chunkSize : {0, 400}) {
    method.script = {};
    method.parameters.stats = {};
    method.parameters.chunkSize = chunkSize;
    method.parameters.fileSize = 0;
    EXPECT_TRUE(runReadWrite(method));
    EXPECT_EQ(method.script.log, (Log{"open", "transfer 0", "close"})) << chunkSize;
    EXPECT_EQ(method.parameters.stats.files, 1);
  }
}

TEST_F(RunWrite, PreallocatesBeforeAndAfterTheOpen) {
  method.parameters.prealloc = true;
  method.parameters.chunkSize = 0;
  EXPECT_TRUE(runReadWrite(method));
  EXPECT_EQ(method.script.log,
            (Log{"preallocate before", "open", "preallocate after", "transfer 1000", "close"}));
}

TEST_F(RunWrite, FailsWhenPreallocationIsRefused) {
  expectFailureWhenPreallocationIsRefused(method, method.path, runReadWrite);
}

TEST_F(RunWrite, LooksForNullsInWhatItWrites) {
  EXPECT_TRUE(runReadWrite(method));
  EXPECT_EQ(method.parameters.nullPosition, -1);
  memory.assign(1000, std::byte{0});
  method.buffer = memory.data();
  EXPECT_TRUE(runReadWrite(method));
  EXPECT_EQ(method.parameters.nullPosition, 100);
  method.parameters.chunkSize = 0;
  EXPECT_TRUE(runReadWrite(method));
  EXPECT_EQ(method.parameters.nullPosition, 500);
}

TEST_F(RunReadWrite, LooksForNullsAlsoAfterAFailedSingleTransfer) {
  memory.assign(1000, std::byte{0});
  method.buffer = memory.data();
  method.parameters.chunkSize = 0;
  for (const bool isRead : {true, false}) {
    method.script = {};
    method.script.failingTransfer = 0;
    method.isRead = isRead;
    EXPECT_FALSE(runReadWrite(method));
    EXPECT_EQ(method.parameters.nullPosition, 500) << isRead;
  }
}

}  // namespace
}  // namespace marrowbench
