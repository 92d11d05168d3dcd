#include "marrowctl/support/units.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <system_error>

namespace marrowbench::ctl {
namespace {

struct Unit {
  std::string_view name;
  std::string_view letter;
  std::int64_t bytes;
};

constexpr std::array<Unit, 3> kUnits = {{{"GiB", "G", std::int64_t{1} << 30U},
                                         {"MiB", "M", std::int64_t{1} << 20U},
                                         {"KiB", "K", std::int64_t{1} << 10U}}};
struct Span {
  std::string_view letter;
  std::int64_t seconds;
};
constexpr std::array<Span, 5> kSpans = {{{"", 1}, {"s", 1}, {"m", 60}, {"h", 3600}, {"d", 86400}}};

constexpr int kDecimals = 3;
constexpr std::int64_t kThousand = 1000;

bool equalsInAnyCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) ==
           std::tolower(static_cast<unsigned char>(y));
  });
}

std::optional<std::int64_t> unitOf(std::string_view text, std::int64_t bareUnit) {
  if (text.empty()) return bareUnit;
  if (equalsInAnyCase(text, "B")) return 1;
  for (const Unit& unit : kUnits) {
    if (equalsInAnyCase(text, unit.name) || equalsInAnyCase(text, unit.letter)) return unit.bytes;
  }
  return std::nullopt;
}

std::string_view withoutBlanks(std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  return text;
}

// The digits behind the point, without zeros at their end.
std::string decimalsOf(std::int64_t thousandths) {
  if (thousandths == 0) return {};
  std::string digits = std::to_string(thousandths);
  digits.insert(0, static_cast<std::size_t>(kDecimals) - digits.size(), '0');
  digits.erase(digits.find_last_not_of('0') + 1);
  return "." + digits;
}

}  // namespace

std::optional<std::int64_t> bytesOf(std::string_view text, std::int64_t bareUnit) {
  text = withoutBlanks(text);
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, code] = std::from_chars(text.data(), end, number);
  if (code != std::errc() || number < 0 || text.starts_with('-')) return std::nullopt;
  const auto unit =
      unitOf(withoutBlanks(text.substr(static_cast<std::size_t>(stop - text.data()))), bareUnit);
  if (!unit || number > INT64_MAX / *unit) return std::nullopt;
  return number * *unit;
}

std::optional<std::int64_t> secondsOf(std::string_view text) {
  constexpr std::int64_t kMost = 36'500;
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, code] = std::from_chars(text.data(), end, number);
  if (code != std::errc() || number < 0 || text.starts_with('-')) return std::nullopt;
  const std::string_view unit(stop, static_cast<std::size_t>(end - stop));
  for (const Span& span : kSpans) {
    if (unit != span.letter) continue;
    if (number > kMost * kSpans.back().seconds / span.seconds) return std::nullopt;
    return number * span.seconds;
  }
  return std::nullopt;
}

std::string shownSize(std::int64_t bytes) {
  for (const Unit& unit : kUnits) {
    if (bytes < unit.bytes && bytes > -unit.bytes) continue;
    const std::int64_t rest = std::max(bytes % unit.bytes, -(bytes % unit.bytes));
    if (rest * kThousand % unit.bytes != 0) continue;
    return shownCount(bytes / unit.bytes) + decimalsOf(rest * kThousand / unit.bytes) + " " +
           std::string(unit.name);
  }
  return shownCount(bytes, "byte");
}

std::string shownCount(std::int64_t count) {
  std::string digits = std::to_string(count);
  const std::size_t front = count < 0 ? 1 : 0;
  for (std::size_t i = digits.size(); i > front + 3; i -= 3) digits.insert(i - 3, 1, ',');
  return digits;
}

std::string shownCount(std::int64_t count, std::string_view word) {
  return shownCount(count) + " " + std::string(word) + (count == 1 ? "" : "s");
}

std::string shownDuration(std::int64_t seconds) {
  constexpr std::int64_t kMinute = 60;
  constexpr std::int64_t kHour = 3600;
  std::string rest = std::to_string(seconds % kMinute) + " s";
  if (seconds < kMinute) return rest;
  const std::string minutes = std::to_string(seconds % kHour / kMinute) + " min " + rest;
  return seconds < kHour ? minutes : shownCount(seconds / kHour) + " h " + minutes;
}

}  // namespace marrowbench::ctl
