#ifndef MARROWBENCH_MARROWCTL_SUPPORT_EXIT_STATUS_H
#define MARROWBENCH_MARROWCTL_SUPPORT_EXIT_STATUS_H

namespace marrowbench::ctl {

/// Exit statuses of every subcommand. One that a signal ended has 128 and the signal's number.
enum ExitStatus : int {
  done = 0,         ///< done, and clean
  answerIsNo = 1,   ///< done, and the answer is "no": warnings under --strict, say
  notDone = 2,      ///< it could not be done: unreadable input, errors in a settings file
  isSlower = 3,     ///< a comparison found a loss beyond the limit
  wrongUsage = 64,  ///< of the command line
};

}  // namespace marrowbench::ctl

#endif
