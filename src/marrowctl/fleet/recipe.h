#ifndef MARROWBENCH_MARROWCTL_FLEET_RECIPE_H
#define MARROWBENCH_MARROWCTL_FLEET_RECIPE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/fleet/control_folder.h"

namespace marrowbench::ctl {

/// What starts programs on other machines.
enum class Engine { clush, pdsh, ssh, parallel, ansible, srun, sbatch, kubernetes };

/// By which words engines are asked for, in their order.
[[nodiscard]] std::vector<std::string_view> engineNames();
[[nodiscard]] std::optional<Engine> engineNamed(std::string_view name);

/// What a recipe is to arm.
struct RecipeOptions {
  std::vector<std::string> hosts;      ///< as the engine knows them, each once
  ControlFolder folder;                ///< its path as the clients see it, from the root on
  std::string program = "marrowctl";   ///< on the clients
  std::optional<std::int64_t> giveUp;  ///< seconds after which clients stop waiting
  std::string image;                   ///< Kubernetes: that holds both programs
  std::string mount;                   ///< Kubernetes: folder that pods get; empty: CONTROL
  std::string claim;                   ///< Kubernetes: volume claim of the share; empty: the
                                       ///< node's own folder
};

/// What arms all clients of a run, or why there is no such text.
struct Recipe {
  std::string text;
  std::string problem;  ///< empty: there is none
};

/// The complete recipe: shell commands, a batch script, a playbook or a manifest, with comments
/// that say how it is used and what comes after it. Clients that a shell starts stay behind by
/// --detach; Slurm and Kubernetes keep those that they start.
[[nodiscard]] Recipe makeRecipe(Engine engine, const RecipeOptions& options);

/// The engine's own program, on the machine where the recipe is carried out.
[[nodiscard]] std::string programOf(Engine engine);

/// The words of the command that carries out a recipe which stands in a file.
[[nodiscard]] std::vector<std::string> commandFor(Engine engine, const std::string& file,
                                                  std::size_t hosts);

}  // namespace marrowbench::ctl

#endif
