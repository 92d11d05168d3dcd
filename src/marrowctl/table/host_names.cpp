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
      if (isEnd && names.count(text.substr(i, length)) != 0) return {i, length};
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

// As a row has it, for patterns that count digits.
std::string withNumbers(std::string text) {
  const auto replace = [&text](std::string_view what, std::string_view with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
      text.replace(at, what.size(), with);
    }
  };
  replace("[iter]", "0");
  replace("[date]", "0101_00000");
  return text;
}

std::string firstGroup(const std::string& text, const std::regex& expression) {
  std::smatch match;
  if (!std::regex_search(text, match, expression)) return {};
  return match.size() > 1 ? match[1].str() : match[0].str();
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

void takeHostsByPattern(const std::string& pattern, const std::vector<ResultFile>& files,
                        std::vector<Site>& sites) {
  const std::regex expression(pattern, std::regex::ECMAScript | std::regex::optimize);
  std::unordered_set<std::string> names;
  for (Site& site : sites) {
    for (const std::string& text :
         {withNumbers(site.dest), withNumbers(site.source), fileNameOf(files[site.file].path)}) {
      if (site.host.empty()) site.host = firstGroup(text, expression);
    }
    if (!site.host.empty()) names.insert(site.host);
  }
  maskHosts(sites, {names.begin(), names.end()});
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
