#include "marrowctl/support/sha256.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace marrowbench::ctl::test {
namespace {

std::string hexOf(std::string_view text) {
  std::string hex;
  for (const std::uint8_t byte : sha256(text)) hex += fmt::format("{:02x}", byte);
  return hex;
}

// The examples that NIST gives for the standard, and the two lengths around the last that fits.
TEST(Sha256, GivesTheDigestsOfTheStandardsExamples) {
  EXPECT_EQ(hexOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(hexOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(hexOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(hexOf(std::string(1000000, 'a')),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

// Computed with sha256sum: the length fits behind the text, does not, and fills a block.
TEST(Sha256, PadsEveryLength) {
  EXPECT_EQ(hexOf(std::string(55, 'a')),
            "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318");
  EXPECT_EQ(hexOf(std::string(56, 'a')),
            "b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a");
  EXPECT_EQ(hexOf(std::string(64, 'a')),
            "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb");
}

TEST(Base64, PadsLikeTheExamplesOfItsStandard) {
  const struct {
    const char *bytes, *text;
  } cases[] = {{"", ""},
               {"f", "Zg=="},
               {"fo", "Zm8="},
               {"foo", "Zm9v"},
               {"foob", "Zm9vYg=="},
               {"fooba", "Zm9vYmE="},
               {"foobar", "Zm9vYmFy"},
               {"\xFF\xFE", "//4="}};
  for (const auto& c : cases) EXPECT_EQ(base64(c.bytes), c.text) << c.bytes;
}

}  // namespace
}  // namespace marrowbench::ctl::test
