#ifndef MARROWBENCH_MARROWCTL_TABLE_PARAMETERS_H
#define MARROWBENCH_MARROWCTL_TABLE_PARAMETERS_H

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "marrowctl/plan/method_names.h"
#include "settings/test_config.h"

namespace marrowbench::ctl {

/// What a row says about its test, paths aside.
struct Parameters {
  Method method = Method::posix;
  TestType type = TestType::write;
  bool flush = false;
  bool preallocate = false;
  std::int64_t chunkWaitMs = 0;
  std::int64_t chunkBytes = 0;  ///< 0 or less: the whole file in one step
  std::int64_t systemBuffer = 0;
  std::int64_t fileKib = 0;     ///< as the line gives it; of reads and copies usually 0
  std::int64_t iterations = 0;  ///< of the whole test
  std::int64_t cacheMode = 0;

  // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the 0 of a comparison for a pointer
  auto operator<=>(const Parameters&) const = default;
};

/// The eleven cells between the date and the source: "Posix,Copy,flush,...,0".
///
/// @param problem  set to the reason where the result is empty
[[nodiscard]] std::optional<Parameters> parametersOf(std::string_view cells, char separator,
                                                     std::string& problem);

}  // namespace marrowbench::ctl

#endif
