#include "marrowctl/fleet/recipe.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>

#include "marrowctl/fleet/recipe_parts.h"
#include "marrowctl/support/folded_names.h"
#include "marrowctl/support/shell_words.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"
#include "paths/host_name.h"

namespace marrowbench::ctl {
namespace {

// What clush takes by itself. More connections at a time than this and a server's sshd may refuse
// some; detached clients make the window a matter of seconds anyway.
constexpr std::size_t kMostAtATime = 64;

struct EngineKind {
  std::string_view name;
  Engine engine;
  std::string (*recipe)(const RecipeOptions& options);
};

constexpr std::array<EngineKind, 8> kEngines = {{
    {"clush", Engine::clush, clushRecipe},
    {"pdsh", Engine::pdsh, pdshRecipe},
    {"ssh", Engine::ssh, sshRecipe},
    {"parallel", Engine::parallel, parallelRecipe},
    {"ansible", Engine::ansible, ansibleRecipe},
    {"srun", Engine::srun, srunRecipe},
    {"sbatch", Engine::sbatch, sbatchRecipe},
    {"kubernetes", Engine::kubernetes, kubernetesRecipe},
}};

bool isLetterOrDigit(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9');
}

// Other characters mean something to one engine or another: "@" a group, "^" a file, "%" the host.
bool isPlainName(const std::string& name) {
  return isLetterOrDigit(name.front()) && std::all_of(name.begin(), name.end(), [](char byte) {
           return isLetterOrDigit(byte) || byte == '.' || byte == '_' || byte == '-';
         });
}

std::string problemOfHosts(const std::vector<std::string>& hosts) {
  std::map<std::string, std::string> clients;
  for (const std::string& host : hosts) {
    if (!isPlainName(host)) {
      return printable(host) + R"( is no name of a host: letters, digits, ".", "_" and "-" are)";
    }
    const std::string client(hostNameFrom(host).view());
    const auto [known, isNew] = clients.emplace(client, host);
    if (isNew) continue;
    if (known->second == host) return host + " is named twice";
    return fmt::format("{} and {} would both be the client {}", known->second, host, client);
  }
  return {};
}

// A comment would end at one, and no engine hands them on whole.
bool hasControlCharacters(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char byte) {
    return static_cast<unsigned char>(byte) < ' ' || byte == '\x7f';
  });
}

bool isUtf8(const std::string& text) { return repairedUtf8(text) == text; }

std::string problemOfText(Engine engine, const std::string& text) {
  const std::string shown = printable(text);
  if (hasControlCharacters(text))
    return shown + " has a control character, which no recipe can hold";
  const bool isYaml = engine == Engine::ansible || engine == Engine::kubernetes;
  if (isYaml && !isUtf8(text)) return shown + " is no UTF-8, which a YAML file can't hold";
  if (engine == Engine::parallel && text.find('{') != std::string::npos)
    return shown + R"( has a "{", for which GNU parallel puts something else)";
  return {};
}

std::string problemOf(Engine engine, const RecipeOptions& options) {
  for (const std::string& text :
       {options.folder.control, options.program, options.image, options.mount, options.claim}) {
    std::string problem = problemOfText(engine, text);
    if (!problem.empty()) return problem;
  }
  std::string problem = problemOfHosts(options.hosts);
  if (!problem.empty() || engine != Engine::kubernetes) return problem;
  return problemOfPods(options);
}

}  // namespace

std::vector<std::string_view> engineNames() {
  std::vector<std::string_view> names;
  names.reserve(std::size(kEngines));
  for (const EngineKind& kind : kEngines) names.push_back(kind.name);
  return names;
}

std::optional<Engine> engineNamed(std::string_view name) {
  for (const EngineKind& kind : kEngines) {
    if (kind.name == name) return kind.engine;
  }
  return std::nullopt;
}

Recipe makeRecipe(Engine engine, const RecipeOptions& options) {
  const std::string problem = problemOf(engine, options);
  if (!problem.empty()) return {"", problem};
  return {kEngines.at(static_cast<std::size_t>(engine)).recipe(options), ""};
}

std::string programOf(Engine engine) {
  switch (engine) {
    case Engine::ansible: return "ansible-playbook";
    case Engine::kubernetes: return "kubectl";
    default: return std::string(kEngines.at(static_cast<std::size_t>(engine)).name);
  }
}

std::vector<std::string> commandFor(Engine engine, const std::string& file, std::size_t hosts) {
  const std::string program = programOf(engine);
  switch (engine) {
    case Engine::ansible: return {program, "-f", std::to_string(fanOutOf(hosts)), file};
    case Engine::sbatch: return {program, file};
    case Engine::kubernetes: return {program, "create", "-f", file};
    default: return {"sh", file};
  }
}

std::size_t fanOutOf(std::size_t hosts) { return std::min(hosts, kMostAtATime); }

std::vector<std::string> armCommand(const RecipeOptions& options, Stay stay) {
  std::vector<std::string> words = {
      options.program, "fleet",           "arm", "--control", options.folder.control,
      "--run",         options.folder.run};
  if (options.giveUp) {
    words.emplace_back("--give-up");
    words.push_back(std::to_string(*options.giveUp) + "s");
  }
  if (stay == Stay::detached) words.emplace_back("--detach");
  return words;
}

std::string headOf(const RecipeOptions& options, const std::string& engine,
                   const std::string& fanOut) {
  return fmt::format("# Arms {} for the run {} by {}.\n# {}\n",
                     shownCount(static_cast<std::int64_t>(options.hosts.size()), "client"),
                     options.folder.run, engine, fanOut);
}

std::string whatFollows(const RecipeOptions& options) {
  const std::string folder = fmt::format("--control {} --run {}", shellWord(options.folder.control),
                                         shellWord(options.folder.run));
  return fmt::format(
      "# Then, once and anywhere:\n"
      "#   marrowctl fleet publish {0} --hosts {1} FILE.bst\n"
      "#   marrowctl fleet watch {0} --hosts {1}\n",
      folder, shellWord(foldedNames(options.hosts)));
}

}  // namespace marrowbench::ctl
