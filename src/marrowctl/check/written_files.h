#ifndef MARROWBENCH_MARROWCTL_CHECK_WRITTEN_FILES_H
#define MARROWBENCH_MARROWCTL_CHECK_WRITTEN_FILES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "marrowctl/check/lookalikes.h"
#include "marrowctl/check/survey.h"

namespace marrowbench::ctl {

/// Who writes a file.
struct Writer {
  /// Each client a file of its own, or all of them the same.
  static constexpr std::size_t kEveryHost = SIZE_MAX;

  const SurveyedTest* test = nullptr;  ///< the first that does
  std::size_t host = kEveryHost;       ///< of the named ones
  std::int32_t iterations = 0;         ///< the most of all tests with this name
};

/// The files that the tests so far write, by name. Names keep the marks of iteration and date, so
/// that thousands of iterations take one entry.
class WrittenFiles {
 public:
  explicit WrittenFiles(const Survey& theSurvey) : survey(theSurvey) {}

  /// Takes the destination of a test.
  ///
  /// @return the client whose file another one writes too by these names; nothing when each client
  ///         has its own
  std::optional<std::size_t> add(const SurveyedTest& test);

  /// Files that a client looks for, one in each iteration, and what is known of all of them.
  struct Sought {
    bool isNumbered = false;       ///< they have different names
    std::optional<Writer> family;  ///< who writes them by the same pattern
    std::optional<Writer> named;   ///< who writes them by the same name, with the same mark in it
    std::string name;              ///< where the family does not have all of them
    bool mayBeOthers = false;      ///< some may be written by other names
  };

  /// @param pattern     of the files that are looked for
  /// @param host        the named client that looks for them
  /// @param iterations  how many it looks for
  [[nodiscard]] Sought seek(const PathPattern& pattern, std::size_t host, std::int32_t iterations);

  /// The test that writes the file of an iteration, nothing when none does.
  [[nodiscard]] std::optional<Writer> writerOf(const Sought& sought, std::int32_t iteration) const;

 private:
  struct Family {
    Writer writer;
    std::optional<std::size_t> sharedHost;
  };

  std::optional<std::size_t> addNames(const SurveyedTest& test);
  [[nodiscard]] bool mayMeet(const std::string& name);
  [[nodiscard]] std::optional<Writer> byName(const std::string& name, std::int32_t iteration) const;
  [[nodiscard]] std::optional<Writer> byNumber(const std::string& name) const;

  const Survey& survey;
  std::unordered_map<std::string, Family> families;  // by pattern
  std::unordered_map<std::string, Writer> names;     // by pattern with the client's name filled in
  bool hasNumberedNames = false;
  Lookalikes lookalikes;
  std::vector<const std::string*> unlike;  // names that are not among the lookalikes yet
};

}  // namespace marrowbench::ctl

#endif
