#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

#include "fileaccess/malloc_block.h"
#include "fileaccess/timed_loops.h"
#include "run/test_data.h"
#include "support/present_memory.h"

// What needs no file server: the test data, and the timed loops on methods that move nothing.
namespace marrowbench {
namespace {

void fill(benchmark::State& state, FillPath path) {
  if (!canFill(path)) return state.SkipWithError("this processor can not");
  const auto size = static_cast<std::int32_t>(state.range(0));
  const auto memory = mallocBlock<std::byte>(size);
  const std::span<std::byte> data(memory.get(), static_cast<std::size_t>(size));
  makePresent(data.data(), data.size());
  std::uint64_t seed = 0;
  for ([[maybe_unused]] auto _ : state) {
    fillTestData(data, ++seed, path);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void fillSizes(benchmark::internal::Benchmark* fillBenchmark) {
  fillBenchmark->Arg(64 << 10)->Arg(1 << 30)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(fill, byteLoop, FillPath::byteLoop)->Apply(fillSizes);
BENCHMARK_CAPTURE(fill, scalarLanes, FillPath::scalarLanes)->Apply(fillSizes);
BENCHMARK_CAPTURE(fill, vector256, FillPath::vector256)->Apply(fillSizes);
BENCHMARK_CAPTURE(fill, vector512, FillPath::vector512)->Apply(fillSizes);

// A chunk that is long enough for the null check to look at it, and so few of them that all stay in
// the processor's cache, where a chunk is when it has just been transferred.
constexpr std::int32_t kChunk = 1024;
constexpr std::int32_t kChunks = 512;

struct NullReadWrite final : _fileReadWriteBuffer {
  bool open() override { return true; }
  void close() override {}
  bool transferChunk(std::byte* /*chunk*/, const std::int32_t& /*length*/) override { return true; }
};

struct NullCopy final : _fileCopy {
  bool open() override { return true; }
  void close() override {}
  bool transferChunk(std::byte* buffer, const std::int32_t& /*length*/) override {
    *buffer = std::byte{1};
    return true;
  }
};

void countChunks(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * kChunks); }

void loopOverMemory(benchmark::State& state) {
  const auto memory = mallocBlock<std::byte>(kChunk * kChunks);
  fillTestData({memory.get(), std::size_t{kChunk} * kChunks}, 1);
  NullReadWrite method;
  method.buffer = memory.get();
  method.parameters.chunkSize = kChunk;
  method.parameters.fileSize = kChunk * kChunks;
  for ([[maybe_unused]] auto _ : state) {
    if (!runReadWrite(method)) state.SkipWithError("the loop failed");
  }
  countChunks(state);
}
BENCHMARK(loopOverMemory);

void loopOfCopy(benchmark::State& state) {
  char path[] = "/tmp/marrowbench_bench_XXXXXX";
  const int file = mkstemp(path);
  NullCopy method;
  method.sourcePath = path;
  method.parameters.chunkSize = kChunk;
  if (file < 0 || ftruncate(file, kChunk * kChunks) != 0) state.SkipWithError("no source file");
  for ([[maybe_unused]] auto _ : state) {
    if (!runCopy(method)) state.SkipWithError("the loop failed");
  }
  countChunks(state);
  close(file);
  unlink(path);
}
BENCHMARK(loopOfCopy);

}  // namespace
}  // namespace marrowbench

int main(int argc, char** argv) {
  benchmark::AddCustomContext("compiler", MARROWBENCH_COMPILER);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
