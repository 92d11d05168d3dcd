#ifndef MARROWBENCH_MARROWCTL_SUPPORT_CHILD_PROCESS_H
#define MARROWBENCH_MARROWCTL_SUPPORT_CHILD_PROCESS_H

#include <sys/types.h>

#include <csignal>
#include <optional>
#include <string>
#include <vector>

namespace marrowbench::ctl {

/// What is to be started.
struct ChildCommand {
  std::string program;                 ///< a path, or a name without "/" that is looked for in PATH
  std::vector<std::string> arguments;  ///< behind the program's name
  int output = -1;  ///< open file that gets its standard output and standard error
  /// It has no terminal then, and what it starts itself belongs to it: signals are sent to all.
  bool hasOwnSession = false;
};

/// How a process ended: by itself, or by a signal.
struct ChildEnd {
  int exitStatus = 0;  ///< 0 after a signal
  int signal = 0;      ///< 0: none ended it
};

/// Another program, started beside this one. It reads nothing, and belongs to the group of
/// processes of this one, unless it has a session of its own: what a terminal sends, it sends to
/// both.
class ChildProcess {
 public:
  ChildProcess() = default;
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  /// Asks a process that still runs to end, by SIGTERM, and does not wait for it.
  ~ChildProcess() { send(SIGTERM); }

  /// Starts the program, once. @return errno of what failed; 0: it runs
  [[nodiscard]] int start(const ChildCommand& command);

  /// How it ended; nothing while it runs. Does not wait.
  [[nodiscard]] std::optional<ChildEnd> end();

  /// Passes a signal on to it, or to all of its session; does nothing when it has ended.
  void send(int signal);

  /// 0 before it is started.
  [[nodiscard]] pid_t id() const { return process; }

 private:
  pid_t process = 0;
  bool hasOwnSession = false;
  std::optional<ChildEnd> ended;
};

}  // namespace marrowbench::ctl

#endif
