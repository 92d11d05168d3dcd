#include "fileaccess/file_read_write_methods.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "helpers/method_checks.h"
#include "helpers/system_limits.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

using test::kBeyondEveryBuffer;
using test::openDescriptors;

// A memory buffer and the path of a file that does not exist.
class BufferFile : public testing::Test {
 protected:
  BufferFile() {
    values.path = folder.file("file");
    values.buffer = reinterpret_cast<std::byte*>(memory.data());
    values.parameters.chunkSize = 16;
    values.parameters.fileSize = 10;
  }

  // The same values for a read test of a file with this content.
  void read(std::string_view content) {
    test::writeFile(values.path, content);
    values.isRead = true;
  }

  static bool transfer(_fileReadWriteBuffer& method, std::int32_t from, std::int32_t length) {
    return method.transferChunk(method.buffer + from, length);
  }

  [[nodiscard]] FixedString error(const char* what, int code) const {
    return test::failure(what, values.path, code);
  }

  [[nodiscard]] std::string content() const { return test::readFile(values.path); }

  test::TempFolder folder;
  std::string memory = "0123456789" + std::string(kBeyondEveryBuffer, 'x');
  _fileReadWriteBuffer values;
};

template <class Method>
class BufferMethod : public BufferFile {};

using MethodName = test::MethodName<_fileReadWriteBuffer_stream, _fileReadWriteBuffer_FILE>;
using AllMethods =
    testing::Types<_fileReadWriteBuffer_stream, _fileReadWriteBuffer_FILE, _fileReadWriteBuffer_fd>;
TYPED_TEST_SUITE(BufferMethod, AllMethods, MethodName);

TYPED_TEST(BufferMethod, TakesEveryFieldOfTheValues) {
  this->values.setError("earlier");
  this->values.isRead = true;
  this->values.parameters.stats.waitMs = 11;
  const TypeParam method(this->values);
  EXPECT_EQ(method.errorText.view(), "ERROR: earlier");
  EXPECT_EQ(method.path, this->values.path);
  EXPECT_EQ(method.buffer, this->values.buffer);
  EXPECT_TRUE(method.isRead);
  EXPECT_EQ(method.parameters.fileSize, 10);
  EXPECT_EQ(method.parameters.stats.waitMs, 11);
}

TYPED_TEST(BufferMethod, WritesMemoryChunkByChunk) {
  const int before = openDescriptors();
  TypeParam method(this->values);
  ASSERT_TRUE(method.open());
  EXPECT_EQ(openDescriptors(), before + 1);
  EXPECT_TRUE(this->transfer(method, 0, 4));
  EXPECT_TRUE(this->transfer(method, 4, 6));
  method.close();
  EXPECT_EQ(this->content(), "0123456789");
  EXPECT_EQ(openDescriptors(), before);
}

TYPED_TEST(BufferMethod, ReadsIntoMemoryChunkByChunk) {
  this->read("abcdefghij");
  const int before = openDescriptors();
  TypeParam method(this->values);
  ASSERT_TRUE(method.open());
  EXPECT_EQ(openDescriptors(), before + 1);
  EXPECT_TRUE(this->transfer(method, 0, 4));
  EXPECT_TRUE(this->transfer(method, 6, 4));
  method.close();
  EXPECT_EQ(this->memory.substr(0, 10), "abcd45efgh");
  EXPECT_EQ(openDescriptors(), before);
}

TYPED_TEST(BufferMethod, MovesNothingForLengthZero) {
  TypeParam writer(this->values);
  ASSERT_TRUE(writer.open());
  EXPECT_TRUE(this->transfer(writer, 0, 0));
  writer.close();
  EXPECT_TRUE(test::exists(this->values.path));

  this->values.isRead = true;
  TypeParam reader(this->values);
  ASSERT_TRUE(reader.open());
  EXPECT_TRUE(this->transfer(reader, 0, 0));
}

TYPED_TEST(BufferMethod, FailsToOpenAFileThatIsNotThere) {
  this->values.path = this->folder.file("missing/file");
  for (const bool isRead : {true, false}) {
    this->values.isRead = isRead;
    TypeParam method(this->values);
    EXPECT_FALSE(method.open());
    EXPECT_EQ(method.errorText, this->error("Unable to open file '", ENOENT)) << isRead;
  }
}

TYPED_TEST(BufferMethod, CreatesNoFileForARead) {
  this->values.isRead = true;
  TypeParam method(this->values);
  EXPECT_FALSE(method.open());
  EXPECT_FALSE(test::exists(this->values.path));
}

TYPED_TEST(BufferMethod, FailsToReadBeyondTheFile) {
  this->read("abcde");
  TypeParam method(this->values);
  ASSERT_TRUE(method.open());
  errno = 0;
  EXPECT_FALSE(this->transfer(method, 0, 6));
  EXPECT_EQ(method.errorText, this->error("Unable to read file '", 0));
}

TYPED_TEST(BufferMethod, FailsToWriteWhatDoesNotFit) {
  TypeParam method(this->values);
  test::expectFailureToWriteWhatDoesNotFit(
      method, this->values.path, [&] { return this->transfer(method, 0, kBeyondEveryBuffer); });
}

TYPED_TEST(BufferMethod, FailsForANegativeLength) {
  const struct {
    bool isRead;
    const char* what;
  } cases[] = {{false, "Unable to write file '"}, {true, "Unable to read file '"}};
  for (const auto& c : cases) {
    this->values.isRead = c.isRead;
    TypeParam method(this->values);
    ASSERT_TRUE(method.open());
    errno = 0;
    EXPECT_FALSE(this->transfer(method, 0, -1));
    EXPECT_EQ(method.errorText, this->error(c.what, EINVAL));
  }
}

TYPED_TEST(BufferMethod, ClosesWhatIsOpenWhenDestroyed) {
  const int before = openDescriptors();
  {
    TypeParam method(this->values);
    ASSERT_TRUE(method.open());
    EXPECT_TRUE(this->transfer(method, 0, 10));
  }
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(this->content(), "0123456789");
}

// What a write test makes of an older, longer file.
class ExistingFile : public BufferFile {
 protected:
  ExistingFile() { test::writeFile(values.path, "abcdefghijklmnop"); }

  template <class Method>
  FixedString errorOfWriting() {
    Method method(values);
    if (method.open()) {
      EXPECT_TRUE(transfer(method, 0, 10));
      method.close();
    }
    return method.errorText;
  }
};

TEST_F(ExistingFile, IsTruncatedByStreams) {
  EXPECT_TRUE(errorOfWriting<_fileReadWriteBuffer_stream>().isEmpty());
  EXPECT_EQ(content(), "0123456789");
}

TEST_F(ExistingFile, IsRefusedByStdio) {
  EXPECT_EQ(errorOfWriting<_fileReadWriteBuffer_FILE>(), error("Unable to open file '", EEXIST));
  EXPECT_EQ(content(), "abcdefghijklmnop");
}

TEST_F(ExistingFile, KeepsItsTailWithDescriptors) {
  EXPECT_TRUE(errorOfWriting<_fileReadWriteBuffer_fd>().isEmpty());
  EXPECT_EQ(content(), "0123456789klmnop");
}

// Bytes in the file while it is still open for writing, after some transfers of 100 bytes.
class WriteBuffering : public BufferFile {
 protected:
  template <class Method>
  std::uintmax_t writtenAfter(int transfers) {
    std::filesystem::remove(values.path.c_str());
    Method method(values);
    EXPECT_TRUE(method.open());
    for (int i = 0; i < transfers; ++i) EXPECT_TRUE(transfer(method, 0, 100));
    return std::filesystem::file_size(values.path.c_str());
  }

  template <class Method>
  void expectOwnBuffering() {
    for (const std::int32_t setting : {-1, 0, 1, 5}) {
      values.parameters.systemBuffer = setting;
      EXPECT_EQ(writtenAfter<Method>(5), 0U) << setting;
    }
    values.parameters.flush = true;
    EXPECT_EQ(writtenAfter<Method>(1), 100U);
  }
};

TEST_F(WriteBuffering, KeepsTheOutputStreamsOwnBuffer) {
  expectOwnBuffering<_fileReadWriteBuffer_stream>();
}

TEST_F(WriteBuffering, KeepsStdiosOwnBuffer) { expectOwnBuffering<_fileReadWriteBuffer_FILE>(); }

TEST_F(WriteBuffering, IsUnknownToDescriptors) {
  EXPECT_EQ(writtenAfter<_fileReadWriteBuffer_fd>(5), 500U);
}

// Bytes read from the file by a transfer of 100 bytes.
class ReadBuffering : public BufferFile {
 protected:
  ReadBuffering() {
    read(std::string(kBeyondEveryBuffer, 'x'));
    values.parameters.chunkSize = 256;
  }

  template <class Method>
  off_t readWith(std::int32_t systemBuffer) {
    values.parameters.systemBuffer = systemBuffer;
    const int file = test::nextDescriptor();
    Method method(values);
    EXPECT_TRUE(method.open());
    EXPECT_TRUE(transfer(method, 0, 100));
    return lseek(file, 0, SEEK_CUR);
  }
};

TEST_F(ReadBuffering, ReachesTheInputStream) {
  EXPECT_GT(readWith<_fileReadWriteBuffer_stream>(-1), 1000);
  if (test::kStreamsHaveStdioBelow) GTEST_SKIP() << "stdio's buffer lies below";
  EXPECT_EQ(readWith<_fileReadWriteBuffer_stream>(0), 100);
  const off_t chunk = readWith<_fileReadWriteBuffer_stream>(1);
  EXPECT_GT(chunk, 100);
  EXPECT_LE(chunk, 256);
}

TEST_F(ReadBuffering, KeepsStdiosOwnBuffer) {
  for (const std::int32_t setting : {-1, 0, 1}) {
    EXPECT_GT(readWith<_fileReadWriteBuffer_FILE>(setting), 1000) << setting;
  }
}

TEST_F(ReadBuffering, IsUnknownToDescriptors) {
  for (const std::int32_t setting : {-1, 0, 1}) {
    EXPECT_EQ(readWith<_fileReadWriteBuffer_fd>(setting), 100) << setting;
  }
}

// A flush that fails after a transfer that went into the buffer.
class FailingFlush : public BufferFile {
 protected:
  template <class Method>
  FixedString errorOfFlush() {
    values.parameters.flush = true;
    Method method(values);
    EXPECT_TRUE(method.open());
    const test::FileSizeLimit limit(4);
    (void)transfer(method, 0, 10);
    method.close();
    return method.errorText;
  }
};

TEST_F(FailingFlush, IsAWriteFailureOfTheStream) {
  EXPECT_EQ(errorOfFlush<_fileReadWriteBuffer_stream>(), error("Unable to write file '", EFBIG));
}

TEST_F(FailingFlush, KeepsPassingThroughStdioWhichChecksTheCountOnly) {
  EXPECT_TRUE(errorOfFlush<_fileReadWriteBuffer_FILE>().isEmpty());
}

using BufferDescriptor = BufferFile;

TEST_F(BufferDescriptor, PreallocatesTheFileAfterTheOpen) {
  _fileReadWriteBuffer_fd method(values);
  test::expectPreallocationAfterTheOpen(method, values.path);
}

TEST_F(BufferDescriptor, CreatesFilesThatEveryoneMayWrite) {
  _fileReadWriteBuffer_fd method(values);
  test::expectFileThatEveryoneMayWrite(method, values.path);
}

}  // namespace
}  // namespace marrowbench
