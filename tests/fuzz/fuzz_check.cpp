// The bytes of settings files that may chain to each other, through the plan and every answer of
// check.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/sound.h"
#include "helpers/temp_folder.h"
#include "marrowctl/check/check.h"
#include "marrowctl/check/output.h"
#include "marrowctl/plan/expansion.h"
#include "marrowctl/plan/make_plan.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

using marrowbench::test::expect;

// Between the files of an input.
constexpr char kNextFile = '\x1D';
constexpr std::array kChained = {"n.bst", "n-2.bst"};
// More of a line is never shown.
constexpr int kMostColumns = 1101;

const std::vector<std::string>& someHosts(FuzzedDataProvider& input) {
  static const std::vector<std::vector<std::string>> all = {
      {},
      {"pc1"},
      {"pc", "pc1", "pc12"},
      {"memory", "x.y", ".x"},
      {"a[iter]", "a b", std::string(90, 'h')}};
  return all.at(input.ConsumeIntegralInRange<std::size_t>(0, all.size() - 1));
}

// Files behind the first one lie in the current folder, where chains without a folder lead.
Plan planOf(FuzzedDataProvider& input) {
  PlanOptions options;
  options.hosts = someHosts(input);
  options.clients = input.PickValueInArray<std::int64_t>({0, 1, 2, 41, 1'000'000'000});
  const std::string name =
      input.PickValueInArray<const char*>({"t.bst", "-", "./t_init-12.bst", "[iter].bst", "t"});
  options.files = {name};
  std::istringstream contents(input.ConsumeRemainingBytesAsString());
  std::string content;
  std::getline(contents, content, kNextFile);
  std::istringstream standardInput(content);
  if (name != "-") test::writeFile(name.c_str(), content);
  for (const char* const chained : kChained) {
    std::getline(contents, content, kNextFile);
    test::writeFile(chained, contents ? content : "");
  }
  return makePlan(options, standardInput);
}

bool holdsDate(const PlannedTest& test) {
  return holds(test.source + test.dest + test.log + test.table, "date");
}

// What is made of patterns is what the templates expand to.
void expectSamePaths(const PlannedFile& file, const PlannedTest& test, const std::string& host,
                     std::int32_t iteration) {
  PlannedTest inFull = test;
  inFull.patterns = {};
  const ExpandedPaths paths = expandPaths(file, test, host, iteration);
  const ExpandedPaths expanded = expandPaths(file, inFull, host, iteration);
  expect(paths.source == expanded.source && paths.dest == expanded.dest);
  expect(paths.log == expanded.log && paths.table == expanded.table);
}

void expectSound(const Plan& plan) {
  for (const PlannedFile& file : plan.files) {
    for (const PlannedLine& line : file.lines) {
      // The date may change meanwhile.
      if (line.kind != LineKind::test || holdsDate(line.test)) continue;
      for (const std::string& host : plan.hosts) expectSamePaths(file, line.test, host, 0);
      expectSamePaths(file, line.test, plan.hosts.front(), line.test.iterations - 1);
    }
  }
}

void expectSound(const Totals& totals) {
  for (const std::int64_t sum :
       {totals.clients, totals.rowsPerClient, totals.rows, totals.bytesWritten, totals.bytesRead,
        totals.filesLeft, totals.pauseMs, totals.pauseSeconds, totals.memoryBytes}) {
    expect(sum >= 0);
  }
}

void expectSound(const std::vector<Finding>& findings) {
  for (const Finding& finding : findings) {
    expect(!finding.message.empty() && !finding.remedy.empty());
    expect(finding.line.has_value() == finding.column.has_value());
    expect(finding.line.value_or(1) >= 1 && finding.column.value_or(1) >= 1);
    expect(finding.column.value_or(1) <= kMostColumns);
  }
}

// UTF-8, of which nothing but line feeds tells a terminal what to do.
void expectPrintable(const std::string& text) {
  std::string lines = text;
  std::erase(lines, '\n');
  expect(printable(lines) == lines);
}

void expectSoundText(const Plan& plan, const Totals& totals, const std::vector<Finding>& findings,
                     const TextStyle& style) {
  const std::string text = checkText(plan, totals, findings, style);
  if (!style.hasColour) expectPrintable(text);
  expectPrintable(checkSummary(totals, findings, {}));
  const std::string gcc = checkGcc(findings);
  expectPrintable(gcc);
  expect(std::count(gcc.begin(), gcc.end(), '\n') == std::ssize(findings));
}

void expectSoundJson(const Plan& plan, const Totals& totals, const std::vector<Finding>& findings) {
  const auto document =
      nlohmann::json::parse(checkJson(plan, totals, findings), nullptr, /*allow_exceptions=*/false);
  expect(!document.is_discarded());
  expect(document["files"].size() == plan.files.size());
  expect(document["findings"].size() == findings.size());
  expect(document["totals"]["rows"] == totals.rows);
}

}  // namespace
}  // namespace marrowbench::ctl

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace marrowbench::ctl;
  const marrowbench::test::WorkingFolder folder;
  FuzzedDataProvider input(data, size);
  const TextStyle style{input.ConsumeBool(), input.PickValueInArray({1, 7, 40, 100})};
  const Plan plan = planOf(input);
  const Totals totals = totalsOf(plan);
  const std::vector<Finding> findings = check(plan, totals);
  expectSound(plan);
  expectSound(totals);
  expectSound(findings);
  expectSoundText(plan, totals, findings, style);
  expectSoundJson(plan, totals, findings);
  return 0;
}
