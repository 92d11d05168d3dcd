#ifndef MARROWBENCH_MARROWCTL_FLEET_PUBLICATION_H
#define MARROWBENCH_MARROWCTL_FLEET_PUBLICATION_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "marrowctl/fleet/control_folder.h"
#include "marrowctl/plan/plan.h"

namespace marrowbench::ctl {

/// A settings file and what it chains to, as they will be in the folder of a run.
struct Publication {
  /// Texts by the paths of the files that are to be written there.
  std::map<std::string, std::string> texts;
  Plan plan;  ///< of the files at their places
  /// What a person should know of the new place, one sentence each.
  std::vector<std::string> differences;
  std::string problem;  ///< why it can't be published; empty: it can
};

struct PublicationOptions {
  std::string file;  ///< the settings file as it lies somewhere; "-": the standard input
  ControlFolder folder;
  int phase = 1;
  bool hasNext = false;            ///< another phase follows: the last line chains to it
  std::vector<std::string> hosts;  ///< clients that are there
  std::int64_t clients = 0;        ///< that there will be; 0: as many as hosts
};

/// Reads the files and plans them at their places; writes nothing.
[[nodiscard]] Publication preparePublication(const PublicationOptions& options);

}  // namespace marrowbench::ctl

#endif
