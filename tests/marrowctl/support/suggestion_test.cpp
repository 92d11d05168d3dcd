#include "marrowctl/support/suggestion.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace marrowbench::ctl {
namespace {

constexpr std::array<std::string_view, 5> kWords = {"check", "sweep", "--host", "--hosts", "if"};

TEST(SuggestionFor, FindsTheNearestWord) {
  const struct {
    const char* word;
    const char* meant;
  } cases[] = {{"chek", "check"},
               {"checkk", "check"},
               {"xheck", "check"},
               {"hceck", "check"},
               {"SWEEP", "sweep"},
               {"swp", ""},
               {"swee", "sweep"},
               {"chexxk", "check"},
               {"hcekc", "check"},
               {"--hots", "--host"},
               {"--hostss", "--hosts"},
               {"iff", "if"},
               {"of", "if"},
               {"o", ""},
               {"report", ""},
               {"", ""}};
  for (const auto& c : cases) EXPECT_EQ(suggestionFor(c.word, kWords), c.meant) << c.word;
}

TEST(SuggestionFor, HasNoneForALongWord) {
  const std::string word(65, 'a');
  const std::array<std::string_view, 1> same = {word};
  EXPECT_EQ(suggestionFor(word, same), "");
  EXPECT_EQ(suggestionFor(word.substr(1), same), word);
}

TEST(DidYouMean, AsksOnlyWhereAWordIsNear) {
  EXPECT_EQ(didYouMean("chek", kWords), "; did you mean check?");
  EXPECT_EQ(didYouMean("plan", kWords), "");
}

}  // namespace
}  // namespace marrowbench::ctl
