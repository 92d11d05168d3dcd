#include "marrowctl/plan/make_plan.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "helpers/temp_folder.h"
#include "paths/host_name.h"
#include "settings/settings_fields.h"

namespace marrowbench::ctl {
namespace {

using test::writeFile;

constexpr const char* kTest = "Posix;0;0;0;64;0;1024;3;0;MEMORY;out.bin;run.log;run.csv;true";

class MakePlan : public testing::Test {
 protected:
  // The folder is the current one.
  Plan plan(const std::vector<std::string>& files) {
    std::istringstream standardInput(input);
    return makePlan({files, hosts, clients}, standardInput);
  }

  // The file of the given content.
  PlannedFile file(std::string_view content, const char* name = "run12.bst") {
    writeFile(name, content);
    Plan made = plan({name});
    return made.files.at(0);
  }

  static std::string pathsOf(const Plan& plan) {
    std::string paths;
    for (const PlannedFile& file : plan.files) paths += file.path + (file.chainsBack ? "< " : " ");
    return paths;
  }

  test::WorkingFolder folder;
  std::string input;
  std::vector<std::string> hosts = {"c1"};
  std::int64_t clients = 0;
};

TEST_F(MakePlan, HoldsATestAsItRuns) {
  const PlannedFile planned =
      file("# comment\n\n  System;1;1;7;0;3;2000000;3;4;in\\a;out;l;t;TRUE \r\n", "run-12.bst");
  EXPECT_TRUE(planned.exists);
  EXPECT_EQ(planned.settingsFileNumber, 0);
  ASSERT_EQ(planned.lines.size(), 1U);
  const PlannedLine& line = planned.lines[0];
  EXPECT_EQ(line.number, 3);
  EXPECT_EQ(line.text, "  System;1;1;7;0;3;2000000;3;4;in\\a;out;l;t;TRUE \r");
  EXPECT_EQ(line.length, line.text.size());
  EXPECT_EQ(line.kind, LineKind::test);
  const PlannedTest& test = line.test;
  EXPECT_EQ(test.configIndex, 0);
  EXPECT_TRUE(test.isRun);
  EXPECT_EQ(test.method, Method::system);
  EXPECT_EQ(test.type, TestType::copy);
  EXPECT_EQ(test.asWritten.chunkSize, 0);
  EXPECT_EQ(test.asWritten.systemBuffer, 3);
  EXPECT_TRUE(test.asWritten.prealloc);
  EXPECT_EQ(test.used.chunkSize, 1048576);
  EXPECT_EQ(test.used.systemBuffer, -1);
  EXPECT_FALSE(test.used.prealloc);
  EXPECT_EQ(test.used.fileSize, 1073741824);
  EXPECT_EQ(test.iterations, 3);
  EXPECT_TRUE(test.markDone);
  EXPECT_EQ(test.source, "in/a");
  EXPECT_EQ(test.dest, "out");
  EXPECT_EQ(test.log, "l");
  EXPECT_EQ(test.table, "t");
}

TEST_F(MakePlan, FieldsStandAtTheirFirstByteInTheLineAsRead) {
  const PlannedFile planned = file("\t Posix ;; x\xC3\xA4 ;1;;\n");
  const auto& fields = planned.lines.at(0).fields;
  EXPECT_EQ(fields[0].text, "Posix");
  EXPECT_EQ(fields[0].column, 3);
  EXPECT_EQ(fields[1].text, ";");
  EXPECT_EQ(fields[1].column, 10);
  EXPECT_TRUE(fields[1].isOmitted);
  EXPECT_EQ(fields[2].text, "x\xC3\xA4");
  EXPECT_EQ(fields[2].column, 12);
  EXPECT_EQ(fields[3].text, "1");
  EXPECT_EQ(fields[3].column, 17);
  EXPECT_EQ(fields[4].text, ";");
  EXPECT_EQ(fields[4].column, 19);
}

TEST_F(MakePlan, RejectedLineTellsItsField) {
  const PlannedFile planned = file("Stream;0;0;5;x\nnonsense\n");
  ASSERT_EQ(planned.lines.size(), 2U);
  EXPECT_EQ(planned.lines[0].kind, LineKind::rejected);
  EXPECT_EQ(kSettingsFields[planned.lines[0].refusedField].name, "chunkBytes");
  EXPECT_EQ(planned.lines[0].fields[4].text, "x");
  EXPECT_EQ(planned.lines[0].fields[4].column, 14);
  EXPECT_EQ(planned.lines[1].refusedField, 0U);
}

TEST_F(MakePlan, BothPathsInMemoryRunAsARead) {
  EXPECT_EQ(file("Posix;;;0;0;0;1;1\n").lines.at(0).test.type, TestType::read);
  EXPECT_EQ(file(kTest).lines.at(0).test.type, TestType::write);
  EXPECT_EQ(file("Posix;0;0;0;0;0;1;1;0;in;memory\n").lines.at(0).test.type, TestType::read);
}

TEST_F(MakePlan, KeepsTakingAPathThatExpandsToMemoryForMemory) {
  EXPECT_EQ(file("Posix;0;0;0;0;0;1;1;0;[cfgPath]memory;out\n").lines.at(0).test.type,
            TestType::write);
  EXPECT_EQ(file("Posix;0;0;0;0;0;1;1;0;in;a/../Memory\n").lines.at(0).test.type, TestType::read);
  hosts = {"memory"};
  EXPECT_EQ(file("Posix;0;0;0;0;0;1;1;0;[host];out\n").lines.at(0).test.type, TestType::write);
}

TEST_F(MakePlan, LineIsKeptWithItsWholeLength) {
  const PlannedFile planned = file("Stream;1" + std::string(2000, 'x') + "\n");
  EXPECT_EQ(planned.lines.at(0).text.size(), 2008U);
  EXPECT_EQ(planned.lines.at(0).length, 2008U);
}

TEST_F(MakePlan, TestsBehindThe200thAreNotRun) {
  std::string content;
  for (int i = 0; i < 202; ++i) content += std::string(kTest) + "\nnonsense\n";
  const PlannedFile planned = file(content);
  ASSERT_EQ(planned.lines.size(), 404U);
  EXPECT_EQ(planned.lines[398].test.configIndex, 199);
  EXPECT_TRUE(planned.lines[398].test.isRun);
  EXPECT_EQ(planned.lines[400].test.configIndex, 200);
  EXPECT_FALSE(planned.lines[400].test.isRun);
  EXPECT_EQ(planned.lines[402].test.configIndex, 201);
  EXPECT_FALSE(planned.lines[402].test.isRun);
}

TEST_F(MakePlan, AllowCommentsAreKeptWithTheirColumns) {
  const PlannedFile planned = file(
      "#marrowctl: allow a\n# marrowctl:  allow\tb  c \r\n # marrowctl: allow d\n# allow e\n"
      "# marrowctl: allow\n# marrowctl: allows f\nnext.bst\nnonsense\n# marrowctl: allow g\n");
  ASSERT_EQ(planned.allows.size(), 3U);
  EXPECT_EQ(planned.allows[0].names.at(0).text, "a");
  EXPECT_EQ(planned.allows[0].names.at(0).column, 19);
  EXPECT_EQ(planned.allows[1].number, 2);
  EXPECT_EQ(planned.allows[1].text, "# marrowctl:  allow\tb  c \r");
  ASSERT_EQ(planned.allows[1].names.size(), 2U);
  EXPECT_EQ(planned.allows[1].names[1].text, "c");
  EXPECT_EQ(planned.allows[1].names[1].column, 24);
  EXPECT_EQ(planned.allows[2].number, 9);
}

TEST_F(MakePlan, ByteOrderMarkIsNoted) {
  EXPECT_TRUE(file("\xEF\xBB\xBF# comment\n").hasByteOrderMark);
  const PlannedFile planned = file(std::string(kTest) + "\n\xEF\xBB\xBF# comment\n");
  EXPECT_FALSE(planned.hasByteOrderMark);
  EXPECT_EQ(planned.lines.at(1).kind, LineKind::rejected);
}

TEST_F(MakePlan, ReadsUpToTheChainLine) {
  const PlannedFile planned =
      file(std::string(kTest) + "\n sub\\next.BST \n# c\n\n x\nother.bst\n");
  ASSERT_EQ(planned.lines.size(), 2U);
  EXPECT_EQ(planned.lines[1].kind, LineKind::chain);
  EXPECT_EQ(planned.chainLine, 2);
  EXPECT_EQ(planned.behindChain.number, 5);
  EXPECT_EQ(planned.behindChain.text, " x");
  EXPECT_EQ(planned.behindChain.length, 2U);
}

TEST_F(MakePlan, NothingIsBehindACleanChain) {
  EXPECT_EQ(file("next.bst\n# c\n \t\n").behindChain.length, 0U);
}

TEST_F(MakePlan, FollowsChainsFromTheCurrentFolder) {
  std::filesystem::create_directory("sub");
  writeFile("sub/a.bst", "b.bst\n");
  writeFile("b.bst", "[cfgPath]sub/../sub/c.bst\n");
  writeFile("sub/c.bst", "missing.bst\n");
  const Plan made = plan({"sub\\a.bst"});
  EXPECT_EQ(pathsOf(made), "sub/a.bst b.bst sub/c.bst missing.bst ");
  EXPECT_TRUE(made.files.at(2).exists);
  EXPECT_EQ(made.files.at(2).chain, "missing.bst");
  EXPECT_FALSE(made.files.at(3).exists);
}

TEST_F(MakePlan, KeepsTheOldNumberOfTheRecordInAChainPath) {
  writeFile("test7.bst", std::string(kTest) + "\ntest8.bst\n");
  writeFile("test8.bst", "next[cfgID].bst\n");
  writeFile("next7.bst", std::string(kTest) + "\n" + kTest + "\n[cfgID].bst");
  EXPECT_EQ(pathsOf(plan({"test7.bst"})), "test7.bst test8.bst next7.bst 0.bst ");
  EXPECT_EQ(pathsOf(plan({"test8.bst"})), "test8.bst next0.bst ");
}

TEST_F(MakePlan, KeepsTheOldNumberOfAFileThatWasReadForAnotherOne) {
  writeFile("test7.bst", std::string(kTest) + "\ntest8.bst\n");
  writeFile("test8.bst", "[cfgID].bst\n");
  writeFile("first.bst", "test7.bst\n");
  EXPECT_EQ(pathsOf(plan({"test8.bst", "test7.bst", "first.bst"})),
            "first.bst test7.bst test8.bst 7.bst ");
}

TEST_F(MakePlan, RecordsAreFreshForEachNamedFile) {
  writeFile("test7.bst", kTest);
  writeFile("test8.bst", "next[cfgID].bst\n");
  EXPECT_EQ(pathsOf(plan({"test7.bst", "test8.bst"})), "test7.bst test8.bst next0.bst ");
}

TEST_F(MakePlan, ChainPathBehindAFullTableShowsTheFilesOwnNumber) {
  std::string content;
  for (int i = 0; i < 201; ++i) content += std::string(kTest) + "\n";
  writeFile("test7.bst", content + "x[cfgID].bst\n");
  EXPECT_EQ(pathsOf(plan({"test7.bst"})), "test7.bst x7.bst ");
}

TEST_F(MakePlan, ChainThatLeadsBackEndsThere) {
  writeFile("a.bst", "b.bst\n");
  writeFile("b.bst", "./c.bst\n");
  writeFile("c.bst", "b.bst\n");
  EXPECT_EQ(pathsOf(plan({"a.bst"})), "a.bst b.bst ./c.bst< ");
  writeFile("self.bst", "./self.bst\n");
  EXPECT_EQ(pathsOf(plan({"self.bst"})), "self.bst< ");
}

TEST_F(MakePlan, ChainedFileIsPlannedOnceInItsPlace) {
  writeFile("a.bst", "b.bst\n");
  writeFile("b.bst", "c.bst\n");
  writeFile("c.bst", "");
  writeFile("d.bst", "c.bst");
  EXPECT_EQ(pathsOf(plan({"c.bst", "b.bst", "./b.bst", "a.bst"})), "a.bst b.bst c.bst ");
  EXPECT_EQ(pathsOf(plan({"a.bst", "c.bst", "d.bst", "a.bst"})), "a.bst b.bst c.bst d.bst ");
  writeFile("c.bst", "a.bst");
  EXPECT_EQ(pathsOf(plan({"b.bst", "a.bst", "c.bst"})), "b.bst c.bst a.bst< ");
}

TEST_F(MakePlan, FolderStandsForItsSettingsFilesInOrderOfName) {
  std::filesystem::create_directories("set/sub.bst");
  for (const char* name : {"set/b.bst", "set/a.BST", "set/.a.bst", "set/c.txt", "set/C.bst"}) {
    writeFile(name, "");
  }
  EXPECT_EQ(pathsOf(plan({"set"})), "set/C.bst set/a.BST set/b.bst ");
  EXPECT_EQ(pathsOf(plan({"set/", "set/b.bst"})), "set/C.bst set/a.BST set/b.bst ");
}

TEST_F(MakePlan, MissingFileIsPlannedAsMissing) {
  const Plan made = plan({"none.bst"});
  ASSERT_EQ(made.files.size(), 1U);
  EXPECT_FALSE(made.files[0].exists);
}

TEST_F(MakePlan, StandardInputStandsInTheCurrentFolder) {
  input = std::string(kTest) + "\n[cfgPath]next.bst";
  const Plan made = plan({"-"});
  EXPECT_EQ(pathsOf(made), "- next.bst ");
  EXPECT_TRUE(made.files.at(0).exists);
  EXPECT_EQ(made.files[0].lines.at(0).test.dest, "out.bin");
}

TEST_F(MakePlan, TextsArePlannedAsIfTheyWereThere) {
  const std::string here = std::filesystem::current_path().string();
  writeFile("b.bst", "nonsense\n");
  std::filesystem::create_directory("c.bst");
  std::istringstream none;
  const Plan made = makePlan({{"./a.bst"},
                              hosts,
                              0,
                              {{"./a.bst", "b.bst\n"},
                               {here + "/b.bst", std::string(kTest) + "\nc.bst\n"},
                               {"c.bst", kTest}}},
                             none);
  EXPECT_EQ(pathsOf(made), "./a.bst b.bst c.bst ");
  for (const PlannedFile& planned : made.files) EXPECT_TRUE(planned.exists) << planned.path;
  EXPECT_EQ(made.files.at(1).lines.at(0).kind, LineKind::test);
  EXPECT_EQ(pathsOf(makePlan({{"c.bst"}, hosts, 0, {{"c.bst", kTest}}}, none)), "c.bst ");
}

TEST_F(MakePlan, HostsAreCutAsTheProgramDoes) {
  hosts = {"c1.site.org", ".x", "localhost"};
  writeFile("a.bst", "");
  EXPECT_EQ(plan({"a.bst"}).hosts, (std::vector<std::string>{"c1", ".x", "NoHostNameSet_"}));
  EXPECT_EQ(plan({"a.bst"}).clients, 3);
  clients = 10;
  EXPECT_EQ(plan({"a.bst"}).clients, 10);
  hosts.clear();
  EXPECT_EQ(plan({"a.bst"}).hosts, std::vector<std::string>{std::string(hostName())});
}

TEST_F(MakePlan, FollowsTheChainOfTheFirstHost) {
  writeFile("a.bst", "[cfgPath]a-[HOST]-[host].bst\n");
  writeFile("a-pc1-pc1.bst", kTest);
  hosts = {"pc1.lab", "pc2"};
  EXPECT_EQ(pathsOf(plan({"a.bst"})), "a.bst a-pc1-pc1.bst ");
}

}  // namespace
}  // namespace marrowbench::ctl
