#include "marrowctl/fleet/publication.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "helpers/temp_folder.h"
#include "marrowctl/fleet/drafts.h"
#include "marrowctl/fleet/leftovers.h"
#include "marrowctl/plan/done_markers.h"

namespace marrowbench::ctl {
namespace {

using Names = std::vector<std::string>;

// A settings file that lies in one folder and is to be published in another.
class PublicationTest : public testing::Test {
 protected:
  PublicationTest() : folder{temporary.path() + "/control", "run"} {
    std::filesystem::create_directories(folder.path());
    std::filesystem::create_directory(temporary.path() + "/mine");
  }

  std::string put(const std::string& name, const std::string& text) const {
    std::string path = temporary.path() + "/mine/" + name;
    test::writeFile(path.c_str(), text);
    return path;
  }

  static std::string line(const std::string& dest, const std::string& table,
                          const std::string& mark = "true") {
    return "posix;0;0;0;4;0;4;2;0;MEMORY;" + dest + ";;" + table + ";" + mark + "\n";
  }

  [[nodiscard]] Publication prepare(const std::string& file, bool hasNext = false,
                                    int phase = 1) const {
    return preparePublication({file, folder, phase, hasNext, {"c1", "c2"}, 0});
  }

  [[nodiscard]] std::string place(const std::string& name) const { return folder.file(name); }

  const test::TempFolder temporary;
  const ControlFolder folder;
};

TEST_F(PublicationTest, PlansTheFileAtItsNewPlace) {
  const Publication made = prepare(put("my.bst", line("[host].bin", "res.csv")));
  EXPECT_EQ(made.problem, "");
  ASSERT_EQ(made.plan.files.size(), 1U);
  EXPECT_EQ(made.plan.files[0].path, place("run.bst"));
  EXPECT_TRUE(made.plan.files[0].exists);
  EXPECT_EQ(made.plan.files[0].lines.at(0).test.table, place("res.csv"));
  EXPECT_EQ(made.plan.hosts, (Names{"c1", "c2"}));
  EXPECT_EQ(
      made.texts,
      (std::map<std::string, std::string>{{place("run.bst"), line("[host].bin", "res.csv")}}));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path())) << "nothing is written";
}

TEST_F(PublicationTest, TakesChainedFilesAlong) {
  put("third.bst", line("c", "t"));
  put("second.bst", line("b", "t") + "[cfgPath]third.bst\n");
  const Publication made = prepare(put("first.bst", line("a", "t") + "[cfgPath]second.bst\n"));
  EXPECT_EQ(made.problem, "");
  ASSERT_EQ(made.plan.files.size(), 3U);
  EXPECT_EQ(made.texts.size(), 3U);
  EXPECT_EQ(made.texts.at(place("third.bst")), line("c", "t"));
  EXPECT_EQ(made.plan.files[2].path, place("third.bst"));
}

TEST_F(PublicationTest, FollowsAChainThatIsNamedAfterItsFile) {
  // In its folder the second one is called first_b.bst, in the run's run_b.bst.
  put("first_b.bst", line("b", "t"));
  const Publication made = prepare(put("first.bst", line("a", "t") + "[cfgPath][cfgName]_b.bst\n"));
  EXPECT_EQ(made.problem, "");
  EXPECT_EQ(made.texts.at(place("run_b.bst")), line("b", "t"));
}

TEST_F(PublicationTest, LeavesAFileWhereEveryClientFindsIt) {
  const std::string common = put("common.bst", line("b", "t"));
  const Publication made = prepare(put("first.bst", line("a", "t") + common + "\n"));
  EXPECT_EQ(made.problem, "");
  EXPECT_EQ(made.texts.size(), 1U);
  EXPECT_EQ(made.plan.files.size(), 2U);
}

TEST_F(PublicationTest, LeavesAMissingFileToCheck) {
  const Publication made = prepare(put("first.bst", line("a", "t") + "[cfgPath]missing.bst\n"));
  EXPECT_EQ(made.problem, "");
  ASSERT_EQ(made.plan.files.size(), 2U);
  EXPECT_FALSE(made.plan.files[1].exists);
}

TEST_F(PublicationTest, EndsWithAChainThatGoesRound) {
  const Publication made = prepare(put("first.bst", line("a", "t") + "[cfgPath]run.bst\n"));
  EXPECT_EQ(made.problem, "");
  EXPECT_TRUE(made.plan.files.back().chainsBack);
}

TEST_F(PublicationTest, RefusesAChainThatDependsOnWhereAClientIsStarted) {
  put("second.bst", line("b", "t"));
  const Publication made = prepare(put("first.bst", line("a", "t") + "second.bst\n"));
  EXPECT_NE(made.problem.find("write [cfgPath]second.bst"), std::string::npos) << made.problem;
}

TEST_F(PublicationTest, RefusesAChainOutOfTheFolder) {
  std::filesystem::create_directory(temporary.path() + "/mine/sub");
  put("sub/second.bst", line("b", "t"));
  const Publication made = prepare(put("first.bst", line("a", "t") + "[cfgPath]sub/second.bst\n"));
  EXPECT_NE(made.problem.find("not in the folder of the run"), std::string::npos) << made.problem;
}

TEST_F(PublicationTest, TellsWhyAFileCannotBeRead) {
  EXPECT_EQ(prepare("/nowhere/x.bst").problem, "/nowhere/x.bst: No such file or directory");
  const std::string large = put("large.bst", std::string(1'048'576, '#'));
  EXPECT_EQ(prepare(large).problem, large + ": File too large") << "never a part of it";
}

TEST_F(PublicationTest, APhaseChainsToTheNextOne) {
  const Publication made = prepare(put("a.bst", "# no line feed at its end"), true, 2);
  EXPECT_EQ(made.problem, "");
  EXPECT_EQ(made.texts.at(place("run-2.bst")), "# no line feed at its end\n[cfgPath]run-3.bst\n");
  EXPECT_EQ(made.plan.files.at(0).chain, place("run-3.bst"));
}

TEST_F(PublicationTest, TheLastFileOfAPhaseChainsToTheNextOne) {
  put("b.bst", line("b", "t"));
  const Publication made = prepare(put("a.bst", line("a", "t") + "[cfgPath]b.bst\n"), true);
  EXPECT_EQ(made.problem, "");
  EXPECT_EQ(made.texts.at(place("b.bst")), line("b", "t") + "[cfgPath]run-2.bst\n");
  EXPECT_EQ(made.texts.at(place("run.bst")), line("a", "t") + "[cfgPath]b.bst\n");
}

TEST_F(PublicationTest, APhaseMayNotEndInAChain) {
  EXPECT_NE(prepare(put("a.bst", "[cfgPath]missing.bst\n"), true).problem, "");
  const std::string common = put("common.bst", line("b", "t"));
  EXPECT_NE(prepare(put("b.bst", common + "\n"), true).problem, "") << "it can't be changed";
}

TEST_F(PublicationTest, TellsWhichPlaceholdersReadDifferently) {
  const std::string test = line("[cfgName]/[host]", "[cfgNameID].csv");
  EXPECT_EQ(prepare(put("first7.bst", test)).differences,
            (Names{"[cfgName] is run there, not first", "[cfgNameID] is run there, not first7"}));
  EXPECT_EQ(prepare(put("run.bst", test)).differences, Names{});
  EXPECT_EQ(prepare(put("first7.bst", line("[host]", "t"))).differences, Names{});
}

TEST_F(PublicationTest, MarkersAreLeftByFilesThatAskForThemAndByEmptyOnes) {
  const auto leaves = [this](const std::string& text) {
    return leavesMarker(prepare(put("a.bst", text)).plan.files.at(0));
  };
  EXPECT_TRUE(leaves(line("a", "t")));
  EXPECT_FALSE(leaves(line("a", "t", "false")));
  EXPECT_TRUE(leaves(line("a", "t", "false") + line("b", "t")));
  EXPECT_TRUE(leaves("# nothing\n"));
}

TEST_F(PublicationTest, FindsWhatAnEarlierRunLeft) {
  const Plan plan = prepare(put("a.bst", line("a", "one.csv") + line("b", "two_[host].csv"))).plan;
  EXPECT_TRUE(findLeftovers(plan).empty());
  test::writeFile(place("one.csv").c_str(), "");
  test::writeFile(place("two_c2.csv").c_str(), "");
  test::writeFile(place("two_c3.csv").c_str(), "another client's");
  test::writeFile(place("two_c1.csv_lock.txt").c_str(), "");
  std::filesystem::create_directory(folder.doneFolder());
  test::writeFile((folder.doneFolder() + "/done__c1").c_str(), "");
  test::writeFile((folder.doneFolder() + "/done__c3").c_str(), "another client's");
  const Leftovers found = findLeftovers(plan);
  EXPECT_EQ(found.tables, (Names{place("one.csv"), place("two_c2.csv")}));
  EXPECT_EQ(found.locks, Names{place("two_c1.csv_lock.txt")});
  EXPECT_EQ(found.markers, Names{folder.doneFolder() + "/done__c1"});
}

TEST_F(PublicationTest, ADeviceIsNoTableThatIsLeft) {
  EXPECT_TRUE(findLeftovers(prepare(put("a.bst", line("a", "/dev/null"))).plan).empty());
}

TEST_F(PublicationTest, KnowsTheTablesOfAllClientsAndIterations) {
  EXPECT_EQ(tablesOf(prepare(put("a.bst", line("a", "[host].csv") + line("b", "r[iter].csv") +
                                              line("c", "[host].csv") + line("d", " ")))
                         .plan),
            (Names{place("c1.csv"), place("c2.csv"), place("r0.csv"), place("r1.csv")}));
}

TEST_F(PublicationTest, DraftsAppearWithTheirTexts) {
  Drafts drafts;
  ASSERT_EQ(drafts.write({{place("a.bst"), "one"}, {place("b.bst"), "two"}}), "");
  EXPECT_FALSE(test::exists(place("a.bst").c_str()));
  EXPECT_EQ(drafts.publish(place("a.bst")), "");
  EXPECT_EQ(test::readFile(place("a.bst").c_str()), "one");
  EXPECT_EQ(test::readFile(place("b.bst").c_str()), "two");
  const auto files = std::filesystem::directory_iterator(folder.path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 2);
}

TEST_F(PublicationTest, TheLastDraftAppearsOnlyBehindTheOthers) {
  std::filesystem::create_directory(place("b.bst"));
  Drafts drafts;
  ASSERT_EQ(drafts.write({{place("a.bst"), "one"}, {place("b.bst"), "two"}}), "");
  EXPECT_EQ(drafts.publish(place("a.bst")), place("b.bst") + ": Is a directory");
  EXPECT_FALSE(test::exists(place("a.bst").c_str()));
}

TEST_F(PublicationTest, DraftsThatDoNotAppearGoAway) {
  {
    Drafts drafts;
    ASSERT_EQ(drafts.write({{place("a.bst"), "one"}}), "");
    EXPECT_FALSE(std::filesystem::is_empty(folder.path()));
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
  Drafts drafts;
  EXPECT_EQ(drafts.write({{"/nowhere/a.bst", "x"}}), "/nowhere/a.bst: No such file or directory");
}

TEST_F(PublicationTest, TheTimeOfAPublishedFileIsThatOfItsAppearance) {
  Drafts drafts;
  ASSERT_EQ(drafts.write({{place("a.bst"), "one"}}), "");
  for (const auto& draft : std::filesystem::directory_iterator(folder.path()))
    test::setModified(draft.path().c_str(), 1'000'000'000);
  ASSERT_EQ(drafts.publish(place("a.bst")), "");
  const auto time = std::filesystem::last_write_time(place("a.bst"));
  EXPECT_LT(std::filesystem::file_time_type::clock::now() - time, std::chrono::hours(1));
}

}  // namespace
}  // namespace marrowbench::ctl
