#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_PAGE_ASSETS_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_PAGE_ASSETS_H

#include <string_view>

namespace marrowbench::ctl {

/// What is inside the program to be put into its pages.
struct PageAssets {
  std::string_view library;  ///< the chart library, one script; empty: this build has none
  std::string_view script;   ///< what draws the charts with it
  std::string_view style;
};

/// Which of two files answers is chosen when the program is linked.
[[nodiscard]] PageAssets pageAssets();

}  // namespace marrowbench::ctl

#endif
