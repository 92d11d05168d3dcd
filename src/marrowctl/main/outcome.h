#ifndef MARROWBENCH_MARROWCTL_MAIN_OUTCOME_H
#define MARROWBENCH_MARROWCTL_MAIN_OUTCOME_H

#include <string>

#include "marrowctl/support/exit_status.h"

namespace marrowbench::ctl {

/// What a command leaves: its exit status and what is to be printed.
struct Outcome {
  int status = done;
  std::string output;    ///< data, for the standard output
  std::string messages;  ///< for the standard error
};

/// It could not be done: "marrowctl check: PROBLEM".
///
/// @param subcommand  empty: the program itself
[[nodiscard]] inline Outcome impossible(const std::string& subcommand, const std::string& problem) {
  return {notDone, "",
          "marrowctl" + (subcommand.empty() ? "" : " " + subcommand) + ": " + problem + "\n"};
}

/// Wrong usage: the problem, and where help is.
[[nodiscard]] inline Outcome wrongUsageOf(const std::string& subcommand,
                                          const std::string& problem) {
  const std::string program = "marrowctl" + (subcommand.empty() ? "" : " " + subcommand);
  return {wrongUsage, "", program + ": " + problem + "\nSee: " + program + " --help\n"};
}

}  // namespace marrowbench::ctl

#endif
