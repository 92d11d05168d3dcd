#include "marrowctl/sweep/output_name.h"

#include <algorithm>
#include <string_view>

#include "paths/path_text.h"
#include "support/fixed_string_ops.h"

namespace marrowbench::ctl {
namespace {

constexpr std::string_view kSuffix = ".bst";
// The program knows no folder whose text is shorter; where it makes folders below one, this one's
// text without its "/".
constexpr std::size_t kShortestFolder = 3;

bool isUsual(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '_' || c == '.';
}

bool isControl(char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }

bool endsAsSettingsFile(std::string_view output) {
  return output.size() >= kSuffix.size() &&
         equalsIgnoreCase(output.substr(output.size() - kSuffix.size()), kSuffix);
}

// Paths that begin so are not taken from the settings file's folder.
bool isRelative(std::string_view path) {
  if (path.size() < 3) return true;
  if (path.front() == '/' || path.substr(1, 2) == ":/") return false;
  constexpr std::string_view kRoots[] = {"[cfgPath]", "[temp]", "<Database>"};
  return std::none_of(std::begin(kRoots), std::end(kRoots), [path](std::string_view root) {
    return equalsIgnoreCase(path.substr(0, root.size()), root);
  });
}

std::string reasonAgainst(std::string_view output) {
  constexpr std::size_t kLongestOutput = 300;
  if (output.size() > kLongestOutput) return "it passes 300 characters: chain lines get too long";
  if (!endsAsSettingsFile(output)) return "the name of a settings file ends in .bst";
  if (std::any_of(output.begin(), output.end(), isControl)) return "it holds a control character";
  // The folder stands in every path, the name in chain lines.
  for (const char* const text : {"[", "]", ";", ",", "\\"}) {
    if (output.find(text) == std::string_view::npos) continue;
    return std::string("a settings file can't be used under a path with \"") + text + "\"";
  }
  return {};
}

}  // namespace

std::string OutputName::path(const std::string& addition) const {
  return isStandardOutput ? "-" : folder + stem + addition + suffix;
}

std::string OutputName::safeStem() const {
  std::string safe = stem;
  std::replace_if(
      safe.begin(), safe.end(), [](char c) { return !isUsual(c); }, '_');
  return safe;
}

std::string OutputName::anchored(const std::string& path) const {
  if (!isRelative(path)) return path;
  const FixedString file = std::string_view(folder + path + "x");
  // Beside the settings file no folder has to be made.
  const bool isBeside = path.find('/') == std::string::npos;
  const bool isKnown = isBeside ? parentFolder(file).length() >= kShortestFolder
                                : thirdParentFolder(file).length() > kShortestFolder;
  return isKnown ? path : "./././" + path;
}

std::string readOutputName(const std::string& output, OutputName& name) {
  name = {"", "sweep", std::string(kSuffix), output.empty() || output == "-"};
  if (name.isStandardOutput) return {};
  if (std::string reason = reasonAgainst(output); !reason.empty()) return reason;
  const std::size_t nameStart = output.rfind('/') + 1;
  const std::size_t nameEnd = output.size() - kSuffix.size();
  if (nameStart == nameEnd) return "there is nothing before .bst";
  name.folder = output.substr(0, nameStart);
  name.stem = output.substr(nameStart, nameEnd - nameStart);
  name.suffix = output.substr(nameEnd);
  return {};
}

}  // namespace marrowbench::ctl
