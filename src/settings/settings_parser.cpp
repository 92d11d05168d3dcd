#include "settings/settings_parser.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <string_view>

#include "paths/path_text.h"
#include "paths/placeholders.h"
#include "settings/settings_validation.h"
#include "support/line_string.h"

namespace marrowbench {
namespace {

LineString nextField(LineString& line) {
  LineString field = takeField(line, u';', false);
  trim(field);
  return field;
}

bool takeMethod(LineString& line, Method& method) {
  struct Keyword {
    std::string_view text;
    Method method;
  };
  constexpr Keyword kKeywords[] = {{"Stream", Method::stream},
                                   {"AnsiC", Method::ansiC},
                                   {"Posix", Method::posix},
                                   {"System", Method::system}};
  const LineString field = nextField(line);
  for (const Keyword& keyword : kKeywords) {
    if (!equalsIgnoreCase(field, keyword.text)) continue;
    method = keyword.method;
    return true;
  }
  return false;
}

bool takeFlag(LineString& line, std::initializer_list<std::string_view> trueTexts) {
  const LineString field = nextField(line);
  return std::any_of(trueTexts.begin(), trueTexts.end(),
                     [&field](std::string_view text) { return equalsIgnoreCase(field, text); });
}

bool isNumber(std::u16string_view text) {
  if (text.starts_with(u'-')) text.remove_prefix(1);
  return text.find_first_not_of(u"0123456789") == std::u16string_view::npos;
}

// The value is 0 when the field is refused. Every character is checked, but only the first 249
// are converted; the 64-bit result is cut to 32 bits, so 4294967297 reads as 1.
bool takeNumber(LineString& line, std::int32_t& value) {
  const LineString field = nextField(line);
  const bool accepted = isNumber(field);
  const auto digits = narrowedText<249>(field);
  value = accepted ? static_cast<std::int32_t>(std::strtoll(digits.c_str(), nullptr, 10)) : 0;
  return accepted;
}

// In unsigned arithmetic, where products that don't fit wrap.
std::int32_t kibToBytes(std::int32_t kib) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(kib) * 1024U);
}

bool takeChunkWait(LineString& line, ParameterBlock& p) {
  const bool accepted = takeNumber(line, p.chunkWait);
  p.stats.waitMs = static_cast<std::uint16_t>(p.chunkWait);
  return accepted;
}

bool takeChunkSize(LineString& line, ParameterBlock& p) {
  std::int32_t kib = 0;
  const bool accepted = takeNumber(line, kib);
  p.chunkSize = kibToBytes(kib);
  p.stats.stepBytes = p.chunkSize;
  return accepted;
}

bool takeSystemBuffer(LineString& line, ParameterBlock& p) {
  const bool accepted = takeNumber(line, p.systemBuffer);
  p.systemBuffer = std::min(p.systemBuffer, 5);
  return accepted;
}

bool takeFileSize(LineString& line, ParameterBlock& p) {
  std::int32_t kib = 0;
  const bool accepted = takeNumber(line, kib);
  p.fileSize = kib <= kMaxFileSize / 1024 ? kibToBytes(kib) : kMaxFileSize;
  return accepted;
}

FixedString takePath(LineString& line) {
  auto path = narrowedText<FixedString::capacity()>(nextField(line));
  useForwardSlashes(path);
  return path;
}

// Placeholders at the front that stand for a whole path are left alone, so are drive paths.
bool isRelative(const FixedString& path) {
  const std::string_view text = path;
  if (text.size() < 3) return true;
  if (text[0] == '/' || text.substr(1, 2) == ":/") return false;
  return !startsWithIgnoreCase(text, "<Database>") && !startsWithIgnoreCase(text, "[cfgPath]") &&
         !startsWithIgnoreCase(text, "[temp]");
}

void resolve(FixedString& path, const FixedString& folder) {
  if (isRelative(path)) path = FixedString(folder).append(path);
}

void takePaths(LineString& line, TestConfig& config) {
  const FixedString folder = parentFolder(config.settingsPath);
  for (FixedString* path : {&config.sourceTemplate, &config.destTemplate}) {
    *path = takePath(line);
    if (isMemoryPath(*path)) path->clear();
    if (path->isNotEmpty()) resolve(*path, folder);
  }
  // Without the test for an empty path, on purpose: an empty log or results path becomes the
  // settings folder, which can't be opened as a file and so writes nothing.
  for (FixedString* path : {&config.logTemplate, &config.resultsTemplate}) {
    *path = takePath(line);
    resolve(*path, folder);
  }
  config.logPath = config.logTemplate;
  config.resultsPath = config.resultsTemplate;
  config.source = config.sourceTemplate;
  config.dest = config.destTemplate;
}

void parseChainLine(TestConfig& config, const LineString& line) {
  config.chainToNext = true;
  config.sourceTemplate = narrowedText<FixedString::capacity()>(line);
  expandPlaceholders(config, config.sourceTemplate, 0, 0, false);
}

bool parseTestLine(TestConfig& config, LineString& line) {
  ParameterBlock& p = config.parameters.parameters;
  config.chainToNext = false;
  if (!takeMethod(line, config.method)) return false;
  p.flush = takeFlag(line, {"flush", "true", "1"});
  p.prealloc = takeFlag(line, {"prealloc", "true", "1"});
  const bool numbersAccepted = takeChunkWait(line, p) && takeChunkSize(line, p) &&
                               takeSystemBuffer(line, p) && takeFileSize(line, p) &&
                               takeNumber(line, config.iterations) &&
                               takeNumber(line, p.emptyCacheMode);
  if (!numbersAccepted) return false;
  takePaths(line, config);
  // "1" counts for the two flags above and not here, on purpose.
  config.markDone = takeFlag(line, {"true"});
  validate(config);
  return true;
}

}  // namespace

bool parseSettingsLine(TestConfig& config, LineString line, const FixedString& settingsPath) {
  config.settingsPath = settingsPath;
  config.settingsLine = line;
  if (!endsWithIgnoreCase(line, ".bst")) return parseTestLine(config, line);
  parseChainLine(config, line);
  return true;
}

}  // namespace marrowbench
