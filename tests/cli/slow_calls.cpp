// Preloaded into the program: makes the windows between its calls on a lock file wide, and writes
// down what the calls did.
//
// SLOW_CALLS_LOG       file for the events
//
// SLOW_CALLS_PAUSE_MS  each call on a name with "_lock.txt" in it comes 1 ms to so many later
//
// SLOW_CALLS_HOLD_MS   pause before a table, a name that ends in ".csv", is opened for a row
//
// SLOW_CALLS_AHEAD     seconds by which the process's clock is ahead
//
// SLOW_CALLS_STOP      "created", "noted", "opened" or "appended": the process stops itself when it
// has first created the lock, written its note, opened the table or closed it
//
// An event is a line "NANOSECONDS PID WHAT AGE", by the monotonic clock; AGE is that of a removed
// lock file in seconds. A call that creates or removes a lock or writes a row and its line in the
// log are one step for all processes: the order of the lines is that in which things happened.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

namespace {

constexpr std::string_view kLockEnding = "_lock.txt";
constexpr std::string_view kTableEnding = ".csv";

// The function of this name that the program would call without this file.
template <typename Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::int64_t setting(const char* name) {
  const char* text = std::getenv(name);
  return text == nullptr ? 0 : std::strtoll(text, nullptr, 10);
}

bool isLock(std::string_view path) { return path.ends_with(kLockEnding); }
bool isTable(std::string_view path) { return path.ends_with(kTableEnding); }
bool concernsLock(const char* path) { return std::strstr(path, kLockEnding.data()) != nullptr; }

// The system's own clock, whatever SLOW_CALLS_AHEAD says.
timespec clockNow(clockid_t clock) {
  timespec now{};
  (void)syscall(SYS_clock_gettime, clock, &now);
  return now;
}

void sleepUs(std::int64_t microseconds) {
  const timespec length{microseconds / 1'000'000, microseconds % 1'000'000 * 1000};
  (void)nanosleep(&length, nullptr);
}

std::uint32_t randomNumber() {
  static std::uint32_t state = static_cast<std::uint32_t>(getpid()) * 2654435761U | 1U;
  state ^= state << 13;
  state ^= state >> 17;
  state ^= state << 5;
  return state;
}

void pauseBeforeCall() {
  static const std::int64_t longest = setting("SLOW_CALLS_PAUSE_MS") * 1000;
  const int code = errno;
  if (longest > 0) sleepUs(1000 + randomNumber() % (longest - 999));
  errno = code;
}

int logFile() {
  static const int file = [] {
    const char* path = std::getenv("SLOW_CALLS_LOG");
    if (path == nullptr) return -1;
    return static_cast<int>(
        syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
  }();
  return file;
}

// While it lives nobody else writes to the log.
class Turn {
 public:
  Turn() {
    while (syscall(SYS_flock, logFile(), LOCK_EX) != 0 && errno == EINTR) continue;
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() {
    const int code = errno;
    (void)syscall(SYS_flock, logFile(), LOCK_UN);
    errno = code;
  }

  static void note(const char* what, std::int64_t age = 0) {
    const int code = errno;
    const timespec now = clockNow(CLOCK_MONOTONIC);
    std::array<char, 120> line{};
    const int length =
        std::snprintf(line.data(), line.size(), "%lld %d %s %lld\n",
                      static_cast<long long>(now.tv_sec) * 1'000'000'000 + now.tv_nsec, getpid(),
                      what, static_cast<long long>(age));
    (void)syscall(SYS_write, logFile(), line.data(), length);
    errno = code;
  }
};

void stopAt(std::string_view point) {
  static const char* chosen = std::getenv("SLOW_CALLS_STOP");
  if (chosen == nullptr || point != chosen) return;
  chosen = nullptr;
  const int code = errno;
  (void)raise(SIGSTOP);
  errno = code;
}

// What a descriptor belongs to.
enum class Kind : unsigned char { other, ownLock, concernsLock, table };

Kind& kindOf(int file) {
  static std::array<Kind, 1024> kinds{};
  static Kind unknown = Kind::other;
  const auto index = static_cast<std::size_t>(file);  // of -1: beyond the end
  if (index < kinds.size()) return kinds[index];
  unknown = Kind::other;
  return unknown;
}

void remember(int file, Kind kind) {
  if (file >= 0) kindOf(file) = kind;
}

// Runs `call`, which opens a file and returns its descriptor, or -1.
template <typename Call>
void openFile(const char* path, bool isExclusive, bool isForWriting, Call call) {
  if (isTable(path) && isForWriting) {
    static const std::int64_t hold = setting("SLOW_CALLS_HOLD_MS") * 1000;
    if (hold > 0) sleepUs(hold);
    const int file = call();
    remember(file, Kind::table);
    if (file >= 0) Turn::note("table-opened");
    if (file >= 0) stopAt("opened");
  } else if (concernsLock(path)) {
    pauseBeforeCall();
    bool isCreated = false;
    {
      const Turn turn;
      const int file = call();
      isCreated = file >= 0 && isExclusive && isLock(path);
      remember(file, isCreated ? Kind::ownLock : Kind::concernsLock);
      if (isCreated) Turn::note("lock-created");
    }
    if (isCreated) stopAt("created");
  } else {
    remember(call(), Kind::other);
  }
}

// Runs `call`, which writes to a file and tells whether it did.
template <typename Call>
void writeTo(int file, Call call) {
  if (kindOf(file) == Kind::table) {
    const Turn turn;
    if (call()) Turn::note("row-written");
  } else if (kindOf(file) == Kind::ownLock) {
    (void)call();
    stopAt("noted");
  } else {
    (void)call();
  }
}

template <typename Call>
void closeFile(int file, Call call) {
  const Kind kind = kindOf(file);
  kindOf(file) = Kind::other;
  if (kind == Kind::ownLock || kind == Kind::concernsLock) pauseBeforeCall();
  if (kind == Kind::other || kind == Kind::concernsLock) return call();
  const Turn turn;
  call();
  Turn::note(kind == Kind::ownLock ? "lock-closed" : "table-closed");
}

std::int64_t ageOf(const char* path) {
  struct statx status {};
  (void)syscall(SYS_statx, AT_FDCWD, path, AT_SYMLINK_NOFOLLOW, STATX_MTIME, &status);
  return clockNow(CLOCK_REALTIME).tv_sec - status.stx_mtime.tv_sec;
}

// Runs `call`, which takes the file of this name away and returns 0 when it could.
template <typename Call>
int takeAway(const char* path, Call call) {
  if (!concernsLock(path)) return call();
  pauseBeforeCall();
  const Turn turn;
  const std::int64_t age = ageOf(path);
  const int result = call();
  if (result == 0 && isLock(path)) Turn::note("lock-removed", age);
  return result;
}

std::FILE* openStream(std::FILE* (*call)(const char*, const char*), const char* path,
                      const char* mode) {
  std::FILE* stream = nullptr;
  openFile(path, std::strchr(mode, 'x') != nullptr, *mode != 'r', [&] {
    stream = call(path, mode);
    return stream == nullptr ? -1 : fileno(stream);
  });
  return stream;
}

int openDescriptor(int (*call)(const char*, int, ...), const char* path, int flags, int mode) {
  int file = -1;
  openFile(path, (flags & O_EXCL) != 0, (flags & O_ACCMODE) != O_RDONLY,
           [&] { return file = call(path, flags, mode); });
  return file;
}

template <typename Status>
int statusOf(int (*call)(const char*, Status*), const char* path, Status* status) {
  if (concernsLock(path)) pauseBeforeCall();
  return call(path, status);
}

template <typename Status>
int statusOf(int (*call)(int, Status*), int file, Status* status) {
  const Kind kind = kindOf(file);
  if (kind == Kind::ownLock || kind == Kind::concernsLock) pauseBeforeCall();
  return call(file, status);
}

std::int64_t ahead() {
  static const std::int64_t seconds = setting("SLOW_CALLS_AHEAD");
  return seconds;
}

int modeIn(int flags, va_list arguments) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, int) : 0;
}

}  // namespace

extern "C" {

std::FILE* fopen(const char* path, const char* mode) {
  static auto* const call = next<std::FILE*(const char*, const char*)>("fopen");
  return openStream(call, path, mode);
}

std::FILE* fopen64(const char* path, const char* mode) {
  static auto* const call = next<std::FILE*(const char*, const char*)>("fopen64");
  return openStream(call, path, mode);
}

int open(const char* path, int flags, ...) {
  static auto* const call = next<int(const char*, int, ...)>("open");
  va_list arguments;
  va_start(arguments, flags);
  const int mode = modeIn(flags, arguments);
  va_end(arguments);
  return openDescriptor(call, path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  static auto* const call = next<int(const char*, int, ...)>("open64");
  va_list arguments;
  va_start(arguments, flags);
  const int mode = modeIn(flags, arguments);
  va_end(arguments);
  return openDescriptor(call, path, flags, mode);
}

int fflush(std::FILE* stream) {
  static auto* const call = next<int(std::FILE*)>("fflush");
  int result = 0;
  writeTo(stream == nullptr ? -1 : fileno(stream), [&] {
    result = call(stream);
    return result == 0;
  });
  return result;
}

ssize_t write(int file, const void* data, std::size_t size) {
  static auto* const call = next<ssize_t(int, const void*, std::size_t)>("write");
  ssize_t result = 0;
  writeTo(file, [&] {
    result = call(file, data, size);
    return result > 0;
  });
  return result;
}

int fclose(std::FILE* stream) {
  static auto* const call = next<int(std::FILE*)>("fclose");
  int result = 0;
  const bool isTableStream = kindOf(fileno(stream)) == Kind::table;
  closeFile(fileno(stream), [&] { result = call(stream); });
  if (isTableStream) stopAt("appended");
  return result;
}

int close(int file) {
  static auto* const call = next<int(int)>("close");
  int result = 0;
  const bool isTableFile = kindOf(file) == Kind::table;
  closeFile(file, [&] { result = call(file); });
  if (isTableFile) stopAt("appended");
  return result;
}

int unlink(const char* path) noexcept {
  static auto* const call = next<int(const char*)>("unlink");
  return takeAway(path, [&] { return call(path); });
}

int rename(const char* from, const char* to) noexcept {
  static auto* const call = next<int(const char*, const char*)>("rename");
  return takeAway(from, [&] { return call(from, to); });
}

int stat(const char* path, struct stat* status) noexcept {
  static auto* const call = next<int(const char*, struct stat*)>("stat");
  return statusOf(call, path, status);
}

int stat64(const char* path, struct stat64* status) noexcept {
  static auto* const call = next<int(const char*, struct stat64*)>("stat64");
  return statusOf(call, path, status);
}

int lstat(const char* path, struct stat* status) noexcept {
  static auto* const call = next<int(const char*, struct stat*)>("lstat");
  return statusOf(call, path, status);
}

int fstat(int file, struct stat* status) noexcept {
  static auto* const call = next<int(int, struct stat*)>("fstat");
  return statusOf(call, file, status);
}

int fstat64(int file, struct stat64* status) noexcept {
  static auto* const call = next<int(int, struct stat64*)>("fstat64");
  return statusOf(call, file, status);
}

std::time_t time(std::time_t* out) noexcept {
  const std::time_t now = clockNow(CLOCK_REALTIME).tv_sec + ahead();
  if (out != nullptr) *out = now;
  return now;
}

int gettimeofday(timeval* now, void* /*zone*/) noexcept {
  const timespec precise = clockNow(CLOCK_REALTIME);
  *now = {precise.tv_sec + ahead(), precise.tv_nsec / 1000};
  return 0;
}

int clock_gettime(clockid_t clock, timespec* now) noexcept {
  *now = clockNow(clock);
  if (clock == CLOCK_REALTIME) now->tv_sec += ahead();
  return 0;
}

}  // extern "C"
