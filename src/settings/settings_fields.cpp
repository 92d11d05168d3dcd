#include "settings/settings_fields.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>

#include "paths/path_text.h"
#include "support/line_string.h"

namespace marrowbench {
namespace {

constexpr char16_t kSeparator = u';';

bool takeMethod(TestConfig& config, const LineString& text) {
  struct Keyword {
    std::string_view text;
    Method method;
  };
  constexpr Keyword kKeywords[] = {{"Stream", Method::stream},
                                   {"AnsiC", Method::ansiC},
                                   {"Posix", Method::posix},
                                   {"System", Method::system}};
  for (const Keyword& keyword : kKeywords) {
    if (!equalsIgnoreCase(text, keyword.text)) continue;
    config.method = keyword.method;
    return true;
  }
  return false;
}

bool isOneOf(const LineString& text, std::initializer_list<std::string_view> trueTexts) {
  return std::any_of(trueTexts.begin(), trueTexts.end(),
                     [&text](std::string_view word) { return equalsIgnoreCase(text, word); });
}

bool takeFlush(TestConfig& config, const LineString& text) {
  config.parameters.parameters.flush = isOneOf(text, {"flush", "true", "1"});
  return true;
}

bool takePreallocate(TestConfig& config, const LineString& text) {
  config.parameters.parameters.prealloc = isOneOf(text, {"prealloc", "true", "1"});
  return true;
}

// "1" counts for the two flags above and not here, on purpose.
bool takeMarkDone(TestConfig& config, const LineString& text) {
  config.markDone = isOneOf(text, {"true"});
  return true;
}

bool isNumber(std::u16string_view text) {
  if (text.starts_with(u'-')) text.remove_prefix(1);
  return text.find_first_not_of(u"0123456789") == std::u16string_view::npos;
}

// The value is 0 when the field is refused. Every character is checked, but only the first 249
// are converted; the 64-bit result is cut to 32 bits, so 4294967297 reads as 1.
bool takeNumber(const LineString& text, std::int32_t& value) {
  const bool accepted = isNumber(text);
  const auto digits = narrowedText<249>(text);
  value = accepted ? static_cast<std::int32_t>(std::strtoll(digits.c_str(), nullptr, 10)) : 0;
  return accepted;
}

// In unsigned arithmetic, where products that don't fit wrap.
std::int32_t kibToBytes(std::int32_t kib) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(kib) * 1024U);
}

bool takeChunkWait(TestConfig& config, const LineString& text) {
  ParameterBlock& p = config.parameters.parameters;
  const bool accepted = takeNumber(text, p.chunkWait);
  p.stats.waitMs = static_cast<std::uint16_t>(p.chunkWait);
  return accepted;
}

bool takeChunkSize(TestConfig& config, const LineString& text) {
  ParameterBlock& p = config.parameters.parameters;
  std::int32_t kib = 0;
  const bool accepted = takeNumber(text, kib);
  p.chunkSize = kibToBytes(kib);
  p.stats.stepBytes = p.chunkSize;
  return accepted;
}

bool takeSystemBuffer(TestConfig& config, const LineString& text) {
  ParameterBlock& p = config.parameters.parameters;
  const bool accepted = takeNumber(text, p.systemBuffer);
  p.systemBuffer = std::min(p.systemBuffer, 5);
  return accepted;
}

bool takeFileSize(TestConfig& config, const LineString& text) {
  std::int32_t kib = 0;
  const bool accepted = takeNumber(text, kib);
  config.parameters.parameters.fileSize =
      kib <= kMaxFileSize / 1024 ? kibToBytes(kib) : kMaxFileSize;
  return accepted;
}

bool takeIterations(TestConfig& config, const LineString& text) {
  return takeNumber(text, config.iterations);
}

bool takeCacheMode(TestConfig& config, const LineString& text) {
  return takeNumber(text, config.parameters.parameters.emptyCacheMode);
}

// Placeholders at the front that stand for a whole path are left alone, so are drive paths.
bool isRelative(const FixedString& path) {
  const std::string_view text = path;
  if (text.size() < 3) return true;
  if (text[0] == '/' || text.substr(1, 2) == ":/") return false;
  return !startsWithIgnoreCase(text, "<Database>") && !startsWithIgnoreCase(text, "[cfgPath]") &&
         !startsWithIgnoreCase(text, "[temp]");
}

void resolve(FixedString& path, const FixedString& settingsPath) {
  if (isRelative(path)) path = parentFolder(settingsPath).append(path);
}

FixedString pathOf(const LineString& text) {
  auto path = narrowedText<FixedString::capacity()>(text);
  useForwardSlashes(path);
  return path;
}

FixedString dataPathOf(const TestConfig& config, const LineString& text) {
  FixedString path = pathOf(text);
  if (isMemoryPath(path)) path.clear();
  if (path.isNotEmpty()) resolve(path, config.settingsPath);
  return path;
}

// Without the test for an empty path, on purpose: an empty log or results path becomes the
// settings folder, which can't be opened as a file and so writes nothing.
FixedString reportPathOf(const TestConfig& config, const LineString& text) {
  FixedString path = pathOf(text);
  resolve(path, config.settingsPath);
  return path;
}

bool takeSource(TestConfig& config, const LineString& text) {
  config.sourceTemplate = config.source = dataPathOf(config, text);
  return true;
}

bool takeDest(TestConfig& config, const LineString& text) {
  config.destTemplate = config.dest = dataPathOf(config, text);
  return true;
}

bool takeLog(TestConfig& config, const LineString& text) {
  config.logTemplate = config.logPath = reportPathOf(config, text);
  return true;
}

bool takeTable(TestConfig& config, const LineString& text) {
  config.resultsTemplate = config.resultsPath = reportPathOf(config, text);
  return true;
}

}  // namespace

const std::array<SettingsField, 14> kSettingsFields = {{
    {"method", takeMethod},
    {"flush", takeFlush},
    {"preallocate", takePreallocate},
    {"chunkWaitMs", takeChunkWait},
    {"chunkBytes", takeChunkSize},
    {"systemBuffer", takeSystemBuffer},
    {"fileBytes", takeFileSize},
    {"iterations", takeIterations},
    {"cacheMode", takeCacheMode},
    {"source", takeSource},
    {"dest", takeDest},
    {"log", takeLog},
    {"table", takeTable},
    {"markDone", takeMarkDone},
}};

FieldText FieldReader::next() {
  FieldText field;
  field.isOmitted = startsWithChar(rest, kSeparator);
  const std::size_t before = rest.length();
  field.text = takeField(rest, kSeparator, false);
  const std::size_t width = field.isOmitted ? 0 : field.text.length();
  const LineString untrimmed = field.text;
  trim(field.text);
  // A field of blanks has no first character: it stands where it ends.
  const std::size_t blanks =
      field.text.isEmpty() ? width : untrimmed.view().find(field.text.view());
  field.position = taken + blanks;
  taken += before - rest.length();
  return field;
}

}  // namespace marrowbench
