#ifndef MARROWBENCH_MARROWCTL_SWEEP_VALUE_LIST_H
#define MARROWBENCH_MARROWCTL_SWEEP_VALUE_LIST_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace marrowbench::ctl {

/// The values that an option's text lists, separated by ",", or why it lists none. A value that
/// comes again is dropped: the first one counts.
template <typename Value>
struct ValueList {
  std::vector<Value> values;
  std::string reason;  ///< empty: taken
};

/// Sizes in bytes with their units, see parseBytes(), and ranges of them: "4K,1M", "4K..4M". A
/// range doubles from its start, which is not 0, and ends at the last value that its end allows.
[[nodiscard]] ValueList<std::int64_t> listSizes(std::string_view text);

/// Whole numbers, "-" in front allowed, and ranges as with sizes: "1,3", "1..8".
[[nodiscard]] ValueList<std::int64_t> listNumbers(std::string_view text);

/// Indices in `words`, of which each value is one, in any case. The reason has a did-you-mean.
[[nodiscard]] ValueList<std::size_t> listWords(std::string_view text,
                                               std::span<const std::string_view> words);

/// Texts as they stand.
[[nodiscard]] ValueList<std::string> listTexts(std::string_view text);

}  // namespace marrowbench::ctl

#endif
