#ifndef MARROWBENCH_TESTS_HELPERS_SYSTEM_LIMITS_H
#define MARROWBENCH_TESTS_HELPERS_SYSTEM_LIMITS_H

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

namespace marrowbench::test {

/// A limit of this process that holds as long as the object.
class ProcessLimit {
 public:
  ProcessLimit(const ProcessLimit&) = delete;
  ProcessLimit& operator=(const ProcessLimit&) = delete;
  ~ProcessLimit() { (void)setrlimit(resource, &before); }

 protected:
  ProcessLimit(decltype(RLIMIT_FSIZE) limitedResource, rlim_t limit) : resource(limitedResource) {
    (void)getrlimit(resource, &before);
    rlimit lowered = before;
    lowered.rlim_cur = limit;
    (void)setrlimit(resource, &lowered);
  }

 private:
  decltype(RLIMIT_FSIZE) resource;
  rlimit before{};
};

/// No file grows beyond so many bytes: a write that crosses the limit is cut, the next one fails.
class FileSizeLimit : public ProcessLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes)
      : ProcessLimit(RLIMIT_FSIZE, bytes), handler(std::signal(SIGXFSZ, SIG_IGN)) {}
  ~FileSizeLimit() { (void)std::signal(SIGXFSZ, handler); }

 private:
  void (*handler)(int);
};

/// malloc has nothing left for blocks of 1 GiB and more.
class AddressSpaceLimit : public ProcessLimit {
 public:
  AddressSpaceLimit() : ProcessLimit(RLIMIT_AS, 1073741824) {}
};

/// False where the address sanitizer ends the process when malloc has no memory.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kMallocCanFail = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
inline constexpr bool kMallocCanFail = false;
#else
inline constexpr bool kMallocCanFail = true;
#endif
#else
inline constexpr bool kMallocCanFail = true;
#endif

/// How many descriptors this process has open.
[[nodiscard]] inline int openDescriptors() {
  int count = 0;
  for (int i = 0; i < 256; ++i) count += fcntl(i, F_GETFD) == -1 ? 0 : 1;
  return count;
}

/// The descriptor that the next open will give.
[[nodiscard]] inline int nextDescriptor() {
  const int next = dup(STDIN_FILENO);
  (void)close(next);
  return next;
}

/// libc++ builds its file streams on stdio: below an unbuffered stream there is stdio's buffer.
#if defined(_LIBCPP_VERSION)
inline constexpr bool kStreamsHaveStdioBelow = true;
#else
inline constexpr bool kStreamsHaveStdioBelow = false;
#endif

}  // namespace marrowbench::test

#endif
