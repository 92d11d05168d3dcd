#ifndef MARROWBENCH_PATHS_PATH_TEXT_H
#define MARROWBENCH_PATHS_PATH_TEXT_H

#include "support/fixed_string.h"

/// Rules on the text of a path. No disk is touched; "/" is the separator.
namespace marrowbench {

/// Every backslash becomes "/".
void useForwardSlashes(FixedString& path);

/// The path with backslashes turned, doubled "/" collapsed in one pass (a leading "//" survives)
/// and "../" folded. Paths of fewer than 2 characters come back unchanged.
///
/// Folding is lexical: a component goes together with the "../" behind it. A "../" stays where
/// nothing can be folded: at the start, right after the root or "./", and after one that stays.
[[nodiscard]] FixedString normalisePath(const FixedString& path);

/// The folder of a path, with its trailing "/": "a/b/c.txt" and "a/b/c/" both give "a/b/". Empty
/// for a path without "/". Paths of fewer than 3 characters come back unchanged.
[[nodiscard]] FixedString parentFolder(const FixedString& path);

/// The third folder upwards: the parent of the parent of a file's folder.
[[nodiscard]] FixedString thirdParentFolder(const FixedString& path);

/// File name without folder and extension: what stands after the last "/" and before the last
/// "." of the rest.
[[nodiscard]] FixedString nameWithoutExtension(const FixedString& path);

/// True when the path is "MEMORY" in any case, or empty: the test then uses the memory buffer in
/// place of a file.
[[nodiscard]] bool isMemoryPath(const FixedString& path);

}  // namespace marrowbench

#endif
