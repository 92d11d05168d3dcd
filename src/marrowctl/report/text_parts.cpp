#include "marrowctl/report/text_parts.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr int kEighths = 8;

std::string blanks(std::int64_t count) {
  std::string text;
  text.resize(static_cast<std::size_t>(std::max<std::int64_t>(count, 0)), ' ');
  return text;
}

}  // namespace

std::string shownSpeed(double mibPerSecond) {
  if (mibPerSecond >= 9999.95) return shownCount(std::llround(mibPerSecond));
  if (mibPerSecond < 9.995) return fmt::format("{:.2f}", mibPerSecond);
  const auto tenths = std::llround(mibPerSecond * 10);
  return shownCount(tenths / 10) + "." + std::to_string(tenths % 10);
}

std::string bar(double share, int columns, const TextStyle& style) {
  constexpr std::array<const char*, kEighths> kParts = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
  const double clamped = std::clamp(share, 0.0, 1.0);
  const int eighths = static_cast<int>(std::lround(clamped * columns * kEighths));
  std::string text;
  if (!style.hasBlocks) {
    const int whole = std::max((eighths + kEighths / 2) / kEighths, eighths > 0 ? 1 : 0);
    text = std::string(static_cast<std::size_t>(whole), '#');
    return text + blanks(columns - whole);
  }
  for (int i = 0; i < eighths / kEighths; ++i) text += "█";
  const auto rest = static_cast<std::size_t>(eighths % kEighths);
  text += kParts.at(rest);
  return text + blanks(columns - eighths / kEighths - (rest > 0 ? 1 : 0));
}

std::string rightIn(std::string_view text, int columns) {
  return blanks(columns - static_cast<std::int64_t>(columnsOf(text))) + std::string(text);
}

std::string leftIn(std::string_view text, int columns) {
  return std::string(text) + blanks(columns - static_cast<std::int64_t>(columnsOf(text)));
}

std::string titleText(std::string_view title, const TextStyle& style) {
  return "\n" + toned(title, Tone::strong, style) + "\n";
}

std::string reportText(const Report& report, const TextStyle& style) {
  return verdictText(report, style) + testsText(report, style) + interfacesText(report, style) +
         stragglersText(report, style) + suspicionsText(report, style) +
         missingRowsText(report, style) + damagedRowsText(report, style) +
         badRowsText(report, style) + legendText(report, style);
}

}  // namespace marrowbench::ctl
