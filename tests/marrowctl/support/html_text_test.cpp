#include "marrowctl/support/html_text.h"

#include <gtest/gtest.h>

namespace marrowbench::ctl::test {
namespace {

TEST(HtmlText, HasNoCharacterThatMeansSomething) {
  EXPECT_EQ(htmlText("</td><img src=x onerror='a()' title=\"&amp;\">"),
            "&lt;/td&gt;&lt;img src=x onerror=&#39;a()&#39; title=&quot;&amp;amp;&quot;&gt;");
}

TEST(HtmlText, ReplacesWhatIsNoText) {
  EXPECT_EQ(htmlText("a\xFF"
                     "b\x1B[31m\xC3\xBC"),
            "a\uFFFDb\uFFFD[31m\u00FC");
}

TEST(JsonInScript, CannotEndItsElement) {
  EXPECT_EQ(jsonInScript(R"(["</script><!--", 1])"), R"(["\u003c/script>\u003c!--", 1])");
}

}  // namespace
}  // namespace marrowbench::ctl::test
