#include "settings/raw_line.h"

#include <string_view>

namespace marrowbench {
namespace {

constexpr std::size_t kKeptBytes = 1048576;
constexpr std::uint64_t kLengthModulus = 65536;
static_assert(kKeptBytes >= kLengthModulus);

}  // namespace

bool readRawLine(std::istream& file, RawLine& line) {
  line.text.clear();
  line.length = 0;
  for (char c = '\0'; file.get(c) && c != '\n'; ++line.length) {
    if (line.text.size() < kKeptBytes) line.text.push_back(c);
  }
  return file.good() || (line.length > 0 && !file.bad());
}

LineString charactersOf(const RawLine& line) {
  // The length wraps as it always has, for what is not kept, too.
  const auto length = static_cast<std::size_t>(line.length % kLengthModulus);
  LineString characters;
  characters.assignBytes(std::string_view(line.text).substr(0, length));
  return characters;
}

}  // namespace marrowbench
