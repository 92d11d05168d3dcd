#ifndef MARROWBENCH_SUPPORT_SIGNAL_HOLD_H
#define MARROWBENCH_SUPPORT_SIGNAL_HOLD_H

#include <csignal>

namespace marrowbench {

/// Holds back SIGINT, SIGTERM, SIGHUP, SIGQUIT and SIGTSTP while it lives. One that came meanwhile
/// takes effect at its end, the way it would have: it ends or stops the process, unless it is
/// ignored.
class SignalHold {
 public:
  SignalHold() noexcept;
  SignalHold(const SignalHold&) = delete;
  SignalHold& operator=(const SignalHold&) = delete;
  ~SignalHold();

 private:
  sigset_t before{};
};

/// Writing to a closed console, to a pipe whose reader is gone or beyond the limit on file sizes
/// fails from here on and does not end the process.
void letWritesFail() noexcept;

}  // namespace marrowbench

#endif
