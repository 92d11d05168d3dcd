#include "marrowctl/support/shell_words.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace marrowbench::ctl {
namespace {

// What a shell makes of a command.
std::string printedBy(const std::string& command) {
  std::FILE* const shell = popen(command.c_str(), "r");
  std::string text;
  for (int byte = std::fgetc(shell); byte != EOF; byte = std::fgetc(shell))
    text += static_cast<char>(byte);
  EXPECT_EQ(pclose(shell), 0) << command;
  return text;
}

const std::vector<std::string> kOdd = {"",        "a b", "it's",  "''",    "\"x\"", "$HOME", "`id`",
                                       "~",       "a=b", "*",     "[a-z]", "!x",    "#x",    "a;b",
                                       "a\nb",    "\\",  "\\'",   "{a,b}", "-n",    "%h",    "\xff",
                                       "(x)&|<>", "  ",  "'\\''", "a\tb",  "x'"};

TEST(ShellWord, LeavesPlainOnesAlone) {
  EXPECT_EQ(shellWord("/srv/bench/run-1.bst"), "/srv/bench/run-1.bst");
  EXPECT_EQ(shellWord("a b"), "'a b'");
  EXPECT_EQ(shellWord(""), "''");
  EXPECT_EQ(shellWord("it's"), "'it'\\''s'");
}

TEST(ShellWord, MeansItselfToAShell) {
  for (const std::string& word : kOdd)
    EXPECT_EQ(printedBy("printf '<%s>' " + shellWord(word)), "<" + word + ">");
}

TEST(ShellCommand, MeansItselfToAShellBehindAShell) {
  std::vector<std::string> words = {"printf", "<%s>"};
  std::string printed;
  for (const std::string& word : kOdd) {
    words.push_back(word);
    printed += "<" + word + ">";
  }
  EXPECT_EQ(printedBy("sh -c " + shellWord(shellCommand(words))), printed);
}

}  // namespace
}  // namespace marrowbench::ctl
