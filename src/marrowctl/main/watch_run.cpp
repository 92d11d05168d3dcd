#include "marrowctl/main/watch_run.h"

#include <string>

#include "marrowctl/fleet/pace.h"
#include "marrowctl/fleet/run_watch.h"
#include "marrowctl/fleet/watch_text.h"
#include "marrowctl/main/publish_text.h"
#include "marrowctl/main/watch_display.h"
#include "marrowctl/support/interruption.h"
#include "support/clock.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int32_t kTickMs = 100;
// What was written last may reach this machine late.
constexpr int kLastLooks = 10;
constexpr int kSignalBase = 128;

class Watching {
 public:
  Watching(const WatchCommand& watchCommand, std::FILE* shownOn)
      : command(watchCommand), out(shownOn), watch(command.folder, command.wanted) {}

  Outcome run() {
    const int status = lookOn();
    std::string output, messages;
    if (!watch.problem().empty()) return impossible("fleet watch", watch.problem());
    if (out == stdout && std::ferror(out) != 0)
      return impossible("fleet watch", "the standard output can't be written");
    if (command.isJson) output = watchJson(watch.state());
    if (status == answerIsNo)
      messages = refusalText("fleet watch", "the run is not complete", lacks(watch.state()));
    return {status, output, messages};
  }

 private:
  // Returns the exit status.
  int lookOn() {
    WatchDisplay display(out);
    std::int64_t start = 0;
    nowMs(start);
    int looksLeft = kLastLooks;
    SparingPace pace;
    for (;;) {
      const bool isTimeUp = hasPassed(start);
      if (isTimeUp || looksLeft < kLastLooks) {
        watch.lookAtAll();
      } else {
        watch.look();
      }
      if (!watch.problem().empty()) return notDone;
      const RunState& state = watch.state();
      if (state.trouble.empty()) looksLeft = isOver(state) ? looksLeft - 1 : kLastLooks;
      const bool isEnd = isComplete(state) || isTimeUp || looksLeft == 0;
      display.show(state, isEnd);
      if (isEnd) return isComplete(state) ? done : answerIsNo;
      if (const int signal = sleepFor(pace.pauseMs()); signal != 0) return kSignalBase + signal;
    }
  }

  [[nodiscard]] bool hasPassed(std::int64_t start) const {
    std::int64_t now = 0;
    nowMs(now);
    return command.timeoutSeconds && now - start >= *command.timeoutSeconds * 1000;
  }

  // Returns the signal that ended it.
  [[nodiscard]] int sleepFor(std::int64_t milliseconds) const {
    for (std::int64_t slept = 0; slept < milliseconds; slept += kTickMs) {
      if (interruption.signal() != 0) break;
      sleepMs(kTickMs);
    }
    return interruption.signal();
  }

  const WatchCommand& command;
  std::FILE* const out;
  const Interruption interruption;
  RunWatch watch;
};

}  // namespace

Outcome watchRun(const WatchCommand& command, std::FILE* output) {
  return Watching(command, output).run();
}

}  // namespace marrowbench::ctl
