#include "marrowctl/support/interruption.h"

#include <cstddef>

namespace marrowbench::ctl {
namespace {

// A handler reaches nothing but what is global.
// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables)
volatile std::sig_atomic_t lastSignal = 0;
volatile std::sig_atomic_t signals = 0;
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

extern "C" void noteSignal(int number) {
  lastSignal = number;
  signals = signals + 1;
}

}  // namespace

Interruption::Interruption() {
  lastSignal = 0;
  signals = 0;
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    (void)sigaction(kSignals[i], nullptr, &before[i]);
    if (before[i].sa_handler == SIG_IGN) continue;
    // Without SA_RESTART, so that a sleep ends.
    struct sigaction action {};
    action.sa_handler = noteSignal;
    (void)sigemptyset(&action.sa_mask);
    (void)sigaction(kSignals[i], &action, nullptr);
  }
}

Interruption::~Interruption() {
  for (std::size_t i = 0; i < kSignals.size(); ++i)
    (void)sigaction(kSignals[i], &before[i], nullptr);
}

int Interruption::signal() const { return lastSignal; }
int Interruption::count() const { return signals; }

}  // namespace marrowbench::ctl
