#ifndef MARROWBENCH_MARROWCTL_SWEEP_SWEEP_PATHS_H
#define MARROWBENCH_MARROWCTL_SWEEP_SWEEP_PATHS_H

#include <string>
#include <string_view>
#include <vector>

/// Rules on the paths and names of a sweep; texts only.
namespace marrowbench::ctl {

/// The path as the program takes it: every backslash is "/".
[[nodiscard]] std::string withForwardSlashes(std::string path);

/// Why a path can't stand in a settings line; empty: it can. Placeholders must be known ones.
[[nodiscard]] std::string reasonAgainstPath(std::string_view path);

/// Why a name can't be that of a client; empty: it can.
[[nodiscard]] std::string reasonAgainstHost(std::string_view name);

/// Where a placeholder stands in a path, in any case; npos where it does not.
[[nodiscard]] std::size_t findPlaceholder(std::string_view path, std::string_view placeholder,
                                          std::size_t from = 0);
[[nodiscard]] bool holdsHost(std::string_view path);

/// The path with "[host]" replaced by the name of a client.
[[nodiscard]] std::string onHost(std::string path, const std::string& host);

/// The path with words put into the name of its file, joined by "_": before its extension, or as
/// the name with ".bin" where the path is a folder.
[[nodiscard]] std::string withWords(const std::string& path, const std::vector<std::string>& words);

/// No fewer than the characters of a path on any client: "[host]" counts as 64, the longest name.
[[nodiscard]] std::size_t longestLength(std::string_view path, std::string_view settingsFolder);

}  // namespace marrowbench::ctl

#endif
