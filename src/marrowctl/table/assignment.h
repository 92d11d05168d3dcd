#ifndef MARROWBENCH_MARROWCTL_TABLE_ASSIGNMENT_H
#define MARROWBENCH_MARROWCTL_TABLE_ASSIGNMENT_H

#include <unordered_map>
#include <vector>

#include "marrowctl/table/read_results.h"
#include "marrowctl/table/sites.h"

namespace marrowbench::ctl {

/// The name of a client that nothing names.
inline constexpr const char* kUnknownHost = "?";

/// Makes hosts and tests of the sites, and gives each row its series, its iteration and whether it
/// is judged. Without settings: a test is made of sites with the same parameters and paths.
void assignByPaths(ResultSet& set, const std::vector<Site>& sites, const ReadOptions& options);

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
