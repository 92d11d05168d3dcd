#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_PAGE_SECTIONS_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_PAGE_SECTIONS_H

#include <string>
#include <string_view>
#include <vector>

#include "marrowctl/report/page/chart.h"
#include "marrowctl/report/report.h"

/// Parts of a page, as HTML. One that has nothing to say is empty.
namespace marrowbench::ctl {

/// What was read, the verdict in a sentence, and its three answers.
[[nodiscard]] std::string verdictHtml(const Report& report);

/// What makes figures doubtful, with remedies, and what the reader should know.
[[nodiscard]] std::string doubtsHtml(const Report& report);

/// The figures of every test.
[[nodiscard]] std::string testsHtml(const Report& report);

/// Clients far from the others.
[[nodiscard]] std::string stragglersHtml(const Report& report);

/// Error texts and rows that can't be used.
[[nodiscard]] std::string errorsHtml(const Report& report);

/// A link to a part of the page.
[[nodiscard]] std::string linkHtml(std::string_view id, std::string_view title);

/// Links to the sections that have charts.
[[nodiscard]] std::string linksHtml(const std::vector<ChartSection>& sections);

/// Sections with the places for their charts, which a script fills.
[[nodiscard]] std::string chartsHtml(const std::vector<ChartSection>& sections);

/// Charts that a reader may look for and not find, with the reason.
[[nodiscard]] std::string absencesHtml(const std::vector<ChartSection>& sections);

}  // namespace marrowbench::ctl

#endif
