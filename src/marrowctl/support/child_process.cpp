#include "marrowctl/support/child_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

// POSIX has whoever uses it declare it, and some systems have done so already.
// NOLINTNEXTLINE(*-avoid-non-const-global-variables,readability-redundant-declaration)
extern char** environ;

namespace marrowbench::ctl {
namespace {

// What is done to open files between the start of the process and that of the program.
class FileActions {
 public:
  FileActions() { (void)posix_spawn_file_actions_init(&actions); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { (void)posix_spawn_file_actions_destroy(&actions); }

  int readNothing() {
    return posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  }
  int writeTo(int file) {
    const int code = posix_spawn_file_actions_adddup2(&actions, file, STDOUT_FILENO);
    return code != 0 ? code : posix_spawn_file_actions_adddup2(&actions, file, STDERR_FILENO);
  }

  posix_spawn_file_actions_t actions{};
};

// How the process itself is started.
class Attributes {
 public:
  Attributes() { (void)posix_spawnattr_init(&all); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  ~Attributes() { (void)posix_spawnattr_destroy(&all); }

  int leadSession() { return posix_spawnattr_setflags(&all, POSIX_SPAWN_SETSID); }

  posix_spawnattr_t all{};
};

}  // namespace

int ChildProcess::start(const ChildCommand& command) {
  std::vector<std::string> texts = {command.program};
  texts.insert(texts.end(), command.arguments.begin(), command.arguments.end());
  std::vector<char*> words;
  words.reserve(texts.size() + 1);
  for (std::string& text : texts) words.push_back(text.data());
  words.push_back(nullptr);

  FileActions files;
  int code = files.readNothing();
  if (code == 0) code = files.writeTo(command.output);
  Attributes attributes;
  if (code == 0 && command.hasOwnSession) code = attributes.leadSession();
  if (code != 0) return code;
  hasOwnSession = command.hasOwnSession;
  code = posix_spawnp(&process, command.program.c_str(), &files.actions, &attributes.all,
                      words.data(), environ);
  if (code != 0) process = 0;
  return code;
}

std::optional<ChildEnd> ChildProcess::end() {
  if (ended || process == 0) return ended;
  int status = 0;
  const pid_t answer = waitpid(process, &status, WNOHANG);
  if (answer == process) {
    ended = WIFSIGNALED(status) ? ChildEnd{0, WTERMSIG(status)} : ChildEnd{WEXITSTATUS(status), 0};
  }
  // It is no longer this program's to wait for: how it ended is not known.
  if (answer < 0 && errno == ECHILD) ended = ChildEnd{};
  return ended;
}

void ChildProcess::send(int signal) {
  if (process != 0 && !end()) (void)kill(hasOwnSession ? -process : process, signal);
}

}  // namespace marrowbench::ctl
