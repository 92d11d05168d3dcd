#include "marrowctl/fleet/recipe_process.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "marrowctl/support/program_path.h"
#include "paths/folders.h"

namespace marrowbench::ctl {
namespace {

constexpr off_t kMostPrinted = 4096;

// An open file of a new name in the temporary folder, which other programs do not get; below 0:
// errno tells why there is none.
int makeFile(std::string& name) {
  name = std::string(tempFolder().view()) + "marrowctl_recipe_XXXXXX";
  const int file = mkstemp(name.data());
  if (file >= 0) (void)fcntl(file, F_SETFD, FD_CLOEXEC);
  return file;
}

bool writeAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(file, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

RecipeProcess::~RecipeProcess() {
  removeFile();
  if (printed >= 0) (void)close(printed);
}

std::optional<ChildEnd> RecipeProcess::end() {
  const std::optional<ChildEnd> ended = process.end();
  if (!ended) return std::nullopt;
  // Its number may become another group's.
  guard.reset();
  // As soon as nobody reads it: a program that is killed later leaves none.
  removeFile();
  return ended;
}

void RecipeProcess::removeFile() {
  if (!file.empty()) (void)unlink(file.c_str());
  file.clear();
}

std::string RecipeProcess::start(Engine engine, const RecipeOptions& options) {
  const Recipe recipe = makeRecipe(engine, options);
  if (!recipe.problem.empty()) return recipe.problem;
  // Else a shell would say it, in words that a client's shell has as well.
  const bool hasPath = std::getenv("PATH") != nullptr;
  if (const std::string needed = programOf(engine); hasPath && pathOfProgram(needed).empty())
    return needed + ": not in the PATH of this machine";
  if (const int code = write(recipe.text); code != 0)
    return std::string("the temporary folder: ") + std::strerror(code);
  std::vector<std::string> words = commandFor(engine, file, options.hosts.size());
  const std::string program = words.front();
  words.erase(words.begin());
  // In a session of its own: a shell does not hand on the signal that ends it, and engines have
  // many processes. One that would ask for a password fails, where the terminal would stop it.
  if (const int code = process.start({program, words, printed, true}); code != 0)
    return program + ": " + std::strerror(code);
  if (const int code = guard.emplace().start(-process.id()); code != 0)
    return std::string("a process can't be started: ") + std::strerror(code);
  return {};
}

std::string RecipeProcess::lastLines() const {
  struct stat status {};
  if (printed < 0 || fstat(printed, &status) != 0) return {};
  const off_t begin = status.st_size > kMostPrinted ? status.st_size - kMostPrinted : 0;
  std::string text(static_cast<std::size_t>(status.st_size - begin), '\0');
  // Not by the file's position, which the engine shares.
  const ssize_t got = pread(printed, text.data(), text.size(), begin);
  text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  // Where it does not begin at the front, the first line has none.
  if (begin > 0) text.erase(0, text.find('\n') + 1);
  return text;
}

int RecipeProcess::write(const std::string& text) {
  const int recipe = makeFile(file);
  if (recipe < 0) {
    const int code = errno;
    file.clear();
    return code;
  }
  const bool isWritten = writeAll(recipe, text);
  const int code = isWritten ? 0 : errno;
  (void)close(recipe);
  if (!isWritten) return code;
  std::string name;
  printed = makeFile(name);
  if (printed < 0) return errno;
  (void)unlink(name.c_str());
  return 0;
}

}  // namespace marrowbench::ctl
