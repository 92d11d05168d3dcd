#include "run/method_run.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "fakes/fake_clock.h"
#include "fakes/scarce_memory.h"
#include "fileaccess/error_text.h"
#include "helpers/method_checks.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

// A source of ten bytes, memory with the same bytes and an older, longer destination.
class MethodRun : public testing::Test {
 protected:
  MethodRun() {
    ParameterBlock& p = config.parameters.parameters;
    p.chunkSize = 4;
    p.chunkWait = 3;
    p.fileSize = 10;
    p.stats.waitMs = 3;
    p.stats.stepBytes = 4;
    config.parameters.setError("of the settings line");
    test::writeFile(source, "0123456789");
    makeDest();
  }

  void makeDest() const { test::writeFile(dest, "abcdefghijklmnop"); }

  // The classes tell themselves apart by what they make of the destination.
  template <class Run>
  void expectTheClassOfEachMethod(Run run) {
    const struct {
      Method method;
      const char* content;
      bool refuses;
    } cases[] = {{Method::stream, "0123456789", false},
                 {Method::ansiC, "abcdefghijklmnop", true},
                 {Method::posix, "0123456789klmnop", false}};
    for (const auto& c : cases) {
      makeDest();
      config.method = c.method;
      result = {};
      run();
      EXPECT_EQ(test::readFile(dest), c.content);
      EXPECT_EQ(result.errorText,
                c.refuses ? test::failure("Unable to open file '", dest, EEXIST) : FixedString());
      EXPECT_EQ(result.parameters.stats.files, c.refuses ? 0 : 1);
    }
  }

  template <class Run>
  void expectNothingDone(Run run) {
    for (const std::int32_t method : {1, 4, 7, -1}) {
      config.method = static_cast<Method>(method);
      result.setError("earlier");
      result.parameters.nullPosition = 42;
      run();
      EXPECT_EQ(result.errorText.view(), "ERROR: earlier") << method;
      EXPECT_EQ(result.parameters.nullPosition, 42) << method;
      EXPECT_EQ(result.parameters.stats.files, 0) << method;
      EXPECT_EQ(test::readFile(dest), "abcdefghijklmnop") << method;
    }
  }

  void copy() { runCopyTest(config, source, dest, result); }
  void write() { runReadWriteTest(config, dest, bytes(), false, result); }
  void read() { runReadWriteTest(config, source, bytes(), true, result); }
  std::byte* bytes() { return reinterpret_cast<std::byte*>(memory.data()); }

  test::TempFolder folder;
  FixedString source = folder.file("source");
  FixedString dest = folder.file("dest");
  std::string memory = "0123456789";
  TestConfig config;
  _fileGLobal result;
};

TEST_F(MethodRun, CopiesWithTheClassOfTheMethod) {
  expectTheClassOfEachMethod([this] { copy(); });
}

TEST_F(MethodRun, WritesWithTheClassOfTheMethod) {
  expectTheClassOfEachMethod([this] { write(); });
}

TEST_F(MethodRun, ReadsIntoTheBuffer) {
  for (const Method method : {Method::stream, Method::ansiC, Method::posix}) {
    config.method = method;
    memory.assign(10, '-');
    result = {};
    read();
    EXPECT_EQ(memory, "0123456789");
    EXPECT_EQ(result.parameters.nullPosition, 0);
  }
}

TEST_F(MethodRun, DoesNothingForMethodsWithoutClass) {
  expectNothingDone([this] { copy(); });
  expectNothingDone([this] { write(); });
  expectNothingDone([this] { read(); });
}

TEST_F(MethodRun, CopiesTheOutcomeBackAndLeavesTheConfiguration) {
  test::fakeClock().msPerReading = 5;
  copy();
  EXPECT_TRUE(result.errorText.isEmpty());
  EXPECT_EQ(result.parameters.nullPosition, 0);
  const RunStats& stats = result.parameters.stats;
  EXPECT_EQ(stats.files, 1);
  EXPECT_EQ(stats.bytes, 10);
  EXPECT_EQ(stats.dataMs, 3 * 3 + 5);
  EXPECT_EQ(stats.waitMs, 3);
  EXPECT_EQ(stats.stepBytes, 4);
  EXPECT_EQ(stats.chunks, 2);
  EXPECT_EQ(config.parameters.parameters.stats.files, 0);
  EXPECT_EQ(config.parameters.errorText.view(), "ERROR: of the settings line");
}

TEST_F(MethodRun, ReportsThatAStreamFoundNoMemory) {
  config.method = Method::stream;
  config.parameters.parameters.systemBuffer = -1;  // the stream's own buffer, made by its open
  result.parameters.nullPosition = 0;              // of the iteration before
  {
    const test::ScarceMemory scarce(512);
    runCopyTest(config, source, dest, result);
  }
  EXPECT_EQ(result.errorText,
            composeError("Unable to allocate memory buffer! ", std::strerror(ENOMEM)));
  EXPECT_EQ(result.parameters.nullPosition, -1);
  EXPECT_EQ(result.parameters.stats.files, 0);
}

}  // namespace
}  // namespace marrowbench
