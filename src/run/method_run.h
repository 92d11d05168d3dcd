#ifndef MARROWBENCH_RUN_METHOD_RUN_H
#define MARROWBENCH_RUN_METHOD_RUN_H

#include <cstddef>

#include "settings/test_config.h"
#include "support/fixed_string.h"

/// One timed transfer with the class that the configured method selects. Methods without a class
/// run nothing and leave `result` as it is.
namespace marrowbench {

/// Copies `source` to `dest`.
///
/// @param config  method, parameters and initial error text of the method object
/// @param result  receives error text, null position and statistics of the run
void runCopyTest(const TestConfig& config, const FixedString& source, const FixedString& dest,
                 _fileGLobal& result);

/// Reads `path` into `buffer` or writes `buffer` to it.
///
/// @param buffer  memory for 1 GiB, or at least for what the test moves
/// @param isRead  true: read test; false: write test of the configured file size
void runReadWriteTest(const TestConfig& config, const FixedString& path, std::byte* buffer,
                      bool isRead, _fileGLobal& result);

}  // namespace marrowbench

#endif
