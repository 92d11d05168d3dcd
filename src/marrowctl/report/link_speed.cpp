#include "marrowctl/report/link_speed.h"

#include <algorithm>
#include <array>

namespace marrowbench::ctl {
namespace {

constexpr double kBits = 8;
constexpr double kMega = 1e6;
constexpr double kGiga = 1e9;
constexpr std::size_t kMostDigits = 9;
constexpr std::array<std::string_view, 4> kUnits = {"", "bit", "bit/s", "b/s"};

std::string_view takeDigits(std::string_view& text) {
  const std::string_view digits =
      text.substr(0, std::min(text.find_first_not_of("0123456789"), text.size()));
  text.remove_prefix(digits.size());
  return digits;
}

}  // namespace

std::optional<double> linkSpeedFrom(std::string_view text) {
  const std::string_view whole = takeDigits(text);
  std::string_view part;
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    part = takeDigits(text);
    if (part.empty()) return std::nullopt;
  }
  if (whole.empty() || whole.size() + part.size() > kMostDigits) return std::nullopt;
  double number = 0, place = 1;
  for (const char digit : whole) number = number * 10 + (digit - '0');
  for (const char digit : part) number += (place /= 10) * (digit - '0');
  const bool isGiga = text.starts_with('G');
  if (number == 0 || (!isGiga && !text.starts_with('M'))) return std::nullopt;
  text.remove_prefix(1);
  if (std::find(kUnits.begin(), kUnits.end(), text) == kUnits.end()) return std::nullopt;
  return number * (isGiga ? kGiga : kMega) / kBits;
}

}  // namespace marrowbench::ctl
