#include <cstddef>

#include "main/program.h"

int main(int argc, char** argv) {
  return marrowbench::runProgram({argv, static_cast<std::size_t>(argc)});
}
