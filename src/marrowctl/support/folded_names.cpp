#include "marrowctl/support/folded_names.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace marrowbench::ctl {
namespace {

// Longer ones are names, not numbers, and fit no reader's integer.
constexpr std::size_t kMostDigits = 9;

// A number in a name.
struct Place {
  std::size_t begin = 0, length = 0;
};

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

std::vector<Place> numbersIn(std::string_view name, Folding folding) {
  std::vector<Place> places;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (!isDigit(name[i])) continue;
    if (i == 0 || !isDigit(name[i - 1])) places.push_back({i, 0});
    ++places.back().length;
  }
  std::erase_if(places, [name, folding](const Place& place) {
    const bool isInside = place.begin + place.length < name.size();
    return place.length > kMostDigits || (folding == Folding::atTheEnd && isInside);
  });
  return places;
}

// One more; leading zeros keep their width. Nothing where they would have to give it up: not every
// reader of [09-100] takes that for what we mean.
std::optional<std::string> successorOf(std::string_view digits) {
  std::uint64_t number = 0;
  (void)std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const std::string next = std::to_string(number + 1);
  if (next.size() > digits.size() && (digits.starts_with('0') && digits.size() > 1))
    return std::nullopt;
  return std::string(digits.size() - std::min(digits.size(), next.size()), '0') + next;
}

// The name behind this one when the number at the place counts up.
std::optional<std::string> nextName(std::string_view name, const Place& place) {
  const auto successor = successorOf(name.substr(place.begin, place.length));
  if (!successor || successor->size() > kMostDigits) return std::nullopt;
  return std::string(name.substr(0, place.begin)) + *successor +
         std::string(name.substr(place.begin + place.length));
}

// The number that begins there.
Place numberAt(std::string_view name, std::size_t begin) {
  std::size_t end = begin;
  while (end < name.size() && isDigit(name[end])) ++end;
  return {begin, end - begin};
}

// How many names from the first on count up at the place.
std::size_t runLength(std::span<const std::string> names, std::size_t placeBegin) {
  std::size_t length = 1;
  const Place first = numberAt(names.front(), placeBegin);
  const bool isPadded = first.length > 1 && names.front()[placeBegin] == '0';
  while (length < names.size()) {
    const std::string& last = names[length - 1];
    if (nextName(last, numberAt(last, placeBegin)) != names[length]) break;
    // A range of padded numbers has one width: readers refuse [01-100], or take it for others.
    if (isPadded && numberAt(names[length], placeBegin).length != first.length) break;
    ++length;
  }
  return length;
}

std::string folded(std::span<const std::string> run, const Place& place) {
  const std::string_view first = run.front();
  const std::string_view last = run.back();
  const std::size_t behind = first.size() - place.begin - place.length;
  const std::string_view lastNumber = last.substr(place.begin, last.size() - behind - place.begin);
  std::string text(first.substr(0, place.begin));
  text.append("[").append(first.substr(place.begin, place.length));
  text.append("-").append(lastNumber).append("]");
  return text.append(first.substr(first.size() - behind));
}

}  // namespace

std::string foldedNames(std::span<const std::string> names, Folding folding) {
  std::string list;
  while (!names.empty()) {
    Place best;
    std::size_t length = 1;
    for (const Place& place : numbersIn(names.front(), folding)) {
      const std::size_t found = runLength(names, place.begin);
      if (found <= length) continue;
      best = place;
      length = found;
    }
    if (!list.empty()) list += ',';
    list += length == 1 ? names.front() : folded(names.first(length), best);
    names = names.subspan(length);
  }
  return list;
}

}  // namespace marrowbench::ctl
