#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_PAGE_DOCUMENT_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_PAGE_DOCUMENT_H

#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/report/page/chart.h"

namespace marrowbench::ctl {

/// Whether this build can make pages: the chart library is in it.
[[nodiscard]] bool canMakePages();

/// What a page says.
struct PageContent {
  std::string title;                   ///< text
  std::string body;                    ///< HTML, with the places of the charts
  std::vector<ChartSection> sections;  ///< whose charts the page draws
};

/// One HTML file with all it needs: style, chart library, the script that draws, and the charts as
/// data. It opens offline, asks for nothing, and its content security policy lets run and apply
/// only what it holds.
///
/// @param program  who made it: "marrowctl 9.1.01", say
/// @pre canMakePages()
[[nodiscard]] std::string documentOf(const PageContent& content, std::string_view program);

}  // namespace marrowbench::ctl

#endif
