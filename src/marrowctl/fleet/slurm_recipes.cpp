#include <fmt/format.h>

#include "marrowctl/fleet/recipe_parts.h"
#include "marrowctl/support/folded_names.h"
#include "marrowctl/support/shell_words.h"

namespace marrowbench::ctl {
namespace {

constexpr const char* kFanOut =
    "All at once (--nodes, --ntasks): Slurm has no window. They stay in its foreground.";

// A client that ends, or a node that fails, must not end the others: --wait, --kill-on-bad-exit.
std::string stepOf(const RecipeOptions& options, const std::string& nodes) {
  const std::size_t count = options.hosts.size();
  return fmt::format(
      "srun {}--nodes={} --ntasks={} --ntasks-per-node=1 --label --input=none --chdir=/ \\\n"
      "  --no-kill --wait=0 --kill-on-bad-exit=0 \\\n  {}\n",
      nodes, count, count, shellCommand(armCommand(options, Stay::inForeground)));
}

}  // namespace

std::string srunRecipe(const RecipeOptions& options) {
  const std::string list = foldedNames(options.hosts, Folding::atTheEnd);
  return headOf(options, "Slurm", kFanOut) +
         stepOf(options, fmt::format("--job-name=marrowctl-{} --nodelist={} ", options.folder.run,
                                     shellWord(list))) +
         whatFollows(options);
}

std::string sbatchRecipe(const RecipeOptions& options) {
  return fmt::format(
             "#!/bin/sh\n"
             "#SBATCH --job-name=marrowctl-{}\n"
             "#SBATCH --nodelist={}\n"
             "#SBATCH --nodes={}\n"
             "#SBATCH --ntasks-per-node=1\n"
             "#SBATCH --no-kill\n",
             options.folder.run, foldedNames(options.hosts, Folding::atTheEnd),
             options.hosts.size()) +
         headOf(options, "Slurm, as a batch job: sbatch FILE", kFanOut) + stepOf(options, "") +
         whatFollows(options);
}

}  // namespace marrowbench::ctl
