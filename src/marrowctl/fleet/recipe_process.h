#ifndef MARROWBENCH_MARROWCTL_FLEET_RECIPE_PROCESS_H
#define MARROWBENCH_MARROWCTL_FLEET_RECIPE_PROCESS_H

#include <optional>
#include <string>

#include "marrowctl/fleet/guard.h"
#include "marrowctl/fleet/recipe.h"
#include "marrowctl/support/child_process.h"

namespace marrowbench::ctl {

/// A recipe that is carried out: the engine runs beside this program, and what it prints is kept
/// apart, since with some engines all clients print through it. It does not outlive this program,
/// however that ends.
class RecipeProcess {
 public:
  RecipeProcess() = default;
  RecipeProcess(const RecipeProcess&) = delete;
  RecipeProcess& operator=(const RecipeProcess&) = delete;
  /// Asks an engine that still runs to end, with all that it has started, and removes the files of
  /// both.
  ~RecipeProcess();

  /// Starts it, once. @return what could not be done; empty: it runs
  [[nodiscard]] std::string start(Engine engine, const RecipeOptions& options);

  /// How the engine ended; nothing while it runs. Does not wait. Removes the file with the recipe
  /// when it has ended.
  [[nodiscard]] std::optional<ChildEnd> end();

  /// The last lines that it and the clients printed through it, at most some KiB.
  [[nodiscard]] std::string lastLines() const;

 private:
  [[nodiscard]] int write(const std::string& text);
  void removeFile();

  ChildProcess process;
  std::optional<Guard> guard;
  std::string file;  // with the recipe
  int printed = -1;  // open, of a file without a name
};

}  // namespace marrowbench::ctl

#endif
