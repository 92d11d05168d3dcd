#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "marrowctl/fleet/probe_steps.h"
#include "support/platform.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kReservedBytes = 1 << 20;

bool exists(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0;
}

bool isListed(const std::string& folder, const std::string& name) {
  std::error_code code;
  for (std::filesystem::directory_iterator entry(folder, code), end; !code && entry != end;
       entry.increment(code)) {
    if (entry->path().filename() == name) return true;
  }
  return false;
}

// What one call did, in words; empty: what it should.
std::string failure(const std::string& what, int code) {
  return code == 0 ? "" : what + ": " + std::strerror(code);
}

std::string difference(const std::string& what, bool isRight) { return isRight ? "" : what; }

int codeOf(int result) { return result == 0 ? 0 : errno; }

// Why no space can be reserved; empty: it can.
std::string refusalOfSpace(const std::string& path) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
  if (descriptor < 0) return std::strerror(errno);
  const bool isReserved = (reserveSpace(descriptor, Reservation::contiguous, kReservedBytes) ||
                           reserveSpace(descriptor, Reservation::anywhere, kReservedBytes)) &&
                          ftruncate(descriptor, kReservedBytes) == 0;
  const int code = errno;
  (void)close(descriptor);
  return isReserved ? "" : std::strerror(code);
}

}  // namespace

void tryCalls(const ProbeFolder& folder, Probe& probe) {
  const std::string file = folder.path + "/file", other = folder.path + "/other";
  const auto note = [&probe](const std::string& trouble) {
    if (!trouble.empty()) probe.troubles.push_back(trouble);
  };
  note(failure("a file can't be written", writeProbeFile(file, "one\n")));
  note(failure("a file can't be appended to", writeProbeFile(file, "two\n", true)));
  note(difference("a file does not read as it was written", readProbeFile(file) == "one\ntwo\n"));
  note(failure("a second file can't be written", writeProbeFile(other, "new\n")));
  note(
      failure("a file can't be renamed over another", codeOf(rename(other.c_str(), file.c_str()))));
  note(difference("a file that was renamed does not read as it was written",
                  readProbeFile(file) == "new\n"));
  note(difference("a file that was renamed is still there under its old name", !exists(other)));
  note(difference("a folder does not list a file that is in it", isListed(folder.path, "file")));
  probe.isCaseSensitive = !exists(folder.path + "/FILE");
  note(failure("a file can't be deleted", codeOf(unlink(file.c_str()))));
  note(difference("a file that was deleted is still there", !exists(file)));
  const std::string refusal = refusalOfSpace(folder.path + "/reserved");
  if (!refusal.empty()) probe.preallocationRefusal = refusal;
}

int writeProbeFile(const std::string& path, std::string_view text, bool appends) {
  std::FILE* const file = std::fopen(path.c_str(), appends ? "a" : "w");
  if (file == nullptr) return errno;
  const bool isWritten = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  const int code = isWritten ? 0 : errno;
  if (std::fclose(file) != 0) return errno;
  return code;
}

std::optional<std::string> readProbeFile(const std::string& path) {
  std::FILE* const file = std::fopen(path.c_str(), "r");
  if (file == nullptr) return std::nullopt;
  std::string text;
  char piece[4096];
  while (const std::size_t count = std::fread(piece, 1, sizeof piece, file))
    text.append(piece, count);
  const bool isRead = std::ferror(file) == 0;
  const int code = errno;
  (void)std::fclose(file);
  errno = code;
  if (!isRead) return std::nullopt;
  return text;
}

}  // namespace marrowbench::ctl
