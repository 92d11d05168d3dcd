#include "marrowctl/report/page/shown_files.h"

#include <fmt/format.h>

#include <algorithm>

namespace marrowbench::ctl {
namespace {

constexpr std::size_t kMostFiles = 3;

}  // namespace

std::string shownFiles(const std::vector<ResultFile>& files) {
  std::string text;
  for (std::size_t i = 0; i < std::min(files.size(), kMostFiles); ++i) {
    text += (i == 0 ? "" : ", ") + files[i].path;
  }
  if (files.size() > kMostFiles) text += fmt::format(" and {} more", files.size() - kMostFiles);
  return text;
}

}  // namespace marrowbench::ctl
