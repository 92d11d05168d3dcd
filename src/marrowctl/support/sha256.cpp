#include "marrowctl/support/sha256.h"

#include <bit>
#include <cstddef>

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kBlock = 64;

// The names, constants and steps are those of the standard, sections 4.1.2, 4.2.2, 5 and 6.2.
using State = std::array<std::uint32_t, 8>;

constexpr State kInitial = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                            0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

constexpr std::array<std::uint32_t, 64> kRounds = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t byteAt(std::string_view text, std::size_t i) {
  return static_cast<unsigned char>(text[i]);
}

std::array<std::uint32_t, 64> scheduleOf(std::string_view block) {
  std::array<std::uint32_t, 64> w{};
  for (std::size_t t = 0; t < 16; ++t) {
    for (std::size_t i = 0; i < 4; ++i) w[t] = w[t] << 8U | byteAt(block, 4 * t + i);
  }
  for (std::size_t t = 16; t < 64; ++t) {
    const std::uint32_t x = w[t - 15], y = w[t - 2];
    const std::uint32_t s0 = std::rotr(x, 7) ^ std::rotr(x, 18) ^ x >> 3U;
    const std::uint32_t s1 = std::rotr(y, 17) ^ std::rotr(y, 19) ^ y >> 10U;
    w[t] = w[t - 16] + s0 + w[t - 7] + s1;
  }
  return w;
}

void addBlock(State& state, std::string_view block) {
  const std::array<std::uint32_t, 64> w = scheduleOf(block);
  auto [a, b, c, d, e, f, g, h] = state;
  for (std::size_t t = 0; t < 64; ++t) {
    const std::uint32_t s1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
    const std::uint32_t t1 = h + s1 + ((e & f) ^ (~e & g)) + kRounds[t] + w[t];
    const std::uint32_t s0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
    const std::uint32_t t2 = s0 + ((a & b) ^ (a & c) ^ (b & c));
    h = g, g = f, f = e, e = d + t1, d = c, c = b, b = a, a = t1 + t2;
  }
  const State rounds = {a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < state.size(); ++i) state[i] += rounds[i];
}

// What follows the last whole block: the rest of the text, a one, zeros and the length in bits.
std::string endOf(std::string_view text) {
  std::string end(text.substr(text.size() / kBlock * kBlock));
  end += '\x80';
  while (end.size() % kBlock != kBlock - 8) end += '\0';
  const std::uint64_t bits = std::uint64_t{text.size()} * 8;
  for (unsigned shift = 64; shift > 0; shift -= 8) {
    end += static_cast<char>(bits >> (shift - 8) & 0xFFU);
  }
  return end;
}

void addBlocks(State& state, std::string_view blocks) {
  for (; blocks.size() >= kBlock; blocks.remove_prefix(kBlock))
    addBlock(state, blocks.substr(0, kBlock));
}

}  // namespace

std::array<std::uint8_t, 32> sha256(std::string_view text) {
  State state = kInitial;
  addBlocks(state, text);
  addBlocks(state, endOf(text));
  std::array<std::uint8_t, 32> digest{};
  for (std::size_t i = 0; i < digest.size(); ++i) {
    digest[i] = static_cast<std::uint8_t>(state[i / 4] >> (24U - 8 * (i % 4)));
  }
  return digest;
}

std::string base64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = bytes.size() - i < 3 ? bytes.size() - i : 3;
    std::uint32_t group = 0;
    for (std::size_t j = 0; j < 3; ++j)
      group = group << 8U | (j < count ? byteAt(bytes, i + j) : 0);
    for (std::size_t j = 0; j < 4; ++j) {
      text += j <= count ? kDigits[group >> (18U - 6 * j) & 0x3FU] : '=';
    }
  }
  return text;
}

}  // namespace marrowbench::ctl
