#include <cstddef>
#include <cstdio>
#include <new>

#include "main/program.h"

int main(int argc, char** argv) {
  try {
    return marrowbench::runProgram({argv, static_cast<std::size_t>(argc)});
  } catch (const std::bad_alloc&) {
    // Caught, so that everything is released on the way here: else a lock would stay behind.
    std::puts("ERROR: Out of memory");
    return 1;
  }
}
