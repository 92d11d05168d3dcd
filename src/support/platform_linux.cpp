#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "support/platform.h"

namespace marrowbench {
namespace {

// Two C libraries, two forms of strerror_r(). GNU's returns the text: a known one stands in the
// library, that of an unknown code ("Unknown error 12345") in the buffer.
[[maybe_unused]] bool isKnown(const char* found, char* text, std::size_t size) {
  if (found == text) return false;
  (void)std::snprintf(text, size, "%s", found);
  return true;
}

// musl's always succeeds and has one text for all unknown codes.
[[maybe_unused]] bool isKnown(int /*status*/, const char* text, std::size_t /*size*/) {
  return std::strcmp(text, std::strerror(-1)) != 0;
}

}  // namespace

bool reserveSpace(int descriptor, Reservation /*kind*/, std::int64_t length) {
  // Both kinds are the same call: Linux has no request for contiguous blocks. It is not
  // posix_fallocate(), which writes into every block where the file system refuses: that time would
  // count as time of the transfer. For a length of 0 the call would fail with EINVAL.
  if (length == 0) return true;
  return fallocate(descriptor, FALLOC_FL_KEEP_SIZE, 0, length) == 0;
}

bool populatePages(std::byte* memory, std::size_t size) {
  // MADV_POPULATE_WRITE, since Linux 5.14; older C libraries don't name it.
  constexpr int kPopulateWrite = 23;
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto address = reinterpret_cast<std::uintptr_t>(memory);
  const std::uintptr_t begin = address / page * page;
  const std::uintptr_t end = (address + size + page - 1) / page * page;
  auto* pages = memory - (address - begin);
  // May fail: systems without large pages refuse it.
  (void)madvise(pages, end - begin, MADV_HUGEPAGE);
  return madvise(pages, end - begin, kPopulateWrite) == 0;
}

bool systemErrorText(int code, char* text, std::size_t size) {
  return isKnown(strerror_r(code, text, size), text, size);
}

}  // namespace marrowbench
