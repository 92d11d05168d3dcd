#ifndef MARROWBENCH_MARROWCTL_MAIN_PAGE_OPTIONS_H
#define MARROWBENCH_MARROWCTL_MAIN_PAGE_OPTIONS_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "marrowctl/main/command_line.h"
#include "marrowctl/main/option_set.h"

/// What "run", "report" and "compare" share: the page that they write besides.
namespace marrowbench::ctl {

/// Who makes pages.
inline constexpr std::string_view kPageMaker = "marrowctl " MARROWCTL_VERSION;

/// Declares --html and --force.
void addPageOptions(OptionSet& options, PageOptions& values);

/// Why no page can be made, as far as that can be known before there is one: this build has no
/// charts, the file exists already. Nothing when none is asked for or it can.
[[nodiscard]] std::optional<Outcome> refusedPage(const std::string& subcommand,
                                                 const PageOptions& values);

/// Writes the page. @param answer  gives what the subcommand prints; called once the page is there
/// @return the answer and a message that tells of the page, or why it could not be written
[[nodiscard]] Outcome withPage(const std::string& subcommand, const PageOptions& values,
                               std::string page, const std::function<Outcome()>& answer);

}  // namespace marrowbench::ctl

#endif
