#include "paths/path_text.h"

#include <gtest/gtest.h>

#include <string>

namespace marrowbench {
namespace {

struct TextCase {
  std::string path, result;
};

TEST(UseForwardSlashes, TurnsEveryBackslashAndNothingElse) {
  FixedString path = "\\\\srv\\a//b\\..\\";
  useForwardSlashes(path);
  EXPECT_EQ(path.view(), "//srv/a//b/../");
}

TEST(NormalisePath, TurnsAndCollapsesSlashes) {
  const TextCase cases[] = {{"", ""},           {"\\", "\\"},  // too short to be touched
                            {"a", "a"},         {"a\\b", "a/b"},        {"a//b\\\\c", "a/b/c"},
                            {"a///b", "a//b"},  // one pass
                            {"a////b", "a//b"}, {"//srv/x", "//srv/x"}, {"\\\\srv\\x", "//srv/x"},
                            {"///a", "///a"},   {"////a", "///a"},      {"//", "//"},
                            {"a//", "a/"},      {"a/./b", "a/./b"},     {"a/..", "a/.."},
                            {"<a>/b", "<a>/b"}};
  for (const auto& c : cases)
    EXPECT_EQ(normalisePath(FixedString(c.path)).view(), c.result) << c.path;
}

TEST(NormalisePath, FoldsAComponentWithTheStepUpBehindIt) {
  const TextCase cases[] = {{"a/../b", "b"},
                            {"/a/../b", "/b"},
                            {"/x/y/../../z", "/z"},
                            {"/x/y/../z/../w", "/x/w"},
                            {"a/b/../", "a/"},
                            {"a/../", ""},
                            {"a\\..\\b", "b"},
                            {"a//../b", "b"},
                            {"//srv/share/../x", "//srv/x"},
                            {"<a>/../>b<", ">b<"},
                            {"...../../x", "x"}};
  for (const auto& c : cases)
    EXPECT_EQ(normalisePath(FixedString(c.path)).view(), c.result) << c.path;
}

TEST(NormalisePath, KeepsAStepUpThatHasNothingToFold) {
  const TextCase cases[] = {{"../a", "../a"},        {"../../a", "../../a"}, {"../a/../b", "../b"},
                            {"a/../../b", "../b"},   {"/../a", "/../a"},     {"//../a", "//../a"},
                            {"/a/../../b", "/../b"}, {"./../a", "./../a"},   {"a../b", "a../b"},
                            {"x/a../b", "x/a../b"}};
  for (const auto& c : cases)
    EXPECT_EQ(normalisePath(FixedString(c.path)).view(), c.result) << c.path;
}

TEST(NormalisePath, LeadingDoubleSlashOfAFullPathIsCutAtTheEnd) {
  const std::string full = "//" + std::string(498, 'x');
  EXPECT_EQ(normalisePath(FixedString(full)).view(), full);
}

TEST(ParentFolder, KeepsItsTrailingSlash) {
  const TextCase cases[] = {{"a/b/c.txt", "a/b/"}, {"a/b/c/", "a/b/"}, {"a/b/c//", "a/b/c/"},
                            {"/abc", "/"},         {"/ab/", "/"},      {"///", "//"}};
  for (const auto& c : cases)
    EXPECT_EQ(parentFolder(FixedString(c.path)).view(), c.result) << c.path;
}

TEST(ParentFolder, KeepsBeingEmptyWithoutASlashAndTheSameForShortPaths) {
  const TextCase cases[] = {{"abc", ""},  {"abc/", ""}, {"ab/", ""}, {"ab", "ab"},
                            {"a/", "a/"}, {"/a", "/a"}, {"/", "/"},  {"", ""}};
  for (const auto& c : cases)
    EXPECT_EQ(parentFolder(FixedString(c.path)).view(), c.result) << c.path;
}

TEST(ThirdParentFolder, IsTheParentOfTheParentOfTheFilesFolder) {
  const TextCase cases[] = {{"/w/x/y/z/log.txt", "/w/x/"}, {"/x/y/log.txt", "/"}, {"log.txt", ""}};
  for (const auto& c : cases)
    EXPECT_EQ(thirdParentFolder(FixedString(c.path)).view(), c.result) << c.path;
}

TEST(NameWithoutExtension, StandsBetweenTheLastSlashAndTheLastDot) {
  const TextCase cases[] = {{"/data/run12.bst", "run12"},
                            {"run12.bst", "run12"},
                            {"a.b/run", "run"},
                            {"a/run.1.bst", "run.1"},
                            {"/.bst", ""},
                            {"a/b/", ""},
                            {"a/run", "run"},
                            {"", ""}};
  for (const auto& c : cases)
    EXPECT_EQ(nameWithoutExtension(FixedString(c.path)).view(), c.result) << c.path;
}

TEST(IsMemoryPath, IsEmptyOrTheKeywordInAnyCase) {
  for (const char* path : {"", "MEMORY", "memory", "mEmOrY"}) EXPECT_TRUE(isMemoryPath(path));
  for (const char* path : {"MEMORY ", " ", "./MEMORY", "MEMOR", "x"}) {
    EXPECT_FALSE(isMemoryPath(path)) << path;
  }
}

}  // namespace
}  // namespace marrowbench
