#include "marrowctl/support/json_writer.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

namespace marrowbench::ctl {
namespace {

std::string jsonOf(std::string_view text) {
  std::string out;
  JsonWriter(out).value(text);
  return out;
}

TEST(JsonWriter, QuotesEveryByteSoThatItIsReadAgain) {
  for (int byte = 1; byte < 0x80; ++byte) {
    const std::string text = "a" + std::string(1, static_cast<char>(byte)) + "b";
    EXPECT_EQ(nlohmann::json::parse(jsonOf(text)), text) << byte;
  }
  EXPECT_EQ(jsonOf(std::string("a\0b", 3)), R"("a\u0000b")");
}

TEST(JsonWriter, KeepsUtf8AndReplacesWhatIsNone) {
  EXPECT_EQ(jsonOf("plain \xC3\xA4\"\xE2\x82\xAC"), "\"plain \xC3\xA4\\\"\xE2\x82\xAC\"");
  EXPECT_EQ(jsonOf("a\xFFz"), "\"a\xEF\xBF\xBDz\"");
  EXPECT_EQ(jsonOf(""), "\"\"");
}

TEST(JsonWriter, IndentsTheOuterLevels) {
  std::string out;
  JsonWriter json(out);
  json.beginObject().key("a").beginArray().value(1).value(2).endArray();
  json.member("b", true).key("c").null().endObject();
  EXPECT_EQ(out, "{\n  \"a\": [\n    1,\n    2\n  ],\n  \"b\": true,\n  \"c\": null\n}");
}

}  // namespace
}  // namespace marrowbench::ctl
