#include "marrowctl/table/table_names.h"

#include <glob.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <unordered_set>

#include "support/fixed_string_ops.h"

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> tablesIn(const std::string& folder, int& code) {
  std::vector<std::string> files;
  std::error_code problem;
  const std::string front = folder.ends_with('/') ? folder : folder + '/';
  for (fs::directory_iterator entry(folder, problem), end; entry != end; entry.increment(problem)) {
    const std::string name = entry->path().filename().string();
    std::error_code ignored;
    const bool isTable = !name.starts_with('.') && endsWithIgnoreCase(name, ".csv") &&
                         fs::is_regular_file(entry->path(), ignored);
    if (isTable) files.push_back(front + name);
  }
  code = problem.value();
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<std::string> filesLike(const std::string& pattern) {
  std::vector<std::string> files;
  glob_t found{};
  if (glob(pattern.c_str(), 0, nullptr, &found) == 0) {
    files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
  }
  globfree(&found);
  return files;
}

class Names {
 public:
  bool add(const std::string& name) {
    std::error_code code;
    if (name == "-") return take(name);
    if (fs::is_directory(name, code)) return addFolder(name);
    if (fs::exists(name, code)) return take(name);
    const std::vector<std::string> files = filesLike(name);
    if (files.empty()) return refuse(name, std::strerror(code ? code.value() : ENOENT));
    return std::all_of(files.begin(), files.end(), [this](const std::string& file) {
      return fs::is_directory(file) ? addFolder(file) : take(file);
    });
  }

  TableNames names;

 private:
  bool addFolder(const std::string& folder) {
    int code = 0;
    const std::vector<std::string> files = tablesIn(folder, code);
    if (code != 0) return refuse(folder, std::strerror(code));
    if (files.empty()) return refuse(folder, "no *.csv file is in this folder");
    for (const std::string& file : files) take(file);
    return true;
  }

  bool take(const std::string& file) {
    std::error_code ignored;
    const std::string key = fs::absolute(file, ignored).lexically_normal().string();
    if (known.insert(file == "-" ? file : key).second) names.files.push_back(file);
    return true;
  }

  bool refuse(const std::string& name, const std::string& problem) {
    names.problem = name + ": " + problem;
    return false;
  }

  std::unordered_set<std::string> known;
};

}  // namespace

TableNames tableNames(const std::vector<std::string>& names) {
  Names found;
  for (const std::string& name : names) {
    if (!found.add(name)) break;
  }
  return found.names;
}

}  // namespace marrowbench::ctl
