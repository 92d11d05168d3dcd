#ifndef MARROWBENCH_PATHS_FOLDERS_H
#define MARROWBENCH_PATHS_FOLDERS_H

#include "support/fixed_string.h"

namespace marrowbench {

/// True when `path`, without one trailing "/", names a folder. A path given with fewer than 3
/// characters is never one, so "ab/" can exist and "/", "./" and "ab" do not.
[[nodiscard]] bool folderExists(const FixedString& path);

/// Makes a folder, mode 0777 before the process umask.
///
/// @param path       with or without a trailing "/"; fewer than 2 characters count as done
/// @param recursive  makes the missing parents first
/// @return true when the folder existed or was made here. False also when another client made it
///         between the test and the call, so a failure is no reason to stop.
bool createFolder(const FixedString& path, bool recursive);

/// Makes sure that the folder of a file exists, making at most two missing levels.
///
/// @return false, and nothing is made, when the folder is missing and the third parent of
///         `filePath` is missing too: a mistyped path must not grow a tree on the share. True
///         otherwise, also when the folder could not be made: opening the file tells then.
[[nodiscard]] bool provideFolderOf(const FixedString& filePath);

/// The temporary folder: environment variable "TEMP", else "TMP", else "/tmp", read into at most
/// 250 characters; a set but empty variable counts as unset. Ends in "/" unless it already holds
/// 250 characters.
[[nodiscard]] ShortText tempFolder();

}  // namespace marrowbench

#endif
