#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "support/platform.h"

namespace marrowbench {
namespace {

// Two C libraries, two forms of strerror_r(). GNU's returns the text; only for an unknown code is
// that one that it has written into the buffer ("Unknown error 12345"), known texts stand in the
// library.
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
  // Linux has no request for contiguous blocks, both kinds are the same call. posix_fallocate()
  // is no way out on file systems that refuse: it then writes into every block, and that time
  // would count as time of the transfer. fallocate() answers EINVAL to a length of 0.
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
  // A wish only: systems without large pages refuse it.
  (void)madvise(pages, end - begin, MADV_HUGEPAGE);
  return madvise(pages, end - begin, kPopulateWrite) == 0;
}

bool systemErrorText(int code, char* text, std::size_t size) {
  return isKnown(strerror_r(code, text, size), text, size);
}

}  // namespace marrowbench
