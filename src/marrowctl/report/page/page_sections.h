#ifndef MARROWBENCH_MARROWCTL_REPORT_PAGE_PAGE_SECTIONS_H
#define MARROWBENCH_MARROWCTL_REPORT_PAGE_PAGE_SECTIONS_H

#include <string>

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

/// A section with the places for its charts, which a script fills.
[[nodiscard]] std::string chartsHtml(const ChartSection& section);

}  // namespace marrowbench::ctl

#endif
