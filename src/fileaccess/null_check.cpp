#include "fileaccess/null_check.h"

#include <algorithm>
#include <array>

namespace marrowbench {
namespace {

template <std::size_t Count>
bool allNull(const std::byte* end, const std::array<std::ptrdiff_t, Count>& placesBefore) {
  return std::all_of(placesBefore.begin(), placesBefore.end(),
                     [end](std::ptrdiff_t places) { return *(end - places) == std::byte{0}; });
}

}  // namespace

void checkChunkForNulls(const std::byte* end, std::int32_t length, std::int64_t total,
                        std::int64_t& nullPosition) {
  if (length < 301 || nullPosition > 0) return;
  if (allNull<7>(end, {1, 50, 100, 150, 200, 250, 300})) nullPosition = total - 300;
}

void checkWholeForNulls(const std::byte* end, std::int32_t size, std::int64_t& nullPosition) {
  if (size < 500 || nullPosition > 0) return;
  if (allNull<6>(end, {1, 100, 200, 300, 400, 500})) nullPosition = size - 500;
}

}  // namespace marrowbench
