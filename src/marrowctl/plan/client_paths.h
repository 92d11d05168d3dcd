#ifndef MARROWBENCH_MARROWCTL_PLAN_CLIENT_PATHS_H
#define MARROWBENCH_MARROWCTL_PLAN_CLIENT_PATHS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "marrowctl/plan/plan.h"
#include "support/fixed_string.h"

namespace marrowbench::ctl {

/// The paths of tests on one client, as the program will use them there: empty for memory, "[temp]"
/// this machine's. They are made of the patterns; where these are not exact, or the client's name
/// is an odd one, the template is expanded, with the date of now.
class ClientPaths {
 public:
  /// @param rawHost  name of the client, cut at its first "." as the program does
  explicit ClientPaths(std::string_view rawHost);

  /// @param pattern    one of the test's own
  /// @param iteration  from 0
  [[nodiscard]] std::string path(const PlannedFile& file, const PlannedTest& test,
                                 const PathPattern& pattern, std::int32_t iteration) const {
    return made(file, test, pattern, iteration);
  }

  /// The paths of all iterations: kIterationMark stands in the place of their number.
  [[nodiscard]] std::string family(const PlannedFile& file, const PlannedTest& test,
                                   const PathPattern& pattern) const {
    return made(file, test, pattern, std::nullopt);
  }

 private:
  using Iteration = std::optional<std::int32_t>;  // nothing leaves the mark

  [[nodiscard]] std::string made(const PlannedFile& file, const PlannedTest& test,
                                 const PathPattern& pattern, Iteration iteration) const;
  [[nodiscard]] std::string expanded(const PlannedFile& file, const PlannedTest& test,
                                     const PathPattern& pattern, Iteration iteration) const;

  FixedString host;
  bool hostIsPlain;
};

}  // namespace marrowbench::ctl

#endif
