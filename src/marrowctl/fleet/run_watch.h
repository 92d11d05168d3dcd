#ifndef MARROWBENCH_MARROWCTL_FLEET_RUN_WATCH_H
#define MARROWBENCH_MARROWCTL_FLEET_RUN_WATCH_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "marrowctl/fleet/control_folder.h"
#include "marrowctl/fleet/folder_names.h"
#include "marrowctl/fleet/published_note.h"
#include "marrowctl/fleet/roll_call.h"
#include "marrowctl/fleet/row_owners.h"
#include "marrowctl/fleet/run_state.h"
#include "marrowctl/fleet/run_tables.h"
#include "marrowctl/fleet/share_clock.h"
#include "marrowctl/fleet/share_trouble.h"
#include "marrowctl/plan/plan.h"

namespace marrowbench::ctl {

/// Looks at a run from outside, by what its clients leave on the share, and changes nothing there
/// but for a file that tells the share's time.
class RunWatch {
 public:
  /// @param wantedClients  that there should be, as far as that is known; others count as well
  RunWatch(ControlFolder runFolder, const Wanted& wantedClients);

  /// Looks once. Each folder is read once, each byte of a table once in all; of thousands of tables
  /// and ready files most are left to the next calls.
  void look() { lookAt(kFilesPerLook); }

  /// The same with nothing left.
  void lookAtAll() { lookAt(SIZE_MAX); }

  [[nodiscard]] const RunState& state() const { return seen; }

  /// Why nothing can be seen at all, and no longer will be; empty: it can, or what hinders it may
  /// pass, and the state tells it.
  [[nodiscard]] const std::string& problem() const { return trouble; }

 private:
  static constexpr std::size_t kFilesPerLook = 200;

  void lookAt(std::size_t mostFiles);
  void readClock();
  [[nodiscard]] bool readFolder();
  void takeNames(const std::vector<std::string>& names);
  void readFinished(const std::string& host);
  [[nodiscard]] bool isStranger(const std::string& host, const std::string& file,
                                std::int64_t leastMs);
  [[nodiscard]] bool takesPart(const WatchedClient& client) const;
  void forgetOthers();
  [[nodiscard]] bool isPlanWanting() const;
  void readPlan();
  void readPhase();
  void takeNotes();
  void takeNote(const PublishedNote& note);
  void addTables();
  void readMarkers(const PlannedFile& file);
  void readTouches(std::size_t most);
  void followTables(std::size_t most);
  void takeRow(const RowCells& cells, const std::string& table);
  std::size_t indexOf(const std::string& host);
  void takeStock();

  const ControlFolder folder;
  const std::int64_t wantedClients;
  RunState seen;
  std::string trouble;
  ShareTrouble shareTrouble;
  FolderListings folders;
  std::optional<ShareTime> share;
  std::int64_t clockReadMs = 0;

  std::unordered_map<std::string, std::size_t> indices;  // of clients, by their names
  std::unordered_set<std::string> invited;               // wanted, or ready when it was published
  std::unordered_set<std::string> strangers;             // files of clients of earlier runs
  std::set<std::string> readyHosts;                      // whose ready file is there
  std::set<std::string> finishedHosts;                   // whose finished file is there

  Plan plan;
  RowOwners owners;
  ClockSpan clocks;
  std::unordered_set<std::string> freshMarkers;
  RunTables tables;
  std::size_t clientsOfTables = 0;  // for so many the tables are known
  std::size_t nextReady = 0;        // where the next look goes on
};

}  // namespace marrowbench::ctl

#endif
