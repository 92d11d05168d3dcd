#include "paths/path_text.h"

#include <string_view>

namespace marrowbench {
namespace {

constexpr std::string_view kUp = "../";

// True when `path` ends in a component, with its "/", that a "../" behind it takes away.
bool endsInFoldableComponent(std::string_view path) {
  if (path.size() < 2 || path.back() != '/') return false;
  const std::string_view component = path.substr(path.rfind('/', path.size() - 2) + 1);
  return component != kUp && component != "./" && component != "/";
}

// Takes one component, "name/", after the other; a "../" drops the last one that was kept.
FixedString foldParents(std::string_view path) {
  FixedString folded;
  while (path.find('/') != std::string_view::npos) {
    const std::string_view component = path.substr(0, path.find('/') + 1);
    if (component == kUp && endsInFoldableComponent(folded)) {
      folded.truncate(findLastChar(folded, '/', folded.length() - 2) + 1);
    } else {
      folded.append(component);
    }
    path.remove_prefix(component.size());
  }
  return folded.append(path);
}

}  // namespace

void useForwardSlashes(FixedString& path) { path.replaceCharIgnoreCase('\\', '/'); }

FixedString normalisePath(const FixedString& path) {
  if (path.length() < 2) return path;
  FixedString turned = path;
  useForwardSlashes(turned);

  FixedString collapsed = turned;
  collapsed.replaceAll("//", "/");
  if (turned.view().starts_with("//")) collapsed = FixedString("/").append(collapsed);

  if (findIgnoreCase(collapsed, kUp) < 0) return collapsed;
  return foldParents(collapsed);
}

FixedString parentFolder(const FixedString& path) {
  if (path.length() < 3) return path;
  std::string_view text = path.view();
  if (text.back() == '/') text.remove_suffix(1);
  return text.substr(0, text.rfind('/') + 1);
}

FixedString thirdParentFolder(const FixedString& path) {
  return parentFolder(parentFolder(parentFolder(path)));
}

FixedString nameWithoutExtension(const FixedString& path) {
  const std::string_view name = path.view().substr(path.view().rfind('/') + 1);
  return name.substr(0, name.rfind('.'));
}

bool isMemoryPath(const FixedString& path) {
  return path.isEmpty() || equalsIgnoreCase(path.view(), "MEMORY");
}

}  // namespace marrowbench
