#include <cstddef>
#include <cstdio>
#include <new>

#include "main/program.h"

int main(int argc, char** argv) {
  try {
    return marrowbench::runProgram({argv, static_cast<std::size_t>(argc)});
  } catch (const std::bad_alloc&) {
    // Caught, so that what is held is released on the way: a lock would stay behind otherwise.
    std::puts("ERROR: Out of memory");
    return 1;
  }
}
