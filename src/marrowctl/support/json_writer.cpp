#include "marrowctl/support/json_writer.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

// Deeper brackets stay on their line: lines and findings are to be found by eye as well.
constexpr std::size_t kIndentedLevels = 4;

bool isPlain(char byte) { return byte >= ' ' && byte <= '~' && byte != '"' && byte != '\\'; }

void appendEscaped(std::string& out, char byte) {
  switch (byte) {
    case '"': out += "\\\""; return;
    case '\\': out += "\\\\"; return;
    case '\n': out += "\\n"; return;
    case '\t': out += "\\t"; return;
    case '\r': out += "\\r"; return;
    default: break;
  }
  const auto code = static_cast<unsigned char>(byte);
  if (code >= 0x20) {
    out += byte;
    return;
  }
  char escape[8];
  (void)std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(code));
  out += escape;
}

}  // namespace

JsonWriter& JsonWriter::key(std::string_view name) {
  separate();
  quote(name);
  out += ": ";
  isBehindKey = true;
  return *this;
}

JsonWriter& JsonWriter::value(std::string_view text) {
  separate();
  quote(text);
  return *this;
}

JsonWriter& JsonWriter::value(std::int64_t number) { return literal(std::to_string(number)); }

std::string JsonWriter::shortest(double number) {
  char digits[32];
  const auto [end, code] = std::to_chars(digits, digits + sizeof digits, number);
  return {digits, end};
}

JsonWriter& JsonWriter::begin(char bracket) {
  separate();
  out += bracket;
  isFirst.push_back(true);
  return *this;
}

JsonWriter& JsonWriter::end(char bracket) {
  const bool isEmpty = isFirst.back();
  isFirst.pop_back();
  if (!isEmpty && isFirst.size() < kIndentedLevels) breakLine();
  out += bracket;
  return *this;
}

JsonWriter& JsonWriter::literal(std::string_view text) {
  separate();
  out += text;
  return *this;
}

void JsonWriter::separate() {
  if (isBehindKey) {
    isBehindKey = false;
    return;
  }
  if (!isFirst.back()) out += ',';
  const bool isOutermost = isFirst.size() == 1;
  if (!isOutermost && isFirst.size() <= kIndentedLevels) {
    breakLine();
  } else if (!isFirst.back()) {
    out += ' ';
  }
  isFirst.back() = false;
}

void JsonWriter::breakLine() {
  out += '\n';
  out.append(2 * (isFirst.size() - 1), ' ');
}

void JsonWriter::quote(std::string_view text) {
  out += '"';
  // Nearly all texts are plain to their end.
  const auto odd = std::find_if_not(text.begin(), text.end(), isPlain);
  out.append(text.begin(), odd);
  if (odd != text.end()) {
    text.remove_prefix(static_cast<std::size_t>(odd - text.begin()));
    for (const char byte : repairedUtf8(text)) appendEscaped(out, byte);
  }
  out += '"';
}

}  // namespace marrowbench::ctl
