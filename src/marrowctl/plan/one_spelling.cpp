#include "marrowctl/plan/one_spelling.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <system_error>

namespace marrowbench::ctl {
namespace {

// Most paths do: tens of thousands of them are looked at for a large fleet.
bool turnsNowhere(std::string_view path) {
  constexpr std::string_view kTurns[] = {"//", "/./", "/../"};
  return !path.starts_with("./") && !path.starts_with("../") && !path.ends_with('/') &&
         !path.ends_with("/.") && !path.ends_with("/..") && path != "." && path != ".." &&
         std::none_of(std::begin(kTurns), std::end(kTurns), [path](std::string_view turn) {
           return path.find(turn) != std::string_view::npos;
         });
}

}  // namespace

std::string oneSpelling(const std::string& path) {
  if (path.empty()) return path;
  std::error_code ignored;
  std::string text = path;
  if (!text.starts_with('/')) {
    text.insert(0, "/").insert(0, std::filesystem::current_path(ignored).native());
  }
  if (turnsNowhere(path)) return text;
  text = std::filesystem::path(text).lexically_normal().string();
  while (text.size() > 1 && text.ends_with('/')) text.pop_back();
  return text;
}

}  // namespace marrowbench::ctl
