#include "marrowctl/support/utf8.h"

#include <algorithm>

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

unsigned byteAt(std::string_view text, std::size_t i) {
  return static_cast<unsigned char>(text[i]);
}

bool isContinuation(unsigned byte) { return (byte & 0xC0U) == 0x80U; }

std::size_t lengthByLead(unsigned lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

// Overlong forms, surrogates and what lies above U+10FFFF show in the second byte.
bool mayFollow(unsigned lead, unsigned second) {
  switch (lead) {
    case 0xE0: return second >= 0xA0;
    case 0xED: return second <= 0x9F;
    case 0xF0: return second >= 0x90;
    case 0xF4: return second <= 0x8F;
    default: return true;
  }
}

bool isControl(std::string_view character) {
  const unsigned lead = byteAt(character, 0);
  if (character.size() == 1) return lead < 0x20 || lead == 0x7F;
  return lead == 0xC2 && byteAt(character, 1) < 0xA0;
}

bool isPlain(char byte) { return byte >= ' ' && byte <= '~'; }

template <class Map>
std::string mapped(std::string_view text, Map map) {
  std::string result;
  result.reserve(text.size());
  for (;;) {
    // Nearly all of it, mostly.
    const auto odd = std::find_if_not(text.begin(), text.end(), isPlain);
    result.append(text.begin(), odd);
    text.remove_prefix(static_cast<std::size_t>(odd - text.begin()));
    if (text.empty()) return result;
    const std::size_t length = characterLength(text);
    result += length == 0 ? kReplacement : map(text.substr(0, length));
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
}

}  // namespace

std::size_t characterLength(std::string_view text) {
  if (text.empty()) return 0;
  const unsigned lead = byteAt(text, 0);
  const std::size_t length = lengthByLead(lead);
  if (length == 0 || length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if (!isContinuation(byteAt(text, i))) return 0;
  }
  return length < 3 || mayFollow(lead, byteAt(text, 1)) ? length : 0;
}

std::string repairedUtf8(std::string_view text) {
  return mapped(text, [](std::string_view character) { return character; });
}

std::string printable(std::string_view text) {
  return mapped(text, [](std::string_view character) {
    if (character == "\t") return std::string_view(" ");
    return isControl(character) ? kReplacement : character;
  });
}

std::size_t columnsOf(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
    return !isContinuation(static_cast<unsigned char>(byte));
  }));
}

}  // namespace marrowbench::ctl
