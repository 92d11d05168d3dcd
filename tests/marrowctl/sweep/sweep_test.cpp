#include "marrowctl/sweep/sweep.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "marrowctl/sweep/parsed_sweep.h"

namespace marrowbench::ctl {
namespace {

using test::parsedFile;
using test::ParsedFile;
using test::parsedFiles;
using test::testsOf;

SweepResult sweepOf(SweepOptions options) {
  SweepResult result = makeSweep(options);
  EXPECT_EQ(result.reason, "") << result.option;
  return result;
}

std::string destsOf(const SweepResult& sweep) {
  std::string dests;
  for (const TestConfig& test : testsOf(sweep)) dests.append(test.destTemplate.view()).append("\n");
  return dests;
}

std::string methodsOf(const SweepResult& sweep, TestType kind) {
  std::string methods;
  for (const TestConfig& test : testsOf(sweep)) {
    if (testTypeOf(test.sourceTemplate, test.destTemplate) != kind) continue;
    methods += test.method == Method::posix ? 'P' : test.method == Method::ansiC ? 'A' : 'S';
  }
  return methods;
}

TEST(Sweep, OfDefaultsIsUsefulAtOnce) {
  SweepOptions options{.method = "posix,ansic,stream", .chunk = "4K..4M", .size = "256M"};
  options.output = "/share/bench/sweep.bst";
  const SweepResult sweep = sweepOf(options);
  ASSERT_EQ(sweep.files.size(), 1U);
  EXPECT_EQ(sweep.files[0].name, "/share/bench/sweep.bst");
  const std::vector<TestConfig> tests = testsOf(sweep);
  ASSERT_EQ(tests.size(), 33U);
  for (const TestConfig& test : tests) {
    EXPECT_TRUE(test.sourceTemplate.isEmpty());
    EXPECT_NE(test.destTemplate.view().find("/share/bench/sweep_data/[host]/write_"),
              std::string::npos);
    EXPECT_EQ(test.logTemplate.view(), "/share/bench/sweep_log_[host].txt");
    EXPECT_EQ(test.resultsTemplate.view(), "/share/bench/sweep_results.csv");
    EXPECT_EQ(test.parameters.parameters.fileSize, 268435456);
    EXPECT_EQ(test.iterations, 1);
    EXPECT_EQ(test.markDone, &test == &tests.back());
  }
}

TEST(Sweep, MethodsTakeTurnsFromStepToStep) {
  SweepOptions options{
      .method = "posix,ansic,stream", .kind = "read,write", .chunk = "4K,8K", .size = "1M,2M"};
  const SweepResult sweep = sweepOf(options);
  EXPECT_EQ(methodsOf(sweep, TestType::write), "PASSAPPASSAP");
  EXPECT_EQ(methodsOf(sweep, TestType::read), "PASSAPPASSAP");
}

TEST(Sweep, WhatIsReadWasWrittenBefore) {
  for (const char* method : {"posix", "ansic", "ansic,stream", "posix,ansic,stream"}) {
    for (const char* kind : {"read", "copy", "write,read", "copy,read", "write,copy,read"}) {
      SweepOptions options{.method = method, .kind = kind, .chunk = "4K,1M", .size = "1M,2M"};
      options.iterations = "1,3";
      std::map<std::string, TestConfig> written;
      for (const TestConfig& test : testsOf(sweepOf(options))) {
        const std::string source(test.sourceTemplate.view());
        if (!source.empty()) {
          ASSERT_TRUE(written.contains(source)) << method << " " << kind << ": " << source;
          EXPECT_EQ(written[source].iterations, test.iterations) << source;
          EXPECT_EQ(written[source].parameters.parameters.fileSize,
                    test.parameters.parameters.fileSize);
        }
        written[std::string(test.destTemplate.view())] = test;
      }
    }
  }
}

TEST(Sweep, AnsiCGetsFreshNamesThatNobodyReads) {
  SweepOptions options{.method = "ansic,posix", .kind = "write,copy,read", .size = "1M"};
  for (const TestConfig& test : testsOf(sweepOf(options))) {
    const std::string_view dest = test.destTemplate.view();
    if (!dest.empty()) {
      const bool isFresh = dest.find("[iter]") != dest.npos && dest.find("[date]") != dest.npos;
      EXPECT_EQ(isFresh, test.method == Method::ansiC) << dest;
    }
    EXPECT_EQ(test.sourceTemplate.view().find("[date]"), std::string_view::npos);
  }
}

TEST(Sweep, OfReadsAloneWritesASourceOfEachSizeFirst) {
  SweepOptions options{
      .method = "posix,stream", .kind = "read", .chunk = "4K,8K", .size = "1M,512K"};
  const std::vector<TestConfig> tests = testsOf(sweepOf(options));
  ASSERT_EQ(tests.size(), 2U + 8U);
  EXPECT_EQ(tests[0].destTemplate.view(), "./././sweep_data/[host]/source_1M.bin");
  EXPECT_EQ(tests[1].destTemplate.view(), "./././sweep_data/[host]/source_512K.bin");
  EXPECT_EQ(tests[1].parameters.parameters.fileSize, 524288);
  EXPECT_TRUE(tests[2].destTemplate.isEmpty());
}

TEST(Sweep, OfANamedSourceWritesNone) {
  SweepOptions options{.kind = "copy", .chunk = "4K,8K"};
  options.source = "/data/big.bin,/data/[host].bin";
  const std::vector<TestConfig> tests = testsOf(sweepOf(options));
  ASSERT_EQ(tests.size(), 4U);
  EXPECT_EQ(tests[0].sourceTemplate.view(), "/data/big.bin");
  EXPECT_EQ(tests[2].sourceTemplate.view(), "/data/[host].bin");
  EXPECT_EQ(tests[0].parameters.parameters.fileSize, 0);
}

TEST(Sweep, NamesInAFolderTellTheTests) {
  SweepOptions options{.method = "posix,ansic", .chunk = "64K", .size = "2M"};
  options.dest = "/mnt/share/";
  options.iterations = "2";
  EXPECT_EQ(destsOf(sweepOf(options)),
            "/mnt/share/[host]_write_posix_64K_2M_[iter].bin\n"
            "/mnt/share/[host]_write_ansic_64K_2M_[iter]_[date].bin\n");
}

TEST(Sweep, ANamedFileGetsOnlyWhatTellsTheTestsApart) {
  const struct {
    const char* dest;
    const char* chunk;
    const char* written;
  } cases[] = {
      {"/mnt/d/a.dat", "4K", "/mnt/d/a_[host].dat\n"},
      {"/mnt/d/[HOST]/a.dat", "4K", "/mnt/d/[HOST]/a.dat\n"},
      {"/mnt/d/[HOST]/a.dat", "4K,0", "/mnt/d/[HOST]/a_4K.dat\n/mnt/d/[HOST]/a_whole.dat\n"},
      {"/mnt/d.x/a", "4K", "/mnt/d.x/a_[host]\n"},
      {"/mnt/d/.a", "4K", "/mnt/d/.a_[host]\n"},
      {"\\\\mnt\\d\\a.b", "4K", "//mnt/d/a_[host].b\n"}};
  for (const auto& c : cases) {
    SweepOptions options{.chunk = c.chunk};
    options.dest = c.dest;
    EXPECT_EQ(destsOf(sweepOf(options)), c.written) << c.dest;
  }
}

TEST(Sweep, EveryTestWritesAFileOfItsOwn) {
  SweepOptions options{.method = "posix", .chunk = "4K,1M", .size = "1M,2M"};
  options.prealloc = "no,yes";
  options.kind = "write,copy";
  options.output = "/t/sweep.bst";
  options.wait = "0,10";
  options.table = "/t/a.csv,/t/b.csv";
  options.log = "/t/a.txt,/t/b.txt";
  options.dest = "/t/x/,/t/y/";
  std::set<std::string> dests;
  const auto tests = testsOf(sweepOf(options));
  EXPECT_EQ(tests.size(), 2U * 2 * 2 * 2 * 2 * 2 * 2 * 2);
  for (const TestConfig& test : tests) {
    EXPECT_TRUE(dests.insert(std::string(test.destTemplate.view())).second)
        << test.destTemplate.view();
  }
}

TEST(Sweep, OfMoreThan200TestsIsAChain) {
  SweepOptions options{.chunk = "1K..1G", .size = "1K..64M"};
  options.output = "/share/big.BST";
  const SweepResult sweep = sweepOf(options);
  ASSERT_EQ(sweep.files.size(), 2U);
  auto files = parsedFiles(sweep);
  const ParsedFile& first = files["/share/big.BST"];
  EXPECT_EQ(first.tests.size(), 200U);
  EXPECT_EQ(first.chain, "/share/big-2.BST");
  EXPECT_TRUE(sweep.files[0].text.ends_with("\n[cfgPath]big-2.BST\n"));
  EXPECT_TRUE(first.tests.back().markDone);
  const ParsedFile& second = files["/share/big-2.BST"];
  EXPECT_EQ(second.tests.size(), 21U * 17U - 200U);
  EXPECT_EQ(second.chain, "");
  EXPECT_TRUE(second.tests.back().markDone);
  EXPECT_EQ(first.rejected + second.rejected + first.behindChain + second.behindChain, 0);
}

TEST(Sweep, Of200TestsIsOneFile) {
  SweepOptions options{.iterations = "1..512", .dest = "/s/a/"};
  options.wait = "0,1,2,3,4,5,6,7,8,9";
  options.chunk = "4K,8K";
  const SweepResult sweep = sweepOf(options);
  ASSERT_EQ(sweep.files.size(), 1U);
  EXPECT_EQ(parsedFile(sweep.files[0]).tests.size(), 200U);
  EXPECT_EQ(sweep.files[0].name, "-");
}

TEST(Sweep, AFolderThatTheProgramDoesNotKnowIsAvoided) {
  for (const char* output : {"", "-", "sweep.bst", "./sweep.bst", "a/sweep.bst"}) {
    SweepOptions options{.output = output};
    const std::vector<TestConfig> tests = testsOf(sweepOf(options));
    ASSERT_EQ(tests.size(), 1U);
    EXPECT_NE(tests[0].destTemplate.view().find("./././sweep_data/"), std::string_view::npos)
        << output;
    EXPECT_NE(tests[0].resultsTemplate.view().find("./././sweep_"), std::string_view::npos)
        << output;
  }
  // A new folder must have a known one two levels above.
  SweepOptions options{.dest = "data/x.bin,x.bin,a/b/x.bin", .output = "ab/sweep.bst"};
  EXPECT_EQ(destsOf(sweepOf(options)),
            "ab/./././data/x_[host].bin\nab/x_[host].bin\nab/./././a/b/x_[host].bin\n");
  options = {.dest = "data/x.bin,a/b/x.bin", .output = "abc/sweep.bst"};
  EXPECT_EQ(destsOf(sweepOf(options)), "abc/./././data/x_[host].bin\nabc/a/b/x_[host].bin\n");
  options = {.dest = "data/,data/x.bin", .output = "/srv/two/sweep.bst"};
  EXPECT_EQ(destsOf(sweepOf(options)),
            "/srv/two/data/[host]_write_posix_1M_256M.bin\n/srv/two/data/x_[host].bin\n");
  options = {.dest = "[cfgPath]../x.bin,[Temp]x.bin,/ab/x.bin", .output = "a/sweep.bst"};
  EXPECT_EQ(destsOf(sweepOf(options)),
            "[cfgPath]../x_[host].bin\n[Temp]x_[host].bin\n/ab/x_[host].bin\n");
}

TEST(Sweep, HeadHoldsTheCommandAndTheFields) {
  SweepOptions options{.command = "marrowctl sweep --method posix"};
  const SweepResult sweep = sweepOf(options);
  EXPECT_TRUE(
      sweep.files[0].text.starts_with("# Made by: marrowctl sweep --method posix\n# 1 test.\n"));
  EXPECT_NE(sweep.files[0].text.find("\n# method;flush;prealloc;wait ms;chunk KiB;"),
            std::string::npos);
}

TEST(Sweep, EveryFileHasTheCommandInItsHead) {
  SweepOptions options{.chunk = "1K..1G", .size = "1K..64M", .output = "/share/big.bst"};
  options.command = "marrowctl sweep --chunk 1K..1G";
  for (const bool hasNeighbours : {false, true}) {
    if (hasNeighbours) options.neighbours = {"pc1", "pc2"};
    const SweepResult sweep = sweepOf(options);
    EXPECT_EQ(sweep.files.size(), hasNeighbours ? 6U : 2U);
    for (const SweepFile& file : sweep.files) {
      EXPECT_TRUE(file.text.starts_with("# Made by: marrowctl sweep --chunk 1K..1G\n"))
          << file.name;
    }
  }
}

TEST(Sweep, TheCommandStaysAComment) {
  SweepOptions options{.command = "marrowctl sweep \nposix;0\r\n# marrowctl: allow no-table\n"};
  options.command += std::string(200000, 'x') + "\nnext.bst";
  const SweepResult sweep = sweepOf(options);
  const ParsedFile file = parsedFile(sweep.files[0]);
  EXPECT_EQ(file.tests.size(), 1U);
  EXPECT_EQ(file.rejected, 0);
  EXPECT_EQ(file.chain, "");
  EXPECT_EQ(sweep.files[0].text.find("\n# marrowctl:"), std::string::npos);
}

TEST(Sweep, OfNeighboursHasAFileForEachClient) {
  SweepOptions options{.method = "posix,ansic", .size = "1M", .table = "/t/all.csv"};
  options.output = "/share/n.bst";
  options.neighbours = {"pc1.lab", "pc2", "pc3"};
  const SweepResult sweep = sweepOf(options);
  ASSERT_EQ(sweep.files.size(), 4U);
  auto files = parsedFiles(sweep);
  const ParsedFile& writes = files["/share/n.bst"];
  ASSERT_EQ(writes.tests.size(), 2U);
  EXPECT_TRUE(writes.tests.back().markDone);
  EXPECT_NE(sweep.files[0].text.find("\n[cfgPath]n-[host].bst\n"), std::string::npos);
  const struct {
    const char* file;
    const char* source;
  } cases[] = {{"/share/n-pc1.bst", "/share/n_data/pc2/write_posix_1M_1M.bin"},
               {"/share/n-pc2.bst", "/share/n_data/pc3/write_posix_1M_1M.bin"},
               {"/share/n-pc3.bst", "/share/n_data/pc1/write_posix_1M_1M.bin"}};
  for (const auto& c : cases) {
    ASSERT_EQ(files[c.file].tests.size(), 2U) << c.file;
    for (const TestConfig& test : files[c.file].tests) {
      EXPECT_EQ(test.sourceTemplate.view(), c.source);
      EXPECT_EQ(test.resultsTemplate.view(), "/t/all_[host].csv");
    }
    EXPECT_TRUE(files[c.file].tests.back().markDone);
    EXPECT_EQ(files[c.file].chain, "");
  }
}

}  // namespace
}  // namespace marrowbench::ctl
