#include "helpers/temp_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace marrowbench::test {

TempFolder::TempFolder()
    : folder((std::filesystem::temp_directory_path() / "marrowbench_test_XXXXXX").string()) {
  if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no temporary folder");
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}

FixedString TempFolder::file(std::string_view name) const {
  return FixedString(folder.c_str()).append("/").append(name);
}

FixedString TempFolder::fileOfLength(std::size_t length) const {
  FixedString path = file("");
  while (path.length() < length) path.append('x');
  return path;
}

WorkingFolder::WorkingFolder() : before(std::filesystem::current_path()) {
  std::filesystem::current_path(path());
}

WorkingFolder::~WorkingFolder() { std::filesystem::current_path(before); }

void writeFile(const FixedString& path, std::string_view content) {
  std::ofstream file(path.c_str(), std::ios::binary);
  file << content;
  if (!file.flush()) throw std::runtime_error("can't write " + std::string(path.view()));
}

std::string readFile(const FixedString& path) {
  std::ifstream file(path.c_str(), std::ios::binary);
  std::ostringstream content;
  if (file) content << file.rdbuf();
  return content.str();
}

bool exists(const FixedString& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;
}

void setModified(const FixedString& path, std::int64_t seconds) {
  timespec times[2]{};
  times[0].tv_sec = times[1].tv_sec = static_cast<std::time_t>(seconds);
  if (utimensat(AT_FDCWD, path.c_str(), times, 0) != 0) throw std::runtime_error("utimensat");
}

}  // namespace marrowbench::test
