#include "settings/test_config.h"

#include "paths/path_text.h"

namespace marrowbench {

TestType testTypeOf(const FixedString& source, const FixedString& dest) {
  if (isMemoryPath(dest)) return TestType::read;
  if (isMemoryPath(source)) return TestType::write;
  return TestType::copy;
}

}  // namespace marrowbench
