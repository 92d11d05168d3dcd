#include "marrowctl/plan/path_pattern.h"

#include <algorithm>

#include "support/fixed_string.h"

namespace marrowbench::ctl {
namespace {

std::string_view valueOf(char mark, const MarkValues& values) {
  if (mark == kHostMark) return values.host;
  return mark == kIterationMark ? values.iteration : values.date;
}

}  // namespace

std::string filledIn(std::string_view text, const MarkValues& values) {
  std::string result;
  result.reserve(text.size() + values.host.size() + values.iteration.size() + values.date.size());
  while (!text.empty()) {
    const auto mark = std::find_if(text.begin(), text.end(), isMark);
    result.append(text.begin(), mark);
    if (mark == text.end()) break;
    const std::string_view value = valueOf(*mark, values);
    if (value.empty()) {
      result += *mark;
    } else {
      result += value;
    }
    text.remove_prefix(static_cast<std::size_t>(mark - text.begin()) + 1);
  }
  return result;
}

bool canBeFilledIn(std::string_view host) {
  return !host.empty() && host.size() <= kLongestHost &&
         std::all_of(host.begin(), host.end(), [](char c) {
           const char upper = upperCase(c);
           return (upper >= 'A' && upper <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
         });
}

}  // namespace marrowbench::ctl
