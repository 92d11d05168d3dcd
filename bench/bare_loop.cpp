#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "support/present_memory.h"

// The calls of a Posix test and nothing else: what the program's own speed is compared with.
//
//   bench_bare_loop TIMES read|write CHUNK FILE BYTES
//   bench_bare_loop TIMES read-block CHUNK FILE BYTES   every chunk into the same memory
//   bench_bare_loop TIMES copy CHUNK SOURCE DEST
//
// Prints the milliseconds of TIMES transfers, each from the look at the file to the last close;
// status 1: a call failed.
namespace {

using Clock = std::chrono::steady_clock;

void require(bool succeeded, const char* path) {
  if (succeeded) return;
  std::perror(path);
  std::exit(1);
}

std::size_t sizeOf(const char* path) {
  struct stat status {};
  require(stat(path, &status) == 0, path);
  return static_cast<std::size_t>(status.st_size);
}

int openForRead(const char* path) {
  const int file = open(path, O_RDONLY);
  require(file >= 0, path);
  return file;
}

int openForWrite(const char* path) {
  const int file = open(path, O_WRONLY | O_CREAT, 0666);
  require(file >= 0, path);
  return file;
}

// `step` is how far the memory of one chunk lies behind that of the one before.
void readAll(const char* path, std::size_t chunk, std::byte* memory, std::size_t step) {
  const std::size_t size = sizeOf(path);
  const int file = openForRead(path);
  for (std::size_t done = 0; done < size; done += chunk, memory += step) {
    const std::size_t length = std::min(chunk, size - done);
    require(read(file, memory, length) == static_cast<ssize_t>(length), path);
  }
  close(file);
}

void writeAll(const char* path, std::size_t chunk, const std::byte* memory, std::size_t size) {
  const int file = openForWrite(path);
  for (std::size_t done = 0; done < size; done += chunk) {
    const std::size_t length = std::min(chunk, size - done);
    require(write(file, memory + done, length) == static_cast<ssize_t>(length), path);
  }
  close(file);
}

void copyAll(const char* from, const char* to, std::size_t chunk) {
  const std::size_t size = sizeOf(from);
  const int source = openForRead(from);
  const int dest = openForWrite(to);
  auto* memory = static_cast<std::byte*>(std::malloc(chunk));
  require(memory != nullptr, "malloc");
  for (std::size_t done = 0; done < size; done += chunk) {
    const std::size_t length = std::min(chunk, size - done);
    require(read(source, memory, length) == static_cast<ssize_t>(length), from);
    require(write(dest, memory, length) == static_cast<ssize_t>(length), to);
  }
  std::free(memory);
  close(source);
  close(dest);
}

template <class Transfer>
void time(int times, Transfer transfer) {
  const auto start = Clock::now();
  for (int i = 0; i < times; ++i) transfer();
  const std::chrono::duration<double, std::milli> passed = Clock::now() - start;
  std::printf("%.3f\n", passed.count());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) return 2;
  const int times = std::atoi(argv[1]);
  const std::string kind = argv[2];
  const std::size_t chunk = std::strtoull(argv[3], nullptr, 10);
  const char* const path = argv[4];
  if (kind == "copy") {
    time(times, [&] { copyAll(path, argv[5], chunk); });
    return 0;
  }
  const std::size_t size = std::strtoull(argv[5], nullptr, 10);
  auto* memory = static_cast<std::byte*>(std::malloc(size));
  require(memory != nullptr, "malloc");
  marrowbench::makePresent(memory, size);
  std::memset(memory, 1, size);
  if (kind == "write") {
    time(times, [&] { writeAll(path, chunk, memory, size); });
  } else {
    time(times, [&] { readAll(path, chunk, memory, kind == "read" ? chunk : 0); });
  }
  std::free(memory);
  return 0;
}
