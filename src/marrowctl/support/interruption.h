#ifndef MARROWBENCH_MARROWCTL_SUPPORT_INTERRUPTION_H
#define MARROWBENCH_MARROWCTL_SUPPORT_INTERRUPTION_H

#include <array>
#include <csignal>

namespace marrowbench::ctl {

/// Takes note of SIGINT, SIGTERM and SIGHUP while it lives, which then do not end the program: what
/// it has started is ended first, and what is there is told. One that is ignored, as under nohup,
/// stays so. There is one at a time.
class Interruption {
 public:
  Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  ~Interruption();

  /// Number of the signal that came last; 0: none came. A sleep ends when one comes.
  [[nodiscard]] int signal() const;
  /// How many came.
  [[nodiscard]] int count() const;

  static constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

 private:
  std::array<struct sigaction, kSignals.size()> before{};
};

}  // namespace marrowbench::ctl

#endif
