#include "marrowctl/support/suggestion.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace marrowbench::ctl {
namespace {

// Longer than any name: the table of distances stays small whatever is typed.
constexpr std::size_t kLongestWord = 64;

char lowered(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> steps(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) steps[i][0] = i;
  for (std::size_t j = 0; j <= b.size(); ++j) steps[0][j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool isSame = lowered(a[i - 1]) == lowered(b[j - 1]);
      steps[i][j] =
          std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, steps[i - 1][j - 1] + !isSame});
      const bool isSwapped = i > 1 && j > 1 && lowered(a[i - 1]) == lowered(b[j - 2]) &&
                             lowered(a[i - 2]) == lowered(b[j - 1]);
      if (isSwapped) steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
    }
  }
  return steps[a.size()][b.size()];
}

}  // namespace

std::string_view suggestionFor(std::string_view word,
                               std::span<const std::string_view> candidates) {
  if (word.size() > kLongestWord) return {};
  std::size_t nearest = word.size() < 4 ? 2 : 3;
  std::string_view suggestion;
  for (const std::string_view candidate : candidates) {
    const std::size_t steps = distance(word, candidate);
    if (steps < nearest) {
      nearest = steps;
      suggestion = candidate;
    }
  }
  return suggestion;
}

std::string didYouMean(std::string_view word, std::span<const std::string_view> candidates) {
  const std::string_view suggestion = suggestionFor(word, candidates);
  return suggestion.empty() ? "" : "; did you mean " + std::string(suggestion) + "?";
}

}  // namespace marrowbench::ctl
