#include "marrowctl/table/host_names.h"

#include <algorithm>
#include <regex>
#include <string_view>
#include <unordered_set>

namespace marrowbench::ctl {
namespace {

constexpr const char* kHost = "[host]";

bool isLetterOrDigit(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

using NameSet = std::unordered_set<std::string_view>;

struct Found {
  std::size_t position = std::string::npos;
  std::size_t length = 0;
};

// The first name at or behind a position; of several at one place the longest.
Found findName(std::string_view text, std::size_t from, const NameSet& names, std::size_t longest) {
  for (std::size_t i = from; i < text.size(); ++i) {
    const bool isStart = isLetterOrDigit(text[i]) && (i == 0 || !isLetterOrDigit(text[i - 1]));
    if (!isStart) continue;
    for (std::size_t length = std::min(longest, text.size() - i); length > 0; --length) {
      const bool isEnd = i + length == text.size() || !isLetterOrDigit(text[i + length]);
      if (isEnd && names.contains(text.substr(i, length))) return {i, length};
    }
  }
  return {};
}

class NameFinder {
 public:
  explicit NameFinder(const std::vector<std::string>& list) : names(list.begin(), list.end()) {
    for (const std::string& name : list) longest = std::max(longest, name.size());
  }

  [[nodiscard]] std::string longestIn(std::string_view text) const {
    std::string_view best;
    for (std::size_t from = 0;;) {
      const Found found = findName(text, from, names, longest);
      if (found.length == 0) return std::string(best);
      if (found.length > best.size()) best = text.substr(found.position, found.length);
      from = found.position + found.length;
    }
  }

  void find(std::string_view text, std::vector<std::pair<std::size_t, std::size_t>>& spans) const {
    for (std::size_t from = 0;;) {
      const Found found = findName(text, from, names, longest);
      if (found.length == 0) return;
      spans.emplace_back(found.position, found.length);
      from = found.position + found.length;
    }
  }

  [[nodiscard]] std::string without(std::string_view text) const {
    std::string result;
    for (;;) {
      const Found found = findName(text, 0, names, longest);
      result += text.substr(0, found.position);
      if (found.length == 0) return result;
      result += kHost;
      text.remove_prefix(found.position + found.length);
    }
  }

 private:
  NameSet names;
  std::size_t longest = 0;
};

// A path as a row has it, for patterns that count digits.
struct PlainPath {
  std::string text;
  std::vector<std::size_t> origins;  // for each character its place in the site's path
};

PlainPath plainPath(const std::string& path) {
  constexpr std::pair<std::string_view, std::string_view> kNumbers[] = {{"[iter]", "0"},
                                                                        {"[date]", "0101_00000"}};
  PlainPath plain;
  for (std::size_t i = 0; i < path.size();) {
    std::string_view text = std::string_view(path).substr(i, 1);
    std::size_t length = 1;
    for (const auto& [placeholder, number] : kNumbers) {
      if (!std::string_view(path).substr(i).starts_with(placeholder)) continue;
      text = number;
      length = placeholder.size();
    }
    plain.text += text;
    plain.origins.insert(plain.origins.end(), text.size(), i);
    i += length;
  }
  plain.origins.push_back(path.size());
  return plain;
}

// The first group in a path, which is masked there.
std::string takeGroup(std::string& path, const std::regex& expression) {
  const PlainPath plain = plainPath(path);
  std::smatch match;
  if (!std::regex_search(plain.text, match, expression) || match.length(1) == 0) return {};
  const auto at = static_cast<std::size_t>(match.position(1));
  const std::size_t from = plain.origins[at];
  const std::size_t to = plain.origins[at + static_cast<std::size_t>(match.length(1))];
  path.replace(from, to - from, kHost);
  return match[1].str();
}

// So many rows of a kind tell where its clients' names stand.
constexpr std::uint64_t kRowsLookedAt = 1000;

using Span = std::pair<std::size_t, std::size_t>;

bool isWithin(const Span& part, const std::vector<Span>& spans) {
  return std::any_of(spans.begin(), spans.end(), [&part](const Span& span) {
    return part.first >= span.first && part.first + part.second <= span.first + span.second;
  });
}

// @param find  appends where names stand in a path
template <class Find>
KnownTexts numbersInNames(const RowStore& store, const Find& find) {
  KnownTexts texts;
  for (const RowKind& kind : store.kinds)
    texts.emplace_back(kind.sourceNumbers + kind.destNumbers, false);
  std::vector<std::uint64_t> seen(store.kinds.size());
  std::vector<Span> numbers, names;
  for (StoredRowCursor rows(store); rows.next();) {
    const std::uint32_t index = rows.row().kind;
    if (texts[index].empty() || seen[index]++ >= kRowsLookedAt) continue;
    const Digits* digits = rows.numbers().data();
    std::size_t number = 0;
    for (const auto& [shape, path] :
         {std::pair{rows.kind().source, rows.source()}, std::pair{rows.kind().dest, rows.dest()}}) {
      numbers.clear();
      names.clear();
      appendSpans(shape, digits, numbers);
      find(path, names);
      for (const Span& each : numbers) {
        if (isWithin(each, names)) texts[index][number] = true;
        ++number;
      }
    }
  }
  return texts;
}

std::string fileNameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

void maskHosts(std::vector<Site>& sites, const std::vector<std::string>& names) {
  const NameFinder finder(names);
  for (Site& site : sites) {
    site.source = finder.without(site.source);
    site.dest = finder.without(site.dest);
  }
}

}  // namespace

std::string problemOfPattern(const std::string& pattern) {
  try {
    const std::regex expression(pattern, std::regex::ECMAScript);
    return expression.mark_count() == 0 ? "it has no group: put ( ) around the host" : "";
  } catch (const std::regex_error& problem) {
    return problem.what();
  }
}

KnownTexts numbersInPattern(const std::string& pattern, const RowStore& store) {
  const std::regex expression(pattern, std::regex::ECMAScript | std::regex::optimize);
  return numbersInNames(store, [&expression](const std::string& path, std::vector<Span>& spans) {
    std::smatch match;
    if (std::regex_search(path, match, expression) && match.length(1) > 0)
      spans.emplace_back(match.position(1), match.length(1));
  });
}

KnownTexts numbersInList(const std::vector<std::string>& names, const RowStore& store) {
  const NameFinder finder(names);
  return numbersInNames(store, [&finder](const std::string& path, std::vector<Span>& spans) {
    finder.find(path, spans);
  });
}

void takeHostsByPattern(const std::string& pattern, const std::vector<ResultFile>& files,
                        std::vector<Site>& sites) {
  const std::regex expression(pattern, std::regex::ECMAScript | std::regex::optimize);
  for (Site& site : sites) {
    const std::string inSource = takeGroup(site.source, expression);
    const std::string inDest = takeGroup(site.dest, expression);
    std::string name = fileNameOf(files[site.file].path);
    const std::string inName = takeGroup(name, expression);
    site.host = !inDest.empty() ? inDest : !inSource.empty() ? inSource : inName;
  }
}

void takeHostsByList(const std::vector<std::string>& names, const std::vector<ResultFile>& files,
                     std::vector<Site>& sites) {
  const NameFinder finder(names);
  for (Site& site : sites) {
    // A client may read the files of another one, but writes its own table.
    if (files.size() > 1) site.host = finder.longestIn(fileNameOf(files[site.file].path));
    if (site.host.empty()) site.host = finder.longestIn(site.dest);
    if (site.host.empty()) site.host = finder.longestIn(site.source);
    if (site.host.empty() && files.size() > 1) site.host = finder.longestIn(files[site.file].path);
  }
  maskHosts(sites, names);
}

std::string withoutHosts(const std::string& text, const std::vector<std::string>& names) {
  return NameFinder(names).without(text);
}

}  // namespace marrowbench::ctl
