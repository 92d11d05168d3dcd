#ifndef MARROWBENCH_MARROWCTL_CHECK_FINDING_LIST_H
#define MARROWBENCH_MARROWCTL_CHECK_FINDING_LIST_H

#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/check/finding.h"
#include "marrowctl/check/survey.h"

namespace marrowbench::ctl {

/// What a finding says: what happens, and what to write instead.
struct Advice {
  std::string message;
  std::string remedy;
};

/// Collects findings. Every severity is the kind's usual one; what is returned may be made milder.
class FindingList {
 public:
  std::vector<Finding> all;

  /// About a file as a whole.
  Finding& onFile(std::string_view name, const PlannedFile& file, Advice advice);
  /// About a place in a line, counted from 1, or its first character.
  Finding& onLine(std::string_view name, const PlannedFile& file, const PlannedLine& line,
                  int column, Advice advice);
  Finding& onLine(std::string_view name, const PlannedFile& file, const PlannedLine& line,
                  Advice advice);
  /// About a field of a test line.
  Finding& onField(std::string_view name, const PlannedFile& file, const PlannedLine& line,
                   Field field, Advice advice);
  Finding& onField(std::string_view name, const SurveyedTest& test, Field field, Advice advice) {
    return onField(name, *test.file, *test.line, field, std::move(advice));
  }
};

/// Column of the first character that is no blank.
[[nodiscard]] int firstColumnOf(std::string_view line);

/// What trimming removes at the ends of lines and fields.
[[nodiscard]] std::string_view trimmedText(std::string_view text);

/// A path or a field in a message: repaired and in quotes, a long one cut in its middle.
[[nodiscard]] std::string quoted(std::string_view text);

}  // namespace marrowbench::ctl

#endif
