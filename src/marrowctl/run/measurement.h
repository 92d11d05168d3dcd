#ifndef MARROWBENCH_MARROWCTL_RUN_MEASUREMENT_H
#define MARROWBENCH_MARROWCTL_RUN_MEASUREMENT_H

#include <functional>
#include <string>

#include "marrowctl/run/console_file.h"
#include "marrowctl/run/console_follower.h"
#include "marrowctl/run/run_progress.h"
#include "marrowctl/support/child_process.h"
#include "marrowctl/support/interruption.h"
#include "marrowctl/support/progress_line.h"

namespace marrowbench::ctl {

/// How a measurement ended.
struct MeasurementEnd {
  ChildEnd program;        ///< how the program ended
  int signal = 0;          ///< that was sent to this program; 0: none
  bool isRefused = false;  ///< it was ended because its settings file is no good
  pid_t leftBehind = 0;    ///< it has not ended: a second signal came before; 0: it has
};

/// Runs the program and shows how far it is.
class Measurement {
 public:
  /// Called when a settings file is there that had to be waited for: says whether it is good.
  using FileArrived = std::function<bool()>;

  /// @param runProgress   kept by the caller as long as this is used
  /// @param progressLine  the same
  Measurement(RunProgress& runProgress, ProgressLine& progressLine, FileArrived arrived)
      : progress(runProgress), line(progressLine), fileArrived(std::move(arrived)) {}

  /// @param console  takes what the program prints
  /// @return errno of what failed; 0: it was started, and has ended
  [[nodiscard]] int run(const std::string& program, const std::string& settingsFile,
                        ConsoleFile& console);

  [[nodiscard]] const MeasurementEnd& end() const { return outcome; }
  [[nodiscard]] const ConsoleFollower& console() const { return follower; }

 private:
  void follow(ConsoleFile& console);
  void obey(const Interruption& interruption);
  void lookAtFile();
  void show();
  [[nodiscard]] bool isLeft() const { return outcome.leftBehind != 0; }

  RunProgress& progress;
  ProgressLine& line;
  const FileArrived fileArrived;
  ChildProcess child;
  ConsoleFollower follower;
  MeasurementEnd outcome;
  RunPhase shownPhase = RunPhase::starting;
  std::size_t filesLookedAt = 0;
  int signalsObeyed = 0;
};

}  // namespace marrowbench::ctl

#endif
