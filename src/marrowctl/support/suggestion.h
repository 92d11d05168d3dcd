#ifndef MARROWBENCH_MARROWCTL_SUPPORT_SUGGESTION_H
#define MARROWBENCH_MARROWCTL_SUPPORT_SUGGESTION_H

#include <span>
#include <string>
#include <string_view>

namespace marrowbench::ctl {

/// The candidate that was probably meant by a misspelt word; empty when none is near. In any case,
/// a letter that is missing, too much, another one or swapped with its neighbour counts one: two
/// such are near, one where the word has fewer than four letters. Of several the first.
[[nodiscard]] std::string_view suggestionFor(std::string_view word,
                                             std::span<const std::string_view> candidates);

/// "; did you mean NAME?", or nothing where no candidate is near.
[[nodiscard]] std::string didYouMean(std::string_view word,
                                     std::span<const std::string_view> candidates);

}  // namespace marrowbench::ctl

#endif
