#include "fileaccess/preallocate.h"

#include <unistd.h>

#include <cerrno>

#include "support/platform.h"

namespace marrowbench {

bool preallocateFile(int descriptor, std::int32_t fileSize) {
  if (fileSize < 0) {
    errno = EINVAL;
    return false;
  }
  return (reserveSpace(descriptor, Reservation::contiguous, fileSize) ||
          reserveSpace(descriptor, Reservation::anywhere, fileSize)) &&
         ftruncate(descriptor, fileSize) == 0;
}

}  // namespace marrowbench
