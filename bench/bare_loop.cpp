#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fileaccess/malloc_block.h"
#include "run/method_run.h"
#include "support/present_memory.h"

// Compares Posix tests with the same calls and nothing else, in turns and on the same memory.
//
//   bench_bare_loop SAMPLES read|write CHUNK FILE BYTES
//   bench_bare_loop SAMPLES copy CHUNK SOURCE DEST
//   bench_bare_loop SAMPLES read-block CHUNK FILE BYTES
//
// Prints a line for each sample: the milliseconds that five tests report, and those of five bare
// loops, each from the look at the file to the last close. read-block: the milliseconds of bare
// loops into memory for the whole file, and into the memory of one chunk. Status 1: a call failed.
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

// `step`: how far the memory moves on from chunk to chunk; 0 reads all into the same place.
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

struct Arguments {
  std::size_t chunk;
  const char* path;
  const char* last;
};

double reported(const marrowbench::_fileGLobal& result) {
  if (result.errorText.isNotEmpty()) std::fputs(result.errorText.c_str(), stderr);
  require(result.errorText.isEmpty(), "test");
  return static_cast<double>(result.parameters.stats.dataMs);
}

template <class Transfer>
double timed(Transfer transfer) {
  const auto start = Clock::now();
  transfer();
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Calls both in turns, so that what the machine does meanwhile hits them alike.
template <class First, class Second>
void printSamples(int samples, First first, Second second) {
  constexpr int kTimes = 5;
  for (int sample = 0; sample < samples; ++sample) {
    double firstMs = 0;
    double secondMs = 0;
    for (int i = 0; i < kTimes; ++i) {
      firstMs += first();
      secondMs += second();
    }
    std::printf("%.3f %.3f\n", firstMs, secondMs);
  }
}

marrowbench::TestConfig posixTest(std::size_t chunk) {
  marrowbench::TestConfig config;
  config.method = marrowbench::Method::posix;
  config.parameters.parameters.chunkSize = static_cast<std::int32_t>(chunk);
  return config;
}

void compareCopies(int samples, const Arguments& a) {
  const marrowbench::TestConfig config = posixTest(a.chunk);
  const auto ours = [&] {
    marrowbench::_fileGLobal result;
    runCopyTest(config, a.path, a.last, result);
    return reported(result);
  };
  printSamples(samples, ours, [&] { return timed([&] { copyAll(a.path, a.last, a.chunk); }); });
}

void compareWithMemory(int samples, const std::string& kind, const Arguments& a) {
  const std::size_t size = std::strtoull(a.last, nullptr, 10);
  const auto block = marrowbench::mallocBlock<std::byte>(static_cast<std::int32_t>(size));
  require(block != nullptr, "malloc");
  std::byte* const memory = block.get();
  marrowbench::makePresent(memory, size);
  std::memset(memory, 1, size);

  marrowbench::TestConfig config = posixTest(a.chunk);
  config.parameters.parameters.fileSize = static_cast<std::int32_t>(size);
  const auto ours = [&] {
    marrowbench::_fileGLobal result;
    runReadWriteTest(config, a.path, memory, kind == "read", result);
    return reported(result);
  };
  const auto reading = [&](std::size_t step) {
    return timed([&] { readAll(a.path, a.chunk, memory, step); });
  };
  const auto writing = [&] { return timed([&] { writeAll(a.path, a.chunk, memory, size); }); };
  if (kind == "write") return printSamples(samples, ours, writing);
  const auto whole = [&] { return reading(a.chunk); };
  if (kind == "read") return printSamples(samples, ours, whole);
  printSamples(samples, whole, [&] { return reading(0); });
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) return 2;
  const int samples = std::atoi(argv[1]);
  const std::string kind = argv[2];
  const Arguments arguments{std::strtoull(argv[3], nullptr, 10), argv[4], argv[5]};
  kind == "copy" ? compareCopies(samples, arguments) : compareWithMemory(samples, kind, arguments);
  return 0;
}
