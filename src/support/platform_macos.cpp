#include <fcntl.h>

#include <cstring>

#include "support/platform.h"

namespace marrowbench {

bool reserveSpace(int descriptor, Reservation kind, std::int64_t length) {
  fstore_t request{};
  request.fst_flags = kind == Reservation::contiguous ? F_ALLOCATECONTIG : F_ALLOCATEALL;
  request.fst_posmode = F_PEOFPOSMODE;
  request.fst_offset = 0;
  request.fst_length = length;
  request.fst_bytesalloc = 0;
  return fcntl(descriptor, F_PREALLOCATE, &request) != -1;
}

bool populatePages(std::byte* /*memory*/, std::size_t /*size*/) { return false; }

bool systemErrorText(int code, char* text, std::size_t size) {
  // The POSIX form: an unknown code is reported by the result (EINVAL).
  return strerror_r(code, text, size) == 0;
}

}  // namespace marrowbench
