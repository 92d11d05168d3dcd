#include "run/test_data.h"

#include <algorithm>
#include <array>

#include "run/lane_fill.h"

namespace marrowbench {
namespace {

constexpr std::uint64_t kStateForZero = 0x5B6A6A55544C46B7;
constexpr std::size_t kMostLanes = 16;

std::uint64_t stepped(std::uint64_t state) {
  state ^= state >> 12;
  state ^= state << 25;
  return state ^ state >> 27;
}

std::byte byteOf(std::uint64_t state) {
  const auto x = static_cast<std::uint32_t>((state * kFactor) >> 32);
  return static_cast<std::byte>(x % 254 + 1);
}

void fillByByte(std::span<std::byte> data, std::uint64_t state) {
  for (std::byte& byte : data) {
    state = stepped(state);
    byte = byteOf(state);
  }
}

// Four stripes at once: a step has to wait for the one before, and meanwhile the others compute.
constexpr int kScalarLanes = 4;

void fillScalarLanes(std::byte* data, std::size_t length, const std::uint64_t* states) {
  std::array<std::uint64_t, kScalarLanes> state{};
  std::copy_n(states, kScalarLanes, state.begin());
  for (std::size_t offset = 0; offset < length; ++offset) {
    for (std::size_t lane = 0; lane < kScalarLanes; ++lane) {
      state[lane] = stepped(state[lane]);
      data[lane * length + offset] = byteOf(state[lane]);
    }
  }
}

LaneFill laneFillFor(FillPath path) {
  switch (path) {
    case FillPath::byteLoop: break;
    case FillPath::scalarLanes: return {kScalarLanes, fillScalarLanes};
    case FillPath::vector256: return laneFill256();
    case FillPath::vector512: return laneFill512();
  }
  return {};
}

// How to jump n steps ahead. A step is linear over the field of two elements: a matrix T. Its
// characteristic polynomial P, of degree 64 (found with Berlekamp and Massey's algorithm from 128
// successive bits of the state; the term x^64 is left out here), makes P(T) zero. So T^n is J(T)
// with J = x^n mod P, and J(T) applied to a state is the sum of those T^i * state, 0 <= i < 64,
// whose x^i is in J.
constexpr std::uint64_t kCharacteristic = 0x0018B73AA7CC9B71;

std::uint64_t timesModulo(std::uint64_t a, std::uint64_t b) {
  std::uint64_t product = 0;
  for (; b != 0; b >>= 1) {
    if ((b & 1) != 0) product ^= a;
    a = a << 1 ^ (a >> 63 != 0 ? kCharacteristic : 0);
  }
  return product;
}

std::uint64_t jumpPolynomial(std::size_t steps) {
  std::uint64_t power = 1;
  for (std::uint64_t square = 2; steps != 0; steps >>= 1) {
    if ((steps & 1) != 0) power = timesModulo(power, square);
    square = timesModulo(square, square);
  }
  return power;
}

std::uint64_t jumped(std::uint64_t state, std::uint64_t polynomial) {
  std::uint64_t sum = 0;
  for (; polynomial != 0; polynomial >>= 1) {
    if ((polynomial & 1) != 0) sum ^= state;
    state = stepped(state);
  }
  return sum;
}

// An odd number of cache lines: stripes that lie a power of two apart would compete for the same
// places in the cache.
std::size_t stripeLength(std::size_t size, int lanes) {
  constexpr std::size_t kCacheLine = 64;
  const std::size_t lines = size / static_cast<std::size_t>(lanes) / kCacheLine;
  return lines == 0 ? 0 : ((lines - 1) | 1) * kCacheLine;
}

}  // namespace

std::uint64_t testDataSeed(std::int32_t configIndex, std::int32_t iteration) {
  return static_cast<std::uint64_t>(std::int64_t{configIndex} * 1333 + iteration);
}

bool canFill(FillPath path) { return path == FillPath::byteLoop || laneFillFor(path).lanes != 0; }

FillPath fastestFillPath() {
  static const FillPath fastest = [] {
    for (const FillPath path : {FillPath::vector512, FillPath::vector256}) {
      if (canFill(path)) return path;
    }
    return FillPath::scalarLanes;
  }();
  return fastest;
}

void fillTestData(std::span<std::byte> data, std::uint64_t seed, FillPath path) {
  std::uint64_t state = seed == 0 ? kStateForZero : seed;
  const LaneFill laneFill = laneFillFor(path);
  const std::size_t length = laneFill.lanes == 0 ? 0 : stripeLength(data.size(), laneFill.lanes);
  if (length == 0) return fillByByte(data, state);

  const auto lanes = static_cast<std::size_t>(laneFill.lanes);
  const std::uint64_t polynomial = jumpPolynomial(length);
  std::array<std::uint64_t, kMostLanes> states{};
  for (std::size_t lane = 0; lane < lanes; ++lane) {
    states.at(lane) = state;
    state = jumped(state, polynomial);
  }
  laneFill.fill(data.data(), length, states.data());
  fillByByte(data.subspan(lanes * length), state);
}

}  // namespace marrowbench
