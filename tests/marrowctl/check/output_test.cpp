#include "marrowctl/check/output.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>

#include "marrowctl/check/settings_folder.h"
#include "marrowctl/check/text_parts.h"

namespace marrowbench::ctl {
namespace {

using marrowbench::ctl::test::SettingsFolder;
using nlohmann::json;

struct Answers {
  std::string text, summary, gcc, document;

  explicit Answers(const Plan& plan) {
    const Totals totals = totalsOf(plan);
    const auto findings = check(plan);
    text = checkText(plan, totals, findings, {});
    summary = checkSummary(totals, findings, {});
    gcc = checkGcc(findings);
    document = checkJson(plan, totals, findings);
  }
};

// The findings' part alone, so narrow.
std::string findingsIn(const Plan& plan, int width) {
  return findingsText(check(plan), {false, width});
}

TEST(CheckText, ShowsLinesPathsTotalsAndFindings) {
  SettingsFolder s;
  s.options.hosts = {"pc1", "pc2"};
  const Plan plan = s.plan(
      "stream;0;0;0;64;5;1536;3;0;MEMORY;d_[host]_[iter].bin;l.log;r.csv;true\n"
      "posix;0;0;0;1M;0;4;1;0;MEMORY;e_[host].bin;l.log;r.csv;true\n");
  const std::string folder = s.path("");
  const std::string file = folder + "t.bst";
  const std::string expected =
      file +
      "\n"
      "  line  method  kind    chunk     size  iterations    moves\n"
      "     1  Stream  write  64 KiB  1.5 MiB           3  4.5 MiB\n"
      "        systemBuffer 5 -> 1 (1 is the largest System Buffer there is)\n"
      "\n"
      "  first and last iteration\n"
      "     1  pc1 [iter] 0  MEMORY -> " +
      folder +
      "d_pc1_0.bin\n"
      "        pc1 [iter] 2  MEMORY -> " +
      folder +
      "d_pc1_2.bin\n"
      "        pc2 [iter] 0  MEMORY -> " +
      folder +
      "d_pc2_0.bin\n"
      "        pc2 [iter] 2  MEMORY -> " +
      folder +
      "d_pc2_2.bin\n"
      "        log    " +
      folder +
      "l.log\n"
      "        table  " +
      folder +
      "r.csv\n"
      "\n"
      "Total for 2 clients\n"
      "  rows           6 (3 of each client)\n"
      "  written        9 MiB (4.5 MiB by each client)\n"
      "  read           0 bytes\n"
      "  files left     6\n"
      "  new files      9 MiB in " +
      folder +
      "\n"
      "  at least       0 s of pauses on each client\n"
      "  memory         1.5 MiB on each client\n"
      "  markers        " +
      folder +
      "_t_log/done__pc1\n"
      "                 " +
      folder +
      "_t_log/done__pc2\n"
      "\n";
  const std::string text = Answers(plan).text;
  EXPECT_EQ(text.substr(0, expected.size()), expected);
  EXPECT_TRUE(text.substr(expected.size()).starts_with(file + ":1:17:")) << text;
  // So wide that the length of the folder's name, which differs, wraps nothing.
  const std::string findings = findingsIn(plan, 1000);
  EXPECT_TRUE(findings.find(file + ":1:17: warning: ") != std::string::npos) << findings;
  const std::string caret =
      "    posix;0;0;0;1M;0;4;1;0;MEMORY;e_[host].bin;l.log;r.csv;true\n"
      "                 ^\n"
      "    -> write digits, with a \"-\" in front at most: sizes in KiB, without a unit; 0 for "
      "nothing\n";
  EXPECT_NE(text.find(caret), std::string::npos) << text;
  EXPECT_NE(findings.find(file + ":2:14: error: the line is refused: \"M\""), std::string::npos)
      << findings;
  EXPECT_TRUE(text.ends_with("1 error, 1 warning. marrowctl check --explain NAME tells more.\n"))
      << text;
}

TEST(CheckText, SaysWhatEachTestMoves) {
  SettingsFolder s;
  s.options.hosts = {"pc1", "pc2"};
  s.write("n.bst", "posix;0;0;0;4;0;0;3;0;d_[host];MEMORY;l;r.csv;true\n");
  const std::string text = Answers(s.plan("posix;0;0;0;4;0;4;1;0;MEMORY;d_[host];l;r.csv;true\n"
                                          "Posx\nposix;0;0;0;4;0;0;5;0;d_[host];c_[host];l;r.csv\n"
                                          "posix;0;0;0;4;0;0;5;0;none;MEMORY;l;r.csv\n"
                                          "system;0;0;0;4;0;4;2;0;MEMORY;e;l;r.csv\n"
                                          "[cfgPath]n.bst\n"))
                               .text;
  for (const char* const row : {"1  Posix   write  4 KiB      4 KiB           1      4 KiB\n",
                                "3  Posix   copy   4 KiB  as source           5     20 KiB\n",
                                "4  Posix   read   4 KiB  as source           5  not known\n",
                                "5  System  write  4 KiB      4 KiB           2    0 bytes\n",
                                "1  Posix   read  4 KiB  as source           3  12 KiB\n"}) {
    EXPECT_NE(text.find(std::string("     ") + row), std::string::npos) << row << "in\n" << text;
  }
}

TEST(CheckText, StaysWithinTheWidthSaveForPaths) {
  const SettingsFolder s;
  const Plan plan = s.plan(std::string(600, ' ') + "posix;1;0;0;4;0;4;1;0;MEMORY;d.bin;l;r.csv;" +
                           std::string(200, 'x') + "\n");
  const std::string text = findingsIn(plan, 60);
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = text.find('\n', begin);
    const std::string line = text.substr(begin, end - begin);
    const bool isPlace = line.find(s.path("t.bst")) != std::string::npos;
    EXPECT_TRUE(isPlace || line.size() <= 60U) << line;
    begin = end + 1;
  }
  EXPECT_NE(text.find("^"), std::string::npos);
}

TEST(CheckText, ShowsTheFirstOfManyOfAKind) {
  const SettingsFolder s;
  std::string lines;
  for (int i = 0; i < 9; ++i) lines += "Posx\n";
  const std::string text = Answers(s.plan(lines)).text;
  EXPECT_NE(text.find("4 more of unknown-method"), std::string::npos) << text;
  EXPECT_EQ(text.find("t.bst:6:1:"), std::string::npos) << text;
}

TEST(CheckText, SendsTheTerminalNothingOfTheFile) {
  const SettingsFolder s;
  const Answers answers(s.plan("Po\033[31mx\xFF;\xC2\x9B\n"));
  for (const std::string& text : {answers.text, answers.gcc}) {
    EXPECT_EQ(text.find('\033'), std::string::npos);
    EXPECT_EQ(text.find("\xC2\x9B"), std::string::npos);
  }
}

TEST(CheckGcc, PutsFileFindingsAtTheBeginning) {
  const SettingsFolder s;
  const Answers answers(s.plan("posix;0;0;0;4;0;4;0;0;MEMORY;d.bin;l;r.csv\n"));
  const std::string file = s.path("t.bst");
  EXPECT_TRUE(answers.gcc.starts_with(file + ":1:1: note: no line asks for the done marker"))
      << answers.gcc;
  EXPECT_NE(answers.gcc.find("\n" + file + ":1:19: warning: 0 iterations"), std::string::npos)
      << answers.gcc;
  EXPECT_NE(answers.gcc.find("[measures-nothing]\n"), std::string::npos);
}

TEST(CheckGcc, IsEmptyWithoutFindings) {
  const SettingsFolder s;
  EXPECT_EQ(Answers(s.plan("# nothing\n")).gcc, "");
}

TEST(CheckJson, TellsLinesChangesAndPaths) {
  SettingsFolder s;
  s.options.hosts = {"pc1", "pc2.lab"};
  s.options.clients = 5;
  const Plan plan = s.plan(
      "# marrowctl: allow no-log other\n"
      "posix;1;1;7;0;0;0;2;4;s.bin;d_[host]_[iter].bin; ;r.csv;true\n"
      "Posx\n[cfgPath]n.bst\n");
  const json document = json::parse(Answers(plan).document);
  EXPECT_EQ(document["schema"], "marrowctl.check/1");
  ASSERT_EQ(document["files"].size(), 2U);
  const json& file = document["files"][0];
  EXPECT_EQ(file["allowed"], json::parse(R"(["no-log", "other"])"));
  EXPECT_EQ(file["chain"], s.path("n.bst"));
  ASSERT_EQ(file["lines"].size(), 1U);
  json line = file["lines"][0];
  EXPECT_EQ(line["paths"].size(), 4U);
  EXPECT_EQ(line["paths"][3], (json{{"host", "pc2"},
                                    {"iteration", 1},
                                    {"source", s.path("s.bin")},
                                    {"dest", s.path("d_pc2_1.bin")},
                                    {"log", nullptr},
                                    {"table", s.path("r.csv")}}));
  line.erase("paths");
  EXPECT_EQ(
      line,
      json::parse(R"({"line": 2, "configIndex": 0, "method": "Posix", "type": "copy", "flush": true,
      "preallocate": true, "chunkWaitMs": 7, "chunkBytes": 1048576, "systemBuffer": 0, "fileBytes": 0,
      "iterations": 2, "cacheMode": 4, "markDone": true,
      "changes": [{"field": "chunkBytes", "from": 0, "to": 1048576, "why": "this method needs chunks: 1 MiB"}]})"));
  EXPECT_EQ(document["totals"]["clients"], 5);
  EXPECT_EQ(document["totals"]["rows"], 10);
  EXPECT_EQ(document["totals"]["markers"].size(), 2U);
}

TEST(CheckJson, TellsWhereFindingsAre) {
  const SettingsFolder s;
  const json document =
      json::parse(Answers(s.plan("posix;0;0;0;4;0;4;0;0;MEMORY;d.bin;l;r.csv\n")).document);
  const json& findings = document["findings"];
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_TRUE(findings[0]["line"].is_null() && findings[0]["column"].is_null() &&
              findings[0]["field"].is_null());
  EXPECT_EQ(findings[1]["name"], "measures-nothing");
  EXPECT_EQ(findings[1]["field"], "iterations");
  EXPECT_EQ(findings[1]["severity"], "warning");
  EXPECT_EQ(findings[1]["column"], 19);
}

TEST(CheckJson, ShowsOneIterationOnceAndNoneNotAtAll) {
  const SettingsFolder s;
  const json document =
      json::parse(Answers(s.plan("posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l;r.csv\nposix;0;0;0;4;0;4;0;"
                                 "0;MEMORY;d.bin;l;r.csv\n"))
                      .document);
  EXPECT_EQ(document["files"][0]["lines"][0]["paths"].size(), 1U);
  EXPECT_EQ(document["files"][0]["lines"][0]["paths"][0]["source"], "MEMORY");
  EXPECT_EQ(document["files"][0]["lines"][1]["paths"].size(), 0U);
}

TEST(CheckJson, ReplacesWhatIsNoUtf8) {
  const SettingsFolder s;
  const json document = json::parse(
      Answers(s.plan("posix;0;0;0;4;0;4;1;0;MEMORY;\xE4\"\x01.bin;l;r.csv\n")).document);
  EXPECT_EQ(document["files"][0]["lines"][0]["paths"][0]["dest"], s.path("\xEF\xBF\xBD\"\x01.bin"));
}

TEST(CheckSummary, CountsKinds) {
  const SettingsFolder s;
  const std::string text = Answers(s.plan("Posx\nPosx\n")).summary;
  EXPECT_TRUE(text.starts_with("Total for 1 client\n")) << text;
  EXPECT_NE(text.find("       2  unknown-method\n"), std::string::npos) << text;
}

std::string withoutBlanks(std::string_view text) {
  std::string letters(text);
  std::erase_if(letters, [](char c) { return c == ' ' || c == '\n'; });
  return letters;
}

TEST(ExplanationOf, StaysWithinTheWidthSaveForExamples) {
  for (const FindingKind& kind : findingKinds()) {
    const std::string text = explanationOf(kind.name, {false, 60}).value_or("");
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_TRUE(line.starts_with("    ") || line.size() <= 60U) << line;
    }
    // Nothing is lost.
    EXPECT_TRUE(withoutBlanks(text).ends_with(withoutBlanks(kind.explanation))) << text;
  }
}

TEST(ExplanationOf, KnowsFindingsOnly) {
  EXPECT_TRUE(explanationOf("no-log", {}).value_or("").starts_with("no-log (note)\n\n"));
  EXPECT_FALSE(explanationOf("nolog", {}).has_value());
}

}  // namespace
}  // namespace marrowbench::ctl
