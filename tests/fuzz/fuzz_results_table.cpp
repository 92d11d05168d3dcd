// The bytes of a results table, through reading and judging to all outputs.

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "fuzz/sound.h"
#include "marrowctl/report/compare.h"
#include "marrowctl/report/make_report.h"
#include "marrowctl/report/output.h"
#include "marrowctl/table/read_results.h"

namespace marrowbench::ctl {
namespace {

// A file in memory: no input that ends the fuzzer leaves anything behind.
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* data, std::size_t size)
      : descriptor(memfd_create("results.csv", 0)) {
    test::expect(write(descriptor, data, size) == static_cast<ssize_t>(size));
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { (void)close(descriptor); }

  [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

 private:
  int descriptor;
};

void expectSound(const Report& report) {
  const ResultSet& set = report.results;
  test::expect(set.judgedRows <= set.readRows && set.runs.found >= 1);
  std::int64_t rows = 0;
  for (const TestReport& test : report.tests) {
    rows += test.rows;
    test::expect(!test.overlap || (*test.overlap >= 0 && *test.overlap <= 1));
    test::expect(test.errors <= test.rows && test.nullData <= test.rows);
  }
  test::expect(rows == static_cast<std::int64_t>(set.judgedRows) && rows == report.rows.read);
}

void judge(const ReadOptions& options) {
  ReadOutcome outcome = readResults(options);
  if (!outcome.problem.empty()) return;
  test::expect(outcome.set.readRows > 0);
  (void)compareJson(compare(outcome.set, outcome.set));
  const Report report = makeReport(std::move(outcome.set), {});
  expectSound(report);
  test::expect(reportJson(report).ends_with("}\n"));
  test::expect(!reportText(report, {}).empty());
  test::expect(writeTidy(report, [](std::string_view text) { return !text.empty(); }));
}

}  // namespace
}  // namespace marrowbench::ctl

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace marrowbench::ctl;
  const MemoryFile file(data, size);
  ReadOptions options;
  options.tables = {file.path()};
  judge(options);
  options.allRuns = true;
  options.hosts = {"c01", "c02"};
  judge(options);
  return 0;
}
