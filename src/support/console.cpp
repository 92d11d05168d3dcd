#include "support/console.h"

#include <cstdio>

namespace marrowbench {

void flushConsole() {
  (void)std::fflush(stdout);
  (void)std::fflush(stderr);
}

}  // namespace marrowbench
