#include "marrowctl/support/program_path.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;

bool isProgram(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored) && access(path.c_str(), X_OK) == 0;
}

std::string inPath(const std::string& name) {
  const char* const variable = std::getenv("PATH");
  std::string_view folders = variable == nullptr ? "" : variable;
  while (!folders.empty()) {
    const std::string_view folder = folders.substr(0, folders.find(':'));
    folders.remove_prefix(folder.size() + (folder.size() < folders.size() ? 1 : 0));
    // An empty one is the current folder.
    const fs::path path = fs::path(folder.empty() ? "." : folder) / name;
    if (isProgram(path)) return path.string();
  }
  return {};
}

}  // namespace

std::string pathOfProgram(const std::string& name) {
  return name.find('/') == std::string::npos ? inPath(name) : name;
}

std::string pathOfNeighbour(const std::string& other, const std::string& name) {
  const fs::path beside = pathOfProgram(other);
  std::error_code ignored;
  for (const fs::path& path : {beside, fs::canonical(beside, ignored)}) {
    if (path.empty()) continue;
    const fs::path neighbour = path.parent_path() / name;
    if (isProgram(neighbour)) return neighbour.string();
  }
  return inPath(name);
}

}  // namespace marrowbench::ctl
