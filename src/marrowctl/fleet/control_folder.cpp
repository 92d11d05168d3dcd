#include "marrowctl/fleet/control_folder.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace marrowbench::ctl {
namespace {

// With the longest names of clients and phases around it, it still is a file's name.
constexpr std::size_t kLongestName = 100;

bool isLetterOrDigit(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9');
}

bool mayStand(char byte) {
  return isLetterOrDigit(byte) || byte == '.' || byte == '_' || byte == '-';
}

std::string nameOf(const ControlFolder& folder, int phase) {
  return phase == 1 ? folder.run : folder.run + "-" + std::to_string(phase);
}

}  // namespace

std::string ControlFolder::path() const {
  std::string base = control;
  while (base.size() > 1 && base.ends_with('/')) base.pop_back();
  return base == "/" ? base + run : base + "/" + run;
}

std::string ControlFolder::file(std::string_view name) const {
  return path().append("/").append(name);
}

std::string ControlFolder::within(const std::string& whole) const {
  const std::string front = path() + "/";
  return whole.starts_with(front) ? whole.substr(front.size()) : whole;
}

std::string ControlFolder::settings(int phase) const { return file(nameOf(*this, phase) + ".bst"); }

std::string ControlFolder::doneFolder(int phase) const {
  return file("_" + nameOf(*this, phase) + "_log");
}

std::string ControlFolder::published(int phase) const {
  return file("published__" + nameOf(*this, phase));
}

std::string ControlFolder::ready(std::string_view host) const {
  return file(kReadyPrefix).append(host);
}

std::string ControlFolder::finished(std::string_view host) const {
  return file(kFinishedPrefix).append(host);
}

std::string ControlFolder::console(std::string_view host) const {
  return file(kConsolePrefix).append(host);
}

std::string problemOfShare(const ControlFolder& folder) {
  std::error_code code;
  if (std::filesystem::is_directory(folder.control, code)) return {};
  return folder.control + ": " + std::strerror(code ? code.value() : ENOTDIR) +
         ". Is the share mounted here?";
}

int makeRunFolder(const ControlFolder& folder) {
  struct stat status {};
  if (stat(folder.control.c_str(), &status) != 0) return errno;
  // At once: another user's client may be right behind.
  const mode_t before = umask(0);
  const int code = mkdir(folder.path().c_str(), status.st_mode & 07777) == 0 ? 0 : errno;
  (void)umask(before);
  return code == EEXIST ? 0 : code;
}

std::string problemOfRunName(std::string_view name) {
  if (name.empty()) return "the name is empty";
  if (name.size() > kLongestName) {
    return "the name has more than " + std::to_string(kLongestName) + " characters";
  }
  const bool isPlain =
      isLetterOrDigit(name.front()) && std::all_of(name.begin(), name.end(), mayStand);
  if (isPlain) return {};
  return "a run's name begins with a letter or a digit and has no characters but letters, digits, "
         "\".\", \"_\" and \"-\"";
}

}  // namespace marrowbench::ctl
