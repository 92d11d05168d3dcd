#include "marrowctl/fleet/arm.h"

#include <csignal>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "marrowctl/fleet/console_copy.h"
#include "marrowctl/fleet/finished_note.h"
#include "marrowctl/fleet/guard.h"
#include "marrowctl/fleet/pace.h"
#include "marrowctl/fleet/ready_file.h"
#include "marrowctl/fleet/stopwatch.h"
#include "marrowctl/report/output.h"
#include "marrowctl/support/child_process.h"
#include "marrowctl/support/exit_status.h"
#include "marrowctl/support/interruption.h"
#include "marrowctl/support/units.h"
#include "support/clock.h"
#include "support/file_status.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kTickMs = 250;
constexpr std::int64_t kListSeconds = 1;
constexpr std::int64_t kConfirmSeconds = 1;
// A program that is told to end waits until it has given its lock back. One whose file system does
// not answer ends when that does.
constexpr std::int64_t kEndSeconds = 20;
constexpr std::int64_t kKillSeconds = 5;
constexpr int kSignalBase = 128;
// Of the program's own paths; the longest that it makes of it is a done marker's.
constexpr std::size_t kLongestPath = 500;

std::string problemOfFolder(const ControlFolder& folder) {
  if (std::string problem = problemOfShare(folder); !problem.empty()) return problem;
  const int code = makeRunFolder(folder);
  return code == 0 ? "" : folder.path() + ": " + std::strerror(code);
}

// So that clients of shares ask the server again whether a file is there: most of them remember
// that it was not, and forget it when the folder has changed, which they find out when it is
// opened.
void look(const std::string& folder) {
  std::error_code ignored;
  const fs::directory_iterator first(folder, ignored);
}

class ArmedClient {
 public:
  ArmedClient(const ArmOptions& armOptions, const ArmListener& armListener)
      : options(armOptions),
        listener(armListener),
        note(noteOfThisMachine(options.folder, options.version)),
        ready(options.folder, note),
        console(options.folder.console(note.host)) {}

  ArmOutcome run() {
    if (ArmOutcome problem = prepare(); problem.status != done) return problem;
    const Claim claim = ready.claim({[this] { return interruption.signal() != 0; }, listener.say});
    if (claim.kind != Claim::Kind::held) return outcomeOf(claim);
    ArmOutcome outcome = start();
    if (outcome.status == done) outcome = accompany();
    return finish(std::move(outcome));
  }

 private:
  ArmOutcome prepare() {
    if (std::string problem = problemOfFolder(options.folder); !problem.empty())
      return {notDone, problem};
    settings = options.folder.settings();
    if (options.folder.doneFolder().size() + note.host.size() + sizeof "-999/done__" >
        kLongestPath) {
      return {notDone, settings + ": the path is too long for the program, which cuts paths at " +
                           std::to_string(kLongestPath) + " characters"};
    }
    if (note.host == "NoHostNameSet_") {
      listener.say(
          "this machine has no host name of its own, or is called localhost: the program "
          "calls it NoHostNameSet_, as it does every such client");
    }
    if (fileStatus(settings.c_str())) {
      return {answerIsNo, settings +
                              " is there already: the run has begun, and a client that "
                              "starts now would not start with the others. Give a new run "
                              "a new name, or remove what is left of the old one."};
    }
    return {};
  }

  ArmOutcome start() {
    if (const int code = console.open(); code != 0)
      return {notDone, std::string("the temporary folder: ") + std::strerror(code)};
    if (const int code = program.start({options.program, {settings}, console.descriptor()});
        code != 0) {
      return {notDone, options.program + ": " + std::strerror(code) +
                           ". Where is marrowbench? --program PATH tells."};
    }
    if (const int code = guard.start(program.id()); code != 0)
      return {notDone, std::string("a process can't be started: ") + std::strerror(code)};
    return {};
  }

  // Until the program has ended.
  ArmOutcome accompany() {
    Pace listing(kListSeconds), touching(kConfirmSeconds), saving(kTouchSeconds);
    for (;;) {
      follow();
      if (const auto end = program.end()) return outcomeOf(*end);
      if (const int signal = interruption.signal(); signal != 0)
        return stopped({kSignalBase + signal, std::string("ended by ") + strsignal(signal)});
      if (listing.isDue() && isWaiting()) look(options.folder.path());
      if (touching.isDue()) {
        const ArmOutcome lost = touch();
        if (lost.status != done) return stopped(lost);
        touching.slowDown(kTouchSeconds);
      }
      if (saving.isDue()) save();
      if (hasWaitedTooLong()) {
        return stopped({answerIsNo, "gave up after " + shownDuration(*options.giveUpSeconds) +
                                        ": " + console.awaited() + " did not come"});
      }
      sleepMs(kTickMs);
    }
  }

  [[nodiscard]] bool isWaiting() const { return !console.awaited().empty(); }

  void follow() {
    const std::string before = console.awaited();
    for (;;) {
      const std::string_view text = console.follow();
      if (text.empty()) break;
      listener.printed(text);
    }
    if (console.awaited() != before) waiting = Stopwatch();
  }

  // A file that is there is found by the program within its five seconds.
  [[nodiscard]] bool hasWaitedTooLong() const {
    return options.giveUpSeconds && isWaiting() &&
           waiting.seconds() >= static_cast<double>(*options.giveUpSeconds) &&
           !fileStatus(console.awaited().c_str());
  }

  // The first time it also confirms that the file is this client's alone.
  ArmOutcome touch() {
    if (!console.programVersion().empty()) ready.setProgramVersion(console.programVersion());
    const Claim claim = ready.touch();
    if (claim.kind == Claim::Kind::taken && isWaiting()) {
      isTaken = true;
      return {answerIsNo, claim.reason};
    }
    if (claim.kind != Claim::Kind::held) complain(claim.reason);
    if (claim.kind == Claim::Kind::held && !isArmed && isWaiting()) {
      isArmed = true;
      listener.armed(note.host, settings);
    }
    return {};
  }

  void save() {
    const int code = console.save();
    if (code != 0) complain(options.folder.console(note.host) + ": " + std::strerror(code));
  }

  // Once for each reason: what fails now fails again in ten seconds.
  void complain(const std::string& reason) {
    if (reason == lastComplaint) return;
    lastComplaint = reason;
    listener.say(reason);
  }

  ArmOutcome stopped(ArmOutcome outcome) {
    program.send(SIGTERM);
    if (hasEndedWithin(kEndSeconds)) return outcome;
    program.send(SIGKILL);
    if (!hasEndedWithin(kKillSeconds)) {
      outcome.reason += "; marrowbench, process " + std::to_string(program.id()) +
                        ", hangs in a file system that does not answer, and ends when that does";
    }
    return outcome;
  }

  bool hasEndedWithin(std::int64_t seconds) {
    Pace limit(seconds);
    while (!limit.isDue()) {
      if (program.end()) return true;
      sleepMs(kTickMs / 5);
    }
    return program.end().has_value();
  }

  ArmOutcome finish(ArmOutcome outcome) {
    follow();
    // The other files of this name are another client's, too.
    if (isTaken) return outcome;
    save();
    const FinishedNote finished{note.host, note.run, isoTime(currentSeconds()), outcome.status,
                                outcome.reason};
    if (const int code = writeFinishedNote(options.folder, finished); code != 0)
      complain(options.folder.finished(note.host) + ": " + std::strerror(code));
    ready.remove();
    return outcome;
  }

  static ArmOutcome outcomeOf(const ChildEnd& end) {
    if (end.signal == 0) return {end.exitStatus, ""};
    return {kSignalBase + end.signal,
            std::string("marrowbench was ended by a signal: ") + strsignal(end.signal)};
  }

  [[nodiscard]] ArmOutcome outcomeOf(const Claim& claim) const {
    if (claim.kind == Claim::Kind::stopped) return {kSignalBase + interruption.signal(), ""};
    return {claim.kind == Claim::Kind::taken ? answerIsNo : notDone, claim.reason};
  }

  const ArmOptions& options;
  const ArmListener& listener;
  Interruption interruption;
  const ReadyNote note;
  ReadyFile ready;
  ConsoleCopy console;
  ChildProcess program;
  Guard guard;
  std::string settings;
  std::string lastComplaint;
  Stopwatch waiting;  // not by the clock, which somebody may set meanwhile
  bool isArmed = false;
  bool isTaken = false;  // the ready file is another client's
};

}  // namespace

ArmOutcome arm(const ArmOptions& options, const ArmListener& listener) {
  return ArmedClient(options, listener).run();
}

}  // namespace marrowbench::ctl
