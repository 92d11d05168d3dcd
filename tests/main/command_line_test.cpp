#include "main/command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace marrowbench {
namespace {

CommandLine readFrom(std::vector<std::string> arguments) {
  std::vector<char*> pointers;
  pointers.reserve(arguments.size());
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  return readCommandLine(pointers);
}

struct Case {
  std::vector<std::string> arguments;
  const char* settingsPath;
};

TEST(ReadCommandLine, TakesTheSettingsPath) {
  const Case cases[] = {{{"run12.bst"}, "run12.bst"},
                        {{"Tests.BST"}, "Tests.BST"},
                        {{".bst"}, ".bst"},
                        {{"a\\b\\run12.bst"}, "a/b/run12.bst"},
                        {{"a//b/../run12.bst"}, "a//b/../run12.bst"},
                        {{"run12.bst", "other.txt"}, "run12.bst"},
                        {{"-zzRoot", "/root", "run12.bst"}, "run12.bst"},
                        {{"-ZZROOT", "/root", "run12.bst"}, "run12.bst"},
                        {{"-zzroot", "other.bst", "a\\b.bst", "more.bst"}, "a/b.bst"}};
  for (const Case& c : cases) {
    std::vector<std::string> arguments = {"marrowbench"};
    arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
    const CommandLine line = readFrom(arguments);
    EXPECT_EQ(line.settingsPath, c.settingsPath);
    EXPECT_EQ(line.exitStatus, 0) << c.settingsPath;
    EXPECT_STREQ(line.message, "") << c.settingsPath;
  }
}

TEST(ReadCommandLine, RefusesAPathWithAnotherEnding) {
  const std::vector<std::string> cases[] = {{"run12.txt"},
                                            {""},
                                            {"run12.bst "},
                                            {"bst"},
                                            {"-zzRoot"},
                                            {"-zzRoot", "run12.bst"},
                                            {"-zzRoot", "/root", "run12.txt"},
                                            {"-zz", "/root", "x.bst"},
                                            {"-zzRootx", "/root", "x.bst"},
                                            {"-h"}};
  for (const auto& c : cases) {
    std::vector<std::string> arguments = {"marrowbench"};
    arguments.insert(arguments.end(), c.begin(), c.end());
    const CommandLine line = readFrom(arguments);
    EXPECT_EQ(line.exitStatus, 1) << c.front();
    EXPECT_STREQ(line.message, "Unknown commandline flags\n") << c.front();
  }
}

TEST(ReadCommandLine, RefusesToStartWithoutArguments) {
  for (const auto& arguments : {std::vector<std::string>{}, std::vector<std::string>{"m"}}) {
    const CommandLine line = readFrom(arguments);
    EXPECT_EQ(line.exitStatus, -1);
    EXPECT_STREQ(line.message, "No commandline flags");
  }
}

TEST(ReadCommandLine, PathIsCutAt500CharactersBeforeItsEndingIsLookedAt) {
  const std::string path(496, 'p');
  EXPECT_EQ(readFrom({"m", path + ".bst"}).exitStatus, 0);
  EXPECT_EQ(readFrom({"m", path + "p.bst"}).exitStatus, 1);
}

}  // namespace
}  // namespace marrowbench
