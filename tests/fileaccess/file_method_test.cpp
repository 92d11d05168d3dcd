#include "fileaccess/file_method.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <typeinfo>

#include "fileaccess/file_copy_methods.h"
#include "fileaccess/file_read_write_methods.h"

namespace marrowbench {
namespace {

template <class Method, class Values, class Check>
void checkOne(const Values& values, Check check) {
  Method method(values);
  SCOPED_TRACE(typeid(Method).name());
  check(method);
}

// Calls `check` with a fresh object of each class named.
template <class... Methods, class Values, class Check>
void checkEach(const Values& values, Check check) {
  (checkOne<Methods>(values, check), ...);
}

void expectNoClearing(_fileGLobal& method) {
  method.clearInvalidSettings();
  EXPECT_EQ(method.errorText.view(), "ERROR: clearInvalidSettings not supported!");
}

void expectNoPreallocation(_fileGLobal& method) {
  for (const bool afterOpen : {false, true}) {
    method.errorText.clear();
    EXPECT_FALSE(method.preallocate(afterOpen));
    EXPECT_EQ(method.errorText.view(), "ERROR: Preallocation not supported!");
  }
}

template <class Branch>
void expectBaseClass() {
  Branch method;
  const auto takeError = [&method] {
    const FixedString text = method.errorText;
    method.errorText.clear();
    return std::string(text.view());
  };
  std::byte byte{};
  EXPECT_FALSE(method.open());
  EXPECT_EQ(takeError(), "ERROR: Base class!");
  EXPECT_FALSE(method.transferChunk(&byte, 1));
  EXPECT_EQ(takeError(), "ERROR: Base class!");
  method.close();
  EXPECT_EQ(takeError(), "ERROR: Base class!");
}

TEST(FileGlobal, StartsWithoutErrorAndWithFreshParameters) {
  const _fileGLobal holder;
  EXPECT_TRUE(holder.errorText.isEmpty());
  EXPECT_EQ(holder.parameters.systemBuffer, -1);
  EXPECT_EQ(holder.parameters.nullPosition, -1);
  EXPECT_EQ(holder.parameters.stats.runWord, 1);
  EXPECT_EQ(holder.parameters.stats.stepBytes, defaultStepBytes());
}

TEST(FileGlobal, NamesTheFileAndTheReasonOfAFailure) {
  const struct {
    bool (_fileGLobal::*fail)(const FixedString&, int);
    std::string what;
  } cases[] = {{&_fileGLobal::openFailed, "Unable to open file '"},
               {&_fileGLobal::readFailed, "Unable to read file '"},
               {&_fileGLobal::writeFailed, "Unable to write file '"},
               {&_fileGLobal::findFailed, "Unable to find source file '"},
               {&_fileGLobal::preallocateFailed, "Unable to preallocate file '"}};
  for (const auto& c : cases) {
    _fileGLobal method;
    EXPECT_FALSE((method.*c.fail)("/share/a b", ENOENT)) << c.what;
    EXPECT_EQ(method.errorText.view(),
              "ERROR: " + c.what + "/share/a b' ! " + std::strerror(ENOENT));
  }
}

TEST(FileGlobal, TellsAFailedAllocationAndARefusedSingleTransfer) {
  _fileGLobal method;
  EXPECT_FALSE(method.allocateFailed(ENOMEM));
  EXPECT_EQ(method.errorText.view(),
            std::string("ERROR: Unable to allocate memory buffer! ") + std::strerror(ENOMEM));
  EXPECT_FALSE(method.singleChunkRefused());
  EXPECT_EQ(method.errorText.view(), "ERROR: single chunk copy not supported");
}

TEST(FileGlobal, CutsTheErrorOfALongPathAt500Characters) {
  const std::string path(480, 'p');
  _fileGLobal method;
  (void)method.openFailed(path.c_str(), ENOENT);
  EXPECT_EQ(method.errorText.view(), "ERROR: Unable to open file '" + std::string(472, 'p'));
}

TEST(FileGlobal, TakesFivePartsAndReplacesTheEarlierError) {
  _fileGLobal method;
  method.setError("an earlier and longer text");
  method.setError("1", "2", "3", "4", "5");
  EXPECT_EQ(method.errorText.view(), "ERROR: 12345");
}

TEST(FileMethods, ClearInvalidSettingsInNoClass) {
  checkEach<_fileGLobal>(_fileGLobal(), expectNoClearing);
  checkEach<_fileCopy, _fileCopy_stream, _fileCopy_FILE, _fileCopy_fd>(_fileCopy(),
                                                                       expectNoClearing);
  checkEach<_fileReadWriteBuffer, _fileReadWriteBuffer_stream, _fileReadWriteBuffer_FILE,
            _fileReadWriteBuffer_fd>(_fileReadWriteBuffer(), expectNoClearing);
}

TEST(FileMethods, PreallocateThroughDescriptorsOnly) {
  checkEach<_fileGLobal>(_fileGLobal(), expectNoPreallocation);
  checkEach<_fileCopy, _fileCopy_stream, _fileCopy_FILE>(_fileCopy(), expectNoPreallocation);
  checkEach<_fileReadWriteBuffer, _fileReadWriteBuffer_stream, _fileReadWriteBuffer_FILE>(
      _fileReadWriteBuffer(), expectNoPreallocation);
}

TEST(FileMethods, RefuseEverythingInTheIntermediateClasses) {
  expectBaseClass<_fileCopy>();
  expectBaseClass<_fileReadWriteBuffer>();
}

}  // namespace
}  // namespace marrowbench
