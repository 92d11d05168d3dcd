#include "marrowctl/fleet/muster.h"

#include <cstdint>
#include <cstring>
#include <optional>

#include "marrowctl/fleet/share_clock.h"
#include "marrowctl/fleet/share_trouble.h"
#include "marrowctl/support/exit_status.h"
#include "marrowctl/support/interruption.h"
#include "support/clock.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int32_t kTickMs = 100;
constexpr std::int64_t kLookMs = 1000;
// Detached clients are armed when their engine ends. What a network client remembers of the folder
// may be up to a minute old.
constexpr std::int64_t kSecondsBehindEngine = 90;
// Some of its clients may still be on their way.
constexpr std::int64_t kSecondsBehindFailure = 15;
constexpr std::int64_t kMsPerSecond = 1000;
constexpr int kSignalBase = 128;

std::int64_t now() {
  std::int64_t milliseconds = 0;
  nowMs(milliseconds);
  return milliseconds;
}

bool hasFailed(const ChildEnd& end) { return end.exitStatus != 0 || end.signal != 0; }

class Mustering {
 public:
  Mustering(const MusterOptions& musterOptions, RecipeProcess& recipeProcess)
      : options(musterOptions), engine(recipeProcess) {}

  MusterOutcome run(const std::function<void(const MusterLook&)>& looked) {
    ClockReading reading;
    const std::string& control = options.recipe.folder.control;
    if (const int code = readShareClock(control, reading); code != 0)
      return {notDone, {control + ": " + std::strerror(code)}, 0};
    const std::string problem = engine.start(options.engine, options.recipe);
    if (!problem.empty()) return {notDone, {problem}, 0};
    const ShareTime share(reading);
    const std::int64_t startMs = now();
    for (;;) {
      // Asked first, so that clients which it has armed last are seen.
      noteEnd();
      Roll roll;
      const int code = callRoll(options.recipe.folder, share, roll);
      const std::string failure =
          code == 0 ? "" : options.recipe.folder.path() + ": " + std::strerror(code);
      if (code == 0) ready = roll.ready.size();
      if (trouble.isLasting(code)) return {notDone, {failure}, ready};
      looked({ready, (now() - startMs) / kMsPerSecond, !endMs, failure});
      std::vector<std::string> missing = absences(roll, options.wanted);
      if (code == 0 && missing.empty()) return {done, {}, ready};
      if (code == 0 && isTimeUp()) return {answerIsNo, std::move(missing), ready};
      if (const int signal = pause(); signal != 0) return {kSignalBase + signal, {}, ready};
    }
  }

 private:
  void noteEnd() {
    if (endMs) return;
    const std::optional<ChildEnd> end = engine.end();
    if (!end) return;
    endMs = now();
    patience = hasFailed(*end) ? kSecondsBehindFailure : kSecondsBehindEngine;
  }

  [[nodiscard]] bool isTimeUp() const { return endMs && now() - *endMs >= patience * kMsPerSecond; }

  // Returns the signal that ends it.
  [[nodiscard]] int pause() const {
    for (std::int64_t slept = 0; slept < kLookMs && interruption.signal() == 0; slept += kTickMs)
      sleepMs(kTickMs);
    return interruption.signal();
  }

  const MusterOptions& options;
  RecipeProcess& engine;
  const Interruption interruption;
  std::optional<std::int64_t> endMs;  // when the engine was seen to have ended
  std::int64_t patience = 0;          // seconds behind that
  ShareTrouble trouble;
  std::size_t ready = 0;  // clients that were, when the folder was read last
};

}  // namespace

MusterOutcome muster(const MusterOptions& options, RecipeProcess& engine,
                     const std::function<void(const MusterLook&)>& looked) {
  return Mustering(options, engine).run(looked);
}

}  // namespace marrowbench::ctl
