#ifndef MARROWBENCH_MARROWCTL_FLEET_CONTROL_FOLDER_H
#define MARROWBENCH_MARROWCTL_FLEET_CONTROL_FOLDER_H

#include <string>
#include <string_view>

namespace marrowbench::ctl {

/// The folder on the share through which a run's clients and whoever watches them know of each
/// other: CONTROL/RUN. Only names; nothing is created.
struct ControlFolder {
  std::string control;  ///< as it was given; a folder on the share
  std::string run;      ///< name of the run

  /// CONTROL/RUN
  [[nodiscard]] std::string path() const;
  /// A file in it.
  [[nodiscard]] std::string file(std::string_view name) const;
  /// A path without the folder in front of it, as other machines know it; one elsewhere as it is.
  [[nodiscard]] std::string within(const std::string& whole) const;

  /// The settings file of a phase, counted from 1, that all clients wait for: RUN.bst, RUN-2.bst.
  [[nodiscard]] std::string settings(int phase = 1) const;
  /// Where the program leaves the done markers of a phase: _RUN_log.
  [[nodiscard]] std::string doneFolder(int phase = 1) const;

  /// What publishing a phase leaves for those that watch: published__RUN.
  [[nodiscard]] std::string published(int phase = 1) const;

  /// What a client leaves there while it waits, when it has ended, and what it printed.
  [[nodiscard]] std::string ready(std::string_view host) const;
  [[nodiscard]] std::string finished(std::string_view host) const;
  [[nodiscard]] std::string console(std::string_view host) const;
};

inline constexpr std::string_view kReadyPrefix = "ready__";
inline constexpr std::string_view kFinishedPrefix = "finished__";
inline constexpr std::string_view kConsolePrefix = "console__";
inline constexpr std::string_view kDonePrefix = "done__";

/// Why the folder on the share can't be used, with its path in front; empty: it is there.
[[nodiscard]] std::string problemOfShare(const ControlFolder& folder);

/// Makes the folder of the run, unless it is there, for all who may work in the control folder:
/// with the permissions of that, whatever the process's umask is. For a process with one thread.
/// @return errno of what failed
[[nodiscard]] int makeRunFolder(const ControlFolder& folder);

/// Why a run can't be called so; empty: it can. Its name is part of file names, of chain lines and
/// of commands: letters, digits, ".", "_" and "-", the first of them a letter or a digit.
[[nodiscard]] std::string problemOfRunName(std::string_view name);

}  // namespace marrowbench::ctl

#endif
