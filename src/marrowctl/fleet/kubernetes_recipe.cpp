#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "marrowctl/fleet/recipe_parts.h"
#include "paths/host_name.h"

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kLongestName = 63;
constexpr std::string_view kNameBegin = "marrowctl-";

bool isNameCharacter(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') || byte == '-';
}

// RFC 1123: what Kubernetes takes for the name of an object or a host.
bool isLabel(std::string_view name) {
  return !name.empty() && name.size() <= kLongestName && name.front() != '-' &&
         name.back() != '-' && std::all_of(name.begin(), name.end(), isNameCharacter);
}

std::string clientOf(const std::string& host) { return std::string(hostNameFrom(host).view()); }

// As much of the run's name as an object's may have and fits.
std::string jobName(const RecipeOptions& options, const std::string& client) {
  std::string run;
  for (const char byte : options.folder.run) {
    const char lower = byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
    run += isNameCharacter(lower) ? lower : '-';
  }
  const std::size_t taken = kNameBegin.size() + 1 + client.size();
  run = run.substr(0, kLongestName - std::min(kLongestName, taken));
  return fmt::format("{}{}-{}", kNameBegin, run, client);
}

// Kubernetes replaces $(NAME) in commands and takes "$$" for "$".
std::string commandWord(const std::string& word) {
  std::string text;
  for (const char byte : word) text += byte == '$' ? std::string("$$") : std::string(1, byte);
  return yamlText(text);
}

std::string mountOf(const RecipeOptions& options) {
  return options.mount.empty() ? options.folder.control : options.mount;
}

std::string volumeOf(const RecipeOptions& options) {
  if (!options.claim.empty()) {
    return fmt::format("          persistentVolumeClaim:\n            claimName: {}\n",
                       yamlText(options.claim));
  }
  return fmt::format("          hostPath:\n            path: {}\n            type: Directory\n",
                     yamlText(mountOf(options)));
}

// A label's last character is a letter or a digit.
std::string runLabel(const RecipeOptions& options) {
  const std::string& run = options.folder.run;
  return run.substr(0, run.find_last_not_of("._-") + 1);
}

std::string labels(const RecipeOptions& options, const char* indent) {
  return fmt::format("{0}labels:\n{0}  app: marrowctl\n{0}  run: {1}\n", indent,
                     yamlText(runLabel(options)));
}

// A Job for each client, on its node: one that fails is not started again, where it would run its
// tests a second time. All keys are those of Kubernetes' batch/v1.
std::string jobOf(const RecipeOptions& options, const std::string& host) {
  const std::string client = clientOf(host);
  std::string text = fmt::format("---\napiVersion: batch/v1\nkind: Job\nmetadata:\n  name: {}\n",
                                 yamlText(jobName(options, client)));
  text += labels(options, "  ");
  text += "spec:\n  backoffLimit: 0\n  template:\n    metadata:\n" + labels(options, "      ");
  text += fmt::format(
      "    spec:\n"
      "      hostname: {}\n"
      "      nodeSelector:\n"
      "        kubernetes.io/hostname: {}\n"
      "      restartPolicy: Never\n"
      "      containers:\n"
      "        - name: marrowctl\n"
      "          image: {}\n"
      "          command:\n",
      yamlText(client), yamlText(host), yamlText(options.image));
  for (const std::string& word : armCommand(options, Stay::inForeground))
    text += "            - " + commandWord(word) + "\n";
  return text + fmt::format(
                    "          volumeMounts:\n"
                    "            - name: share\n"
                    "              mountPath: {}\n"
                    "      volumes:\n"
                    "        - name: share\n{}",
                    yamlText(mountOf(options)), volumeOf(options));
}

// "/srv/" is "/srv"; "/" stays.
std::string withoutEndSlashes(const std::string& path) {
  const std::size_t last = path.find_last_not_of('/');
  return last == std::string::npos ? path.substr(0, 1) : path.substr(0, last + 1);
}

bool isInside(const std::string& path, const std::string& folder) {
  return folder == "/" || path == folder || path.starts_with(folder + "/");
}

}  // namespace

std::string problemOfPods(const RecipeOptions& options) {
  if (options.image.empty()) return "name an --image that holds marrowctl and marrowbench";
  for (const std::string& host : options.hosts) {
    const std::string client = clientOf(host);
    const bool isTooLong = kNameBegin.size() + 2 + client.size() > kLongestName;
    if (!isLabel(client) || isTooLong || host.size() > kLongestName) {
      return host +
             " can't be a pod's host name: small letters, digits and \"-\", at most 51 characters";
    }
  }
  if (options.folder.run.size() > kLongestName)
    return "the run's name has more than 63 characters, which no label can hold";
  const bool isMounted =
      options.mount.empty() ||
      isInside(withoutEndSlashes(options.folder.control), withoutEndSlashes(options.mount));
  if (!isMounted) {
    return fmt::format("{} does not lie in {}, which the pods get", options.folder.control,
                       options.mount);
  }
  return {};
}

std::string kubernetesRecipe(const RecipeOptions& options) {
  std::string text =
      headOf(options, "Kubernetes: kubectl create -f FILE.yml",
             "All at once: each client is a Job of its own, on the node of its name.") +
      fmt::format("# Away with them: kubectl delete jobs -l app=marrowctl,run={}\n",
                  runLabel(options)) +
      whatFollows(options);
  for (const std::string& host : options.hosts) text += jobOf(options, host);
  return text;
}

}  // namespace marrowbench::ctl
