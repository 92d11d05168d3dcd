#include "marrowctl/check/lookalikes.h"

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "marrowctl/plan/path_pattern.h"

namespace marrowbench::ctl {
namespace {

// Digits in a row, with or without a mark among them. Whatever number comes for the mark, it begins
// and ends at the same place in the name.
struct Number {
  std::size_t begin = 0, end = 0;
};

bool isOfNumber(char c) { return (c >= '0' && c <= '9') || c == kIterationMark; }

struct Name {
  std::string_view text;
  std::vector<Number> marked;
  std::vector<Number> plain;

  explicit Name(std::string_view name) : text(name) {
    for (auto end = text.begin(); end != text.end();) {
      const auto begin = std::find_if(end, text.end(), isOfNumber);
      end = std::find_if_not(begin, text.end(), isOfNumber);
      if (begin == end) continue;
      const bool isMarked = std::find(begin, end, kIterationMark) != end;
      (isMarked ? marked : plain).push_back({offset(begin), offset(end)});
    }
  }

  [[nodiscard]] std::size_t hashWithout(const Number& number) const {
    std::string rest;
    rest.reserve(text.size());
    rest.append(text.substr(0, number.begin)) += kIterationMark;
    return std::hash<std::string>()(rest.append(text.substr(number.end)));
  }

  [[nodiscard]] std::pair<char, char> neighboursOf(const Number& number) const {
    return {number.begin == 0 ? '\0' : text[number.begin - 1],
            number.end == text.size() ? '\0' : text[number.end]};
  }

 private:
  [[nodiscard]] std::size_t offset(std::string_view::iterator place) const {
    return static_cast<std::size_t>(place - text.begin());
  }
};

}  // namespace

void Lookalikes::add(std::string_view name) {
  const Name added(name);
  if (added.marked.size() == 1) {
    numbered.insert(added.hashWithout(added.marked.front()));
    marked.insert(added.neighboursOf(added.marked.front()));
  } else if (added.marked.empty()) {
    for (const Number& number : added.plain) plain.insert(added.hashWithout(number));
  }
}

bool Lookalikes::mayMeet(std::string_view name) const {
  const Name sought(name);
  if (sought.marked.size() != 1) return true;
  const std::size_t hash = sought.hashWithout(sought.marked.front());
  if (numbered.contains(hash) || plain.contains(hash)) return true;
  return std::any_of(sought.plain.begin(), sought.plain.end(), [&](const Number& number) {
    return marked.contains(sought.neighboursOf(number));
  });
}

}  // namespace marrowbench::ctl
