#ifndef MARROWBENCH_MARROWCTL_MAIN_PUBLISH_TEXT_H
#define MARROWBENCH_MARROWCTL_MAIN_PUBLISH_TEXT_H

#include <cstdio>
#include <string>
#include <vector>

#include "marrowctl/fleet/publish.h"

/// What "fleet publish" and "fleet conduct" say of a file that is published.
namespace marrowbench::ctl {

/// Prints while it goes on: what check finds to the standard error, the rest to the output.
///
/// @param options  kept and not changed by the caller as long as the listener is used
[[nodiscard]] PublishListener printingListener(const PublishOptions& options,
                                               std::FILE* output = stdout);

/// "marrowctl fleet publish: not published:" and the reasons, one a line.
[[nodiscard]] std::string refusalText(const std::string& subcommand, const std::string& problem,
                                      const std::vector<std::string>& reasons);

/// Prints a text at once.
void printNow(const std::string& text, std::FILE* output = stdout);

}  // namespace marrowbench::ctl

#endif
