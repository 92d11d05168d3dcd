#include <fmt/format.h>

#include "marrowctl/fleet/recipe_parts.h"
#include "marrowctl/support/folded_names.h"
#include "marrowctl/support/shell_words.h"

namespace marrowbench::ctl {
namespace {

// One word for this shell, which ssh hands to the shell of the client.
std::string remoteCommand(const RecipeOptions& options) {
  return shellWord(shellCommand(armCommand(options, Stay::detached)));
}

// pdsh puts host, user and number for %h, %u and %n, and takes "%%" for "%".
std::string withoutPercents(const std::string& command) {
  std::string text;
  for (const char byte : command) text += byte == '%' ? std::string("%%") : std::string(1, byte);
  return text;
}

std::string window(const RecipeOptions& options, const char* option) {
  const std::size_t atATime = fanOutOf(options.hosts.size());
  if (atATime == options.hosts.size()) return fmt::format("All at once ({} {}).", option, atATime);
  return fmt::format("{} at a time ({} {}): --detach lets each go on at once, nobody is held back.",
                     atATime, option, atATime);
}

std::string oneInEachLine(const RecipeOptions& options) {
  std::string lines;
  for (const std::string& host : options.hosts) lines += host + "\n";
  return lines;
}

}  // namespace

std::string clushRecipe(const RecipeOptions& options) {
  return headOf(options, "ClusterShell", window(options, "-f")) +
         fmt::format("clush -n -b -S -f {} -w {} \\\n  {}\n", fanOutOf(options.hosts.size()),
                     shellWord(foldedNames(options.hosts)), remoteCommand(options)) +
         whatFollows(options);
}

std::string pdshRecipe(const RecipeOptions& options) {
  const std::string command = withoutPercents(remoteCommand(options));
  return headOf(options, "pdsh", window(options, "-f")) +
         fmt::format("pdsh -R ssh -S -f {} -w {} \\\n  {}\n", fanOutOf(options.hosts.size()),
                     shellWord(foldedNames(options.hosts)), command) +
         whatFollows(options);
}

std::string sshRecipe(const RecipeOptions& options) {
  return headOf(options, "ssh", window(options, "-P")) +
         fmt::format(
             "xargs -P {} -n 1 sh -c '\n"
             "  ssh -n -o BatchMode=yes -o ConnectTimeout=10 \"$1\" \"$0\" ||\n"
             "    {{ echo \"$1: not armed\" >&2; exit 1; }}' \\\n"
             "  {} <<'END'\n{}END\n",
             fanOutOf(options.hosts.size()), remoteCommand(options), oneInEachLine(options)) +
         whatFollows(options);
}

std::string parallelRecipe(const RecipeOptions& options) {
  return headOf(options, "GNU parallel",
                "All at once (-j0): by itself it takes as many as there are processors.") +
         fmt::format(
             "parallel --will-cite -j0 --tag --nonall --sshloginfile - \\\n  {} <<'END'\n{}END\n",
             remoteCommand(options), oneInEachLine(options)) +
         whatFollows(options);
}

}  // namespace marrowbench::ctl
