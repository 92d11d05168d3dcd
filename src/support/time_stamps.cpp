#include "support/time_stamps.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace marrowbench {
namespace {

std::tm localTime(std::int64_t t) {
  const auto seconds = static_cast<std::time_t>(t);
  std::tm parts{};
  (void)localtime_r(&seconds, &parts);
  return parts;
}

constexpr std::array kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

}  // namespace

ShortText shortStamp(std::int64_t t) {
  const std::tm at = localTime(t);
  std::array<char, ShortText::capacity() + 1> text{};
  (void)std::snprintf(text.data(), text.size(), "%02d.%02d. %02d:%02d.%02d", at.tm_mon + 1,
                      at.tm_mday, at.tm_hour, at.tm_min, at.tm_sec);
  return text.data();
}

ShortText dateText(std::int64_t t) {
  if (t < 0) return "--.-";
  if (t == 0) return "-.-";
  const std::tm at = localTime(t);
  const auto month = static_cast<std::size_t>(std::clamp(at.tm_mon, 0, 11));
  std::array<char, ShortText::capacity() + 1> text{};
  (void)std::snprintf(text.data(), text.size(), "%s %02d. %02d:%02d.%02d", kMonths.at(month),
                      at.tm_mday, at.tm_hour, at.tm_min, at.tm_sec);
  return text.data();
}

ShortText fileStamp(std::int64_t t) {
  if (t == 0) return "000000_000";
  const std::tm at = localTime(t);
  std::array<char, ShortText::capacity() + 1> text{};
  (void)std::snprintf(text.data(), text.size(), "%02d%02d_%02d%02d%01d", at.tm_mon + 1, at.tm_mday,
                      at.tm_hour, at.tm_min, at.tm_sec / 10);
  return text.data();
}

}  // namespace marrowbench
