#ifndef MARROWBENCH_MARROWCTL_CHECK_SURVEY_H
#define MARROWBENCH_MARROWCTL_CHECK_SURVEY_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

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

/// A path as it is used, with a mark where the client's name, the iteration and the date stand: two
/// that are alike name the same files.
struct PathPattern {
  static constexpr char kHost = '\x01';
  static constexpr char kIteration = '\x02';
  static constexpr char kDate = '\x03';

  std::string text;
  bool isExact = true;  ///< not cut: putting names into the marks gives the path

  [[nodiscard]] bool has(char mark) const { return text.find(mark) != std::string::npos; }
  [[nodiscard]] bool isEmpty() const { return text.empty(); }
};

/// A test that is run, and its paths.
struct SurveyedTest {
  const PlannedFile* file = nullptr;
  const PlannedLine* line = nullptr;
  PathPattern source, dest, log, table;  ///< empty source or dest: memory

  [[nodiscard]] const PlannedTest& test() const { return line->test; }
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
  std::vector<std::string> hosts;   ///< as the program calls the named clients
  std::vector<SurveyedTest> tests;  ///< in the order of the plan

  /// The path for one client and iteration: exactly as the program will use it.
  [[nodiscard]] std::string path(const SurveyedTest& test, const PathPattern& pattern,
                                 std::size_t host, std::int32_t iteration) const;

  /// The pattern with the name of a client in the place of its mark.
  [[nodiscard]] std::string forHost(const PathPattern& pattern, std::size_t host) const;

  /// How many of the named clients need a look of their own: one where the pattern names none.
  [[nodiscard]] std::size_t hostsToAsk(const PathPattern& pattern) const {
    return pattern.has(PathPattern::kHost) ? hosts.size() : 1;
  }

 private:
  std::vector<bool> isPlainHost;  // putting the name into a pattern is all that there is to do
  std::string date;               // of now, the same in every answer
};

/// The text with every `mark` replaced.
[[nodiscard]] std::string replacedMark(std::string_view text, char mark, std::string_view by);

}  // namespace marrowbench::ctl

#endif
