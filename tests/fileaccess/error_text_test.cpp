#include "fileaccess/error_text.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "fakes/fake_platform.h"

namespace marrowbench {
namespace {

using test::fakePlatform;

TEST(ComposeError, RunsThePartsTogether) {
  EXPECT_EQ(composeError("a").view(), "ERROR: a");
  EXPECT_EQ(composeError("a", "b ", "c", "", "d").view(), "ERROR: ab cd");
}

TEST(ComposeError, CutsAt500CharactersWithoutAMark) {
  const std::string part(200, 'x');
  EXPECT_EQ(composeError(part, part, part).view(), "ERROR: " + std::string(493, 'x'));
}

TEST(ErrnoText, GivesTheSystemsTextOrTheCode) {
  fakePlatform().errorTexts[7] = "";
  const struct {
    int code;
    std::string text;
  } cases[] = {{0, "No Error."},
               {ENOENT, std::strerror(ENOENT)},
               {7, "Error 7."},
               {12345, "Error 12345."},
               {-2, "Error -2."}};
  for (const auto& c : cases) EXPECT_EQ(errnoText(c.code).view(), c.text) << c.code;
}

TEST(ErrnoText, TakesTheCurrentErrnoForMinusOne) {
  const struct {
    int current;
    std::string text;
  } cases[] = {{EEXIST, std::strerror(EEXIST)}, {0, "No Error."}, {-1, "Error -1."}};
  for (const auto& c : cases) {
    errno = c.current;
    EXPECT_EQ(errnoText(-1).view(), c.text) << c.current;
  }
}

TEST(ErrnoText, TurnsLineBreaksIntoBlanks) {
  fakePlatform().errorTexts[5] = "Input\noutput\r\nerror";
  EXPECT_EQ(errnoText(5).view(), "Input output  error");
}

TEST(ErrnoText, HasRoomFor250Characters) {
  fakePlatform().errorTexts[5] = std::string(249, 'a') + "bc";
  EXPECT_EQ(errnoText(5).view(), std::string(249, 'a') + "b");
}

}  // namespace
}  // namespace marrowbench
