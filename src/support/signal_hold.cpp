#include "support/signal_hold.h"

#include <initializer_list>

namespace marrowbench {

SignalHold::SignalHold() noexcept {
  sigset_t interruptions{};
  (void)sigemptyset(&interruptions);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP}) {
    (void)sigaddset(&interruptions, signal);
  }
  (void)sigprocmask(SIG_BLOCK, &interruptions, &before);
}

SignalHold::~SignalHold() { (void)sigprocmask(SIG_SETMASK, &before, nullptr); }

void letWritesFail() noexcept {
  (void)signal(SIGPIPE, SIG_IGN);
  (void)signal(SIGXFSZ, SIG_IGN);
}

}  // namespace marrowbench
