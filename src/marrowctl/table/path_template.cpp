#include "marrowctl/table/path_template.h"

#include <algorithm>

#include "marrowctl/plan/template_expander.h"
#include "paths/path_text.h"

namespace marrowbench::ctl {
namespace {

// In place of the placeholders; no path has such characters.
constexpr char kHost = '\x01';
constexpr char kIteration = '\x02';
constexpr char kDate = '\x03';
constexpr char kAnything = '\x04';

struct Placeholder {
  std::string_view name;
  char mark;
};
constexpr Placeholder kPlaceholders[] = {{"[host]", kHost},
                                         {"[iter]", kIteration},
                                         {"[date]", kDate},
                                         {"[temp]", kAnything},
                                         {"[cfgPath]", kAnything}};

constexpr std::string_view kMemory = "MEMORY";
constexpr std::string_view kShownIteration = "[iter]";
constexpr std::string_view kShownDate = "[date]";

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// "1120_23210": five digits behind the "_", four in front of it.
bool isDate(std::string_view text) {
  if (text == kShownDate) return true;
  if (text.size() != 10 || text[4] != '_') return false;
  return std::all_of(text.begin(), text.end(),
                     [&text](const char& c) { return isDigit(c) || &c == &text[4]; });
}

// Walks over template and path from their ends.
class Matcher {
 public:
  Matcher(std::string_view pathTemplate, std::string_view path)
      : pattern(pathTemplate), text(path) {}

  std::optional<TemplateMatch> run() {
    if (!fits(pattern.size(), text.size())) return std::nullopt;
    return found;
  }

 private:
  bool fits(std::size_t p, std::size_t t) {
    if (p == 0) return t == 0;
    switch (pattern[p - 1]) {
      case kHost: return fitsHost(p - 1, t);
      case kIteration: return fitsIteration(p - 1, t);
      case kDate: return fitsDate(p - 1, t);
      case kAnything: return fitsAnything(p - 1, t);
      default: return t > 0 && pattern[p - 1] == text[t - 1] && fits(p - 1, t - 1);
    }
  }

  // Names of clients have neither "/" nor ".". A second "[host]" is the same one.
  bool fitsHost(std::size_t p, std::size_t t) {
    if (!found.host.empty()) {
      const std::size_t length = found.host.size();
      return t >= length && text.substr(t - length, length) == found.host && fits(p, t - length);
    }
    for (std::size_t length = 1; length <= t; ++length) {
      const char c = text[t - length];
      if (c == '/' || c == '.') return false;
      found.host = text.substr(t - length, length);
      if (fits(p, t - length)) return true;
      found.host = {};
    }
    return false;
  }

  bool fitsIteration(std::size_t p, std::size_t t) {
    if (text.substr(0, t).ends_with(kShownIteration)) return fits(p, t - kShownIteration.size());
    for (std::size_t length = 1; length <= t && isDigit(text[t - length]); ++length) {
      found.iterations.emplace_back(t - length, length);
      if (fits(p, t - length)) return true;
      found.iterations.pop_back();
    }
    return false;
  }

  bool fitsDate(std::size_t p, std::size_t t) {
    for (const std::size_t length : {kShownDate.size(), std::size_t{10}}) {
      if (t < length || !isDate(text.substr(t - length, length))) continue;
      found.dates.emplace_back(t - length, length);
      if (fits(p, t - length)) return true;
      found.dates.pop_back();
    }
    return false;
  }

  bool fitsAnything(std::size_t p, std::size_t t) {
    for (std::size_t length = 0; length <= t; ++length) {
      // A folder, or nothing.
      const bool isFolder = length == 0 || text[t - 1] == '/';
      if (!isFolder || !fits(p, t - length)) continue;
      found.folder = t;
      return true;
    }
    return false;
  }

  std::string_view pattern, text;
  TemplateMatch found;
};

std::size_t literalsIn(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return c < 0 || c >= ' '; }));
}

std::string_view nameOfPath(std::string_view path) { return path.substr(path.rfind('/') + 1); }

// The settings file's folder at the front, or where it would stand.
std::string withoutFolder(const std::string& path, const PlannedFile& file) {
  const FixedString folder = parentFolder(folderPathOf(file.path));
  if (folder.isNotEmpty() && path.starts_with(folder.view())) {
    return kAnything + path.substr(folder.length());
  }
  const bool isAbsolute = path.starts_with('/') || path.starts_with(kAnything);
  return isAbsolute ? path : kAnything + path;
}

}  // namespace

PathTemplate::PathTemplate(const PlannedFile& file, const PlannedTest& test,
                           const std::string& pathTemplate, bool isData) {
  if (pathTemplate.empty()) return;
  FixedString path = std::string_view(pathTemplate);
  for (const Placeholder& each : kPlaceholders) {
    path.replaceAll(each.name, std::string_view(&each.mark, 1));
  }
  const TemplateExpander expander(file.path, file.settingsFileNumber);
  const FixedString expanded = isData ? expander.twice(path, {}, test.configIndex, 0)
                                      : expander.once(path, {}, test.configIndex, 0);
  if (expanded.isNotEmpty()) marked = withoutFolder(std::string(expanded.view()), file);
}

std::optional<TemplateMatch> PathTemplate::match(std::string_view path) const {
  if (marked.empty()) {
    return path == kMemory ? std::optional<TemplateMatch>(TemplateMatch{}) : std::nullopt;
  }
  return Matcher(marked, path).run();
}

std::optional<TemplateMatch> PathTemplate::matchName(std::string_view path) const {
  const std::string_view name = nameOfPath(marked);
  return Matcher(name.starts_with(kAnything) ? name.substr(1) : name, nameOfPath(path)).run();
}

std::size_t PathTemplate::fittingTail(std::string_view path) const {
  std::string_view pattern = marked;
  if (pattern.starts_with(kAnything)) pattern.remove_prefix(1);
  std::size_t literal = 0;
  std::size_t p = pattern.size(), t = path.size();
  for (;;) {
    const std::string_view wanted = nameOfPath(pattern.substr(0, p));
    const std::string_view found = nameOfPath(path.substr(0, t));
    if (!Matcher(wanted, found).run()) return literal;
    literal += literalsIn(wanted) + (p == pattern.size() ? 1 : 0);
    if (wanted.size() == p) return literal + 1;
    if (found.size() == t) return literal;
    p -= wanted.size() + 1;
    t -= found.size() + 1;
  }
}

// Values that are known are filled in: a name and a number that stand side by side can be told
// apart only so.
bool PathTemplate::isPathOf(std::string_view host, std::int32_t iteration,
                            std::string_view path) const {
  if (marked.empty()) return path == kMemory;
  const std::string number = std::to_string(iteration);
  std::string filled;
  for (const char c : marked) {
    if (c == kHost) {
      filled += host;
    } else if (c == kIteration) {
      filled += number;
    } else {
      filled += c;
    }
  }
  return Matcher(filled, path).run().has_value();
}

bool PathTemplate::hasHost() const { return marked.find(kHost) != std::string::npos; }

std::size_t PathTemplate::literals() const { return literalsIn(marked); }

std::string PathTemplate::shown() const {
  if (marked.empty()) return std::string(kMemory);
  std::string text;
  for (const char c : marked) {
    if (c == kHost) {
      text += "[host]";
    } else if (c == kIteration) {
      text += kShownIteration;
    } else if (c == kDate) {
      text += kShownDate;
    } else if (c != kAnything) {
      text += c;
    }
  }
  return text;
}

}  // namespace marrowbench::ctl
