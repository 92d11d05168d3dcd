#ifndef MARROWBENCH_MARROWCTL_TABLE_ASSIGNMENT_H
#define MARROWBENCH_MARROWCTL_TABLE_ASSIGNMENT_H

#include <unordered_map>
#include <vector>

#include "marrowctl/table/read_results.h"
#include "marrowctl/table/settings_lines.h"
#include "marrowctl/table/sites.h"

namespace marrowbench::ctl {

/// The name of a client that nothing names.
inline constexpr const char* kUnknownHost = "?";

/// Makes hosts and tests of the sites, and gives each row its series, its iteration and whether it
/// is judged. Without settings: a test is made of sites with the same parameters and paths.
void assignByPaths(ResultSet& set, const std::vector<Site>& sites, const ReadOptions& options);

/// The same with the lines of settings files as tests; rows that fit none of them make tests of
/// their own.
///
/// @param lines  for each site those that its rows can be of
void assignBySettings(ResultSet& set, const std::vector<Site>& sites, const SettingsTests& settings,
                      const std::vector<LineNumbers>& lines, const ReadOptions& options);

/// The tests that sites with rows at `from` or later make by their parameters and paths are put
/// behind those that are there. @return for each site its test; kNone where it has none
[[nodiscard]] std::vector<std::uint32_t> takeTests(ResultSet& set, const std::vector<Site>& sites,
                                                   double from);

/// The hosts of the sites in the order of their names, numbers in them by their value.
/// @return for each site the index of its host
[[nodiscard]] std::vector<std::uint32_t> takeHosts(ResultSet& set, const std::vector<Site>& sites);

/// Makes series of pairs of host and test.
class SeriesMaker {
 public:
  explicit SeriesMaker(std::vector<Series>& series) : made(series) {}
  [[nodiscard]] std::uint32_t seriesOf(std::uint32_t host, std::uint32_t test);

 private:
  std::vector<Series>& made;
  std::unordered_map<std::uint64_t, std::uint32_t> known;
};

}  // namespace marrowbench::ctl

#endif
