#include "fileaccess/file_copy_methods.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "helpers/method_checks.h"
#include "helpers/system_limits.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

using test::failure;
using test::kBeyondEveryBuffer;
using test::openDescriptors;

// A source of ten bytes and the path of a destination that does not exist.
class CopyFiles : public testing::Test {
 protected:
  CopyFiles() {
    values.sourcePath = folder.file("source");
    values.destPath = folder.file("dest");
    values.parameters.chunkSize = 4;
    values.parameters.fileSize = 10;
    test::writeFile(values.sourcePath, "0123456789");
  }

  [[nodiscard]] static bool transfer(_fileCopy& method, std::int32_t length) {
    std::vector<std::byte> chunk(kBeyondEveryBuffer);
    return method.transferChunk(chunk.data(), length);
  }

  [[nodiscard]] std::string dest() const { return test::readFile(values.destPath); }

  test::TempFolder folder;
  _fileCopy values;
};

template <class Method>
class CopyMethod : public CopyFiles {};

using MethodName = test::MethodName<_fileCopy_stream, _fileCopy_FILE>;
using AllMethods = testing::Types<_fileCopy_stream, _fileCopy_FILE, _fileCopy_fd>;
TYPED_TEST_SUITE(CopyMethod, AllMethods, MethodName);

TYPED_TEST(CopyMethod, TakesEveryFieldOfTheValues) {
  this->values.setError("earlier");
  this->values.parameters.chunkWait = 11;
  this->values.parameters.stats.waitMs = 11;
  this->values.parameters.stats.stepBytes = 4096;
  const TypeParam method(this->values);
  EXPECT_EQ(method.errorText.view(), "ERROR: earlier");
  EXPECT_EQ(method.sourcePath, this->values.sourcePath);
  EXPECT_EQ(method.destPath, this->values.destPath);
  EXPECT_EQ(method.parameters.chunkWait, 11);
  EXPECT_EQ(method.parameters.fileSize, 10);
  EXPECT_EQ(method.parameters.stats.waitMs, 11);
  EXPECT_EQ(method.parameters.stats.stepBytes, 4096);
}

TYPED_TEST(CopyMethod, CopiesChunkByChunk) {
  const int before = openDescriptors();
  TypeParam method(this->values);
  ASSERT_TRUE(method.open());
  for (const std::int32_t length : {4, 4, 2}) EXPECT_TRUE(this->transfer(method, length));
  method.close();
  EXPECT_EQ(this->dest(), "0123456789");
  EXPECT_TRUE(method.errorText.isEmpty());
  EXPECT_EQ(openDescriptors(), before);
}

TYPED_TEST(CopyMethod, FailsToOpenAMissingSource) {
  this->values.sourcePath = this->folder.file("missing");
  TypeParam method(this->values);
  EXPECT_FALSE(method.open());
  EXPECT_EQ(method.errorText, failure("Unable to open file '", this->values.sourcePath, ENOENT));
  EXPECT_FALSE(test::exists(this->values.destPath));
}

TYPED_TEST(CopyMethod, ClosesTheSourceWhenTheDestinationFailsToOpen) {
  this->values.destPath = this->folder.file("missing/dest");
  const int before = openDescriptors();
  TypeParam method(this->values);
  EXPECT_FALSE(method.open());
  EXPECT_EQ(method.errorText, failure("Unable to open file '", this->values.destPath, ENOENT));
  EXPECT_EQ(openDescriptors(), before);
}

TYPED_TEST(CopyMethod, FailsToReadBeyondTheSource) {
  TypeParam method(this->values);
  ASSERT_TRUE(method.open());
  EXPECT_TRUE(this->transfer(method, 4));
  errno = 0;
  EXPECT_FALSE(this->transfer(method, 7));
  EXPECT_EQ(method.errorText, failure("Unable to read file '", this->values.sourcePath, 0));
  method.close();
  EXPECT_EQ(this->dest(), "0123");
}

TYPED_TEST(CopyMethod, FailsToReadANegativeLength) {
  TypeParam method(this->values);
  ASSERT_TRUE(method.open());
  errno = 0;
  EXPECT_FALSE(this->transfer(method, -4));
  EXPECT_EQ(method.errorText, failure("Unable to read file '", this->values.sourcePath, EINVAL));
}

TYPED_TEST(CopyMethod, FailsToWriteWhatDoesNotFit) {
  test::writeFile(this->values.sourcePath, std::string(2 * kBeyondEveryBuffer, 'x'));
  TypeParam method(this->values);
  test::expectFailureToWriteWhatDoesNotFit(
      method, this->values.destPath, [&] { return this->transfer(method, kBeyondEveryBuffer); });
}

TYPED_TEST(CopyMethod, ClosesWhatIsOpenWhenDestroyed) {
  const int before = openDescriptors();
  {
    TypeParam method(this->values);
    ASSERT_TRUE(method.open());
    EXPECT_TRUE(this->transfer(method, 10));
    EXPECT_EQ(openDescriptors(), before + 2);
  }
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(this->dest(), "0123456789");
}

// The close writes what a buffer still holds, so it has to come before the buffer is freed.
TYPED_TEST(CopyMethod, WritesItsBufferOutWhenDestroyed) {
  this->values.parameters.systemBuffer = 1;
  this->values.parameters.chunkSize = 512;
  {
    TypeParam method(this->values);
    ASSERT_TRUE(method.open());
    EXPECT_TRUE(this->transfer(method, 10));
  }
  EXPECT_EQ(this->dest(), "0123456789");
}

TYPED_TEST(CopyMethod, ClosesAtMostOnce) {
  TypeParam method(this->values);
  method.close();
  ASSERT_TRUE(method.open());
  method.close();
  const int before = openDescriptors();
  const int other = open(this->values.sourcePath.c_str(), O_RDONLY);
  method.close();
  EXPECT_EQ(openDescriptors(), before + 1);
  (void)close(other);
}

// The sizes of the buffers show in how many bytes were read and written after some transfers of 100
// bytes.
class CopyBuffering : public CopyFiles {
 protected:
  CopyBuffering() {
    test::writeFile(values.sourcePath, std::string(kBeyondEveryBuffer, 'x'));
    values.parameters.chunkSize = 256;
  }

  struct Moved {
    off_t in;
    std::uintmax_t out;
  };

  template <class Method>
  Moved afterTransfers(int count) {
    const int source = test::nextDescriptor();
    Method method(values);
    EXPECT_TRUE(method.open());
    for (int i = 0; i < count; ++i) EXPECT_TRUE(transfer(method, 100));
    const Moved moved{lseek(source, 0, SEEK_CUR),
                      std::filesystem::file_size(values.destPath.c_str())};
    method.close();
    std::filesystem::remove(values.destPath.c_str());
    return moved;
  }
};

template <class Method>
class CopyBufferingOf : public CopyBuffering {};
using BufferedMethods = testing::Types<_fileCopy_stream, _fileCopy_FILE>;
TYPED_TEST_SUITE(CopyBufferingOf, BufferedMethods, MethodName);

// True where a setting can't be seen from outside the library.
template <class Method>
constexpr bool kHidden = std::is_same_v<Method, _fileCopy_stream>&& test::kStreamsHaveStdioBelow;

TYPED_TEST(CopyBufferingOf, LeavesTheInterfacesOwnBuffersBelowZero) {
  this->values.parameters.systemBuffer = -1;
  const auto moved = this->template afterTransfers<TypeParam>(5);
  EXPECT_GT(moved.in, 1000);
  EXPECT_EQ(moved.out, 0U);
}

TYPED_TEST(CopyBufferingOf, BuffersNothingAtZero) {
  if (kHidden<TypeParam>) GTEST_SKIP() << "stdio's buffer lies below";
  this->values.parameters.systemBuffer = 0;
  const auto moved = this->template afterTransfers<TypeParam>(5);
  EXPECT_EQ(moved.in, 500);
  EXPECT_EQ(moved.out, 500U);
}

TYPED_TEST(CopyBufferingOf, BuffersAChunkAboveZero) {
  if (kHidden<TypeParam>) GTEST_SKIP() << "stdio's buffer lies below";
  for (const std::int32_t setting : {1, 5}) {
    this->values.parameters.systemBuffer = setting;
    const auto once = this->template afterTransfers<TypeParam>(1);
    EXPECT_GT(once.in, 100) << setting;
    EXPECT_LE(once.in, 100 + 256) << setting;  // musl fills it beyond what is asked for
    EXPECT_EQ(once.out, 0U) << setting;
    EXPECT_GT(this->template afterTransfers<TypeParam>(5).out, 0U) << setting;
  }
}

TYPED_TEST(CopyBufferingOf, FlushesTheDestinationWhenAsked) {
  this->values.parameters.flush = true;
  EXPECT_EQ(this->template afterTransfers<TypeParam>(1).out, 100U);
}

TYPED_TEST(CopyBufferingOf, KeepsIgnoringAFailedFlush) {
  this->values.parameters.flush = true;
  TypeParam method(this->values);
  ASSERT_TRUE(method.open());
  bool moved = false;
  {
    const test::FileSizeLimit limit(4);
    moved = this->transfer(method, 10);
    method.close();
  }
  EXPECT_TRUE(moved);
  EXPECT_TRUE(method.errorText.isEmpty());
  EXPECT_EQ(this->dest(), "xxxx");
}

using CopyStream = CopyFiles;
using CopyStdio = CopyFiles;
using CopyDescriptor = CopyFiles;

TEST_F(CopyStream, TruncatesAnExistingDestination) {
  test::writeFile(values.destPath, "an older, longer file");
  _fileCopy_stream method(values);
  ASSERT_TRUE(method.open());
  EXPECT_TRUE(transfer(method, 4));
  method.close();
  EXPECT_EQ(dest(), "0123");
}

TEST_F(CopyStream, CopiesTheWholeFileInOneStep) {
  for (const std::int32_t systemBuffer : {-1, 0, 1}) {
    values.parameters.systemBuffer = systemBuffer;
    values.parameters.chunkSize = 0;
    _fileCopy_stream method(values);
    ASSERT_TRUE(method.open());
    EXPECT_TRUE(method.transferChunk(nullptr, 10));
    method.close();
    EXPECT_EQ(dest(), "0123456789") << systemBuffer;
  }
}

TEST_F(CopyStream, KeepsTheSingleStepUnchecked) {
  values.parameters.systemBuffer = 0;
  _fileCopy_stream method(values);
  ASSERT_TRUE(method.open());
  bool moved = false;
  {
    const test::FileSizeLimit limit(0);
    moved = method.transferChunk(nullptr, 10);
  }
  EXPECT_TRUE(moved);
  EXPECT_TRUE(method.errorText.isEmpty());
  EXPECT_EQ(dest(), "");
}

TEST_F(CopyStdio, RefusesAnExistingDestination) {
  test::writeFile(values.destPath, "old");
  const int before = openDescriptors();
  _fileCopy_FILE method(values);
  EXPECT_FALSE(method.open());
  EXPECT_EQ(method.errorText, failure("Unable to open file '", values.destPath, EEXIST));
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(dest(), "old");
}

TEST_F(CopyDescriptor, KeepsTheTailOfALongerDestination) {
  test::writeFile(values.destPath, "abcdefghijklmnop");
  _fileCopy_fd method(values);
  ASSERT_TRUE(method.open());
  EXPECT_TRUE(transfer(method, 10));
  method.close();
  EXPECT_EQ(dest(), "0123456789klmnop");
}

TEST_F(CopyDescriptor, CreatesFilesThatEveryoneMayWrite) {
  _fileCopy_fd method(values);
  test::expectFileThatEveryoneMayWrite(method, values.destPath);
}

TEST_F(CopyDescriptor, WritesEveryChunkAtOnceWithoutFlush) {
  values.parameters.systemBuffer = 1;
  _fileCopy_fd method(values);
  ASSERT_TRUE(method.open());
  EXPECT_TRUE(transfer(method, 3));
  EXPECT_EQ(dest(), "012");
}

TEST_F(CopyDescriptor, PreallocatesTheDestinationAfterTheOpen) {
  _fileCopy_fd method(values);
  test::expectPreallocationAfterTheOpen(method, values.destPath);
}

TEST_F(CopyFiles, RefusesASingleStepThroughStdioAndDescriptors) {
  const auto expectRefusal = [](_fileCopy& method) {
    ASSERT_TRUE(method.open());
    EXPECT_FALSE(method.transferChunk(nullptr, 10));
    EXPECT_EQ(method.errorText.view(), "ERROR: single chunk copy not supported");
  };
  _fileCopy_FILE stdio(values);
  expectRefusal(stdio);
  _fileCopy_fd descriptor(values);
  expectRefusal(descriptor);
}

}  // namespace
}  // namespace marrowbench
