#ifndef MARROWBENCH_TESTS_HELPERS_METHOD_CHECKS_H
#define MARROWBENCH_TESTS_HELPERS_METHOD_CHECKS_H

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "fakes/fake_platform.h"
#include "fileaccess/error_text.h"
#include "helpers/system_limits.h"
#include "helpers/temp_folder.h"

/// What copies and read/write tests have in common, for the tests of both.
namespace marrowbench::test {

/// More bytes than the buffer of any library holds.
inline constexpr std::int32_t kBeyondEveryBuffer = 100000;

/// Gives the tests of a class the name of the method that selects it.
template <class Stream, class Stdio>
struct MethodName {
  template <class Method>
  static std::string GetName(int /*number*/) {
    if (std::is_same_v<Method, Stream>) return "Stream";
    return std::is_same_v<Method, Stdio> ? "AnsiC" : "Posix";
  }
};

/// The error text of a failure on a file; `code` is its errno, 0 for none.
[[nodiscard]] inline FixedString failure(const char* what, const FixedString& path, int code) {
  return composeError(what, path, "' ! ", code == 0 ? "No Error." : std::strerror(code));
}

/// Two transfers of kBeyondEveryBuffer bytes both fail when half of the first one fits.
template <class Method, class Transfer>
void expectFailureToWriteWhatDoesNotFit(Method& method, const FixedString& written,
                                        Transfer transfer) {
  ASSERT_TRUE(method.open());
  bool first = true;
  bool second = true;
  {
    const FileSizeLimit limit(kBeyondEveryBuffer / 2);
    first = transfer();
    second = transfer();
    method.close();
  }
  EXPECT_FALSE(first) << "half of it fits";
  EXPECT_FALSE(second);
  EXPECT_EQ(method.errorText, failure("Unable to write file '", written, EFBIG));
}

/// The ten bytes of a file are reserved once it is open, not before; a refusal leaves no text.
template <class DescriptorMethod>
void expectPreallocationAfterTheOpen(DescriptorMethod& method, const FixedString& written) {
  EXPECT_TRUE(method.preallocate(false));
  EXPECT_TRUE(fakePlatform().reservations.empty());
  ASSERT_TRUE(method.open());
  EXPECT_TRUE(method.preallocate(true));
  ASSERT_EQ(fakePlatform().reservations.size(), 1U);
  EXPECT_EQ(fakePlatform().reservations[0].length, 10);
  EXPECT_EQ(readFile(written), std::string(10, '\0'));

  fakePlatform().answers = {ENOSPC, ENOSPC};
  EXPECT_FALSE(method.preallocate(true));
  EXPECT_TRUE(method.errorText.isEmpty());
}

/// Nothing but the umask takes rights from a new file.
template <class DescriptorMethod>
void expectFileThatEveryoneMayWrite(DescriptorMethod& method, const FixedString& written) {
  const mode_t mask = umask(0);
  EXPECT_TRUE(method.open());
  (void)umask(mask);
  struct stat status {};
  ASSERT_EQ(stat(written.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0666U);
}

}  // namespace marrowbench::test

#endif
