#include "marrowctl/run/measurement.h"

#include "support/clock.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int32_t kPauseMs = 200;

}  // namespace

int Measurement::run(const std::string& program, const std::string& settingsFile,
                     ConsoleFile& console) {
  const Interruption interruption;
  if (const int code = child.start({program, {settingsFile}, console.descriptor()}); code != 0)
    return code;
  for (;;) {
    // Asked first, so that what it printed last is read.
    const std::optional<ChildEnd> end = child.end();
    follow(console);
    if (end) {
      outcome.program = *end;
      outcome.signal = interruption.signal();
      break;
    }
    obey(interruption);
    if (isLeft()) break;
    lookAtFile();
    show();
    sleepMs(kPauseMs);
  }
  line.clear();
  return 0;
}

void Measurement::follow(ConsoleFile& console) {
  for (std::string text = console.more(); !text.empty(); text = console.more()) follower.take(text);
  std::int64_t now = 0;
  nowMs(now);
  progress.note(follower, now);
}

// The first signal ends the program, which may take until its row is written; a second one leaves
// a program behind that cannot end, because its share does not answer, say.
void Measurement::obey(const Interruption& interruption) {
  if (interruption.count() == signalsObeyed) return;
  outcome.signal = interruption.signal();
  child.send(outcome.signal);
  if (signalsObeyed > 0) outcome.leftBehind = child.id();
  signalsObeyed = interruption.count();
  line.show("ending marrowbench");
}

// In the time that it waits for its minute.
void Measurement::lookAtFile() {
  const bool isWaiting = follower.phase() == RunPhase::waitingForMinute;
  if (!isWaiting || filesLookedAt == follower.files().size()) return;
  filesLookedAt = follower.files().size();
  if (fileArrived()) return;
  outcome.isRefused = true;
  child.send(SIGTERM);
}

void Measurement::show() {
  if (outcome.signal != 0 || outcome.isRefused) return;
  const bool isNews = follower.phase() != shownPhase;
  if (!isNews && !line.isDue()) return;
  std::int64_t now = 0;
  nowMs(now);
  const std::string text = progress.text(now);
  if (text.empty()) return;
  shownPhase = follower.phase();
  line.show(text);
}

}  // namespace marrowbench::ctl
