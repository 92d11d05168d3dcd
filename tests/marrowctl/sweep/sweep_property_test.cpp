#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <sstream>
#include <tuple>

#include "helpers/temp_folder.h"
#include "marrowctl/check/check.h"
#include "marrowctl/plan/make_plan.h"
#include "marrowctl/sweep/sweep.h"

// Random matrices: what was asked for is worked out here once more, by nested loops.
namespace marrowbench::ctl {
namespace {

using test::TempFolder;
using test::writeFile;

// What tells the tests of a matrix apart; sizes in KiB. The dest is the folder that was asked for.
using Cell = std::tuple<TestType, Method, std::int64_t, std::int64_t, std::int64_t, std::int64_t,
                        std::int64_t, bool, bool, std::string, std::string, std::string>;

struct Asked {
  std::vector<TestType> kinds;
  std::vector<Method> methods;
  std::vector<std::int64_t> chunks, sizes, buffers, waits, iterations;
  std::vector<bool> flush, prealloc;
  std::vector<std::string> dests, logs, tables;  // an empty text: the default
  std::vector<std::string> neighbours;
};

template <typename Value>
std::vector<Value> someOf(std::mt19937& random, std::vector<Value> values, std::size_t most) {
  std::shuffle(values.begin(), values.end(), random);
  values.resize(1 + random() % std::min(most, values.size()));
  return values;
}

Asked randomMatrix(std::mt19937& random) {
  Asked asked;
  asked.kinds = someOf<TestType>(random, {TestType::write, TestType::read, TestType::copy}, 3);
  asked.methods = someOf<Method>(random, {Method::posix, Method::ansiC, Method::stream}, 3);
  asked.chunks = someOf<std::int64_t>(random, {0, 1, 4, 64, 1024, 1048576}, 3);
  asked.sizes = someOf<std::int64_t>(random, {1, 4, 48, 100}, 2);
  asked.buffers = random() % 4 == 0 ? someOf<std::int64_t>(random, {-1, 0, 1}, 3)
                                    : std::vector<std::int64_t>{0};
  asked.waits = random() % 4 == 0 ? someOf<std::int64_t>(random, {0, 1, 65535}, 2)
                                  : std::vector<std::int64_t>{0};
  asked.iterations = someOf<std::int64_t>(random, {1, 2, 17}, 2);
  asked.flush =
      random() % 3 == 0 ? someOf<bool>(random, {false, true}, 2) : std::vector<bool>{false};
  asked.prealloc =
      random() % 3 == 0 ? someOf<bool>(random, {false, true}, 2) : std::vector<bool>{false};
  asked.dests = random() % 3 == 0
                    ? someOf<std::string>(random, {"data/", "[host]/", "x/[host]/a_"}, 2)
                    : std::vector<std::string>{""};
  asked.logs = random() % 4 == 0 ? someOf<std::string>(random, {"[host].txt", "logs/all.txt"}, 2)
                                 : std::vector<std::string>{""};
  asked.tables = random() % 4 == 0
                     ? someOf<std::string>(random, {"a_[host].csv", "t/b_[host].csv"}, 2)
                     : std::vector<std::string>{""};
  if (random() % 5 == 0) asked.neighbours = {"pc1", "pc2", "pc3"};
  return asked;
}

template <typename Value, typename Text>
std::string listOf(const std::vector<Value>& values, Text text) {
  std::string list;
  for (const Value& value : values) list += (list.empty() ? "" : ",") + text(value);
  return list;
}

std::string nameOf(TestType kind) {
  return kind == TestType::write ? "write" : kind == TestType::read ? "read" : "copy";
}

std::string nameOf(Method method) {
  return method == Method::posix ? "posix" : method == Method::ansiC ? "AnsiC" : "stream";
}

SweepOptions optionsOf(const Asked& asked, const std::string& output) {
  const auto kib = [](std::int64_t value) { return std::to_string(value) + "KiB"; };
  const auto number = [](std::int64_t value) { return std::to_string(value); };
  const auto flag = [](bool value) { return std::string(value ? "yes" : "no"); };
  const auto path = [](const std::string& text) { return text; };
  SweepOptions options;
  options.kind = listOf(asked.kinds, [](TestType kind) { return nameOf(kind); });
  options.method = listOf(asked.methods, [](Method method) { return nameOf(method); });
  options.chunk = listOf(asked.chunks, kib);
  options.size = listOf(asked.sizes, kib);
  options.buffer = listOf(asked.buffers, number);
  options.wait = listOf(asked.waits, number);
  options.iterations = listOf(asked.iterations, number);
  options.flush = listOf(asked.flush, flag);
  options.prealloc = listOf(asked.prealloc, flag);
  options.dest = listOf(asked.dests, path);
  options.log = listOf(asked.logs, path);
  options.table = listOf(asked.tables, path);
  options.output = output;
  options.neighbours = asked.neighbours;
  options.command = "marrowctl sweep";
  return options;
}

bool reads(const Asked& asked) {
  return std::any_of(asked.kinds.begin(), asked.kinds.end(),
                     [](TestType kind) { return kind != TestType::write; });
}

std::vector<Cell> productOf(const Asked& a) {
  std::vector<Cell> tests;
  for (const auto kind : a.kinds)
    for (const auto method : a.methods)
      for (const auto chunk : a.chunks)
        for (const auto size : a.sizes)
          for (const auto buffer : a.buffers)
            for (const auto wait : a.waits)
              for (const auto iterations : a.iterations)
                for (const bool flush : a.flush)
                  for (const bool prealloc : a.prealloc)
                    for (const auto& dest : a.dests)
                      for (const auto& log : a.logs)
                        for (const auto& table : a.tables)
                          tests.emplace_back(kind, method, chunk, size, buffer, wait, iterations,
                                             flush, prealloc, dest, log, table);
  std::sort(tests.begin(), tests.end());
  return tests;
}

bool hasNoEffect(const Cell& test) {
  const auto& [kind, method, chunk, size, buffer, wait, iterations, flush, prealloc, dest, log,
               table] = test;
  if (chunk == 0 && ((kind == TestType::copy && method != Method::stream) || wait > 0)) return true;
  if (flush && (chunk == 0 || kind == TestType::read || method == Method::posix)) return true;
  if (prealloc && (kind == TestType::read || method != Method::posix)) return true;
  if (buffer != 1) return false;
  const bool isUsed = (kind == TestType::copy && method != Method::posix) ||
                      (kind == TestType::read && method == Method::stream);
  return !isUsed || chunk == 0;
}

// The one that the path was made from; a default's is found where no other is.
std::string askedPath(const std::string& path, const std::string& folder,
                      const std::vector<std::string>& asked) {
  for (const std::string& text : asked) {
    if (!text.empty() && path.starts_with(folder + "/" + text)) return text;
  }
  return "";
}

Cell testOf(const PlannedTest& test, const std::string& folder, const Asked& asked) {
  const std::string& data = test.dest.empty() ? test.source : test.dest;
  // A neighbour's file has its name in place of the placeholder.
  std::string dataTemplate = data;
  for (const std::string& host : asked.neighbours) {
    const std::size_t at = dataTemplate.find(host);
    if (at != std::string::npos) dataTemplate.replace(at, host.size(), "[host]");
  }
  const ParameterBlock& p = test.asWritten;
  return {test.type,
          test.method,
          p.chunkSize / 1024,
          p.fileSize / 1024,
          p.systemBuffer,
          p.chunkWait,
          test.iterations,
          p.flush,
          p.prealloc,
          askedPath(dataTemplate, folder, asked.dests),
          askedPath(test.log, folder, asked.logs),
          askedPath(test.table, folder, asked.tables)};
}

bool isExtraSource(const PlannedTest& test) {
  return test.type == TestType::write && test.dest.find("source") != std::string::npos;
}

struct Found {
  std::vector<Cell> tests;
  std::size_t extraSources = 0;
};

Found foundIn(const Plan& plan, const std::string& folder, const Asked& asked) {
  Found found;
  for (const PlannedFile& file : plan.files) {
    for (const PlannedLine& line : file.lines) {
      if (line.kind != LineKind::test) continue;
      if (isExtraSource(line.test))
        ++found.extraSources;
      else
        found.tests.push_back(testOf(line.test, folder, asked));
    }
  }
  std::sort(found.tests.begin(), found.tests.end());
  return found;
}

std::size_t extraSourcesOf(const Asked& asked) {
  const bool writes =
      std::find(asked.kinds.begin(), asked.kinds.end(), TestType::write) != asked.kinds.end();
  const bool areReadable = asked.methods != std::vector<Method>{Method::ansiC};
  if (!reads(asked) || (writes && areReadable)) return 0;
  return asked.dests.size() * asked.sizes.size() * asked.iterations.size();
}

std::string shown(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) {
    if (finding.severity == Severity::note) continue;
    text += finding.name + ": " + finding.message + " | " + finding.lineText + "\n";
  }
  return text;
}

void expectClean(const SweepResult& sweep, const std::string& folder, const Asked& asked,
                 std::vector<std::string> hosts) {
  std::istringstream nothing;
  const Plan plan = makePlan({{sweep.files.front().name}, std::move(hosts), 0}, nothing);
  const std::vector<Finding> findings = check(plan);
  EXPECT_EQ(exitStatusOf(findings, true), 0) << shown(findings).substr(0, 2000);
  const Found found = foundIn(plan, folder, asked);
  EXPECT_TRUE(found.tests == productOf(asked)) << found.tests.size() << " tests";
  EXPECT_EQ(found.extraSources, extraSourcesOf(asked));
}

void expectSweep(const Asked& asked, const SweepResult& sweep, const TempFolder& folder) {
  ASSERT_EQ(sweep.reason, "") << sweep.option;
  for (const SweepFile& file : sweep.files) writeFile(std::string_view(file.name), file.text);
  if (asked.neighbours.empty()) expectClean(sweep, folder.path(), asked, {});
  std::vector<std::string> hosts = asked.neighbours;
  for (std::size_t i = 0; i < asked.neighbours.size(); ++i) {
    expectClean(sweep, folder.path(), asked, hosts);
    std::rotate(hosts.begin(), hosts.begin() + 1, hosts.end());
  }
  if (asked.neighbours.empty()) expectClean(sweep, folder.path(), asked, {"pc1", "pc2"});
  for (const SweepFile& file : sweep.files) std::filesystem::remove(file.name);
}

TEST(SweepProperty, IsTheCrossProductAndPassesCheckStrictly) {
  constexpr int kSweeps = 1000;
  std::mt19937 random(20261121);
  const TempFolder folder;
  int refused = 0;
  for (int accepted = 0; accepted < kSweeps;) {
    const Asked asked = randomMatrix(random);
    if (!asked.neighbours.empty() && !reads(asked)) continue;
    const std::vector<Cell> tests = productOf(asked);
    const SweepOptions options = optionsOf(asked, folder.path() + "/s.bst");
    SCOPED_TRACE(options.kind + " " + options.method + " chunk " + options.chunk + " dest " +
                 options.dest);
    const SweepResult sweep = makeSweep(options);
    if (std::any_of(tests.begin(), tests.end(), hasNoEffect)) {
      ++refused;
      ASSERT_NE(sweep.reason, "");
      continue;
    }
    ++accepted;
    expectSweep(asked, sweep, folder);
    if (HasFailure()) return;
  }
  EXPECT_GT(refused, 100);
}

TEST(SweepProperty, PassesCheckStrictlyWhereItWasWritten) {
  const test::WorkingFolder folder;
  std::filesystem::create_directory("a");
  for (const char* output : {"sweep.bst", "./sweep.bst", "a/sweep.bst", "-"}) {
    const SweepResult sweep = makeSweep({.method = "posix,ansic,stream",
                                         .kind = "write,copy,read",
                                         .size = "64K",
                                         .output = output});
    ASSERT_EQ(sweep.reason, "");
    std::istringstream input(sweep.files[0].text);
    if (sweep.files[0].name != "-") writeFile(output, sweep.files[0].text);
    const std::vector<Finding> findings = check(makePlan({{output}, {}, 0}, input));
    EXPECT_EQ(exitStatusOf(findings, true), 0) << output << "\n" << shown(findings);
  }
}

}  // namespace
}  // namespace marrowbench::ctl
