#include "marrowctl/support/new_files.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace marrowbench::ctl {
namespace {

namespace fs = std::filesystem;

std::string problemOf(const std::string& path, int code) {
  return path + ": " + std::strerror(code);
}

// Hidden, and no settings file by its name: nobody takes it for the finished file.
std::string draftOf(const fs::path& path) {
  const std::string name = "." + path.filename().string() + "." + std::to_string(getpid());
  return (path.parent_path() / name).string();
}

int writeText(const std::string& path, const std::string& text) {
  std::FILE* const file = std::fopen(path.c_str(), "wbx");
  if (file == nullptr) return errno;
  int code = 0;
  if (std::fwrite(text.data(), 1, text.size(), file) != text.size()) code = errno;
  if (std::fclose(file) != 0 && code == 0) code = errno;
  return code;
}

std::string writeFile(const NewFile& file) {
  const std::string draft = draftOf(file.path);
  int code = writeText(draft, file.text);
  if (code == 0 && std::rename(draft.c_str(), file.path.c_str()) != 0) code = errno;
  if (code == 0) return {};
  if (code != EEXIST) std::remove(draft.c_str());
  return problemOf(code == EEXIST ? draft : file.path, code);
}

}  // namespace

std::string problemWith(const std::vector<NewFile>& files, bool overwrites) {
  for (const NewFile& file : files) {
    std::error_code ignored;
    const fs::path folder = fs::path(file.path).parent_path();
    if (!folder.empty() && !fs::exists(folder, ignored)) return problemOf(file.path, ENOENT);
    const fs::file_status status = fs::symlink_status(file.path, ignored);
    if (fs::is_directory(status)) return problemOf(file.path, EISDIR);
    if (fs::exists(status) && !overwrites) {
      return file.path + ": exists already; --force overwrites it";
    }
  }
  return {};
}

std::string writeNewFiles(const std::vector<NewFile>& files, bool overwrites) {
  std::string problem = problemWith(files, overwrites);
  for (std::size_t left = files.size(); left > 0 && problem.empty(); --left) {
    problem = writeFile(files[left - 1]);
  }
  return problem;
}

}  // namespace marrowbench::ctl
