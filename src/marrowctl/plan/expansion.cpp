#include "marrowctl/plan/expansion.h"

#include "marrowctl/plan/client_paths.h"
#include "marrowctl/plan/template_expander.h"
#include "paths/done_path.h"
#include "paths/host_name.h"

namespace marrowbench::ctl {

ExpandedPaths expandPaths(const PlannedFile& file, const PlannedTest& test, const std::string& host,
                          std::int32_t iteration) {
  const ClientPaths paths(host);
  const auto path = [&](const PathPattern& pattern) {
    return paths.path(file, test, pattern, iteration);
  };
  return {path(test.patterns.source), path(test.patterns.dest), path(test.patterns.log),
          path(test.patterns.table)};
}

std::string markerOf(const PlannedFile& file, const std::string& host) {
  return std::string(doneFileOf(folderPathOf(file.path), hostNameFrom(host)));
}

bool holds(const std::string& pathTemplate, const std::string& placeholder) {
  return findIgnoreCase(pathTemplate, placeholder) >= 0;
}

}  // namespace marrowbench::ctl
