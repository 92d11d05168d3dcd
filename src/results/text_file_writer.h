#ifndef MARROWBENCH_RESULTS_TEXT_FILE_WRITER_H
#define MARROWBENCH_RESULTS_TEXT_FILE_WRITER_H

#include "support/fixed_string.h"

namespace marrowbench {

/// Writes one text and a newline to a file: opens it, writes once, closes it.
///
/// No locking: writers of a shared file take turns through ResultsLock.
///
/// @param path           the file; its folder must exist
/// @param text           cut so that the whole line, stamp included, has at most 5000 characters;
///                       a line of 5000 characters gets no newline
/// @param overwrite      true: the file is created anew or emptied; false: appended to, created
///                       when missing
/// @param withTimestamp  puts the current local time (shortStamp) and ": " in front
/// @param opened         optional: receives whether the file could be opened
/// @return 0 when the file was written and closed, and also when it could not be opened: a report
///         that can't be written must not stop a test. Non-zero when flush or close failed. errno
///         tells why the file could not be opened or, failing that, flushed or closed.
int writeTextFile(const FixedString& path, const TextBuffer& text, bool overwrite,
                  bool withTimestamp, bool* opened = nullptr);

}  // namespace marrowbench

#endif
