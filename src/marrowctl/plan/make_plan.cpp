#include "marrowctl/plan/make_plan.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "marrowctl/plan/expansion.h"
#include "marrowctl/plan/one_spelling.h"
#include "marrowctl/plan/settings_reader.h"
#include "paths/host_name.h"
#include "paths/path_text.h"
#include "support/file_status.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;

// As a shell does with "*", hidden files are left out.
bool isSettingsName(std::string_view name) {
  return !name.starts_with('.') && endsWithIgnoreCase(name, ".bst");
}

std::vector<std::string> settingsFilesIn(const std::string& folder) {
  const std::string front = folder.ends_with('/') ? folder : folder + "/";
  std::vector<std::string> files;
  std::error_code ignored;
  for (fs::directory_iterator entry(folder, ignored), end; entry != end; entry.increment(ignored)) {
    const std::string name = entry->path().filename().string();
    const std::string path = front + name;
    if (isSettingsName(name) && fileStatus(path.c_str())) files.push_back(path);
  }
  std::sort(files.begin(), files.end());
  return files;
}

// The program's form of the named paths, folders replaced by what is in them.
std::vector<std::string> namedFiles(const PlanOptions& options) {
  std::vector<std::string> files;
  std::error_code ignored;
  for (const std::string& name : options.files) {
    std::vector<std::string> found = {name};
    const bool isText = options.texts.contains(name);
    if (!isText && fs::is_directory(name, ignored)) found = settingsFilesIn(name);
    for (const std::string& file : found) {
      FixedString path = std::string_view(file);
      useForwardSlashes(path);
      files.emplace_back(path);
    }
  }
  return files;
}

// Links are not followed: placeholders read the name of the file that is given.
std::string keyOf(const std::string& path) { return path == "-" ? path : oneSpelling(path); }

// The path of the chain depends on what its record held before.
bool chainReadsRecord(const PlannedFile& file) {
  return file.chainLine != 0 && holds(file.lines.back().text, "[cfgID]");
}

// What the program does when it is started with one of the named files.
struct Run {
  std::vector<std::size_t> files;  // the chain, as indices
  bool chainsBack = false;         // its end leads to one of its files
};

class Planner {
 public:
  Planner(const Plan& plan, const PlanOptions& options, std::istream& standardInput)
      : reader(plan.hosts), input(standardInput) {
    for (const auto& [path, text] : options.texts) texts.emplace(keyOf(path), text);
  }

  void follow(const std::string& name) {
    Run run;
    reader.startRun();
    std::string path = name;
    do {
      const std::size_t index = indexOf(path);
      run.chainsBack = std::find(run.files.begin(), run.files.end(), index) != run.files.end();
      if (run.chainsBack) break;
      provide(index, path);
      run.files.push_back(index);
      path = files[index]->chain;
    } while (!path.empty());
    runs.push_back(std::move(run));
  }

  // Every file once, at its place in the first chain that it belongs to.
  std::vector<PlannedFile> finished() {
    dropPartsOfOtherRuns();
    std::vector<PlannedFile> ordered;
    for (const Run& run : runs) {
      for (const std::size_t index : run.files) {
        if (!files[index]) continue;
        files[index]->chainsBack = run.chainsBack && index == run.files.back();
        ordered.push_back(std::move(*files[index]));
        files[index].reset();
      }
    }
    return ordered;
  }

 private:
  std::size_t indexOf(const std::string& path) {
    const auto [known, isNew] = indices.try_emplace(keyOf(path), files.size());
    if (isNew) files.emplace_back();
    return known->second;
  }

  // Of a folder of chained files most are met several times.
  void provide(std::size_t index, const std::string& path) {
    std::optional<PlannedFile>& file = files[index];
    if (file && (path == "-" || !chainReadsRecord(*file))) return reader.passOver(*file);
    file = readFile(path);
    std::erase_if(file->missingChains, [this](const MissingChain& each) {
      return texts.contains(keyOf(each.path)) || fileStatus(each.path.c_str());
    });
  }

  PlannedFile readFile(const std::string& path) {
    if (path == "-") return reader.read(path, input);
    if (const auto text = texts.find(keyOf(path)); text != texts.end()) {
      std::istringstream stream(text->second);
      return reader.read(path, stream);
    }
    std::ifstream stream(path);
    PlannedFile file = reader.read(path, stream);
    file.exists = fileStatus(path.c_str());
    return file;
  }

  // From the back, so that of files that chain to each other the first one named stays.
  void dropPartsOfOtherRuns() {
    std::vector<int> uses(files.size());
    for (const Run& run : runs) addUses(uses, run, 1);
    for (std::size_t i = runs.size(); i-- > 0;) {
      if (uses[runs[i].files.front()] == 0) continue;
      addUses(uses, runs[i], -1);
      runs[i].files.clear();
    }
  }

  // Counts the files that the first one leads to.
  static void addUses(std::vector<int>& uses, const Run& run, int count) {
    for (std::size_t i = 1; i < run.files.size(); ++i) uses[run.files[i]] += count;
  }

  SettingsReader reader;
  std::istream& input;
  std::unordered_map<std::string, std::string> texts;    // by keyOf()
  std::unordered_map<std::string, std::size_t> indices;  // by keyOf()
  std::vector<std::optional<PlannedFile>> files;
  std::vector<Run> runs;
};

std::vector<std::string> shortNames(const std::vector<std::string>& hosts) {
  if (hosts.empty()) return {std::string(hostName())};
  std::vector<std::string> names;
  std::transform(hosts.begin(), hosts.end(), std::back_inserter(names),
                 [](const std::string& host) { return std::string(hostNameFrom(host)); });
  return names;
}

}  // namespace

Plan makePlan(const PlanOptions& options, std::istream& input) {
  Plan plan;
  plan.hosts = shortNames(options.hosts);
  plan.clients = std::max(options.clients, static_cast<std::int64_t>(plan.hosts.size()));
  Planner planner(plan, options, input);
  for (const std::string& name : namedFiles(options)) planner.follow(name);
  plan.files = planner.finished();
  return plan;
}

}  // namespace marrowbench::ctl
