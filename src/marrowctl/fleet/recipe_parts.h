#ifndef MARROWBENCH_MARROWCTL_FLEET_RECIPE_PARTS_H
#define MARROWBENCH_MARROWCTL_FLEET_RECIPE_PARTS_H

#include <cstddef>
#include <string>
#include <vector>

#include "marrowctl/fleet/recipe.h"

/// What recipes are made of. Each takes options that makeRecipe() has found usable.
namespace marrowbench::ctl {

/// Clients at a time that an engine with a window gets: all, as long as they are few.
[[nodiscard]] std::size_t fanOutOf(std::size_t hosts);

enum class Stay { detached, inForeground };

/// The words of the command that arms one client.
[[nodiscard]] std::vector<std::string> armCommand(const RecipeOptions& options, Stay stay);

/// Comment lines: what the recipe does and how many clients the engine starts at a time.
[[nodiscard]] std::string headOf(const RecipeOptions& options, const std::string& engine,
                                 const std::string& fanOut);

/// Comment lines: what is to be done when the clients are armed.
[[nodiscard]] std::string whatFollows(const RecipeOptions& options);

/// As JSON and YAML quote a text.
[[nodiscard]] std::string yamlText(const std::string& text);

[[nodiscard]] std::string clushRecipe(const RecipeOptions& options);
[[nodiscard]] std::string pdshRecipe(const RecipeOptions& options);
[[nodiscard]] std::string sshRecipe(const RecipeOptions& options);
[[nodiscard]] std::string parallelRecipe(const RecipeOptions& options);
[[nodiscard]] std::string srunRecipe(const RecipeOptions& options);
[[nodiscard]] std::string sbatchRecipe(const RecipeOptions& options);
[[nodiscard]] std::string ansibleRecipe(const RecipeOptions& options);
[[nodiscard]] std::string kubernetesRecipe(const RecipeOptions& options);

/// What keeps a fleet from being pods; empty: nothing.
[[nodiscard]] std::string problemOfPods(const RecipeOptions& options);

}  // namespace marrowbench::ctl

#endif
