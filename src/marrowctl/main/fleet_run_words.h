#ifndef MARROWBENCH_MARROWCTL_MAIN_FLEET_RUN_WORDS_H
#define MARROWBENCH_MARROWCTL_MAIN_FLEET_RUN_WORDS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/fleet/recipe.h"
#include "marrowctl/main/command_line.h"

/// The steps of a run of many clients as one would type them.
namespace marrowbench::ctl {

using Words = std::vector<std::string>;

/// The clients as --hosts takes them.
[[nodiscard]] std::string listOf(const RecipeOptions& recipe);

[[nodiscard]] Words checkWords(const RecipeOptions& recipe, const RunCommand& run);
[[nodiscard]] Words probeWords(const RecipeOptions& recipe);
[[nodiscard]] Words recipeWords(const std::string& engine, const RecipeOptions& recipe);
[[nodiscard]] Words publishWords(const RecipeOptions& recipe, const RunCommand& run);
[[nodiscard]] Words watchWords(const RecipeOptions& recipe,
                               const std::optional<std::int64_t>& timeoutSeconds);
[[nodiscard]] Words reportWords(const RecipeOptions& recipe, const ReportCommand& report);

/// Prints a command to the standard error, as one types it behind a shell's "$".
void sayStep(const Words& words);

/// Prints how a recipe is had and carried out, and what it starts.
void sayRecipe(Engine engine, const std::string& name, const RecipeOptions& recipe);

/// What an engine and its clients have printed, which may hold anything, for people.
[[nodiscard]] std::string printableLines(std::string_view text);

}  // namespace marrowbench::ctl

#endif
