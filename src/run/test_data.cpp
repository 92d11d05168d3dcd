#include "run/test_data.h"

namespace marrowbench {
namespace {

constexpr std::uint64_t kStateForZero = 0x5B6A6A55544C46B7;

std::uint32_t nextRandom(std::uint64_t& state) {
  state ^= state >> 12;
  state ^= state << 25;
  state ^= state >> 27;
  return static_cast<std::uint32_t>((state * 0x2545F4914F6CDD1D) >> 32);
}

}  // namespace

std::uint64_t testDataSeed(std::int32_t configIndex, std::int32_t iteration) {
  return static_cast<std::uint64_t>(std::int64_t{configIndex} * 1333 + iteration);
}

void fillTestData(std::span<std::byte> data, std::uint64_t seed) {
  std::uint64_t state = seed == 0 ? kStateForZero : seed;
  for (std::byte& byte : data) byte = static_cast<std::byte>(nextRandom(state) % 254 + 1);
}

}  // namespace marrowbench
