#include "marrowctl/sweep/value_list.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <optional>

#include "marrowctl/support/suggestion.h"
#include "marrowctl/support/units.h"
#include "support/fixed_string_ops.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kBlanks = " \t";

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

template <typename Value>
void add(ValueList<Value>& list, Value value) {
  const auto& known = list.values;
  if (std::find(known.begin(), known.end(), value) == known.end()) list.values.push_back(value);
}

// Gives each item to `take`, which returns why it refuses it.
template <typename Value>
ValueList<Value> listItems(
    std::string_view text,
    const std::function<std::string(ValueList<Value>&, std::string_view)>& take) {
  ValueList<Value> list;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find(',', begin), text.size());
    const std::string_view item = trimmed(text.substr(begin, end - begin));
    list.reason = item.empty() ? "a value of the list is empty" : take(list, item);
    if (!list.reason.empty()) return {{}, list.reason};
    begin = end + 1;
  }
  return list;
}

// At most 18 digits, which fit 63 bits.
std::optional<std::int64_t> parseCount(std::string_view text) {
  constexpr std::size_t kMostDigits = 18;
  const bool isCount = !text.empty() && text.size() <= kMostDigits &&
                       text.find_first_not_of("0123456789") == std::string_view::npos;
  if (!isCount) return std::nullopt;
  return std::stoll(std::string(text));
}

// Settings files count in KiB and other programs in bytes: what has no unit could be either.
std::optional<std::int64_t> parseSize(std::string_view text) {
  const auto bytes = bytesOf(text);
  if (bytes == 0 || !parseCount(text)) return bytes;
  return std::nullopt;
}

using Parse = std::optional<std::int64_t> (*)(std::string_view);

std::string addRange(ValueList<std::int64_t>& list, std::string_view item, Parse parse) {
  const std::size_t dots = item.find("..");
  const auto first = parse(trimmed(item.substr(0, dots)));
  const auto last = parse(trimmed(item.substr(dots + 2)));
  if (!first || !last) return quoted(item) + " is no range such as 4..64 or 4K..4M";
  if (*first < 1) return quoted(item) + " has no end: a range doubles from its start";
  if (*first > *last) return quoted(item) + " runs backwards: put the smaller value first";
  for (std::int64_t value = *first; value <= *last; value *= 2) {
    add(list, value);
    if (value > std::numeric_limits<std::int64_t>::max() / 2) break;
  }
  return {};
}

ValueList<std::int64_t> listValues(std::string_view text, Parse parse, const std::string& kind) {
  return listItems<std::int64_t>(text, [&](ValueList<std::int64_t>& list, std::string_view item) {
    if (item.find("..") != std::string_view::npos) return addRange(list, item, parse);
    const auto value = parse(item);
    if (!value) return quoted(item) + " is no " + kind;
    add(list, *value);
    return std::string();
  });
}

std::optional<std::int64_t> parseSigned(std::string_view text) {
  if (!text.starts_with('-')) return parseCount(text);
  const auto value = parseCount(text.substr(1));
  if (value) return -*value;
  return value;
}

std::string inWords(std::span<const std::string_view> words) {
  std::string all;
  for (const std::string_view word : words) all.append(all.empty() ? "" : ", ").append(word);
  return all;
}

}  // namespace

ValueList<std::int64_t> listSizes(std::string_view text) {
  return listValues(text, parseSize, "size with a unit, such as 64K, 1M or 4096B");
}

ValueList<std::int64_t> listNumbers(std::string_view text) {
  return listValues(text, parseSigned, "whole number");
}

ValueList<std::size_t> listWords(std::string_view text, std::span<const std::string_view> words) {
  return listItems<std::size_t>(text, [words](ValueList<std::size_t>& list, std::string_view item) {
    const auto word = std::find_if(words.begin(), words.end(), [item](std::string_view candidate) {
      return equalsIgnoreCase(item, candidate);
    });
    if (word == words.end()) {
      return quoted(item) + " is none of " + inWords(words) + didYouMean(item, words);
    }
    add(list, static_cast<std::size_t>(word - words.begin()));
    return std::string();
  });
}

ValueList<std::string> listTexts(std::string_view text) {
  return listItems<std::string>(text, [](ValueList<std::string>& list, std::string_view item) {
    add(list, std::string(item));
    return std::string();
  });
}

}  // namespace marrowbench::ctl
