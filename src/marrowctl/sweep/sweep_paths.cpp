#include "marrowctl/sweep/sweep_paths.h"

#include <algorithm>
#include <iterator>

#include "marrowctl/support/suggestion.h"
#include "support/fixed_string_ops.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kPlaceholders[] = {
    "[host]",       "[date]",      "[iter]",    "[cfgline]", "[cfgTaskID]", "[cfgID]",
    "[cfgLogName]", "[cfgNameID]", "[cfgName]", "[cfgPath]", "[temp]"};

std::string quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

bool isUnusable(char c) {
  return static_cast<unsigned char>(c) < ' ' || c == '\x7f' || c == ';' || c == ',';
}

bool isKnown(std::string_view placeholder) {
  return std::any_of(std::begin(kPlaceholders), std::end(kPlaceholders),
                     [=](std::string_view known) { return equalsIgnoreCase(placeholder, known); });
}

std::string reasonAgainstPlaceholders(std::string_view path) {
  for (std::size_t open = path.find_first_of("[]"); open != std::string_view::npos;) {
    const std::size_t close = std::min(path.find(']', open), path.size() - 1);
    const std::string_view word = path.substr(open, close - open + 1);
    if (!isKnown(word))
      return quoted(word) + " is no placeholder" + didYouMean(word, kPlaceholders);
    open = path.find_first_of("[]", close + 1);
  }
  return {};
}

// Of what follows the last "/": the folder's text must have three characters to be known.
bool hasTooShortFolder(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return path.starts_with('/') && slash + 1 < 3;
}

bool isLetterOrDigit(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

}  // namespace

std::string withForwardSlashes(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

std::string reasonAgainstPath(std::string_view path) {
  if (std::any_of(path.begin(), path.end(), isUnusable)) {
    return quoted(path) + " holds a \";\" or a control character";
  }
  if (equalsIgnoreCase(path, "MEMORY")) {
    return "memory is no path: the kind of test says what is in memory";
  }
  if (hasTooShortFolder(path)) {
    return quoted(path) + ": the program does not know a folder of fewer than three characters";
  }
  return reasonAgainstPlaceholders(path);
}

std::string reasonAgainstHost(std::string_view name) {
  const bool isName = !name.empty() && isLetterOrDigit(name.front()) &&
                      std::all_of(name.begin(), name.end(), [](char c) {
                        return isLetterOrDigit(c) || c == '-' || c == '_' || c == '.';
                      });
  if (!isName) return quoted(name) + " is no name of a client";
  if (equalsIgnoreCase(name.substr(0, name.find('.')), "localhost")) {
    return "a client called localhost is known as NoHostNameSet_: give that name";
  }
  return {};
}

std::size_t findPlaceholder(std::string_view path, std::string_view placeholder, std::size_t from) {
  for (std::size_t i = from; i + placeholder.size() <= path.size(); ++i) {
    if (equalsIgnoreCase(path.substr(i, placeholder.size()), placeholder)) return i;
  }
  return std::string_view::npos;
}

bool holdsHost(std::string_view path) {
  return findPlaceholder(path, "[host]") != std::string_view::npos;
}

std::string onHost(std::string path, const std::string& host) {
  constexpr std::string_view kHost = "[host]";
  for (std::size_t at = findPlaceholder(path, kHost); at != std::string::npos;
       at = findPlaceholder(path, kHost, at + host.size())) {
    path.replace(at, kHost.size(), host);
  }
  return path;
}

std::string withWords(const std::string& path, const std::vector<std::string>& words) {
  const std::size_t nameStart = path.rfind('/') + 1;
  const std::size_t dot = path.rfind('.');
  // A "." that begins the name, or that stands in front of it, begins no extension.
  const bool hasExtension =
      dot != std::string::npos && dot > nameStart && path.find(']', dot) == std::string::npos;
  std::string name =
      hasExtension ? path.substr(nameStart, dot - nameStart) : path.substr(nameStart);
  const std::string extension = hasExtension ? path.substr(dot) : name.empty() ? ".bin" : "";
  for (const std::string& word : words) name.append(name.empty() ? "" : "_").append(word);
  return path.substr(0, nameStart) + name + extension;
}

std::size_t longestLength(std::string_view path, std::string_view settingsFolder) {
  constexpr std::size_t kLongestReplacement = 64;
  const auto placeholders = static_cast<std::size_t>(std::count(path.begin(), path.end(), '['));
  return path.size() + placeholders * kLongestReplacement + settingsFolder.size();
}

}  // namespace marrowbench::ctl
