#ifndef MARROWBENCH_MARROWCTL_CHECK_SURVEY_H
#define MARROWBENCH_MARROWCTL_CHECK_SURVEY_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "marrowctl/plan/client_paths.h"
#include "marrowctl/plan/plan.h"

namespace marrowbench::ctl {

/// The fields of a test line, in their order: indices in PlannedLine::fields and kSettingsFields.
enum class Field : std::uint8_t {
  method,
  flush,
  preallocate,
  chunkWait,
  chunkSize,
  systemBuffer,
  fileSize,
  iterations,
  cacheMode,
  source,
  dest,
  log,
  table,
  markDone
};

[[nodiscard]] constexpr std::size_t indexOf(Field field) { return static_cast<std::size_t>(field); }

/// A test that is run, and its paths.
struct SurveyedTest {
  const PlannedFile* file = nullptr;
  const PlannedLine* line = nullptr;

  [[nodiscard]] const PlannedTest& test() const { return line->test; }
  [[nodiscard]] const PathPattern& source() const { return test().patterns.source; }
  [[nodiscard]] const PathPattern& dest() const { return test().patterns.dest; }
  [[nodiscard]] const PathPattern& log() const { return test().patterns.log; }
  [[nodiscard]] const PathPattern& table() const { return test().patterns.table; }
  /// The text of a field.
  [[nodiscard]] const std::string& text(Field field) const {
    return line->fields[indexOf(field)].text;
  }
  [[nodiscard]] bool isRepeated() const { return test().iterations > 0; }
  /// Something is read or written.
  [[nodiscard]] bool movesData() const { return isRepeated() && test().method != Method::system; }
  [[nodiscard]] bool writes() const { return movesData() && test().type != TestType::read; }
  [[nodiscard]] bool reads() const { return movesData() && test().type != TestType::write; }
  /// Rows are kept.
  [[nodiscard]] bool hasTable() const { return !text(Field::table).empty(); }
};

/// A plan with what all groups of findings ask for, found out once.
class Survey {
 public:
  /// @param thePlan  kept by reference
  explicit Survey(const Plan& thePlan);

  const Plan& plan;
  std::vector<SurveyedTest> tests;  ///< in the order of the plan

  /// The path for one of the named clients and an iteration: exactly as the program will use it.
  ///
  /// @param pattern  one of the test's own
  [[nodiscard]] std::string path(const SurveyedTest& test, const PathPattern& pattern,
                                 std::size_t host, std::int32_t iteration) const {
    return clients[host].path(*test.file, test.test(), pattern, iteration);
  }

  /// The name of a pattern with that of a client in the place of its mark.
  [[nodiscard]] std::string nameForHost(const PathPattern& pattern, std::size_t host) const {
    return filledIn(pattern.name, {plan.hosts[host], {}, {}});
  }

  /// How many of the named clients need a look of their own: one where the pattern names none.
  [[nodiscard]] std::size_t hostsToAsk(const PathPattern& pattern) const {
    return pattern.has(kHostMark) ? plan.hosts.size() : 1;
  }

 private:
  std::vector<ClientPaths> clients;  // the named ones
};

/// Iterations whose paths are looked at one by one: the first ones and the last, or one where the
/// pattern has no number of an iteration.
[[nodiscard]] std::vector<std::int32_t> iterationsToAsk(const SurveyedTest& test,
                                                        const PathPattern& pattern);

}  // namespace marrowbench::ctl

#endif
